#include "impl/VrnParser.h"

#include <string>

namespace vor::velmo_sdk::impl {

using Type = Token::Type;

/// path ::= ( ID '.' ID | '.' ID ) ( arrayattr | scalarattr )*   without a node name: of the current node
bool VrnParser::path(ds::Vector<Token>& out) {
    const bool isNamed = current().type == Type::Id && ahead(1).type == Type::Dot && ahead(2).type == Type::Id;
    if (isNamed)
        out.push(consume());
    if (!scalarattr(out))
        return false;
    while (arrayattr(out) || scalarattr(out)) {
    }
    return true;
}

/// arrayattr ::= BRACKETS   an index
bool VrnParser::arrayattr(ds::Vector<Token>& out) {
    if (current().type != Type::Brackets)
        return false;
    out.push(consume());
    return true;
}

/// scalarattr ::= '.' ID
bool VrnParser::scalarattr(ds::Vector<Token>& out) {
    if (current().type != Type::Dot || ahead(1).type != Type::Id)
        return false;
    out.push(consume());
    out.push(consume());
    return true;
}

// The text of a path, without spaces.
String VrnParser::collapse(std::span<const Token> tokens) {
    if (tokens.size() == 1)
        return tokens[0].text;
    std::string text;
    for (const Token& token : tokens)
        text += token.text;
    return std::string_view(text);
}

} // namespace vor::velmo_sdk::impl
