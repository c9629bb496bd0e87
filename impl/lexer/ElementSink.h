// Takes the elements of a list while it is scanned.
#pragma once

#include <string_view>

namespace vor::velmo_sdk::impl {

class ElementSink {
public:
    // The next characters between the brackets of a list, cut anywhere: elements are runs of number
    // characters, whatever stands between them separates. No others occur, and the list may yet turn
    // out to be broken further on.
    virtual void take(std::string_view characters) = 0;

protected:
    ~ElementSink() = default;
};

} // namespace vor::velmo_sdk::impl
