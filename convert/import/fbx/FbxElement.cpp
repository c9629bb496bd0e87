#include "convert/import/fbx/FbxElement.h"

#include "convert/import/fbx/FbxBinary.h"
#include "convert/import/fbx/FbxText.h"
#include "convert/shared/Errors.h"
#include "convert/shared/FileContent.h"
#include "scene/core/NumberText.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <libdeflate.h>
#include <memory>

namespace vrn::convert {

namespace {

// The number at the start of `bytes`, in the byte order of the file.
template <class Number> double numberAt(std::string_view bytes) {
    static_assert(std::endian::native == std::endian::little);
    Number number{};
    std::memcpy(&number, bytes.data(), std::min(bytes.size(), sizeof number));
    return static_cast<double>(number);
}

template <class Number> std::vector<double> decode(std::string_view bytes) {
    std::vector<double> numbers(bytes.size() / sizeof(Number));
    for (std::size_t i = 0; i < numbers.size(); ++i)
        numbers[i] = numberAt<Number>(bytes.substr(i * sizeof(Number)));
    return numbers;
}

std::vector<double> decodeAs(char type, std::string_view bytes) {
    switch (type) {
    case 'd':
        return decode<double>(bytes);
    case 'f':
        return decode<float>(bytes);
    case 'l':
        return decode<i64>(bytes);
    case 'i':
        return decode<i32>(bytes);
    case 'b':
    case 'c':
        return decode<u8>(bytes);
    default:
        return {};
    }
}

// The bytes of a compressed array; empty if they are damaged. Deflate expands its input 1032 times at most.
std::string inflate(std::string_view stream, u64 size) {
    constexpr u64 largestRatio = 1032;
    if (size > largestRatio * stream.size())
        return {};
    const std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)> decompressor(
        libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    if (!decompressor)
        throw std::bad_alloc();
    std::string bytes(size, '\0');
    const auto result = libdeflate_zlib_decompress(decompressor.get(), stream.data(), stream.size(), bytes.data(),
                                                   bytes.size(), nullptr);
    return result == LIBDEFLATE_SUCCESS ? bytes : std::string();
}

std::vector<double> binaryNumbers(const FbxValue& array) {
    const FbxArrayHeader header = readArrayHeader(array.bytes);
    const std::string_view stored = array.bytes.substr(FbxArrayHeader::size);
    const u64 size = u64(header.count) * elementSize(array.type);
    return decodeAs(array.type, header.isCompressed ? inflate(stored, size) : std::string(stored.substr(0, size)));
}

std::vector<double> textNumbers(std::string_view list) {
    std::vector<double> numbers;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(','), list.size());
        double number = 0;
        if (!vor::parseReal(list.substr(0, end), number))
            return numbers;
        numbers.push_back(number);
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return numbers;
}

constexpr i64 oldestVersion = 7100;

void refuseOld(i64 version, const std::string& path) {
    if (version < oldestVersion)
        throw ContentError(path, "FBX files are read from version 7.1 on, and this is version " +
                                     std::to_string(version / 1000) + "; save it as a newer one");
}

// Old text files have forms of elements that the parser does not know.
i64 versionOfText(std::string_view content) {
    constexpr std::string_view name = "FBXVersion:";
    const std::size_t start = content.find(name);
    i64 version = oldestVersion;
    if (start == std::string_view::npos)
        return version;
    std::string_view number = content.substr(start + name.size());
    number.remove_prefix(std::min(number.find_first_not_of(' '), number.size()));
    (void)vor::parseInteger(number.substr(0, number.find_first_of(" \t\r\n")), version, String::Radix::Decimal);
    return version;
}

} // namespace

double FbxValue::number() const {
    switch (type) {
    case 'D':
        return numberAt<double>(bytes);
    case 'F':
        return numberAt<float>(bytes);
    case 'L':
    case 'I':
    case 'Y':
    case 'C':
    case byte:
        return static_cast<double>(integer());
    default:
        break;
    }
    double number = 0;
    if (type == plain)
        (void)vor::parseReal(bytes, number);
    return number;
}

i64 FbxValue::integer() const {
    i64 number = 0;
    if (type == plain)
        (void)vor::parseInteger(bytes, number, String::Radix::Decimal);
    else if (type == 'L')
        std::memcpy(&number, bytes.data(), sizeof number);
    else if (type == 'I')
        number = static_cast<i64>(numberAt<i32>(bytes));
    else if (type == 'Y')
        number = static_cast<i64>(numberAt<i16>(bytes));
    else if (type == 'C')
        number = bytes[0] & 1;
    else if (type == byte)
        number = static_cast<unsigned char>(bytes[0]);
    return number;
}

std::string_view FbxValue::text() const { return type == 'S' ? bytes : std::string_view(); }

const FbxElement* FbxElement::child(std::string_view childName) const {
    const auto found = std::ranges::find(children, childName, &FbxElement::name);
    return found == children.end() ? nullptr : &*found;
}

FbxValue FbxElement::value(std::size_t index) const { return index < values.size() ? values[index] : FbxValue{}; }

std::vector<double> FbxElement::numbers() const {
    if (const FbxElement* array = child("a"); array && !array->values.empty())
        return textNumbers(array->values[0].bytes);
    if (!values.empty() && elementSize(values[0].type) != 0)
        return binaryNumbers(values[0]);
    std::vector<double> numbers;
    for (const FbxValue& each : values)
        numbers.push_back(each.number());
    return numbers;
}

FbxFile::FbxFile(const std::string& path) : content_(readText(path)) {
    if (isFbxBinary(content_)) {
        root_.children = parseFbxBinary(content_, path);
        const FbxElement* header = root_.child("FBXHeaderExtension");
        const FbxElement* version = header ? header->child("FBXVersion") : nullptr;
        refuseOld(version ? version->value(0).integer() : oldestVersion, path);
    } else {
        refuseOld(versionOfText(content_), path);
        root_.children = parseFbxText(content_, path);
    }
}

} // namespace vrn::convert
