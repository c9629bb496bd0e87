// The text of a token: a String, or that of a long list before anybody has asked for it.
#pragma once

#include "impl/lexer/ListText.h"

namespace vor::velmo_sdk::impl {

class TokenText {
public:
    TokenText() = default;
    TokenText(String text) noexcept : text_(std::move(text)) {}
    TokenText(const char* text) : text_(text) {}
    TokenText(std::shared_ptr<const ListText> list) noexcept : list_(std::move(list)) {}

    // The text; that of a long list is made on the first call.
    [[nodiscard]] const String& string() const { return list_ ? list_->canonical() : text_; }
    operator const String&() const { return string(); }

    [[nodiscard]] const char* buf() const { return string().buf(); }
    [[nodiscard]] std::size_t len() const { return string().len(); }
    [[nodiscard]] std::string_view view() const { return string().view(); }

    friend bool operator==(const TokenText& a, const char* b) { return a.string() == b; }
    friend bool operator==(const TokenText& a, std::string_view b) { return a.string() == b; }
    friend bool operator==(const TokenText& a, const String& b) { return a.string() == b; }

private:
    String text_;
    std::shared_ptr<const ListText> list_;
};

} // namespace vor::velmo_sdk::impl
