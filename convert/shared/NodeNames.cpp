#include "convert/shared/NodeNames.h"

#include "convert/shared/SceneNames.h"
#include "scene/syntax/CharClass.h"
#include "scene/syntax/Identifier.h"

#include <algorithm>

namespace vrn::convert {

namespace {

using vor::velmo_sdk::impl::identifierChar;
using vor::velmo_sdk::impl::isIdentifier;
using vor::velmo_sdk::impl::isIn;

std::string identifierFrom(std::string_view name, const char* fallback) {
    std::string identifier;
    bool isGap = false;
    for (const char c : name) {
        const bool isValid = isIn(c, identifierChar);
        if (isValid && isGap && !identifier.empty())
            identifier += '_';
        if (isValid)
            identifier += c;
        isGap = !isValid;
    }
    if (identifier.empty())
        return fallback;
    return String::isDigit(identifier[0]) ? "_" + identifier : identifier;
}

// Words that do not refer to a node where the grammar allows a node name.
bool isKeyword(const String& name) {
    static constexpr std::string_view words[] = {"define", "remove", "inf", "nan"};
    const auto isName = [&](std::string_view word) { return name.compareNoCase(word) == 0; };
    bool isKeyword = !isIdentifier(name.view()) || std::ranges::any_of(words, isName);
    for (i32 type = 0; type < vor::velmo_sdk::dataTypeCount; ++type)
        isKeyword |= isName(dataTypeName(static_cast<DataType>(type)));
    for (i32 type = 0; type < vor::velmo_sdk::attrTypeCount; ++type)
        isKeyword |=
            componentCount(static_cast<AttrType>(type)) > 1 && isName(attrTypeName(static_cast<AttrType>(type)));
    return isKeyword;
}

} // namespace

std::string nodeNameFrom(std::string_view name, const char* fallback) {
    std::string identifier = identifierFrom(name, fallback);
    if (isKeyword(std::string_view(identifier)))
        identifier += '_';
    return identifier;
}

} // namespace vrn::convert
