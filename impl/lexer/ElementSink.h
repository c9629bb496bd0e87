// ElementSink: receives the elements of a list while the list is scanned.
#pragma once

#include <string_view>

namespace vor::velmo_sdk::impl {

class ElementSink {
public:
    // The next characters between the brackets of a list, split at arbitrary positions. Elements are runs of number
    // characters; the others are separators. The rest of the list may still turn out to be malformed.
    virtual void take(std::string_view characters) = 0;

protected:
    ~ElementSink() = default;
};

} // namespace vor::velmo_sdk::impl
