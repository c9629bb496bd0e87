#include "convert/import/fbx/FbxBinary.h"

#include "convert/shared/Errors.h"
#include "convert/shared/LittleEndian.h"

namespace vrn::convert {

namespace {

constexpr std::string_view signature("Kaydara FBX Binary  \0", 21);
constexpr std::size_t headerSize = 27;

class BinaryParser {
public:
    BinaryParser(std::string_view content, const std::string& path) : content_(content), path_(path) {}

    std::vector<FbxElement> parse() {
        position_ = signature.size() + 2;
        if (content_[signature.size() + 1] != 0)
            throw ContentError(path_, "its numbers begin with the highest byte; save it as text");
        hasLongOffsets_ = littleEndian32At(take(4), 0) >= 7500;
        position_ = headerSize;
        std::vector<FbxElement> sections;
        while (parseElement(sections, content_.size(), 0)) {
        }
        return sections;
    }

private:
    // An element is the position of its end, the number and total size of its values, its name, its values and its
    // children. Appends it to `siblings`; false if it is the null element that ends a list.
    bool parseElement(std::vector<FbxElement>& siblings, std::size_t limit, int depth) {
        if (depth > maxFbxDepth)
            fail();
        const u64 end = takeOffset();
        const u64 count = takeOffset();
        (void)takeOffset();
        const std::string_view name = take(static_cast<unsigned char>(take(1)[0]));
        if (end == 0)
            return false;
        if (end < position_ || end > limit)
            fail();
        FbxElement& element = siblings.emplace_back();
        element.name = name;
        for (u64 i = 0; i < count; ++i)
            element.values.push_back(takeValue());
        if (position_ > end)
            fail();
        while (position_ < end && parseElement(element.children, end, depth + 1)) {
        }
        position_ = end;
        return true;
    }

    FbxValue takeValue() {
        const char type = take(1)[0];
        switch (type) {
        case 'C':
        case FbxValue::byte:
            return {type, take(1)};
        case 'Y':
            return {type, take(2)};
        case 'I':
        case 'F':
            return {type, take(4)};
        case 'L':
        case 'D':
            return {type, take(8)};
        case 'S':
        case 'R':
            return {type, take(littleEndian32At(take(4), 0))};
        default:
            return takeArray(type);
        }
    }

    FbxValue takeArray(char type) {
        const std::size_t start = position_;
        const std::string_view header = take(FbxArrayHeader::size);
        const u64 stored = readArrayHeader(header).isCompressed
                               ? littleEndian32At(header, 8)
                               : u64(readArrayHeader(header).count) * elementSize(type);
        if (elementSize(type) == 0)
            fail();
        (void)take(stored);
        return {type, content_.substr(start, position_ - start)};
    }

    u64 takeOffset() {
        if (!hasLongOffsets_)
            return littleEndian32At(take(4), 0);
        const std::string_view bytes = take(8);
        return littleEndian32At(bytes, 0) | u64(littleEndian32At(bytes, 4)) << 32;
    }

    std::string_view take(u64 count) {
        if (count > content_.size() - position_)
            fail();
        const std::string_view taken = content_.substr(position_, count);
        position_ += count;
        return taken;
    }

    [[noreturn]] void fail() const {
        throw ContentError(path_, "its FBX elements are damaged at byte " + std::to_string(position_));
    }

    std::string_view content_;
    const std::string& path_;
    std::size_t position_ = 0;
    bool hasLongOffsets_ = false;
};

} // namespace

bool isFbxBinary(std::string_view content) { return content.size() >= headerSize && content.starts_with(signature); }

std::vector<FbxElement> parseFbxBinary(std::string_view content, const std::string& path) {
    return BinaryParser(content, path).parse();
}

FbxArrayHeader readArrayHeader(std::string_view bytes) {
    return {littleEndian32At(bytes, 0), littleEndian32At(bytes, 4) != 0};
}

std::size_t elementSize(char type) {
    switch (type) {
    case 'd':
    case 'l':
        return 8;
    case 'f':
    case 'i':
        return 4;
    case 'b':
    case 'c':
        return 1;
    default:
        return 0;
    }
}

} // namespace vrn::convert
