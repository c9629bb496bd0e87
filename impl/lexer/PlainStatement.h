// PlainStatement: a statement in one of the most common forms, recognised straight from its characters.
//
//     PlainScanner scanner(place, windowEnd);
//     PlainStatement statement;
//     if (scanner.scan(statement))
//         apply(statement);
//
// Most statements of a scene declare a node, or assign a number, a truth value, a string, a list of components or a
// link to `node.input` or `.input`. Making tokens of them takes longer than anything else that is done with them. The
// scanner recognises such a statement as a whole, and refuses everything unusual: characters outside ASCII, keywords as
// names, numbers with exponents, suffixes or more than 19 digits, strings with characters that are not printable, the
// end of the window. It knows neither the scene nor any message; what it refuses is left to the lexer and the parser,
// which also read all that it accepts.
#pragma once

#include "impl/lexer/TextPlace.h"
#include "scene/AttrType.h"

#include <array>
#include <string_view>

namespace vor::velmo_sdk::impl {

struct PlainStatement {
    enum class Kind : u8 { Declaration, Value, Connection, Reference };

    Kind kind = Kind::Declaration;
    AttrType type = AttrType::Null; // of the value
    bool isWith = false;            // a declaration that ends with a colon
    bool hasEscapes = false;        // in the string
    std::string_view name;          // of the input
    std::string_view node;          // the declared node, or the target's; empty for the current node
    std::string_view word;          // the type of a declared node, the node of a link, the characters of a string
    std::string_view output;        // of a connection
    TextPosition linkEnd{};         // of the last character of a link's source
    i64 integer = 0;                // also a truth value
    std::array<double, 16> reals;   // the components; not initialised
    TextPlace comments;             // where the comments before the statement begin
    TextPlace begin;                // of the first character after the comments
    TextPlace end;                  // after the last character
};

class PlainScanner {
public:
    // Scans from `place`. `windowEnd` is the end of the characters that can be read.
    PlainScanner(const TextPlace& place, const char* windowEnd) noexcept : place_(place), end_(windowEnd) {}

    // Recognises the next statement, after blanks and comments. If it is not plain, returns false and leaves the
    // scanner somewhere in it.
    [[nodiscard]] bool scan(PlainStatement& out) noexcept;

    // Recognises a comment at the current place.
    [[nodiscard]] bool comment(std::string_view& out) noexcept;

    // Moves past spaces and other characters that are not printable, within ASCII.
    void blanks() noexcept;

    // Whether the next three tokens, after blanks, are valid. Also returns false where that is not obvious.
    [[nodiscard]] bool areTokensAhead() noexcept;

    [[nodiscard]] const TextPlace& place() const noexcept { return place_; }

private:
    TextPlace place_;
    const char* end_;
};

} // namespace vor::velmo_sdk::impl
