#include "scene/ExpectedJson.h"

#include "scene/core/NumberText.h"
#include "scene/core/TextEncoding.h"

#include <set>

namespace vor::velmo_sdk::impl {

namespace {

using Kind = JsonValue::Kind;

} // namespace

std::string inQuotes(std::string_view text) { return "\"" + std::string(escapeForTerminal(text).view()) + "\""; }

void failAt(const JsonValue& value, const std::string& text) { throw JsonError(text, value.offset); }

void failAtKey(const JsonValue& member, const std::string& text) { throw JsonError(text, member.keyOffset); }

void expect(const JsonValue& value, Kind kind, const char* what) {
    if (value.kind != kind)
        failAt(value, std::string("expected ") + what);
}

String textOf(const JsonValue& value, const char* what) {
    expect(value, Kind::String, what);
    if (value.text.find('\0') != std::string::npos)
        failAt(value, std::string("expected ") + what + " without NUL characters");
    return std::string_view(value.text);
}

bool flagOf(const JsonValue& value) {
    expect(value, Kind::Bool, "true or false");
    return value.boolean;
}

const std::vector<JsonValue>& membersOf(const JsonValue& value, const char* what) {
    expect(value, Kind::Object, what);
    std::set<std::string_view> keys;
    for (const JsonValue& member : value.items) {
        if (!keys.insert(member.key).second)
            failAtKey(member, "key " + inQuotes(member.key) + " is repeated; expected each key once");
        if (member.key.empty() || member.key.find('\0') != std::string::npos)
            failAtKey(member, "expected a name that is not empty and holds no NUL character");
    }
    return value.items;
}

void failUnknownKey(const JsonValue& member, const char* expected) {
    failAtKey(member, "unknown key " + inQuotes(member.key) + "; expected " + expected);
}

StringVector textsOf(const JsonValue& value, const char* what) {
    expect(value, Kind::Array, what);
    StringVector texts;
    for (const JsonValue& item : value.items)
        texts.push(textOf(item, "a string"));
    return texts;
}

double realOf(const JsonValue& value) {
    if (value.isNumber())
        return value.real;
    double real = 0;
    const bool isWord = value.text == "inf" || value.text == "-inf" || value.text == "nan";
    if (value.kind != Kind::String || !isWord || !parseReal(value.text, real))
        failAt(value, "expected a number, \"inf\", \"-inf\" or \"nan\"");
    return real;
}

} // namespace vor::velmo_sdk::impl
