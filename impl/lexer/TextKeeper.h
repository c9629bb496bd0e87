// TextKeeper: keeps the memory that tokens refer to.
#pragma once

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <vector>

namespace vor::velmo_sdk::impl {

// Keeps memory for the statement during which it was added and the next `lookahead` ones. A statement consumes at least
// one token, so no token is used for longer.
class TextKeeper {
public:
    static constexpr int lookahead = 3; // tokens scanned before they are consumed

    // Holds memory until startStatement() has been called `lookahead` + 1 more times.
    void hold(const std::shared_ptr<const char[]>& memory) {
        auto& held = statements_[current_];
        if (held.empty() || held.back() != memory)
            held.push_back(memory);
    }

    // Returns a copy that is valid as long.
    [[nodiscard]] std::string_view keep(std::string_view text) {
        const auto copy = std::make_shared_for_overwrite<char[]>(text.size());
        std::ranges::copy(text, copy.get());
        hold(copy);
        return {copy.get(), text.size()};
    }

    void startStatement() noexcept {
        current_ = (current_ + 1) % statements_.size();
        statements_[current_].clear();
    }

private:
    std::array<std::vector<std::shared_ptr<const char[]>>, lookahead + 1> statements_;
    std::size_t current_ = 0;
};

} // namespace vor::velmo_sdk::impl
