// What is different between two scenes.
//
//     compareScenes(before, after, 0.001, [](const Difference& difference) { ... });
//
// Nodes and inputs are found by their names, elements by their index: their order is no difference, but that the order
// of the nodes is another is said once. What is in one scene alone is one difference with all that is below it. Takes
// no more time than both scenes are large, and no memory but for the way down to the inputs at hand.
#pragma once

#include "cli/diff/NumbersDifference.h"
#include "scene/Scene.h"

#include <functional>
#include <optional>
#include <string>

namespace vrn::cli {

enum class Change { Removed, Added, Changed };

// What of a scene, a node or an input is different.
enum class Aspect {
    Version,
    Time,
    Comments,
    NodeOrder,
    Node, // as a whole
    Input,
    Type,
    Definition,
    DataType,
    ElementType,
    Count,
    Value,
    Elements, // of a buffer
    Connection,
    Reference
};

struct Difference {
    Change change;
    Aspect aspect;
    std::string_view path{}; // of a node or an input

    // What it was and what it is; none for no comment, connection or reference.
    std::optional<std::string> before{};
    std::optional<std::string> after{};
    vor::u64 index = 0; // of the first comment that is different

    // The things themselves: a node or an input that is removed or added, two inputs of different values.
    const vor::velmo_sdk::impl::Node* node = nullptr;
    const vor::velmo_sdk::impl::Input* inputBefore = nullptr;
    const vor::velmo_sdk::impl::Input* inputAfter = nullptr;
    std::optional<NumbersDifference> numbers{}; // of a value of several numbers, or of a buffer
};

using DifferenceSink = std::function<void(const Difference&)>;

// Real numbers are equal when they are no more than `tolerance` apart.
void compareScenes(const vor::velmo_sdk::impl::Scene& before, const vor::velmo_sdk::impl::Scene& after,
                   double tolerance, const DifferenceSink& sink);

} // namespace vrn::cli
