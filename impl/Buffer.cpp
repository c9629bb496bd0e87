#include "impl/Messages.h"
#include "impl/VrnParser.h"
#include "scene/core/Decompress.h"
#include "scene/core/HashMap.h"
#include "scene/core/PlainNumber.h"

#include <cstring>
#include <limits>
#include <new>

namespace vor::velmo_sdk::impl {

using Type = Token::Type;

namespace {

using BufferTypes = ds::HashMap<String, DataType>;

// The keywords of buffers of plain numbers. Built on the first call.
const BufferTypes& scalarBufferTypes() {
    static const BufferTypes types = [] {
        BufferTypes rows;
        rows.set("char", DataType::Char);
        rows.set("byte", DataType::Byte);
        rows.set("int16", DataType::Int16);
        rows.set("int32", DataType::Int32);
        rows.set("int64", DataType::Int64);
        rows.set("uint16", DataType::UInt16);
        rows.set("uint32", DataType::UInt32);
        rows.set("uint64", DataType::UInt64);
        rows.set("float", DataType::Float);
        rows.set("double", DataType::Double);
        return rows;
    }();
    return types;
}

// The keywords of buffers of vectors, colours and matrices. Built on the first call.
const BufferTypes& vectorBufferTypes() {
    static const BufferTypes types = [] {
        BufferTypes rows;
        for (const DataType type :
             {DataType::Vec2f, DataType::Vec3f,   DataType::Vec4f, DataType::Pos2f, DataType::Pos3f, DataType::Quatf,
              DataType::Mat3f, DataType::Mat4f,   DataType::Rgbf,  DataType::Rgbaf, DataType::Hsvf,  DataType::Hslf,
              DataType::Vec2d, DataType::Vec3d,   DataType::Vec4d, DataType::Pos2d, DataType::Pos3d, DataType::Quatd,
              DataType::Mat3d, DataType::Mat4d,   DataType::Rgbd,  DataType::Rgbad, DataType::Hsvd,  DataType::Hsld,
              DataType::Vec2i, DataType::Vec3i,   DataType::Vec4i, DataType::Pos2i, DataType::Pos3i, DataType::Mat3i,
              DataType::Mat4i, DataType::Vec2u,   DataType::Vec3u, DataType::Vec4u, DataType::Rgb8,  DataType::Rgba8,
              DataType::Argb8, DataType::ColorRef})
            rows.set(String(dataTypeName(type)).toLower(), type);
        return rows;
    }();
    return types;
}

// The element type that a keyword names, or null.
const DataType* bufferType(const String& keyword) {
    const String key = keyword.toLower();
    const DataType* type = scalarBufferTypes().find(key);
    return type ? type : vectorBufferTypes().find(key);
}

template <class Integer>
requires std::is_integral_v<Integer>
bool readNumber(std::string_view text, Integer& number) { return String::parse(text, number, String::Radix::Auto); }

template <class Real>
requires std::is_floating_point_v<Real>
bool readNumber(std::string_view text, Real& number) { return String::parse(text, number); }

// Calls `use(number)` with a zero of the type of a component; false if buffers have no such component.
template <class Use> bool withComponent(DataType type, Use use) {
    switch (type) {
    case DataType::Char:
        return use(i8());
    case DataType::Byte:
        return use(u8());
    case DataType::Int16:
        return use(i16());
    case DataType::UInt16:
        return use(u16());
    case DataType::Int32:
        return use(i32());
    case DataType::UInt32:
        return use(u32());
    case DataType::Int64:
        return use(i64());
    case DataType::UInt64:
        return use(u64());
    case DataType::Float:
        return use(float());
    case DataType::Double:
        return use(double());
    default:
        return false;
    }
}

// What stands between the brackets of a buffer, and what separates its numbers. A long list is read
// from where it stands in the source; a canonical text has nothing but spaces.
class NumberList {
public:
    explicit NumberList(const TokenText& body)
        : isRaw_(body.list() && body.list()->isFlat()), text_(isRaw_ ? body.list()->raw() : body.view()) {
        text_ = text_.substr(1, text_.size() - 2);
        skipSeparators();
    }

    [[nodiscard]] bool isEmpty() const noexcept { return text_.empty(); }
    [[nodiscard]] char first() const noexcept { return text_.front(); }

    // Takes the next number as text; there must be one.
    [[nodiscard]] std::string_view takePart() noexcept {
        std::size_t length = 1;
        while (length < text_.size() && !isSeparator(text_[length]))
            ++length;
        return take(length);
    }

    // Takes the next number if it is a plain one.
    template <class Number> [[nodiscard]] bool takePlain(Number& number) noexcept {
        const char* end = text_.data() + text_.size();
        const char* behind = takePlainNumber(text_.data(), end, number);
        if (!behind || (behind != end && !isSeparator(*behind)))
            return false;
        (void)take(static_cast<std::size_t>(behind - text_.data()));
        return true;
    }

private:
    [[nodiscard]] bool isSeparator(char c) const noexcept {
        return c == ' ' || (isRaw_ && isIn(c, blankChar | listPunctuation));
    }
    void skipSeparators() noexcept {
        std::size_t count = 0;
        while (count < text_.size() && isSeparator(text_[count]))
            ++count;
        text_.remove_prefix(count);
    }
    std::string_view take(std::size_t length) noexcept {
        const std::string_view part = text_.substr(0, length);
        text_.remove_prefix(length);
        skipSeparators();
        return part;
    }

    bool isRaw_;
    std::string_view text_;
};

// Reads numbers into a block until either ends; false if one of them could not be read. `offset`
// receives how many bytes were filled.
template <class Number> bool fill(NumberList& list, std::span<std::byte> block, u64& offset) {
    bool isRead = true;
    for (offset = 0; offset < block.size() && !list.isEmpty(); offset += sizeof(Number)) {
        Number number = 0;
        if (!list.takePlain(number) && !readNumber(list.takePart(), number))
            isRead = false;
        else
            std::memcpy(block.data() + offset, &number, sizeof number);
    }
    return isRead;
}

// Runs what needs memory for as many bytes as the text asks for; false when there are not so many.
template <class Allocate> bool tryAllocate(Allocate allocate) {
    try {
        allocate();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace

/// buffer ::= bufferType BRACKETS BRACES   element type, count, and numbers or a compressed payload
/// bufferType ::= 'char' | 'byte' | ( 'int' | 'uint' ) ( '16' | '32' | '64' ) | 'float' | 'double'
///              | ( 'vec2' | 'vec3' | 'vec4' ) ( 'f' | 'd' | 'i' | 'u' )
///              | ( 'pos2' | 'pos3' | 'mat3' | 'mat4' ) ( 'f' | 'd' | 'i' )
///              | ( 'quat' | 'hsv' | 'hsl' ) ( 'f' | 'd' )
///              | ( 'rgb' | 'rgba' ) ( 'f' | 'd' | '8' ) | 'argb8' | 'colorref'
bool VrnParser::buffer(AssignInfo& info) {
    if (current().type != Type::Id || ahead(1).type != Type::Brackets || ahead(2).type != Type::Braces)
        return false;
    const DataType* type = bufferType(current().text);
    if (!type)
        return false;
    info.valueToken = consume();
    info.bufferHeadToken = consume();
    info.bufferBodyToken = consume();
    readElementCount(info, *type);
    if (info.data.bytes().empty())
        return true;
    const NumberList list(info.bufferBodyToken.text);
    if (elementLayout(*type).isCompressible() && !list.isEmpty() && list.first() == '.')
        readPayload(info);
    else
        readNumbers(info);
    return true;
}

// Gives the value its block, zero-filled and of its final size.
void VrnParser::readElementCount(AssignInfo& info, DataType type) {
    const String& head = info.bufferHeadToken.text;
    const u64 elementSize = elementLayout(type).elementSize();
    unsigned long long count = 0;
    if (!String::parse(head.trimChars("[]"), count, String::Radix::Auto) ||
        count > scene->limits().bufferBytes / elementSize)
        parseError(messages::invalidElementCount, head.buf());
    if (!tryAllocate([&] { info.data = AttrData::buffer(type, count); }))
        parseError(messages::invalidElementCount, head.buf());
}

/// payload ::= '{' '.' ( hexdigit hexdigit | ' ' )* '}'   a zlib stream, for elements of bytes only
void VrnParser::readPayload(AssignInfo& info) {
    const String& body = info.bufferBodyToken.text;
    const std::span<std::byte> block = info.data.bytes();
    String error;
    DecompressedBytes inflated;
    const u8* payload = reinterpret_cast<const u8*>(body.buf()) + 1;
    if (!tryAllocate([&] { inflated = decompress(payload, body.len() - 2, error, block.size()); }))
        parseError(messages::invalidElementCount, info.bufferHeadToken.text.buf());
    if (inflated.length == 0)
        parseError("%s", error.buf());
    std::memcpy(block.data(), inflated.bytes.get(), inflated.length);
}

/// numbers ::= '{' ( number ( ' ' number )* )? '}'   component after component
void VrnParser::readNumbers(AssignInfo& info) {
    const char* keyword = info.valueToken.text.buf();
    const ElementLayout layout = elementLayout(info.data.dataType());
    const auto count = static_cast<unsigned long long>(info.data.count());
    const std::span<std::byte> block = info.data.bytes();
    NumberList list(info.bufferBodyToken.text);
    u64 offset = 0;
    const bool isRead =
        withComponent(layout.componentType, [&]<class Number>(Number) { return fill<Number>(list, block, offset); });
    if (!list.isEmpty())
        bufferError(messages::tooManyElements, String(list.takePart()).buf(),
                    static_cast<unsigned long long>(offset / layout.componentSize), keyword, count);
    if (offset < block.size())
        logWarning(info.valueToken.position(), messages::tooFewElements,
                   static_cast<unsigned long long>(offset / layout.elementSize()), keyword, count);
    if (!isRead)
        parseError(messages::unreadableBuffer, keyword);
}

// Stores one number, unaligned, in the machine's own form.
bool VrnParser::parseElem(std::string_view text, DataType type, u8* out) {
    return withComponent(type, [&](auto number) {
        if (!readNumber(text, number))
            return false;
        std::memcpy(out, &number, sizeof number);
        return true;
    });
}

} // namespace vor::velmo_sdk::impl
