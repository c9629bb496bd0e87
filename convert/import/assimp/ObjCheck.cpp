#include "convert/import/assimp/ObjCheck.h"

#include "convert/import/Words.h"
#include "convert/shared/Errors.h"
#include "scene/core/NumberText.h"

#include <algorithm>
#include <array>

namespace vrn::convert {

namespace {

class ObjChecker {
public:
    ObjChecker(const std::string& path, Losses& losses) : path_(path), losses_(losses) {}

    void check(std::string_view content) {
        while (!content.empty()) {
            ++line_;
            checkLine(takeLine(content));
        }
        for (std::size_t i = 0; i < kinds.size(); ++i)
            if (highest_[i].index > counts_[i])
                fail(i, highest_[i].index, highest_[i].line);
    }

private:
    static constexpr std::array<const char*, 3> kinds = {"vertex", "texture coordinate", "normal"};

    // A file may refer to elements that follow.
    struct Reference {
        i64 index = 0;
        u64 line = 0;
    };

    void checkLine(std::string_view line) {
        const std::string_view keyword = takeWord(line);
        if (keyword == "v")
            ++counts_[0];
        else if (keyword == "vt")
            ++counts_[1];
        else if (keyword == "vn")
            ++counts_[2];
        else if (keyword == "f" || keyword == "l" || keyword == "p")
            while (!line.empty())
                checkCorner(takeWord(line), keyword == "f");
        else if (keyword == "o" || keyword == "g" || keyword == "usemtl")
            attributes_ = {};
        else if (isFreeForm(keyword))
            losses_.add("free-form curves and surfaces", place());
    }

    static bool isFreeForm(std::string_view keyword) {
        return keyword == "curv" || keyword == "curv2" || keyword == "surf";
    }

    // `v`, `v/vt`, `v//vn` or `v/vt/vn`.
    void checkCorner(std::string_view corner, bool isOfFace) {
        if (corner == "\\") // the next line goes on
            return;
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            const std::size_t end = std::min(corner.find('/'), corner.size());
            i64 index = 0;
            const bool isGiven = vor::parseInteger(corner.substr(0, end), index, String::Radix::Decimal);
            if (isGiven)
                refer(i, index);
            if (isOfFace)
                attributes_[i].add(isGiven, [&] { reportMissing(i); });
            corner.remove_prefix(std::min(end + 1, corner.size()));
        }
    }

    // Faces up to the next statement that begins a mesh have an attribute in all corners, or Assimp makes it up.
    class Attribute {
    public:
        template <class Report> void add(bool isGiven, Report report) {
            const bool wasMixed = isGiven_ && isMissing_;
            (isGiven ? isGiven_ : isMissing_) = true;
            if (isGiven_ && isMissing_ && !wasMixed)
                report();
        }

    private:
        bool isGiven_ = false;
        bool isMissing_ = false;
    };

    void reportMissing(std::size_t kind) {
        losses_.add("missing " + std::string(kinds[kind]) + " of corners beside others (read as 0)", place());
    }

    [[nodiscard]] String place() const {
        return String::format("%s line %llu", path_.c_str(), static_cast<unsigned long long>(line_));
    }

    // A negative index counts from the last element so far.
    void refer(std::size_t kind, i64 index) {
        if (index == 0 || index < -counts_[kind])
            fail(kind, index, line_);
        if (index > highest_[kind].index)
            highest_[kind] = {index, line_};
    }

    [[noreturn]] void fail(std::size_t kind, i64 index, u64 line) const {
        throw ContentError(path_, String::format("line %llu refers to %s %lld, which the file does not have",
                                                 static_cast<unsigned long long>(line), kinds[kind],
                                                 static_cast<long long>(index))
                                      .buf());
    }

    const std::string& path_;
    Losses& losses_;
    u64 line_ = 0;
    std::array<i64, 3> counts_{};
    std::array<Attribute, 3> attributes_{};
    std::array<Reference, 3> highest_{};
};

} // namespace

void checkObj(std::string_view content, const std::string& path, Losses& losses) {
    ObjChecker(path, losses).check(content);
}

} // namespace vrn::convert
