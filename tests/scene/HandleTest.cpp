#include "scene/Handle.h"
#include "tests/support/Invariants.h"
#include "tests/support/Reading.h"

#include <functional>

namespace vrn::test {

static_assert(sizeof(Node) <= 168 && sizeof(Output) <= 40, "the count of the holders takes no memory");

namespace {

// A node with links in both directions, and handles to all that is part of it.
struct Held {
    Reading reading = readText("define a; a.list[0].x = 1; a.self = a; a.in |= b.out; t b; b.ref = a; b.in |= a.out;"
                               "b.more |= a.second;");
    Handle<Node> node{reading.scene->findNode("a")};
    Handle<Output> output{node->findOutput("out")};
    Handle<Output> second{node->findOutput("second")};
    Handle<Input> list{node->input("list")};
    Handle<Input> x{reading.input("a.list[0].x")};

    void expectGone() const {
        EXPECT_FALSE(node->isAttached());
        EXPECT_EQ(node.attached(), nullptr);
        EXPECT_EQ(node->scene(), nullptr);
        EXPECT_EQ(node->name(), "a");
        EXPECT_EQ(node->type(), "a");
        EXPECT_TRUE(node->isDefinition());
        EXPECT_TRUE(node->inputs().empty());
        EXPECT_EQ(node->outputs().size(), 2U);
        for (const Output* each : {output.get(), second.get()}) {
            EXPECT_FALSE(each->isAttached());
            EXPECT_EQ(each->node(), nullptr);
            EXPECT_EQ(each->connectionCount(), 0U);
        }
        EXPECT_EQ(output.attached(), nullptr);
        EXPECT_EQ(output->name(), "out");
        EXPECT_EQ(output->label(), "a.out");
        for (const Input* each : {list.get(), x.get()}) {
            EXPECT_FALSE(each->isAttached());
            EXPECT_EQ(each->node(), nullptr);
            EXPECT_EQ(each->parent(), nullptr);
            EXPECT_EQ(each->size(), 0U);
        }
        EXPECT_EQ(list.attached(), nullptr);
        EXPECT_EQ(x->value().asInt(), 1) << "an input keeps its value";
    }
};

const std::pair<const char*, std::function<void(std::unique_ptr<Scene>&)>> removals[] = {
    {"removeNode", [](std::unique_ptr<Scene>& scene) { scene->removeNode("a"); }},
    {"a text", [](std::unique_ptr<Scene>& scene) { parseString(scene.get(), "a.y = 1; remove a; t c;"); }},
    {"a text that makes it anew", [](std::unique_ptr<Scene>& scene) { parseString(scene.get(), "remove a; t a;"); }},
    {"the end of the scene", [](std::unique_ptr<Scene>& scene) { scene.reset(); }},
};

} // namespace

TEST(Handle, survivesEachRemoval) {
    for (const auto& [how, remove] : removals) {
        SCOPED_TRACE(how);
        Held held;
        EXPECT_EQ(held.node.attached(), held.reading.scene->findNode("a"));
        EXPECT_EQ(held.output.attached(), held.node->findOutput("out"));
        EXPECT_EQ(held.x.attached(), held.reading.input("a.list[0].x"));
        EXPECT_EQ(held.node->scene(), held.reading.scene.get());
        remove(held.reading.scene);
        held.expectGone();
        if (!held.reading.scene)
            continue;
        EXPECT_EQ(brokenInvariant(*held.reading.scene), "");
        EXPECT_EQ(held.reading.input("b.ref")->nodeValue(), nullptr);
        EXPECT_EQ(held.reading.input("b.in")->connection(), nullptr);
        held.reading.scene.reset();
        held.expectGone();
    }
}

TEST(Handle, keepsAnOutputWithoutAHandleToItsNode) {
    for (const auto& [how, remove] : removals) {
        SCOPED_TRACE(how);
        Held held;
        held.node = {};
        held.second = {};
        remove(held.reading.scene);
        EXPECT_EQ(held.output->label(), "a.out");
        EXPECT_FALSE(held.output->isAttached());
        held.output = {};
    }
}

TEST(Handle, toARemovedObjectChangesNothing) {
    for (const auto& [how, remove] : removals) {
        SCOPED_TRACE(how);
        Held held;
        remove(held.reading.scene);
        EXPECT_EQ(held.node->createInput("new", AttrType::Int), nullptr);
        EXPECT_EQ(held.node->createArray("new", AttrType::Int), nullptr);
        AttrData value = AttrData::integer(5);
        const Node::InputOrNew made = held.node->inputOrNew("new", value);
        EXPECT_EQ(made.input, nullptr);
        EXPECT_FALSE(made.isNew);
        EXPECT_EQ(value.asInt(), 5) << "not moved from";
        EXPECT_FALSE(held.node->removeInput("list"));
        EXPECT_FALSE(held.node->hasInput("list"));
        EXPECT_EQ(held.node->findOutput("new"), nullptr);
        EXPECT_EQ(held.node->findOutput("out"), held.output.get());
        EXPECT_EQ(held.list->appendElement(), nullptr);
        held.expectGone();
        if (!held.reading.scene)
            continue;
        Input* reference = held.reading.input("b.ref");
        reference->setNode(held.reading.scene->findNode("b"));
        reference->setNode(held.node.get());
        EXPECT_EQ(reference->nodeValue(), held.reading.scene->findNode("b")) << "a removed node is no target";
        Input* null = held.reading.scene->findNode("b")->createInput("null", AttrType::Null);
        null->setNode(held.node.get());
        EXPECT_EQ(null->type(), AttrType::Null);
        Input* in = held.reading.input("b.in");
        Output* other = held.reading.scene->findNode("b")->findOutput("other");
        in->connect(other);
        in->connect(held.output.get());
        EXPECT_EQ(in->connection(), other) << "a removed output is no source";
        EXPECT_EQ(brokenInvariant(*held.reading.scene), "");
        held.expectGone();
    }
}

// The iteration over the nodes never enters a removed one, nor leads back from it.
TEST(Handle, toARemovedNodeIsNotInTheScene) {
    Scene scene;
    for (const char* name : {"a", "b", "c"})
        (void)scene.createNode("t", name);
    const Handle<Node> held(scene.findNode("b"));
    const Scene::NodeIterator<Node> at(held.get());
    scene.removeNode("b");
    EXPECT_EQ(scene.nodeCount(), 2U);
    EXPECT_EQ(scene.findNode("b"), nullptr);
    for (const Node& node : scene.nodes())
        EXPECT_TRUE(node.isAttached());
    EXPECT_EQ(std::next(at), Scene::NodeIterator<Node>()) << "ends there";
    EXPECT_NE(scene.createNode("u", "b"), held.get());
    EXPECT_EQ(held->type(), "t");
    EXPECT_FALSE(held->isAttached());
}

TEST(Handle, isAValue) {
    Scene scene;
    Node* a = scene.createNode("t", "a");
    Node* b = scene.createNode("t", "b");
    Handle<Node> none;
    EXPECT_EQ(none.get(), nullptr);
    EXPECT_EQ(none.attached(), nullptr);
    EXPECT_EQ(Handle<Node>(nullptr), none);
    Handle<Node> first(a);
    Handle<Node> second = first;
    EXPECT_EQ(first, second);
    second = Handle<Node>(b);
    EXPECT_NE(first, second);
    const Handle<Node>& self = second;
    second = self;
    EXPECT_EQ(second.get(), b);
    none = std::move(second);
    EXPECT_EQ(none->name(), "b");
    EXPECT_EQ((*none).name(), "b");
    EXPECT_EQ(second.get(), nullptr);
    first = none;
    scene.removeNode("a"); // which nothing holds
    scene.removeNode("b");
    none = {};
    EXPECT_EQ(first->name(), "b");
}

// Objects are released in any order, before and after their scene.
TEST(Handle, mayBeTheLastOfManyToGo) {
    for (const bool isSceneFirst : {false, true}) {
        auto scene = std::make_unique<Scene>();
        std::vector<Handle<Node>> nodes;
        std::vector<Handle<Output>> outputs;
        for (u64 i = 0; i < 3000; ++i) {
            Node* node = scene->createNode("t", "a_node_of_a_long_name" + String(i));
            node->createInput("in", AttrType::Int)->connect(node->findOutput("out"));
            if (i % 3 == 0)
                nodes.emplace_back(node);
            if (i % 2 == 0)
                outputs.emplace_back(node->findOutput("out"));
        }
        if (isSceneFirst)
            scene.reset();
        for (std::size_t i = 0; i < nodes.size(); i += 2)
            nodes[i] = {};
        scene.reset();
        for (const Handle<Node>& node : nodes)
            EXPECT_TRUE(!node.get() || node->name().view().starts_with("a_node"));
        nodes.clear();
        for (const Handle<Output>& output : outputs)
            EXPECT_TRUE(output->label().view().ends_with(".out"));
    }
}

} // namespace vrn::test
