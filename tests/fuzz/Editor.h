// Editor: applies any sequence of operations to a scene, including reading texts into it.
#pragma once

#include "scene/Handle.h"
#include "tests/fuzz/Fuzz.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <vector>

namespace vrn::fuzz {

inline constexpr const char* names[] = {"a", "b", "c", "d", "in", "out", "x", "a_name_of_more_than_sixteen_letters"};
inline constexpr AttrType types[] = {AttrType::Null,   AttrType::Bool, AttrType::Int,   AttrType::UInt,
                                     AttrType::Real,   AttrType::Vec3, AttrType::Mat4,  AttrType::Rgba,
                                     AttrType::String, AttrType::Node, AttrType::Array, AttrType::Object,
                                     AttrType::Buffer};
inline constexpr DataType dataTypes[] = {DataType::Null, DataType::Float, DataType::Vec3f, DataType::Byte,
                                         DataType::Mat4d};

class Editor {
public:
    explicit Editor(Bytes decisions) : decisions_(decisions) {
        limit(scene_);
        if (decisions_.byte() % 4 == 0)
            scene_.setCatalogue(catalogue());
        scene_.setStrictOutputs(decisions_.byte() % 4 == 0);
    }
    // What is held is released before or after the scene is destroyed.
    ~Editor() {
        if (decisions_.byte() % 2 == 0)
            owned_.reset();
        while (!held_.empty())
            letGo();
        for (const View& view : views_)
            view.check();
    }
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;

    [[nodiscard]] Scene& scene() noexcept { return scene_; }

    void run() {
        for (int i = 0; !decisions_.isEmpty() && i < 400; ++i) {
            step();
            if (i % 16 == 0)
                checkScene(scene_);
        }
        checkScene(scene_);
        (void)jsonOf(scene_);
    }

private:
    String name() { return names[decisions_.below(std::size(names))]; }
    AttrType type() { return types[decisions_.below(std::size(types))]; }
    Node* node() { return scene_.findNode(name()); }

    // An input at any depth, or null.
    Input* input() {
        Node* owner = node();
        if (!owner)
            return nullptr;
        std::span<Input* const> siblings = owner->inputs();
        Input* chosen = nullptr;
        while (!siblings.empty()) {
            chosen = siblings[decisions_.below(siblings.size())];
            if (decisions_.byte() % 3 == 0)
                break;
            siblings = chosen->children();
        }
        return chosen;
    }

    AttrData value() {
        const AttrType chosen = type();
        switch (chosen) {
        case AttrType::String:
            return AttrData::string(decisions_.text(30));
        case AttrType::Array:
            return AttrData::array(type());
        case AttrType::Buffer:
            return AttrData::buffer(dataTypes[decisions_.below(std::size(dataTypes))], decisions_.below(20));
        case AttrType::Int:
            return AttrData::integer(decisions_.byte());
        default:
            return AttrData::zero(chosen);
        }
    }

    void grow(Input* array) {
        for (std::size_t i = decisions_.below(40); i > 0; --i)
            (void)array->appendElement();
    }

    void hold(Input* held) {
        held->retain();
        held_.push_back(held);
    }
    // An input that is held is alive, even if its node is not.
    void letGo() {
        Input* held = held_.front();
        held_.pop_front();
        require(held->isAttached() == (held->node() != nullptr), "an input knows whether it is attached");
        (void)held->label();
        held->release();
    }

    void onInput(u8 what) {
        Input* chosen = !held_.empty() && decisions_.byte() % 8 == 0 ? held_.back() : input();
        if (!chosen)
            return;
        switch (what % 11) {
        case 0:
            return (void)chosen->assign(value());
        case 1:
            return (void)chosen->set(value());
        case 2:
            return (void)chosen->createInput(name(), type());
        case 3:
            return (void)chosen->createArray(name(), type());
        case 4:
            return grow(chosen);
        case 5:
            return chosen->setNode(node());
        case 6: {
            Node* source = node();
            return chosen->connect(source ? source->findOutput(name()) : nullptr);
        }
        case 7:
            return chosen->disconnect();
        case 8:
            chosen->setEnumeration({"one", "two"});
            chosen->setLocked(decisions_.byte() % 2 == 0);
            return chosen->setLinkOnly(decisions_.byte() % 2 == 0);
        case 9:
            return hold(chosen);
        default:
            return require(chosen->assign(AttrData(chosen->value())), "an input takes its own value");
        }
    }

    // A value that shares the block of an input, and what it must contain from then on.
    struct View {
        explicit View(const AttrData& value) : data(value.share()), bytes(value.bytes().begin(), value.bytes().end()) {}
        void check() const { require(std::ranges::equal(data.bytes(), bytes), "a view never changes"); }
        const AttrData data;
        std::vector<std::byte> bytes;
    };

    // Takes views of buffers, writes to buffers, and moves values between inputs that share them.
    void shareBuffer() {
        Input* chosen = input();
        if (!chosen || chosen->type() != AttrType::Buffer)
            return;
        switch (decisions_.byte() % 4) {
        case 0:
            return (void)views_.emplace_back(chosen->value());
        case 1:
            return (void)std::ranges::fill(chosen->elements<float>(), 1.0F);
        case 2:
            return (void)chosen->resizeBuffer(decisions_.below(30));
        default:
            if (!views_.empty())
                (void)chosen->assign(views_.front().data);
            if (decisions_.byte() % 2 == 0 && !views_.empty()) {
                views_.front().check();
                views_.pop_front();
            }
        }
    }

    // Holds nodes and outputs, and uses them whether or not they are still in the scene.
    void holdNode() {
        Node* chosen = node();
        if (chosen && decisions_.byte() % 2 == 0) {
            nodes_.emplace_back(chosen);
            if (Output* output = chosen->findOutput(name()))
                outputs_.emplace_back(output);
        }
        if (nodes_.empty())
            return;
        Node& held = *nodes_.front();
        require(held.isAttached() == (scene_.findNode(held.name()) == &held), "a node knows whether it is attached");
        require(held.isAttached() == (held.createInput(name(), type()) != nullptr), "a removed node has no inputs");
        if (Input* other = input())
            other->setNode(&held);
        if (Input* other = outputs_.empty() ? nullptr : input())
            other->connect(outputs_.back().get());
        if (decisions_.byte() % 4 == 0)
            nodes_.pop_front();
        if (!outputs_.empty() && decisions_.byte() % 4 == 0)
            outputs_.pop_front();
    }

    void removeInput() {
        Input* chosen = input();
        if (!chosen)
            return;
        if (!chosen->parent())
            require(chosen->node()->removeInput(chosen->name()), "an input can be removed");
        else if (chosen->isElement())
            require(chosen->parent()->removeElement(chosen->index()), "an element can be removed");
        else
            require(chosen->parent()->removeInput(chosen->name()), "a member can be removed");
    }

    void step() {
        const u8 what = decisions_.byte();
        if (what >= 253)
            return (void)scene_.renameNode(name(), name());
        if (what >= 249)
            return removeInput();
        if (what == 248)
            return holdNode();
        if (what == 247)
            return shareBuffer();
        switch (what % 8) {
        case 0:
            return (void)scene_.createNode(name(), name());
        case 1:
            return (void)scene_.defineNode(name());
        case 2:
            return (void)scene_.removeNode(name());
        case 3:
            if (Node* owner = node())
                (void)owner->createInput(name(), type());
            return;
        case 4:
            if (Node* owner = node())
                (void)owner->createArray(name(), type());
            return;
        case 5:
            if (what >= 128)
                return (void)logOf([&] { return parseString(&scene_, decisions_.text(300)); });
            if (!held_.empty())
                letGo();
            return;
        default:
            return onInput(decisions_.byte());
        }
    }

    static std::shared_ptr<const Catalogue> catalogue() {
        NodeType type("a");
        type.addInput({.name = "in", .type = AttrType::Array, .elementType = AttrType::Buffer});
        type.addInput({.name = "x", .type = AttrType::String, .enumeration = {"one", "two"}, .isLocked = true});
        type.addOutput("out");
        type.renameInput("c", "in");
        Catalogue catalogue;
        catalogue.add(std::move(type));
        return std::make_shared<const Catalogue>(std::move(catalogue));
    }

    std::unique_ptr<Scene> owned_ = std::make_unique<Scene>();
    Scene& scene_ = *owned_;
    Bytes decisions_;
    std::deque<Input*> held_;
    std::deque<Handle<Node>> nodes_;
    std::deque<Handle<Output>> outputs_;
    std::deque<View> views_;
};

} // namespace vrn::fuzz
