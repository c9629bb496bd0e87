// Colours of output for people.
//
//     const Style style(isTerminal);
//     text += style.name("cam1") + ": " + style.type("Real");
//
// Whether a terminal wants colours is up to the caller. A value of its own; any thread may use it. Linear in the text.
#pragma once

#include <string>
#include <string_view>

namespace vrn::inspect {

// Colours text by escape sequences, or returns it unchanged.
class Style {
public:
    explicit Style(bool isColoured) noexcept : isColoured_(isColoured) {}

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

} // namespace vrn::inspect
