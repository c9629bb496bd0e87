#include "convert/import/assimp/ObjVertices.h"

#include "convert/import/Words.h"
#include "convert/shared/Errors.h"
#include "scene/core/NumberText.h"

#include <algorithm>
#include <vector>

namespace vrn::convert {

namespace {

constexpr std::size_t coordinates = 3;
constexpr std::size_t coordinatesAndColour = 6;
constexpr std::string_view white = " 1 1 1";

bool beginsNumber(std::string_view word) {
    return std::string_view("0123456789+-.nNiI").find(word.front()) != std::string_view::npos;
}

// Assimp takes such words for something else.
bool beginsWithPoint(std::string_view word) { return word.front() == '.'; }

bool isOne(std::string_view word) {
    double number = 0;
    return vor::parseReal(word, number) && number == 1;
}

class VertexLines {
public:
    VertexLines(const std::string& path, Losses& losses) : path_(path), losses_(losses) {}

    // Looks at all vertices and reports what they lose. Returns whether Assimp would misread them.
    bool isMisread(std::string_view content) {
        visit(content, [&](std::string_view keyword, std::string_view) {
            if (keyword == "v")
                surveyVertex();
            else if (keyword == "vt")
                isMisread_ |= words_.size() == 1 || std::ranges::any_of(words_, beginsWithPoint);
        });
        if (firstColour_ == 0 || firstPlain_ == 0)
            return isMisread_;
        for (u64 i = 0; i < plain_; ++i)
            losses_.add("missing colours of vertices beside others (read as white)", placeOf(firstPlain_));
        return true;
    }

    std::string rewritten(std::string_view content) {
        std::string changed;
        changed.reserve(content.size());
        visit(content, [&](std::string_view keyword, std::string_view text) {
            if (keyword == "v")
                addVertex(changed);
            else if (keyword == "vt")
                addTextureCoordinate(changed);
            else
                changed += text;
        });
        return changed;
    }

private:
    // Calls `take` with the keyword and the text of each line. Those of vertices and texture coordinates may go on in
    // the next line; they have their numbers in `words_`.
    template <class Take> void visit(std::string_view content, Take take) {
        line_ = 0;
        while (!content.empty()) {
            const std::string_view begin = content;
            std::string_view line = nextLine(content);
            const std::string_view keyword = takeWord(line);
            if (keyword == "v" || keyword == "vt")
                takeNumbers(line, content);
            take(keyword, begin.substr(0, begin.size() - content.size()));
        }
    }

    std::string_view nextLine(std::string_view& content) {
        ++line_;
        return takeLine(content);
    }

    void takeNumbers(std::string_view line, std::string_view& content) {
        words_.clear();
        while (!line.empty()) {
            const std::string_view word = takeWord(line);
            if (word.starts_with('#')) {
                isMisread_ = true; // numbers in the comment would count
                return;
            }
            if (word == "\\" && line.empty())
                line = nextLine(content);
            else if (beginsNumber(word))
                words_.push_back(word);
            else
                fail(std::string(word) + " in place of a number");
        }
    }

    void surveyVertex() {
        if (words_.size() < coordinates)
            fail(std::to_string(words_.size()) + " numbers in place of three coordinates");
        const bool hasColour = words_.size() >= coordinatesAndColour;
        const std::size_t read = hasColour ? coordinatesAndColour : coordinates;
        isMisread_ |= words_.size() != read || std::ranges::any_of(words_, beginsWithPoint);
        const bool hasUsualWeight = words_.size() == coordinates + 1 && isOne(words_.back());
        if (words_.size() > read && !hasUsualWeight)
            losses_.add("further numbers of vertices", placeOf(line_));
        u64& first = hasColour ? firstColour_ : firstPlain_;
        if (first == 0)
            first = line_;
        plain_ += hasColour ? 0 : 1;
    }

    void addVertex(std::string& changed) const {
        const bool hasColour = words_.size() >= coordinatesAndColour;
        changed += 'v';
        addNumbers(changed, hasColour ? coordinatesAndColour : coordinates);
        if (firstColour_ != 0 && !hasColour)
            changed += white;
        changed += '\n';
    }

    void addTextureCoordinate(std::string& changed) const {
        changed += "vt";
        addNumbers(changed, words_.size());
        changed += words_.size() == 1 ? " 0\n" : "\n";
    }

    void addNumbers(std::string& changed, std::size_t count) const {
        for (std::size_t i = 0; i < count; ++i) {
            changed += beginsWithPoint(words_[i]) ? " 0" : " ";
            changed += words_[i];
        }
    }

    [[nodiscard]] String placeOf(u64 line) const {
        return String::format("%s line %llu", path_.c_str(), static_cast<unsigned long long>(line));
    }

    [[noreturn]] void fail(const std::string& what) const {
        throw ContentError(path_, "line " + std::to_string(line_) + " has " + what);
    }

    const std::string& path_;
    Losses& losses_;
    std::vector<std::string_view> words_{};
    u64 line_ = 0;
    u64 firstColour_ = 0; // lines of the first vertices with and without a colour
    u64 firstPlain_ = 0;
    u64 plain_ = 0;
    bool isMisread_ = false;
};

} // namespace

std::string withUniformVertices(std::string_view content, const std::string& path, Losses& losses) {
    VertexLines lines(path, losses);
    return lines.isMisread(content) ? lines.rewritten(content) : std::string();
}

} // namespace vrn::convert
