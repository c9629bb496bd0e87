#include "convert/import/assimp/PlyData.h"

#include "convert/import/Words.h"
#include "convert/shared/Errors.h"
#include "convert/shared/SceneNames.h"
#include "scene/core/NumberText.h"

#include <algorithm>
#include <vector>

namespace vrn::convert {

namespace {

struct Property {
    std::size_t size = 0;      // of a number, in bytes
    std::size_t countSize = 0; // of the number of elements of a list; 0 for a single number
};

struct Element {
    std::string name{};
    i64 count = 0;
    std::vector<Property> properties{};
};

std::size_t sizeOf(std::string_view type) {
    if (type == "char" || type == "uchar" || type == "int8" || type == "uint8")
        return 1;
    if (type == "short" || type == "ushort" || type == "int16" || type == "uint16")
        return 2;
    if (type == "double" || type == "float64")
        return 8;
    return 4;
}

i64 integerOf(std::string_view word) {
    i64 number = 0;
    (void)vor::parseInteger(word, number, String::Radix::Decimal);
    return number;
}

struct Header {
    std::string_view format{};
    std::vector<Element> elements{};
};

Header parse(std::string_view text) {
    Header header;
    while (!text.empty()) {
        std::string_view line = takeLine(text);
        const std::string_view keyword = takeWord(line);
        const std::string_view first = takeWord(line);
        if (keyword == "format") {
            header.format = first;
        } else if (keyword == "element") {
            header.elements.push_back({std::string(first), integerOf(takeWord(line)), {}});
        } else if (keyword == "property" && !header.elements.empty()) {
            const std::string_view countType = first == "list" ? takeWord(line) : std::string_view();
            header.elements.back().properties.push_back(
                {sizeOf(first == "list" ? takeWord(line) : first), countType.empty() ? 0 : sizeOf(countType)});
        }
    }
    return header;
}

class Data {
public:
    Data(std::string_view data, const std::string& path) : data_(data), path_(path) {}

    // Each element has a line.
    void checkText(const Element& element) {
        for (i64 i = 0; i < element.count; ++i) {
            std::string_view line = takeFilledLine();
            for (const Property& property : element.properties)
                for (i64 numbers = property.countSize != 0 ? integerOf(take(line, element, i)) : 1; numbers > 0;
                     --numbers)
                    (void)take(line, element, i);
        }
    }

    void checkBinary(const Element& element, bool isBigEndian) {
        for (i64 i = 0; i < element.count; ++i)
            for (const Property& property : element.properties) {
                const std::size_t numbers =
                    property.countSize == 0 ? 1 : integerAt(take(property.countSize, element, i), isBigEndian);
                if (numbers > data_.size()) // the size in bytes might overflow
                    fail(element, i);
                (void)take(numbers * property.size, element, i);
            }
    }

private:
    std::string_view takeFilledLine() {
        std::string_view line;
        while (!data_.empty() && line.empty()) {
            line = takeLine(data_);
            line.remove_prefix(std::min(line.find_first_not_of(" \t\r"), line.size()));
        }
        return line;
    }

    std::string_view take(std::string_view& line, const Element& element, i64 index) const {
        if (line.empty())
            fail(element, index);
        return takeWord(line);
    }

    std::string_view take(std::size_t size, const Element& element, i64 index) {
        if (size > data_.size())
            fail(element, index);
        const std::string_view taken = data_.substr(0, size);
        data_.remove_prefix(size);
        return taken;
    }

    static std::size_t integerAt(std::string_view bytes, bool isBigEndian) {
        std::size_t number = 0;
        for (std::size_t i = 0; i < bytes.size(); ++i)
            number = number << 8 | static_cast<unsigned char>(bytes[isBigEndian ? i : bytes.size() - 1 - i]);
        return number;
    }

    [[noreturn]] void fail(const Element& element, i64 index) const {
        throw ContentError(path_, "number " + std::to_string(index + 1) + " of the " + std::to_string(element.count) +
                                      " elements " + element.name + " is incomplete: the file is cut off or damaged");
    }

    std::string_view data_;
    const std::string& path_;
};

} // namespace

void checkPlyData(std::string_view header, std::string_view data, const std::string& path) {
    const Header parsed = parse(header);
    Data remaining(data, path);
    for (const Element& element : parsed.elements)
        if (element.properties.empty())
            continue; // any number of them has no data
        else if (parsed.format == "ascii")
            remaining.checkText(element);
        else
            remaining.checkBinary(element, parsed.format == "binary_big_endian");
}

} // namespace vrn::convert
