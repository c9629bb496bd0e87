#include "convert/import/fbx/FbxText.h"

#include "convert/shared/Errors.h"

#include <algorithm>

namespace vrn::convert {

namespace {

class TextParser {
public:
    TextParser(std::string_view content, const std::string& path) : content_(content), path_(path) {}

    std::vector<FbxElement> parse() {
        std::vector<FbxElement> sections = parseElements(0);
        if (position_ < content_.size())
            fail();
        return sections;
    }

private:
    // { name ":" values [ "{" elements "}" ] }
    std::vector<FbxElement> parseElements(int depth) {
        if (depth > maxFbxDepth)
            fail();
        std::vector<FbxElement> elements;
        for (skipSpace(true); position_ < content_.size() && peek() != '}'; skipSpace(true)) {
            FbxElement& element = elements.emplace_back();
            element.name = takeUntil(":\n{}");
            if (peek() != ':')
                fail();
            ++position_;
            if (element.name == "a")
                element.values.push_back({FbxValue::list, takeUntil("}")});
            else
                parseValues(element, depth);
        }
        return elements;
    }

    // Values are separated by commas, around which lines may end.
    void parseValues(FbxElement& element, int depth) {
        skipSpace(false);
        for (parseValue(element); findComma(); parseValue(element)) {
            ++position_;
            skipSpace(true);
        }
        skipSpace(false);
        if (peek() != '{')
            return;
        ++position_;
        element.children = parseElements(depth + 1);
        if (peek() != '}')
            fail();
        ++position_;
    }

    // A text in quotes or a word; an element may have no values.
    void parseValue(FbxElement& element) {
        if (peek() == '"') {
            ++position_;
            element.values.push_back({'S', takeUntil("\"")});
            if (peek() != '"')
                fail();
            ++position_;
        } else if (const std::string_view word = takeUntil(", \t\r\n{}\""); !word.empty()) {
            element.values.push_back({FbxValue::plain, word});
        }
    }

    // Goes to the next comma if there is only space before it.
    bool findComma() {
        const std::size_t start = position_;
        skipSpace(true);
        if (peek() == ',')
            return true;
        position_ = start;
        return false;
    }

    // Also skips comments, which extend to the end of a line.
    void skipSpace(bool withLines) {
        while (position_ < content_.size()) {
            const char c = content_[position_];
            if (c == ';')
                position_ = std::min(content_.find('\n', position_), content_.size());
            else if (c == ' ' || c == '\t' || c == '\r' || (withLines && c == '\n'))
                ++position_;
            else
                return;
        }
    }

    std::string_view takeUntil(const char* ends) {
        const std::size_t end = std::min(content_.find_first_of(ends, position_), content_.size());
        const std::string_view taken = content_.substr(position_, end - position_);
        position_ = end;
        return taken;
    }

    [[nodiscard]] char peek() const { return position_ < content_.size() ? content_[position_] : '\0'; }

    [[noreturn]] void fail() const {
        const auto line = std::count(content_.begin(), content_.begin() + static_cast<std::ptrdiff_t>(position_), '\n');
        throw ContentError(path_, "its FBX elements are damaged in line " + std::to_string(line + 1));
    }

    std::string_view content_;
    const std::string& path_;
    std::size_t position_ = 0;
};

} // namespace

std::vector<FbxElement> parseFbxText(std::string_view content, const std::string& path) {
    return TextParser(content, path).parse();
}

} // namespace vrn::convert
