// Colours of output for people.
#pragma once

#include <string>
#include <string_view>

namespace vrn::cli {

// Whether standard output is a terminal, on which control characters would take effect.
[[nodiscard]] bool isOutputTerminal() noexcept;

// Decides on construction whether to use colour, then colours text or returns it unchanged.
class Style {
public:
    // `always`, `never`, or `auto`: on a terminal whose user has not set NO_COLOR.
    explicit Style(std::string_view when);

    [[nodiscard]] std::string name(std::string_view text) const { return wrap("1", text); }
    [[nodiscard]] std::string type(std::string_view text) const { return wrap("36", text); }
    [[nodiscard]] std::string link(std::string_view text) const { return wrap("33", text); }
    [[nodiscard]] std::string faint(std::string_view text) const { return wrap("2", text); }
    [[nodiscard]] std::string added(std::string_view text) const { return wrap("32", text); }
    [[nodiscard]] std::string removed(std::string_view text) const { return wrap("31", text); }
    [[nodiscard]] std::string changed(std::string_view text) const { return wrap("33", text); }

private:
    [[nodiscard]] std::string wrap(const char* code, std::string_view text) const;

    bool isColoured_;
};

} // namespace vrn::cli
