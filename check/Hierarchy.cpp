#include "check/Hierarchy.h"

#include "check/Texts.h"

#include <string>

namespace vrn::check {

using namespace vor;
using namespace vor::velmo_sdk::impl;

std::size_t Hierarchy::placeOf(const Node& node) {
    const auto [found, isNew] = indices_.emplace(&node, places_.size());
    if (isNew)
        places_.push_back({&node, {}});
    return found->second;
}

void Hierarchy::add(const Declared& declared) {
    const HierarchyRole role = declared.type.hierarchy;
    const Node* other = role == HierarchyRole::None ? nullptr : declared.input.linkedNode();
    if (!other)
        return;
    const std::size_t own = placeOf(*declared.input.node());
    const std::size_t linked = placeOf(*other);
    if (role == HierarchyRole::Parent)
        places_[linked].children.push_back({own, &declared.input});
    else
        places_[own].children.push_back({linked, &declared.input});
}

// A search in depth, with a stack of its own: a file can make a hierarchy of any depth.
class Hierarchy::Search {
public:
    Search(const std::vector<Place>& places, Findings& findings)
        : places_(places), findings_(findings), depths_(places.size(), unseen) {}

    void startAt(std::size_t place) {
        if (depths_[place] == unseen)
            open(place);
        while (!path_.empty()) {
            Step& step = path_.back();
            const std::vector<Child>& children = places_[step.place].children;
            if (step.next == children.size())
                close();
            else
                visit(children[step.next++]);
        }
    }

private:
    struct Step {
        std::size_t place;
        std::size_t next = 0; // of its children
    };
    static constexpr std::size_t unseen = static_cast<std::size_t>(-1);
    static constexpr std::size_t done = unseen - 1;

    void open(std::size_t place) {
        depths_[place] = path_.size();
        path_.push_back({place});
    }

    void close() {
        depths_[path_.back().place] = done;
        path_.pop_back();
    }

    void visit(const Child& child) {
        if (depths_[child.node] == unseen)
            open(child.node);
        else if (depths_[child.node] != done)
            findings_.add(*child.input, messages::cycle, cycleText(depths_[child.node]).c_str());
    }

    // The nodes from a depth on, and the first of them again; not all, if there are many.
    [[nodiscard]] std::string cycleText(std::size_t first) const {
        constexpr std::size_t maxNames = 8;
        std::string text;
        for (std::size_t i = first; i < path_.size() && i < first + maxNames; ++i)
            text += shortened(places_[path_[i].place].node->key()) + " > ";
        if (path_.size() - first > maxNames)
            text += "... (" + std::to_string(path_.size() - first) + " nodes) > ";
        return text + shortened(places_[path_[first].place].node->key());
    }

    const std::vector<Place>& places_;
    Findings& findings_;
    std::vector<std::size_t> depths_; // of each place in `path_`, or unseen or done
    std::vector<Step> path_;
};

void Hierarchy::reportCycles(Findings& findings) const {
    Search search(places_, findings);
    for (std::size_t place = 0; place < places_.size(); ++place)
        search.startAt(place);
}

} // namespace vrn::check
