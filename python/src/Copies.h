// Scenes in parts, to be copied and pickled.
//
//     Box copy = sceneOf(partsOf(*box));
//
// A text says everything but the elements of buffers, which are shared, and the marks of inputs, which no text sets.
#pragma once

#include "python/src/References.h"

#include <string>
#include <vector>

namespace vrn::python {

// The place of an input: how many are before it, in the order of the nodes and of the inputs in each.
using Place = std::size_t;

struct SceneParts {
    struct Elements {
        Place place;
        AttrData buffer;
    };
    struct Marks {
        Place place;
        bool isLocked;
        bool isLinkOnly;
        vor::StringVector enumeration;
    };
    std::string text{}; // with buffers that are empty
    std::vector<Elements> buffers{};
    std::vector<Marks> marks{};
    vor::velmo_sdk::impl::SceneLimits limits{};
    nb::object catalogue = nb::none();
    nb::object diagnostics = nb::tuple();
};

// Takes a turn to read. Raises ValueError if the scene has what a text cannot say.
[[nodiscard]] SceneParts partsOf(SceneBox& box);

// Raises ValueError if the parts are not those of a scene.
[[nodiscard]] Box sceneOf(SceneParts parts);

} // namespace vrn::python
