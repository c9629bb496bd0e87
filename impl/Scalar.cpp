#include "impl/VrnParser.h"
#include "scene/core/NumberText.h"
#include "scene/syntax/ScalarKeyword.h"

namespace vor::velmo_sdk::impl {

using Type = Token::Type;

namespace {

bool readReal(const Token& token, AttrData& data) {
    double value = 0;
    const bool isRead = String::parse(token.text, value);
    data = AttrData::real(value);
    return isRead;
}

bool readBool(const Token& token, AttrData& data) {
    bool value = false;
    const bool isRead = String::parse(token.text, value);
    data = AttrData::boolean(value);
    return isRead;
}

// A trailing `u` makes the type unsigned, although the number is parsed as a signed one.
bool readInteger(const Token& token, AttrData& data) {
    long long value = 0;
    const bool isRead = String::parse(token.text, value, String::Radix::Auto);
    data = token.text.ends_with('u') ? AttrData::unsignedInteger(static_cast<u64>(value)) : AttrData::integer(value);
    return isRead;
}

bool readString(const Token& token, AttrData& data) {
    const std::string_view text = token.text.substr(1, token.text.size() - 2);
    const bool isPlain = text.find('\\') == std::string_view::npos;
    data = isPlain ? AttrData::string(text) : AttrData::string(String(text).unescape());
    return true;
}

template <AttrType type> bool readEmpty(const Token&, AttrData& data) {
    data = AttrData::zero(type);
    return true;
}

std::string_view withoutParens(std::string_view list) noexcept {
    const auto isParen = [](char c) { return c == '(' || c == ')'; };
    while (!list.empty() && isParen(list.front()))
        list.remove_prefix(1);
    while (!list.empty() && isParen(list.back()))
        list.remove_suffix(1);
    return list;
}

/// components ::= '(' real ( ' ' real )* ')'   excess ones are ignored; the alpha of a colour is 1 if missing
bool readComponents(std::string_view list, AttrData& data) {
    if (data.type() != AttrType::Rgba)
        return parseReals(list, componentCount(data.type()), data.components().data());
    return parseColourReals(list, data.components().data());
}

} // namespace

/// scalar ::= literal | keywordScalar
bool VrnParser::scalar(AssignInfo& info) {
    bool isRead = false;
    return literal(info, isRead) ? isRead : keywordScalar(info);
}

/// literal ::= TRUE | FALSE | INT | REAL | STRING | BRACES | BRACKETS   braces: empty object, brackets: empty array
bool VrnParser::literal(AssignInfo& info, bool& isRead) {
    using Read = bool (*)(const Token& token, AttrData& data);
    const auto apply = [&](Read read) {
        info.valueToken = consume();
        isRead = read(info.valueToken, info.data);
        return true;
    };
    switch (current().type) {
    case Type::True:
    case Type::False:
        return apply(readBool);
    case Type::Int:
        return apply(readInteger);
    case Type::Real:
        return apply(readReal);
    case Type::String:
        return apply(readString);
    case Type::Braces:
        return apply(readEmpty<AttrType::Object>);
    case Type::Brackets:
        return apply(readEmpty<AttrType::Array>);
    default:
        return false;
    }
}

/// keywordScalar ::= ( 'vec2' | 'vec3' | 'vec4' | 'pos2' | 'pos3' | 'quat' | 'mat3' | 'mat4' | 'rgba' ) PARENS   its components
//
// Like a literal, its tokens stay consumed if they are invalid: the statement fails anyway, and the error names the
// next token.
bool VrnParser::keywordScalar(AssignInfo& info) {
    if (current().type != Type::Id || ahead(1).type != Type::Parens)
        return false;
    const AttrType type = scalarType(current().text);
    if (type == AttrType::Null)
        return false;
    info.valueToken = consume();
    info.scalarTailToken = consume();
    info.data = AttrData::zero(type);
    return readComponents(withoutParens(info.scalarTailToken.text), info.data);
}

} // namespace vor::velmo_sdk::impl
