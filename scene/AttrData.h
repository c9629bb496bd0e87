// AttrData: one value of a scene, of any type.
//
//     AttrData fov = AttrData::real(45);
//     AttrData points = AttrData::buffer(DataType::Vec3f, 1000);      // zero-filled
//     for (math::VecT<3, float>& p : points.elements<math::VecT<3, float>>()) ...
//     input->assign(std::move(points));                               // moves the memory
//
// A value type of 40 bytes. Copies are deep; a move transfers the memory and leaves a Null value. Buffers, matrices and
// strings of more than 31 bytes are stored in one malloc'ed block that the object owns. Creating or copying such a
// value throws std::bad_alloc if there is no memory. An accessor for another type returns false, 0, "" or an empty
// span. Several threads may read a value that none changes.
//
// Several values can share the block of a buffer, which the last of them frees:
//
//     const AttrData view = input->value().share();                   // keeps the bytes, whatever becomes of the input
//     input->assign(AttrData::adopt(DataType::Vec3f, count, memory, keeper));    // the bytes of another library
//
// No value changes the bytes that another one has: a function that makes a buffer writable first gives it a block of
// its own, unless no other value has the block any more. Copies of a value that shares its block share it, too. The
// values that share a block may be copied and destroyed on different threads.
#pragma once

#include "scene/AttrType.h"
#include "scene/DataType.h"
#include "scene/core/Export.h"
#include "scene/core/Math.h"

#include <cstdlib>
#include <memory>
#include <span>
#include <string_view>
#include <type_traits>

namespace vor::velmo_sdk {

namespace detail {

// The DataType of the number type T; Null if buffers cannot contain it.
template <class T> inline constexpr DataType numberType = DataType::Null;
template <> inline constexpr DataType numberType<bool> = DataType::Bool;
template <> inline constexpr DataType numberType<i8> = DataType::Char;
template <> inline constexpr DataType numberType<u8> = DataType::Byte;
template <> inline constexpr DataType numberType<i16> = DataType::Int16;
template <> inline constexpr DataType numberType<u16> = DataType::UInt16;
template <> inline constexpr DataType numberType<i32> = DataType::Int32;
template <> inline constexpr DataType numberType<u32> = DataType::UInt32;
template <> inline constexpr DataType numberType<long> = DataType::Int64;
template <> inline constexpr DataType numberType<long long> = DataType::Int64;
template <> inline constexpr DataType numberType<unsigned long> = DataType::UInt64;
template <> inline constexpr DataType numberType<unsigned long long> = DataType::UInt64;
template <> inline constexpr DataType numberType<float> = DataType::Float;
template <> inline constexpr DataType numberType<double> = DataType::Double;

// The number type of the components of a buffer element T.
template <class T> struct Number { using type = T; };
template <class T>
requires requires { typename T::Component; }
struct Number<T> {
    using type = typename T::Component;
};

} // namespace detail

class VRN_API AttrData {
public:
    AttrData() noexcept = default; // Null
    AttrData(const AttrData& other);
    AttrData(AttrData&& other) noexcept { take(other); }
    AttrData& operator=(const AttrData& other) { return *this = AttrData(other); }
    AttrData& operator=(AttrData&& other) noexcept {
        if (this != &other) {
            release();
            take(other);
        }
        return *this;
    }
    ~AttrData() { release(); }

    // The zero value of a type: false, 0, "", no node, an empty buffer of DataType Null, an empty array of element type
    // Null, or an empty object. Allocates nothing until components() makes it writable.
    [[nodiscard]] static AttrData zero(AttrType type) noexcept;
    [[nodiscard]] static AttrData boolean(bool value) noexcept;
    [[nodiscard]] static AttrData integer(i64 value) noexcept;
    [[nodiscard]] static AttrData unsignedInteger(u64 value) noexcept;
    [[nodiscard]] static AttrData real(double value) noexcept;

    // A value of componentCount(type) numbers: copies the first ones; missing ones are zero.
    [[nodiscard]] static AttrData numbers(AttrType type, std::span<const double> numbers);

    // The same by type. A matrix is given row after row.
    [[nodiscard]] static AttrData vec2(double x, double y);
    [[nodiscard]] static AttrData vec3(double x, double y, double z);
    [[nodiscard]] static AttrData vec4(double x, double y, double z, double w);
    [[nodiscard]] static AttrData pos2(double x, double y);
    [[nodiscard]] static AttrData pos3(double x, double y, double z);
    [[nodiscard]] static AttrData quat(double a, double b, double c, double d); // in the order of the format
    [[nodiscard]] static AttrData rgba(double red, double green, double blue, double alpha = 1);
    [[nodiscard]] static AttrData mat3(std::span<const double, 9> rows);
    [[nodiscard]] static AttrData mat4(std::span<const double, 16> rows);

    // Copies the text up to its first NUL.
    [[nodiscard]] static AttrData string(std::string_view text);

    // Only the element type: the Input owns the elements.
    [[nodiscard]] static AttrData array(AttrType elementType) noexcept;

    // `count` zero-filled elements of at most 2^63 bytes in total.
    [[nodiscard]] static AttrData buffer(DataType type, u64 count = 0);

    // A buffer of `count` elements that are at `memory`. They must not change while `keeper` is alive, which the last
    // value that shares them destroys, on its thread. Elements are never written there. Copies them instead if the
    // address is not a multiple of the size of their components, and then needs the keeper no longer.
    [[nodiscard]] static AttrData adopt(DataType type, u64 count, const void* memory,
                                        std::shared_ptr<const void> keeper);

    // Buffer: a value that shares the block with this one. O(1). Other values are copied. Keep it const: making it
    // writable copies the block. Several threads may call this for one value that none changes.
    [[nodiscard]] AttrData share() const;

    [[nodiscard]] AttrType type() const noexcept { return static_cast<AttrType>(static_cast<u32>(kind_)); }

    [[nodiscard]] bool asBool() const noexcept { return type() == AttrType::Bool && store_.integer != 0; }
    [[nodiscard]] i64 asInt() const noexcept { return type() == AttrType::Int ? store_.integer : 0; }
    [[nodiscard]] u64 asUInt() const noexcept {
        return type() == AttrType::UInt ? static_cast<u64>(store_.integer) : 0;
    }
    [[nodiscard]] double asReal() const noexcept { return type() == AttrType::Real ? store_.reals[0] : 0; }

    // NUL-terminated; valid until this value changes.
    [[nodiscard]] const char* asString() const noexcept;

    // The numbers of a Real, vector, point, quaternion, colour or matrix (row-major). The second overload allocates the
    // block of a zero value, which may throw std::bad_alloc.
    [[nodiscard]] std::span<const double> components() const noexcept;
    [[nodiscard]] std::span<double> components();

    // Array: the type of its elements, Null until it is known.
    [[nodiscard]] AttrType elementType() const noexcept;

    // Buffer: the type of its elements (Null until it is known), their number, and their bytes. The second overload of
    // bytes() first gives a value that shares its block one of its own, which invalidates earlier spans and may throw
    // std::bad_alloc. Do not write to its span any more after share().
    [[nodiscard]] DataType dataType() const noexcept;
    [[nodiscard]] u64 count() const noexcept { return type() == AttrType::Buffer ? store_.block.count : 0; }
    [[nodiscard]] std::span<const std::byte> bytes() const noexcept;
    [[nodiscard]] std::span<std::byte> bytes();

    // Buffer: changes the number of elements in place; new ones are zero. Invalidates bytes() and elements(). Does
    // nothing to other values, and to a buffer of DataType Null. On std::bad_alloc, the value is unchanged.
    void resize(u64 count);

    // Buffer: its elements in place. T is a number type, for the flat list of components, or a math type of the
    // element's size, such as VecT<3, float> for Vec3f. Empty if T does not match the DataType. The second overload is
    // like that of bytes().
    template <class T> [[nodiscard]] std::span<const T> elements() const noexcept {
        return hasElementsOf<T>() ? spanOf<const T>(bytes()) : std::span<const T>();
    }
    template <class T> [[nodiscard]] std::span<T> elements() {
        return hasElementsOf<T>() ? spanOf<T>(bytes()) : std::span<T>();
    }

    // Equal types and equal bits: a NaN equals itself, -0 differs from 0.
    friend VRN_API bool operator==(const AttrData& a, const AttrData& b) noexcept;

private:
    // The values that share a block (AttrData.cpp).
    struct Owners;
    struct Block {
        void* memory; // malloc'ed or adopted; null if the value has no bytes, or all are zero
        u64 count;    // elements of a buffer, bytes of a string, doubles of other values
        // Null if the value is the only owner of malloc'ed memory. share() sets it in values that other threads read.
        mutable Owners* owners;
    };
    // Lets a value be stored with 16-byte writes: a copy soon after it could not be forwarded from smaller stores.
    using Words [[gnu::vector_size(16), gnu::aligned(8), gnu::may_alias]] = u64;
    static constexpr std::size_t inlineBytes = 32;
    union Store {
        Words words[2];
        i64 integer;
        double reals[inlineBytes / sizeof(double)];
        char text[inlineBytes]; // NUL-terminated
        Block block;
    };

    // What the subtype of a string says.
    static constexpr i32 inlineText = 0;
    static constexpr i32 textInBlock = 1;

    AttrData(AttrType type, i32 subtype, u64 first = 0, u64 second = 0) noexcept
        : kind_(kindOf(type, subtype)), store_{.words = {{first, second}, {0, 0}}} {}
    [[nodiscard]] static u64 kindOf(AttrType type, i32 subtype) noexcept {
        return u64(static_cast<u32>(type)) | u64(static_cast<u32>(subtype)) << 32;
    }
    [[nodiscard]] i32 subtype() const noexcept { return static_cast<i32>(kind_ >> 32); }

    // Whether values of a type are stored in a block. Strings are if they are long.
    [[nodiscard]] static bool hasBlock(AttrType of) noexcept {
        static_assert(attrTypeCount == 19, "a new type with more than four components has a block");
        return of == AttrType::Mat3 || of == AttrType::Mat4 || of == AttrType::Buffer;
    }
    [[nodiscard]] bool hasBlock() const noexcept {
        return hasBlock(type()) || kind_ == kindOf(AttrType::String, textInBlock);
    }
    [[nodiscard]] u64 blockSize() const noexcept;
    void allocate(u64 count);
    [[nodiscard]] Owners* joinOwners() const noexcept;
    void leaveOwners() noexcept;
    [[nodiscard]] bool endSharing() noexcept;
    void replaceByCopy(u64 count);
    void take(AttrData& other) noexcept {
        kind_ = other.kind_;
        store_.words[0] = other.store_.words[0];
        store_.words[1] = other.store_.words[1];
        other.kind_ = 0;
    }
    void release() noexcept {
        if (!hasBlock())
            return;
        if (store_.block.owners)
            leaveOwners();
        else
            std::free(store_.block.memory);
    }

    // Whether T matches the DataType of a buffer.
    template <class T> [[nodiscard]] bool hasElementsOf() const noexcept {
        static_assert(std::is_trivially_copyable_v<T>);
        const ElementLayout layout = elementLayout(dataType());
        constexpr DataType number = detail::numberType<typename detail::Number<T>::type>;
        const bool fits = std::is_arithmetic_v<T> || sizeof(T) == layout.elementSize();
        return number != DataType::Null && number == layout.componentType && fits;
    }
    template <class T, class Byte> [[nodiscard]] static std::span<T> spanOf(std::span<Byte> bytes) noexcept {
        return {reinterpret_cast<T*>(bytes.data()), bytes.size() / sizeof(T)};
    }

    // Low half: the type. High half: the DataType of a buffer, the element type of an array, where a string is stored.
    u64 kind_ = 0;
    Store store_{.words = {{0, 0}, {0, 0}}};
};

// All compilers must agree on it, because programs and the library may be compiled with different ones.
static_assert(sizeof(AttrData) == 40 && alignof(AttrData) == 8);

} // namespace vor::velmo_sdk
