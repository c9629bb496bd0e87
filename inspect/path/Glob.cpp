#include "inspect/path/Glob.h"

#include "scene/core/TextEncoding.h"

#include <algorithm>

namespace vrn::inspect {

static std::size_t characterLength(std::string_view text) noexcept {
    return std::max<std::size_t>(vor::utf8Length(text), 1);
}

bool isGlob(std::string_view text) noexcept { return text.find_first_of("*?") != std::string_view::npos; }

// On a mismatch, only the last `*` has to match one more character; earlier ones never need to be tried again.
bool matchesGlob(std::string_view text, std::string_view pattern) noexcept {
    constexpr std::size_t none = std::string_view::npos;
    std::size_t at = 0;      // in the text
    std::size_t in = 0;      // in the pattern
    std::size_t star = none; // the last `*` of the pattern
    std::size_t retry = 0;   // where the text after its match begins
    while (at < text.size()) {
        if (in < pattern.size() && pattern[in] == '*') {
            star = in++;
            retry = at;
            if (in == pattern.size())
                return true;
        } else if (in < pattern.size() && pattern[in] == '?') {
            ++in;
            at += characterLength(text.substr(at));
        } else if (in < pattern.size() && pattern[in] == text[at]) {
            ++in;
            ++at;
        } else if (star != none) {
            retry += characterLength(text.substr(retry));
            at = retry;
            in = star + 1;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', in) == none;
}

} // namespace vrn::inspect
