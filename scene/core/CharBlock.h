// CharBlock: sixteen characters that are compared together, with the vector instructions of any processor.
//
//     const CharBlock text = CharBlock::load(at);
//     const std::size_t digits = text.between('0', '9').leading(); // how many of them come first
//
// Written with the vector types of GCC and Clang, because Highway has no target for SSE2, which is all that every
// x86-64 processor has. Only counting lanes differs between processors.
#pragma once

#include "scene/core/Types.h"

#include <bit>
#include <cstddef>
#include <cstring>

#if defined(__SSE2__)
#    include <emmintrin.h>
#elif defined(__aarch64__) && !defined(__AARCH64EB__)
#    include <arm_neon.h>
#endif

namespace vor {

class CharBlock {
public:
    static constexpr std::size_t size = 16;
    using Lanes = u8 __attribute__((vector_size(size)));

    // The answer for each character: all bits of its lane, or none.
    class Mask {
    public:
        explicit Mask(Lanes lanes) noexcept : lanes_(lanes) {}
        friend Mask operator|(Mask a, Mask b) noexcept { return Mask(a.lanes_ | b.lanes_); }
        friend Mask operator&(Mask a, Mask b) noexcept { return Mask(a.lanes_ & b.lanes_); }
        friend Mask operator~(Mask a) noexcept { return Mask(~a.lanes_); }

        [[nodiscard]] Lanes lanes() const noexcept { return lanes_; }

        // The number of characters before the first one that is not in the mask.
        [[nodiscard]] std::size_t leading() const noexcept {
            return static_cast<std::size_t>(std::countr_one(bits())) / bitsOfLane;
        }
        [[nodiscard]] bool isAll() const noexcept { return bits() == allBits; }

        // One bit for each of 64 characters, those of the first block lowest.
        [[nodiscard]] static u64 join(Mask a, Mask b, Mask c, Mask d) noexcept {
#if defined(__aarch64__) && !defined(__AARCH64EB__)
            // One bit of each lane; adding neighbours three times joins those of eight lanes.
            constexpr Lanes bit{1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
            const Lanes sums =
                vpaddq_u8(vpaddq_u8(a.lanes_ & bit, b.lanes_ & bit), vpaddq_u8(c.lanes_ & bit, d.lanes_ & bit));
            return vgetq_lane_u64(reinterpret_cast<uint64x2_t>(vpaddq_u8(sums, sums)), 0);
#else
            return a.bits() | u64(b.bits()) << 16 | u64(c.bits()) << 32 | u64(d.bits()) << 48;
#endif
        }

    private:
#if defined(__SSE2__)
        static constexpr std::size_t bitsOfLane = 1;
        static constexpr u32 allBits = 0xFFFF;
        [[nodiscard]] u32 bits() const noexcept {
            return static_cast<u32>(_mm_movemask_epi8(reinterpret_cast<__m128i>(lanes_)));
        }
#elif defined(__aarch64__) && !defined(__AARCH64EB__)
        // Shifting right by four while narrowing leaves four bits of each lane.
        static constexpr std::size_t bitsOfLane = 4;
        static constexpr u64 allBits = ~u64(0);
        [[nodiscard]] u64 bits() const noexcept {
            const uint8x8_t narrow = vshrn_n_u16(reinterpret_cast<uint16x8_t>(lanes_), 4);
            return vget_lane_u64(reinterpret_cast<uint64x1_t>(narrow), 0);
        }
#else
        static constexpr std::size_t bitsOfLane = 1;
        static constexpr u32 allBits = 0xFFFF;
        [[nodiscard]] u32 bits() const noexcept {
            u32 all = 0;
            for (std::size_t i = 0; i < size; ++i)
                all |= (lanes_[i] & 1U) << i;
            return all;
        }
#endif
        Lanes lanes_;
    };

    // Sixteen characters must be readable at `text`.
    [[nodiscard]] static CharBlock load(const char* text) noexcept {
        Lanes lanes;
        std::memcpy(&lanes, text, sizeof lanes);
        return CharBlock(lanes);
    }

    [[nodiscard]] Lanes lanes() const noexcept { return lanes_; }
    [[nodiscard]] Mask is(char c) const noexcept { return mask(lanes_ == static_cast<u8>(c)); }
    [[nodiscard]] Mask sameAs(const CharBlock& other) const noexcept { return mask(lanes_ == other.lanes_); }
    // By the values of the bytes; characters outside ASCII are above all others.
    [[nodiscard]] Mask between(char first, char last) const noexcept {
        return mask(lanes_ - static_cast<u8>(first) <= static_cast<u8>(last - first));
    }
    // With the letters in lower case, and other characters changed to any that are no letters.
    [[nodiscard]] CharBlock lowerCase() const noexcept { return CharBlock(lanes_ | static_cast<u8>('a' ^ 'A')); }

private:
    explicit CharBlock(Lanes lanes) noexcept : lanes_(lanes) {}
    template <class Comparison> static Mask mask(Comparison lanes) noexcept {
        return Mask(reinterpret_cast<Lanes>(lanes));
    }

    Lanes lanes_;
};

} // namespace vor
