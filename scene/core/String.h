// String: the immutable text handle that all layers pass around.
//
//     String name = "camera1";
//     String path = name + ".fov";             // a new text; `name` is as it was
//     u64 version = 0;
//     if (!String::parse("2", version)) ...    // false leaves `version` alone
//
// A handle takes 16 bytes. Texts of up to 15 bytes live inside it; longer ones stand behind an atomic
// reference count, so copying a handle is cheap, never copies text and may be done from several
// threads at once. The text never changes and is always followed by a NUL, which buf() relies on. It
// may hold NUL bytes and need not be UTF-8: lengths and positions count bytes. Letters, digits and
// spaces are the ASCII ones whatever the locale. Operations that build a text throw std::bad_alloc
// when there is no memory for it; nothing else throws.
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
    // How the integer parsers read digits. Auto takes a decimal number, or one with the prefix `0x` or
    // `0b`; the others take digits of just that base.
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
        other.retain(); // first: it may be this one
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

    // The text with its terminating NUL; valid as long as this handle is neither changed nor moved.
    [[nodiscard]] const char* buf() const noexcept { return isShared() ? shared() + sizeof(Header) : bytes(); }
    [[nodiscard]] std::size_t len() const noexcept { return isShared() ? header()->length : inlineLength(); }
    [[nodiscard]] bool isEmpty() const noexcept { return len() == 0; }
    [[nodiscard]] std::string_view view() const noexcept { return {buf(), len()}; }
    operator std::string_view() const noexcept { return view(); }

    // The byte at `i`; 0 at the length and beyond.
    [[nodiscard]] char operator[](std::size_t i) const noexcept { return i < len() ? buf()[i] : '\0'; }

    friend bool operator==(const String& a, const String& b) noexcept {
        const bool isSame = a.handle_[0] == b.handle_[0] && a.handle_[1] == b.handle_[1];
        return isSame || (a.isShared() && b.isShared() && a.view() == b.view()); // an inline text has one handle
    }
    friend bool operator==(const String& a, const char* b) noexcept { return a.view() == std::string_view(b); }
    friend bool operator==(const String& a, std::string_view b) noexcept { return a.view() == b; }
    friend String operator+(const String& a, const String& b) { return concat(a, b); }

    // Below 0, 0 or above 0 as this text stands before, equals or stands behind `other` when the case
    // of ASCII letters is ignored.
    [[nodiscard]] int compareNoCase(std::string_view other) const noexcept;
    [[nodiscard]] bool contains(std::string_view part, bool ignoreCase = false) const noexcept;
    [[nodiscard]] bool startsWith(std::string_view part, bool ignoreCase = false) const noexcept;
    [[nodiscard]] bool endsWith(std::string_view part, bool ignoreCase = false) const noexcept;

    // The first position of `c` at or after `from`, or -1.
    [[nodiscard]] i64 find(char c, bool ignoreCase = false, std::size_t from = 0) const noexcept;

    // What follows the first `c` (with it, if `include`); empty when there is none.
    [[nodiscard]] String fromFirst(char c, bool include = false) const;

    // At most `length` bytes from `start`; what lies beyond the end is left out.
    [[nodiscard]] String substring(std::size_t start, std::size_t length) const;

    // Without the spaces at the chosen ends.
    [[nodiscard]] String trim(bool leading = true, bool trailing = true) const;

    // Without the characters of `leading` at the front and those of `trailing` at the end. An empty
    // `trailing` means that `leading` serves for both ends.
    [[nodiscard]] String trimChars(std::string_view leading, std::string_view trailing = {}) const;

    // With ASCII capitals made small: all of them, or only a first one.
    [[nodiscard]] String toLower(bool firstOnly = false) const;

    // The parts between the separators: n separators make n + 1 parts, of which empty ones are left
    // out on `skipEmpty`; `trimParts` first takes the spaces off both ends of each.
    [[nodiscard]] StringVector split(char separator, bool skipEmpty = false, bool trimParts = false) const;

    // With escapes resolved: \n \t \r \a \b \f \v \\ \" \', \xHH (a byte) and \uHHHH (a code point, as
    // UTF-8; a surrogate pair is one). Anything else behind a backslash stays as written, and so do
    // escapes that would make a NUL or a lone surrogate.
    [[nodiscard]] String unescape() const;

    // FNV-1a of 64 bits (Fowler, Noll, Vo). Linear in the length.
    [[nodiscard]] u64 hash() const noexcept;

    // printf-style, for results of less than 2 GiB; a longer one is replaced by words that say so. %s ends at a NUL;
    // numbers with a decimal point follow the locale of the process, so real numbers are to be written with the
    // functions of NumberText.h instead.
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

    // The number parsers take a whole text and leave `out` alone when they return false. NumberText.h
    // says what each accepts.
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

    // The first `count` space-separated numbers of `text` as the components of a math value; more are
    // ignored. With fewer, `out` is untouched; a part that is no number leaves its own component
    // alone, the others are still read, and the result is false. `count` is at most T::size.
    template <class T> [[nodiscard]] static bool parse(std::string_view text, u64 count, T& out) {
        return count <= T::size && parseComponents(text, count, out.data());
    }

    // A colour: four numbers, or three and an alpha of 1.
    template <class T> [[nodiscard]] static bool parse(std::string_view text, math::RgbaT<T>& out) {
        return parseColour(text, out.data());
    }

private:
    // Stands before the bytes of a shared text.
    struct Header {
        std::size_t length;
        u64 references; // only through std::atomic_ref
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

    // Makes this an inline text of at most inlineCapacity bytes. The handle is put together in registers
    // and written at once: a copy that follows can then be fed from the write, which it could not be
    // from several smaller ones.
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

    // Either the text, NULs, and in the last byte the room that is left (so that a full handle ends in
    // its own NUL); or the address of a shared text, and the tag in the last byte. Copied as a whole.
    using Handle = u64 __attribute__((vector_size(16), aligned(8), may_alias));
    static_assert(sizeof(Handle) == inlineCapacity + 1);
    Handle handle_;
};

} // namespace vor
