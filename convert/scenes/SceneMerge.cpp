#include "convert/scenes/SceneMerge.h"

#include "convert/scenes/Roots.h"
#include "scene/Scene.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <vector>

namespace vrn::convert {

namespace {

class SceneMerger {
public:
    SceneMerger(Scene& scene, Scene& from, Losses& losses) : scene_(scene), from_(from), losses_(losses) {}

    // Links are set after all nodes exist.
    void merge() {
        const u64 variants = variantNames();
        const std::vector<Node*> unlisted = unlistedRoots();
        for (const Node& node : from_.nodes())
            create(node);
        for (const Node& node : from_.nodes())
            for (const Input* input : node.inputs())
                copy(*input, *copies_.at(&node));
        for (const auto& [from, to] : linked_)
            link(*from, *to);
        for (const auto& [from, to] : copies_)
            renumberVariants(*to, variants);
        if (!unlisted.empty())
            list(unlisted);
    }

private:
    [[nodiscard]] static bool hasLists(Scene& scene) {
        return std::ranges::any_of(scene.nodes(), [](const Node& node) { return isSceneList(node); });
    }

    // If only one of the two has lists of what its scenes show, the roots of the other: they would not be shown any
    // more.
    [[nodiscard]] std::vector<Node*> unlistedRoots() {
        if (hasLists(scene_) == hasLists(from_))
            return {};
        Scene& plain = hasLists(scene_) ? from_ : scene_;
        NodeMaker maker(plain);
        return makeRoots(plain, maker);
    }

    // Adds these roots to the scene that is shown first.
    void list(const std::vector<Node*>& roots) {
        Node* first = nullptr;
        for (Node& node : scene_.nodes())
            if (const Input* flag = isSceneList(node) ? node.input("default") : nullptr;
                isSceneList(node) && (!first || (flag && flag->value().asBool())))
                first = &node;
        for (Node* root : roots) {
            const auto copy = copies_.find(root);
            if (Input* element = first->input("nodes")->appendElement())
                element->setNode(copy == copies_.end() ? root : copy->second);
            else
                losses_.add("nodes of scenes beyond the limit of arrays", *root);
        }
    }

    // The number of names that the variants of the scene have so far.
    [[nodiscard]] u64 variantNames() const {
        u64 count = 0;
        for (const Node& node : scene_.nodes())
            if (const Input* names = node.type() == "variants" ? node.input("names") : nullptr)
                count += names->size();
        return count;
    }

    // The names of the variants are those of both scenes, one list after the other.
    static void renumberVariants(Node& mesh, u64 before) {
        Input* variants = before == 0 || mesh.type() != "mesh" ? nullptr : mesh.input("variants");
        if (!variants)
            return;
        for (Input* variant : variants->children()) {
            Input* number = variant->input("variant");
            if (number && number->type() == AttrType::UInt)
                number->assign(AttrData::unsignedInteger(number->value().asUInt() + before));
            else if (number && number->type() == AttrType::Int)
                number->assign(AttrData::integer(number->value().asInt() + static_cast<i64>(before)));
        }
    }

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
    Scene& from_;
    Losses& losses_;
    std::unordered_map<std::string, String> definitions_{}; // their new names
    std::unordered_map<const Node*, Node*> copies_{};
    std::vector<std::pair<const Input*, Input*>> linked_{};
};

} // namespace

void mergeScene(Scene& scene, Scene& from, Losses& losses) { SceneMerger(scene, from, losses).merge(); }

void rebaseTextures(Scene& scene, const TexturePaths& paths) {
    const auto rebase = [&](Input* file) {
        if (file && file->type() == AttrType::String)
            file->assign(AttrData::string(paths.rebase(file->value().asString())));
    };
    for (Node& node : scene.nodes()) {
        if (node.type() != "texture")
            continue;
        rebase(node.input("file"));
        if (Input* alternative = node.input("alternative"))
            rebase(alternative->input("file"));
    }
}

} // namespace vrn::convert
