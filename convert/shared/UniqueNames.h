// Makes names unique by appending numbers.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace vrn::convert {

class UniqueNames {
public:
    [[nodiscard]] std::string make(const std::string& wanted) {
        std::string name = wanted;
        while (!used_.insert(name).second)
            name = wanted + '_' + std::to_string(++repeated_[wanted]);
        return name;
    }

private:
    std::unordered_set<std::string> used_;
    std::unordered_map<std::string, std::uint64_t> repeated_;
};

} // namespace vrn::convert
