// String: an immutable, reference-counted text, used by all layers.
//
//     String name = "camera1";
//     String path = name + ".fov";             // a new text; `name` is unchanged
//     u64 version = 0;
//     if (!String::parse("2", version)) ...    // false leaves `version` unchanged
//
// A handle takes 16 bytes. Texts of up to 15 bytes are stored inline; longer ones are shared through an atomic
// reference count, so that copying a handle never copies text and is safe while other threads use other handles to the
// same text. Texts are followed by a NUL. They may contain NUL bytes and need not be UTF-8; lengths and positions are
// in bytes. Letters, digits and spaces are those of ASCII in any locale. Operations that create a text may throw
// std::bad_alloc; nothing else throws.
#pragma once

#include "scene/core/Export.h"
#include "scene/core/Math.h"
#include "scene/core/Types.h"
#include "scene/core/Vector.h"

#include <atomic>
#include <bit>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace vor {

class String;
using StringVector = ds::Vector<String>;

class VRN_API String {
public:
    // The base of the integer parsers. Auto is decimal, or as given by a prefix `0x` or `0b`; the others accept no
    // prefix.
    enum class Radix : int { Auto = 0, Binary = 2, Decimal = 10, Hexadecimal = 16 };

    String() noexcept { setInline({}); }
    String(const char* text); // NUL-terminated; a null pointer is the empty text
    String(std::string_view text) {
        if (text.size() <= inlineCapacity)
            setInline(text);
        else
            setShared(text);
    }
    String(const char* text, std::size_t length) : String(std::string_view(text, length)) {}
    explicit String(char c) : String(std::string_view(&c, 1)) {}
    explicit String(u64 number); // its decimal digits

    String(const String& other) noexcept : handle_(other.handle_) { retain(); }
    String(String&& other) noexcept : handle_(other.handle_) { other.setInline({}); }
    String& operator=(const String& other) noexcept {
        other.retain(); // first, in case of self-assignment
        release();
        handle_ = other.handle_;
        return *this;
    }
    String& operator=(String&& other) noexcept {
        if (this != &other) {
            release();
            handle_ = other.handle_;
            other.setInline({});
        }
        return *this;
    }
    ~String() { release(); }

    // The text with its terminating NUL; valid until this handle is assigned, moved or destroyed.
    [[nodiscard]] const char* buf() const noexcept { return isShared() ? shared() + sizeof(Header) : bytes(); }
    [[nodiscard]] std::size_t len() const noexcept { return isShared() ? header()->length : inlineLength(); }
    [[nodiscard]] bool isEmpty() const noexcept { return len() == 0; }
    [[nodiscard]] std::string_view view() const noexcept { return {buf(), len()}; }
    operator std::string_view() const noexcept { return view(); }

    // The byte at `i`; 0 at the length and beyond.
    [[nodiscard]] char operator[](std::size_t i) const noexcept { return i < len() ? buf()[i] : '\0'; }

    friend bool operator==(const String& a, const String& b) noexcept {
        const bool isSame = a.handle_[0] == b.handle_[0] && a.handle_[1] == b.handle_[1];
        return isSame ||
               (a.isShared() && b.isShared() && a.view() == b.view()); // equal inline texts have equal handles
    }
    friend bool operator==(const String& a, const char* b) noexcept { return a.view() == std::string_view(b); }
    friend bool operator==(const String& a, std::string_view b) noexcept { return a.view() == b; }
    friend String operator+(const String& a, const String& b) { return concat(a, b); }

    // Negative, 0 or positive if this text is less than, equal to or greater than `other`, ignoring ASCII case.
    [[nodiscard]] int compareNoCase(std::string_view other) const noexcept;
    [[nodiscard]] bool contains(std::string_view part, bool ignoreCase = false) const noexcept;
    [[nodiscard]] bool startsWith(std::string_view part, bool ignoreCase = false) const noexcept;
    [[nodiscard]] bool endsWith(std::string_view part, bool ignoreCase = false) const noexcept;

    // The first position of `c` at or after `from`, or -1.
    [[nodiscard]] i64 find(char c, bool ignoreCase = false, std::size_t from = 0) const noexcept;

    // The part after the first `c`, or from it on with `include`; empty if there is none.
    [[nodiscard]] String fromFirst(char c, bool include = false) const;

    // Up to `length` bytes from `start`, clipped to the text.
    [[nodiscard]] String substring(std::size_t start, std::size_t length) const;

    // Without white space at the chosen ends.
    [[nodiscard]] String trim(bool leading = true, bool trailing = true) const;

    // Without any of the characters `leading` at the start and `trailing` at the end; an empty `trailing` is the same
    // as `leading`.
    [[nodiscard]] String trimChars(std::string_view leading, std::string_view trailing = {}) const;

    // With ASCII letters in lower case: all of them, or only the first character.
    [[nodiscard]] String toLower(bool firstOnly = false) const;

    // The n + 1 parts between n separators, each trimmed with `trimParts`, without empty ones with `skipEmpty`.
    [[nodiscard]] StringVector split(char separator, bool skipEmpty = false, bool trimParts = false) const;

    // With escapes resolved: \n \t \r \a \b \f \v \\ \" \', \xHH (a byte) and \uHHHH (a code point or surrogate pair,
    // written as UTF-8). Other sequences are kept as written, and so are escapes for NUL and lone surrogates.
    [[nodiscard]] String unescape() const;

    // The 64-bit FNV-1a hash (Fowler, Noll, Vo), the same in every process. Linear.
    [[nodiscard]] u64 hash() const noexcept;

    // printf-style. A result of 2 GiB or more is replaced by a note about its length. %s ends at a NUL. Write real
    // numbers with NumberText.h instead, because printf uses the decimal point of the locale.
    [[nodiscard]] static String format(const char* format, ...) __attribute__((format(printf, 1, 2)));
    [[nodiscard]] static String formatv(const char* format, va_list arguments) __attribute__((format(printf, 1, 0)));

    [[nodiscard]] static constexpr bool isSpace(char c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }
    [[nodiscard]] static constexpr bool isPrintable(char c) noexcept { return c >= ' ' && c <= '~'; }
    [[nodiscard]] static constexpr bool isLetter(char c) noexcept {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    }
    [[nodiscard]] static constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
    [[nodiscard]] static constexpr bool isHexDigit(char c) noexcept {
        return isDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
    }
    // The value of a hexadecimal digit, or -1.
    [[nodiscard]] static constexpr int hexValue(char c) noexcept {
        return isDigit(c) ? c - '0' : isHexDigit(c) ? lower(c) - 'a' + 10 : -1;
    }
    [[nodiscard]] static constexpr char lower(char c) noexcept {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    }

    // The parsers of NumberText.h. They expect the whole text to be a number; on failure `out` is unchanged.
    [[nodiscard]] static bool parse(std::string_view text, bool& out);
    [[nodiscard]] static bool parse(std::string_view text, float& out);
    [[nodiscard]] static bool parse(std::string_view text, double& out);
    [[nodiscard]] static bool parse(std::string_view text, i8& out, Radix radix = Radix::Auto);
    [[nodiscard]] static bool parse(std::string_view text, i16& out, Radix radix = Radix::Auto);
    [[nodiscard]] static bool parse(std::string_view text, i32& out, Radix radix = Radix::Auto);
    [[nodiscard]] static bool parse(std::string_view text, long& out, Radix radix = Radix::Auto);
    [[nodiscard]] static bool parse(std::string_view text, long long& out, Radix radix = Radix::Auto);
    [[nodiscard]] static bool parse(std::string_view text, u8& out, Radix radix = Radix::Auto);
    [[nodiscard]] static bool parse(std::string_view text, u16& out, Radix radix = Radix::Auto);
    [[nodiscard]] static bool parse(std::string_view text, u32& out, Radix radix = Radix::Auto);
    [[nodiscard]] static bool parse(std::string_view text, unsigned long& out, Radix radix = Radix::Auto);
    [[nodiscard]] static bool parse(std::string_view text, unsigned long long& out, Radix radix = Radix::Auto);

    // The first `count` (at most T::size) space-separated numbers of `text` as components of a math value; the rest is
    // ignored. With fewer parts `out` is unchanged and the result false. A part that is not a number leaves its
    // component unchanged, the others are stored, and the result is false.
    template <class T> [[nodiscard]] static bool parse(std::string_view text, u64 count, T& out) {
        return count <= T::size && parseComponents(text, count, out.data());
    }

    // A colour: four numbers, or three and an alpha of 1; see parseColourReals().
    template <class T> [[nodiscard]] static bool parse(std::string_view text, math::RgbaT<T>& out) {
        return parseColour(text, out.data());
    }

private:
    // Precedes the bytes of a shared text.
    struct Header {
        std::size_t length;
        u64 references; // accessed only through std::atomic_ref
    };

    static constexpr std::size_t inlineCapacity = 15;
    static constexpr char sharedTag = 0x7F;

    [[nodiscard]] static String concat(std::string_view a, std::string_view b);
    [[nodiscard]] static bool parseColour(std::string_view text, double* out);
    [[nodiscard]] static bool parseComponents(std::string_view text, u64 count, double* out);
    template <class Fill> [[nodiscard]] static String build(std::size_t length, Fill fill);

    [[nodiscard]] const char* bytes() const noexcept { return reinterpret_cast<const char*>(&handle_); }
    [[nodiscard]] char* bytes() noexcept { return reinterpret_cast<char*>(&handle_); }
    [[nodiscard]] bool isShared() const noexcept { return bytes()[inlineCapacity] == sharedTag; }
    [[nodiscard]] std::size_t inlineLength() const noexcept {
        return inlineCapacity - static_cast<std::size_t>(bytes()[inlineCapacity]);
    }
    [[nodiscard]] char* shared() const noexcept {
        char* block;
        std::memcpy(&block, &handle_, sizeof block);
        return block;
    }
    [[nodiscard]] Header* header() const noexcept { return reinterpret_cast<Header*>(shared()); }

    // Makes this an inline text of at most inlineCapacity bytes. The handle is assembled in registers and written by
    // one store, because store forwarding to a copy that follows fails for several smaller stores.
    void setInline(std::string_view text) noexcept {
        u64 words[2] = {0, 0};
        if constexpr (std::endian::native == std::endian::little) {
            const char* first = text.data();
            const std::size_t n = text.size();
            if (n >= 8) {
                words[0] = load<u64>(first);
                words[1] = n == 8 ? 0 : load<u64>(first + n - 8) >> (8 * (16 - n));
            } else if (n >= 4) {
                words[0] = load<u32>(first) | u64(load<u32>(first + n - 4)) << (8 * (n - 4));
            } else if (n > 0) {
                words[0] = load<u8>(first) | u64(load<u8>(first + n / 2)) << (8 * (n / 2)) |
                           u64(load<u8>(first + n - 1)) << (8 * (n - 1));
            }
            words[1] |= u64(inlineCapacity - n) << 56;
            handle_ = Handle{words[0], words[1]};
        } else {
            handle_ = Handle{0, 0};
            text.copy(bytes(), text.size());
            bytes()[inlineCapacity] = static_cast<char>(inlineCapacity - text.size());
        }
    }
    template <class Word> [[nodiscard]] static Word load(const char* bytes) noexcept {
        Word word;
        std::memcpy(&word, bytes, sizeof word);
        return word;
    }

    void setShared(std::string_view text);
    char* allocate(std::size_t length);
    void retain() const noexcept {
        if (isShared())
            std::atomic_ref(header()->references).fetch_add(1, std::memory_order_relaxed);
    }
    void release() noexcept {
        if (isShared() && std::atomic_ref(header()->references).fetch_sub(1, std::memory_order_acq_rel) == 1)
            std::free(shared());
    }

    // Inline: the text, padded with NULs, and in the last byte the unused capacity, which is the terminating NUL of a
    // full handle. Shared: the address of the Header, and sharedTag in the last byte. Copied as one vector register.
    using Handle [[gnu::vector_size(16), gnu::aligned(8), gnu::may_alias]] = u64;
    static_assert(sizeof(Handle) == inlineCapacity + 1);
    Handle handle_;
};

// All compilers must agree on it, because programs and the library may be compiled with different ones.
static_assert(sizeof(String) == 16 && alignof(String) == 8);

} // namespace vor
