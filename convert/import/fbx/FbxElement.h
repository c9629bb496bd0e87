// The tree of elements that an FBX file consists of, whether it is binary or text.
//
//     const FbxFile file("chair.fbx");
//     const FbxElement* objects = file.root().child("Objects");
//
// Names, texts and arrays are views into the file; arrays are decoded on request.
#pragma once

#include "convert/shared/SceneNames.h"

#include <string>
#include <string_view>
#include <vector>

namespace vrn::convert {

// A value of an element. Binary files give its type as a letter; text files know texts, arrays and everything else.
struct FbxValue {
    static constexpr char plain = '\0'; // a number or a word of a text file
    static constexpr char list = '*';   // numbers of a text file, separated by commas

    static constexpr char byte = 'Z'; // without a sign, of a binary file

    char type = plain;
    std::string_view bytes{};

    [[nodiscard]] double number() const;         // 0 if it is not a number
    [[nodiscard]] i64 integer() const;           // 0 if it is not an integer
    [[nodiscard]] std::string_view text() const; // empty if it is not a text
};

inline constexpr int maxFbxDepth = 100; // of nested elements; more are refused

struct FbxElement {
    std::string_view name{};
    std::vector<FbxValue> values{};
    std::vector<FbxElement> children{};

    // The first child of that name, or null.
    [[nodiscard]] const FbxElement* child(std::string_view childName) const;

    // The value at an index; one without a number or text if there are fewer.
    [[nodiscard]] FbxValue value(std::size_t index) const;

    // All numbers of an element that is an array; fewer if it is damaged.
    [[nodiscard]] std::vector<double> numbers() const;
};

class FbxFile {
public:
    // Reads a file of version 7. Throws FileError and ContentError.
    explicit FbxFile(const std::string& path);
    FbxFile(const FbxFile&) = delete;
    FbxFile& operator=(const FbxFile&) = delete;

    // Its children are the sections of the file.
    [[nodiscard]] const FbxElement& root() const noexcept { return root_; }

    // What the file contains, as UTF-8 if it is text.
    [[nodiscard]] const std::string& content() const noexcept { return content_; }

private:
    std::string content_;
    FbxElement root_{};
};

} // namespace vrn::convert
