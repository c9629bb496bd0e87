// Checks the names of types and inputs.
#pragma once

#include "check/Findings.h"
#include "scene/Scene.h"

#include <map>
#include <span>
#include <string_view>

namespace vrn::check {

// Types of nodes that neither the catalogue nor a definition declares.
class UnknownTypes {
public:
    UnknownTypes(const vor::velmo_sdk::impl::Scene& scene, const vor::velmo_sdk::impl::Catalogue& catalogue)
        : scene_(scene), catalogue_(catalogue) {}

    void add(const Node& node);

    // Reports each type once, at its first node.
    void report(Findings& findings) const;

private:
    struct Use {
        const Node* first;
        std::size_t nodes;
    };
    [[nodiscard]] std::string suggestion(std::string_view type) const;

    const vor::velmo_sdk::impl::Scene& scene_;
    const vor::velmo_sdk::impl::Catalogue& catalogue_;
    std::map<std::string, Use, std::less<>> uses_;
};

// Inputs and members that the type of their node does not declare.
class UnknownInputs {
public:
    using Declarations = std::span<const vor::velmo_sdk::impl::InputType>;

    explicit UnknownInputs(Findings& findings) : findings_(findings) {}

    // Reports an input that is not among `declared`. If the type is open, that may be intended; then only a name is
    // reported that is similar to one which the text does not set there: probably that one is meant.
    void add(const Input& input, const vor::velmo_sdk::impl::NodeType& type, Declarations declared);

private:
    [[nodiscard]] bool isSimilarToAny(const Input& input, Declarations declared);

    Findings& findings_;
    // Whether a name is similar to one of the declarations that begin at an address. Scenes repeat few names often.
    std::map<std::pair<const void*, std::string>, bool> isSimilar_;
};

} // namespace vrn::check
