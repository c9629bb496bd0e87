// Calls of the reader that only ask what exists. The fast path may ask once more before it leaves a statement to the
// general path.
#pragma once

#include <algorithm>
#include <string>

namespace vrn::test {

inline bool isQuery(const std::string& call) {
    const char* const queries[] = {"findNode(", ".hasInput(", ".input(", "updateInputName("};
    return std::ranges::any_of(queries, [&](const char* query) { return call.find(query) != std::string::npos; });
}

} // namespace vrn::test
