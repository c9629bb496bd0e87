#include "scene/InputPath.h"

namespace vor::velmo_sdk::impl {

std::optional<std::vector<std::string_view>> stepsOf(std::string_view path) {
    std::vector<std::string_view> steps;
    while (true) {
        const std::string_view name = path.substr(0, path.find_first_of(".[]"));
        if (name.empty())
            return std::nullopt;
        steps.push_back(name);
        path.remove_prefix(name.size());
        if (path.starts_with(elementStep)) {
            steps.push_back(elementStep);
            path.remove_prefix(elementStep.size());
        }
        if (path.empty())
            return steps;
        if (path[0] != '.')
            return std::nullopt;
        path.remove_prefix(1);
    }
}

} // namespace vor::velmo_sdk::impl
