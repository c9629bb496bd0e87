#include "check/Findings.h"

#include "scene/InputCursor.h"

#include <algorithm>
#include <tuple>

namespace vrn::check {

using namespace vor;
using namespace vor::velmo_sdk::impl;

namespace {

struct Kind {
    const char* format;
    const char* name;
};
#define VRN_CHECK_MESSAGE(name, text) {messages::name, #name},
constexpr Kind kinds[] = {VRN_CHECK_MESSAGES(VRN_CHECK_MESSAGE)};
#undef VRN_CHECK_MESSAGE

bool isBefore(TextPosition a, TextPosition b) { return std::tie(a.line, a.column) < std::tie(b.line, b.column); }

} // namespace

const char* kindName(const char* format) noexcept {
    const Kind* const found = std::ranges::find(kinds, format, &Kind::format);
    return found == std::end(kinds) ? nullptr : found->name;
}

std::vector<std::string> kindNames() {
    std::vector<std::string> names;
    std::ranges::transform(kinds, std::back_inserter(names), &Kind::name);
    return names;
}

void Findings::add(const Input& input, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    add(positionOf(input), format, arguments);
    va_end(arguments);
}

void Findings::add(const Node& node, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    add(positionOf(node), format, arguments);
    va_end(arguments);
}

void Findings::add(TextPosition position, const char* format, va_list arguments) {
    if (!ignored_.contains(kindName(format)))
        records_.push_back({LogSeverity::Warning, String::formatv(format, arguments), position, format});
}

std::vector<LogRecord> Findings::take() {
    std::ranges::stable_sort(records_, isBefore, &LogRecord::position);
    return std::move(records_);
}

bool Findings::isSet(const Input& input) const { return ownPosition(input) || input.size() != 0; }

TextPosition Findings::positionOf(const Node& node) const {
    return sources_.positionOf(&node).value_or(TextPosition());
}

// An earlier position than that of the declaration belongs to a removed input.
std::optional<TextPosition> Findings::ownPosition(const Input& input) const {
    const std::optional<TextPosition> position = sources_.positionOf(&input);
    return position && !isBefore(*position, positionOf(*input.node())) ? position : std::nullopt;
}

// The position of the input or, if it is on the way to others, of the first of those.
std::optional<TextPosition> Findings::positionWithin(const Input& input) const {
    std::optional<TextPosition> position = ownPosition(input);
    for (InputCursor cursor(input.children()); !position && !cursor.isDone();) {
        if (cursor.isAtEnd()) {
            cursor.leave();
            cursor.next();
        } else {
            position = ownPosition(*cursor);
            cursor.enter();
        }
    }
    return position;
}

// Inputs that come from a definition have the position of the node.
TextPosition Findings::positionOf(const Input& input) const {
    return positionWithin(input).value_or(positionOf(*input.node()));
}

} // namespace vrn::check
