#include "impl/Messages.h"
#include "impl/VrnParser.h"
#include "scene/core/Decompress.h"
#include "scene/core/HashMap.h"

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

template <class Integer> bool readInteger(std::string_view text, u8* out) {
    Integer number = 0;
    if (!String::parse(text, number, String::Radix::Auto))
        return false;
    std::memcpy(out, &number, sizeof number);
    return true;
}

template <class Real> bool readReal(std::string_view text, u8* out) {
    Real number = 0;
    if (!String::parse(text, number))
        return false;
    std::memcpy(out, &number, sizeof number);
    return true;
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

u8* blockOf(AttrData& data) { return reinterpret_cast<u8*>(data.bytes().data()); }

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
    const String& body = info.bufferBodyToken.text;
    if (elementLayout(*type).isCompressible() && body.len() > 2 && body[1] == '.')
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
    const u64 size = info.data.bytes().size();
    u8* block = blockOf(info.data);
    u64 offset = 0;
    bool isRead = true;
    std::string_view rest = info.bufferBodyToken.text;
    rest = rest.substr(1, rest.size() - 2);
    while (!rest.empty()) {
        const std::string_view part = rest.substr(0, rest.find(' '));
        rest.remove_prefix(std::min(part.size() + 1, rest.size()));
        if (part.empty())
            continue;
        if (offset > size - layout.componentSize)
            bufferError(messages::tooManyElements, String(part).buf(),
                        static_cast<unsigned long long>(offset / layout.componentSize), keyword,
                        static_cast<unsigned long long>(info.data.count()));
        isRead = parseElem(part, layout.componentType, block + offset) && isRead;
        offset += layout.componentSize;
    }
    if (offset < size)
        logWarning(info.valueToken.position(), messages::tooFewElements,
                   static_cast<unsigned long long>(offset / layout.elementSize()), keyword,
                   static_cast<unsigned long long>(info.data.count()));
    if (!isRead)
        parseError(messages::unreadableBuffer, keyword);
}

// Stores one number, unaligned, in the machine's own form.
bool VrnParser::parseElem(std::string_view text, DataType type, u8* out) {
    switch (type) {
    case DataType::Char:
        return readInteger<i8>(text, out);
    case DataType::Byte:
        return readInteger<u8>(text, out);
    case DataType::Int16:
        return readInteger<i16>(text, out);
    case DataType::UInt16:
        return readInteger<u16>(text, out);
    case DataType::Int32:
        return readInteger<i32>(text, out);
    case DataType::UInt32:
        return readInteger<u32>(text, out);
    case DataType::Int64:
        return readInteger<i64>(text, out);
    case DataType::UInt64:
        return readInteger<u64>(text, out);
    case DataType::Float:
        return readReal<float>(text, out);
    case DataType::Double:
        return readReal<double>(text, out);
    default:
        return false;
    }
}

} // namespace vor::velmo_sdk::impl
