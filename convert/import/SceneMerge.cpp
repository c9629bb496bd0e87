#include "convert/import/SceneMerge.h"

#include "scene/Scene.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace vrn::convert {

namespace {

class SceneMerger {
public:
    SceneMerger(Scene& scene, const Scene& from, Losses& losses) : scene_(scene), from_(from), losses_(losses) {}

    // Links are set after all nodes exist.
    void merge() {
        for (const Node& node : from_.nodes())
            create(node);
        for (const Node& node : from_.nodes())
            for (const Input* input : node.inputs())
                copy(*input, *copies_.at(&node));
        for (const auto& [from, to] : linked_)
            link(*from, *to);
    }

private:
    // A definition that gets another name is the type of its nodes under that name.
    void create(const Node& node) {
        const auto definition = definitions_.find(std::string(node.type().view()));
        const String type = definition == definitions_.end() ? node.type() : definition->second;
        const std::string wanted(node.name().view());
        String name = node.name();
        Node* copy = nullptr;
        for (u64 number = 2; !(copy = node.isDefinition() ? scene_.defineNode(name) : scene_.createNode(type, name));
             ++number)
            name = std::string_view(wanted + '_' + std::to_string(number));
        if (name != node.name())
            losses_.add("names of nodes that another file has, too (numbered)", *copy);
        if (node.isDefinition())
            definitions_.emplace(wanted, name);
        copies_.emplace(&node, copy);
    }

    // `parent` is a node or an object.
    template <class Parent> static Input* counterpart(const Input& input, Parent& parent) {
        return input.type() == AttrType::Array ? parent.createArray(input.key(), input.elementType())
                                               : parent.createInput(input.key(), input.type());
    }

    static Input* elementOf(Input& array, u64 index) {
        Input* element = array.element(index); // a definition may have it already
        return element ? element : array.appendElement();
    }

    void copy(const Input& input, Node& node) {
        struct Pending {
            const Input* from;
            Input* to;
        };
        std::vector<Pending> pending = {{&input, counterpart(input, node)}};
        while (!pending.empty()) {
            const auto [from, to] = pending.back();
            pending.pop_back();
            if (!to) {
                losses_.add("elements beyond the limit of arrays", *from);
                continue;
            }
            if (from->connection() || from->nodeValue())
                linked_.emplace_back(from, to);
            if (from->type() == AttrType::Object)
                for (const Input* member : from->children())
                    pending.push_back({member, counterpart(*member, *to)});
            else if (from->type() == AttrType::Array)
                for (const Input* element : from->children())
                    pending.push_back({element, elementOf(*to, element->index())});
            else if (from->type() != AttrType::Node && from->type() != AttrType::Null)
                to->assign(from->value());
        }
    }

    void link(const Input& from, Input& to) {
        if (Node* target = from.nodeValue())
            to.setNode(copies_.at(target));
        if (const Output* output = from.connection())
            to.connect(copies_.at(output->node())->findOutput(output->name()));
    }

    Scene& scene_;
    const Scene& from_;
    Losses& losses_;
    std::unordered_map<std::string, String> definitions_{}; // their new names
    std::unordered_map<const Node*, Node*> copies_{};
    std::vector<std::pair<const Input*, Input*>> linked_{};
};

} // namespace

void mergeScene(Scene& scene, const Scene& from, Losses& losses) { SceneMerger(scene, from, losses).merge(); }

void rebaseTextures(Scene& scene, const TexturePaths& paths) {
    for (Node& node : scene.nodes())
        if (Input* file = node.type() == "texture" ? node.input("file") : nullptr;
            file && file->type() == AttrType::String)
            file->assign(AttrData::string(paths.rebase(file->value().asString())));
}

} // namespace vrn::convert
