// Collects what the checks find, with positions in the text.
#pragma once

#include "check/Messages.h"
#include "impl/SourceMap.h"
#include "scene/Node.h"
#include "scene/core/Log.h"

#include <cstdarg>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vrn::check {

using vor::velmo_sdk::impl::Input;
using vor::velmo_sdk::impl::Node;
using vor::velmo_sdk::impl::SourceMap;

class Findings {
public:
    // `ignored` are names of kinds to leave out.
    Findings(const SourceMap& sources, const std::set<std::string>& ignored) : sources_(sources), ignored_(ignored) {}

    // Adds a finding about an input or a node; `format` is one of messages.
    void add(const Input& input, const char* format, ...) __attribute__((format(printf, 3, 4)));
    void add(const Node& node, const char* format, ...) __attribute__((format(printf, 3, 4)));

    // Whether a statement of the text sets the input, or it has members or elements. O(1).
    [[nodiscard]] bool isSet(const Input& input) const;

    // All findings, by position.
    [[nodiscard]] std::vector<vor::LogRecord> take();

private:
    [[nodiscard]] vor::TextPosition positionOf(const Input& input) const;
    [[nodiscard]] vor::TextPosition positionOf(const Node& node) const;
    [[nodiscard]] std::optional<vor::TextPosition> ownPosition(const Input& input) const;
    [[nodiscard]] std::optional<vor::TextPosition> positionWithin(const Input& input) const;
    void add(vor::TextPosition position, const char* format, va_list arguments) __attribute__((format(printf, 3, 0)));

    const SourceMap& sources_;
    const std::set<std::string>& ignored_;
    std::vector<vor::LogRecord> records_;
};

// The name of the kind of a finding by its LogRecord::format, such as `unknownInput`; null for any other format.
[[nodiscard]] const char* kindName(const char* format) noexcept;

// The names of all kinds.
[[nodiscard]] std::vector<std::string> kindNames();

} // namespace vrn::check
