#include "scene/InputCursor.h"
#include "scene/Walk.h"
#include "tests/support/Reading.h"
#include "tests/support/Scaled.h"

#include <array>
#include <functional>
#include <random>
#include <set>

namespace vrn::test {

static std::string names(const Scene& scene) {
    std::string text;
    for (const Node& node : scene.nodes())
        text += std::string(node.name().view()) + " ";
    return text;
}

TEST(Scene, startsEmpty) {
    const Scene scene;
    EXPECT_EQ(scene.fileVersion(), 1U);
    EXPECT_EQ(scene.fileTime(), "");
    EXPECT_TRUE(scene.fileComments().isEmpty());
    EXPECT_EQ(scene.nodeCount(), 0U);
    EXPECT_EQ(names(scene), "");
}

TEST(Scene, keepsNodesInOrderOfCreation) {
    Scene scene;
    for (const char* name : {"d", "a", "c", "b"})
        ASSERT_TRUE(scene.createNode("t", name));
    EXPECT_EQ(names(scene), "d a c b ");
    EXPECT_TRUE(scene.removeNode("d"));
    EXPECT_TRUE(scene.removeNode("c"));
    EXPECT_FALSE(scene.removeNode("c")) << "an unknown name is harmless";
    EXPECT_EQ(names(scene), "a b ");
    EXPECT_TRUE(scene.removeNode("b"));
    ASSERT_TRUE(scene.createNode("t", "d"));
    EXPECT_EQ(names(scene), "a d ");
    EXPECT_EQ(scene.nodeCount(), 2U);
    EXPECT_EQ(scene.findNode("d")->type(), "t");
    EXPECT_EQ(scene.findNode("c"), nullptr);
}

TEST(Scene, renamesNodesWithTheirLinks) {
    Scene scene;
    parseString(&scene, "t a; a.x = 1; t b; b.ref = a; b.in |= a.out; t c;");
    Node* a = scene.findNode("a");
    EXPECT_TRUE(scene.renameNode("a", "z"));
    EXPECT_EQ(scene.findNode("a"), nullptr);
    EXPECT_EQ(scene.findNode("z"), a);
    EXPECT_EQ(names(scene), "z b c ");
    EXPECT_EQ(a->input("x")->label(), "z.x");
    EXPECT_EQ(scene.findNode("b")->input("ref")->nodeValue(), a);
    EXPECT_EQ(scene.findNode("b")->input("in")->connection()->label(), "z.out");
    EXPECT_EQ(a->type(), "t");

    EXPECT_FALSE(scene.renameNode("a", "new")) << "there is no such node";
    EXPECT_FALSE(scene.renameNode("b", "c")) << "the name is taken";
    EXPECT_TRUE(scene.renameNode("b", "b"));
    EXPECT_EQ(names(scene), "z b c ");
    EXPECT_EQ(scene.nodeCount(), 3U);
    EXPECT_TRUE(scene.createNode("t", "a")) << "the old name is free";
    EXPECT_TRUE(scene.removeNode("z"));
}

TEST(Scene, renamesTheTypeThatADefinitionIs) {
    Scene scene;
    parseString(&scene, "define d; d.x = 1; d a; t d2; t b;");
    EXPECT_TRUE(scene.renameNode("d", "e"));
    EXPECT_EQ(scene.findNode("e")->type(), "e");
    EXPECT_EQ(scene.findNode("a")->type(), "e");
    EXPECT_EQ(scene.findNode("b")->type(), "t");
    EXPECT_TRUE(scene.createNode("e", "c")->hasInput("x"));
    EXPECT_FALSE(scene.createNode("d", "f")->hasInput("x"));
    EXPECT_TRUE(scene.renameNode("b", "t"));
    EXPECT_EQ(scene.findNode("d2")->type(), "t") << "only definitions are types";
}

static std::string inputNames(std::span<const Input* const> inputs) {
    std::string text;
    for (const Input* input : inputs)
        text += std::string(input->label().view()) + "=" + std::to_string(input->value().asInt()) + " ";
    return text;
}

TEST(Scene, removesInputsMembersAndElements) {
    Scene scene;
    parseString(&scene, "t n; n.a = 1; n.b.x = 2; n.b.y = 3; n.c[*] = 4; n.c[*] = 5; n.c[*] = 6; n.d = 7; n.r = n;");
    Node* n = scene.findNode("n");
    EXPECT_FALSE(n->removeInput("none"));
    EXPECT_FALSE(n->input("a")->removeInput("x"));
    EXPECT_FALSE(n->input("b")->removeElement(0));
    EXPECT_FALSE(n->input("c")->removeElement(3));

    EXPECT_TRUE(n->input("b")->removeInput("x"));
    EXPECT_EQ(inputNames(n->input("b")->children()), "n.b.y=3 ");
    EXPECT_EQ(n->input("b")->input("y")->index(), 0U);
    EXPECT_TRUE(n->input("c")->removeElement(1));
    EXPECT_EQ(inputNames(n->input("c")->children()), "n.c[0]=4 n.c[1]=6 ");
    EXPECT_TRUE(n->removeInput("a"));
    EXPECT_EQ(inputNames(n->inputs()), "n.b=0 n.c=0 n.d=7 n.r=0 ");
    EXPECT_EQ(n->input("d")->index(), 2U);

    Input* held = n->input("b");
    held->retain();
    EXPECT_TRUE(n->removeInput("b"));
    EXPECT_FALSE(held->isAttached());
    EXPECT_EQ(held->size(), 0U);
    held->release();
    EXPECT_TRUE(n->removeInput("r")) << "an input that refers to its node";
    EXPECT_EQ(n->createInput("a", AttrType::Int)->index(), 2U);
}

TEST(Scene, saysWhetherAnInputTookAValue) {
    Scene scene;
    Node* n = scene.createNode("t", "n");
    EXPECT_TRUE(n->createInput("x", AttrType::Int)->assign(AttrData::integer(1)));
    EXPECT_FALSE(n->input("x")->assign(AttrData::real(1)));
    EXPECT_FALSE(n->input("x")->set(AttrData::string("s")));
    EXPECT_TRUE(n->createInput("any", AttrType::Null)->assign(AttrData::vec2(1, 2)));
    Input* array = n->createArray("l", AttrType::Null);
    EXPECT_TRUE(array->assign(AttrData::array(AttrType::Null)));
    EXPECT_TRUE(array->set(AttrData::array(AttrType::Int)));
    EXPECT_TRUE(array->set(AttrData::array(AttrType::Int)));
    EXPECT_FALSE(array->set(AttrData::array(AttrType::Real)));
    EXPECT_TRUE(array->appendElement()->assign(AttrData::integer(2)));
    EXPECT_FALSE(array->appendElement()->assign(AttrData::real(2)));
}

TEST(Scene, changesBuffersInPlace) {
    Scene scene;
    Node* n = scene.createNode("t", "n");
    Input* buffer = n->createInput("b", AttrType::Buffer);
    EXPECT_FALSE(buffer->resizeBuffer(1)) << "it has no element type";
    buffer->assign(AttrData::buffer(DataType::Float, 1));
    EXPECT_TRUE(buffer->resizeBuffer(2));
    buffer->elements<float>()[1] = 5;
    EXPECT_EQ(buffer->value().elements<float>()[1], 5);
    EXPECT_TRUE(buffer->elements<double>().empty());
    EXPECT_FALSE(n->createInput("x", AttrType::Int)->resizeBuffer(1));
}

// Changes of an input do not reach the bytes that others share with it.
TEST(Scene, leavesSharedBuffersAlone) {
    const std::function<void(Scene&, Input&)> changes[] = {
        [](Scene&, Input& input) { input.elements<float>()[0] = 9; },
        [](Scene&, Input& input) { input.resizeBuffer(1); },
        [](Scene&, Input& input) { input.resizeBuffer(1000); },
        [](Scene&, Input& input) { input.assign(AttrData::buffer(DataType::Float, 2)); },
        [](Scene&, Input& input) { input.set(AttrData::buffer(DataType::Byte, 2)); },
        [](Scene& scene, Input&) { parseString(&scene, "n.b = float[2] {5 6};"); },
        [](Scene& scene, Input&) { parseString(&scene, "n.b = float[2] {5 6 7}; n.b = float[3] {8};"); },
        [](Scene& scene, Input&) { scene.findNode("n")->removeInput("b"); },
        [](Scene& scene, Input&) { parseString(&scene, "remove n;"); },
    };
    for (const auto& change : changes) {
        AttrData view;
        std::span<const float> numbers;
        {
            const Reading r = readText("t n; n.b = float[2] {1 2};");
            view = r.value("n.b").share();
            numbers = std::as_const(view).elements<float>();
            EXPECT_EQ(numbers.data(), r.value("n.b").elements<float>().data());
            const ScopedLogSink silent([](const LogRecord&) {});
            change(*r.scene, *r.input("n.b"));
            EXPECT_EQ(std::vector(numbers.begin(), numbers.end()), (std::vector<float>{1, 2}));
        }
        EXPECT_EQ(std::vector(numbers.begin(), numbers.end()), (std::vector<float>{1, 2}));
    }
}

TEST(Scene, readsAndWritesAdoptedBuffers) {
    auto numbers = std::make_shared<const std::array<float, 3>>(std::array{1.0F, 2.0F, 0.5F});
    Scene scene;
    Input* input = scene.createNode("t", "n")->createInput("b", AttrType::Buffer);
    EXPECT_TRUE(input->assign(AttrData::adopt(DataType::Vec3f, 1, numbers->data(), numbers)));
    EXPECT_EQ(input->value().elements<float>().data(), numbers->data());
    std::string text;
    EXPECT_TRUE(writeVrn(scene, {}, [&](std::string_view piece) { text += piece; }).empty());
    EXPECT_NE(text.find("vec3f[1] {1 2 0.5}"), std::string::npos) << text;
    std::string json;
    writeSceneJson(scene, {}, [&](std::string_view piece) { json += piece; });
    EXPECT_EQ(numbers.use_count(), 2);
    EXPECT_EQ(input->value().elements<float>().data(), numbers->data()) << "reading copies nothing";
    input->elements<float>()[0] = 9;
    EXPECT_EQ((*numbers)[0], 1);
    EXPECT_EQ(numbers.use_count(), 1);
}

TEST(Scene, countsElementsWithoutTypeWhenOneIsRemoved) {
    Scene scene;
    Input* array = scene.createNode("t", "n")->createArray("a", AttrType::Buffer);
    for (int i = 0; i < 3; ++i)
        (void)array->appendElement();
    array->element(1)->assign(AttrData::buffer(DataType::Float));
    EXPECT_EQ(array->untypedElements(), 2U);
    EXPECT_TRUE(array->removeElement(1));
    EXPECT_EQ(array->untypedElements(), 2U);
    EXPECT_TRUE(array->removeElement(0));
    EXPECT_EQ(array->untypedElements(), 1U);
    Input* untyped = scene.findNode("n")->createArray("b", AttrType::Null);
    (void)untyped->appendElement();
    EXPECT_EQ(untyped->nullElements(), 1U);
    EXPECT_TRUE(untyped->removeElement(0));
    EXPECT_EQ(untyped->nullElements(), 0U);
}

TEST(Scene, findsNodesAmongManyThatComeAndGo) {
    Scene scene;
    std::set<u64> there;
    std::mt19937 random(5);
    for (int i = 0; i < 50000; ++i) {
        const u64 number = random() % 500;
        const String name = "n" + String(number);
        ASSERT_EQ(scene.findNode(name) != nullptr, there.contains(number));
        if (random() % 2) {
            EXPECT_EQ(scene.createNode("t", name) != nullptr, there.insert(number).second);
        } else {
            EXPECT_EQ(scene.removeNode(name), there.erase(number) == 1);
        }
        ASSERT_EQ(scene.nodeCount(), there.size());
    }
    for (const u64 number : there)
        EXPECT_EQ(scene.findNode("n" + String(number))->name(), "n" + String(number));
}

TEST(Scene, refusesANameTwice) {
    Scene scene;
    ASSERT_TRUE(scene.createNode("t", "a"));
    EXPECT_EQ(scene.createNode("u", "a"), nullptr);
    EXPECT_EQ(scene.defineNode("a"), nullptr);
    EXPECT_EQ(scene.findNode("a")->type(), "t");
}

TEST(Scene, startsNodesWithCopiesOfTheirDefinition) {
    Reading r = readText("define paint; other o; o.x = 1;"
                         "paint.roughness = 0.5; paint.deep.list[1].name = \"n\"; paint.many[*] = float[1] {3};"
                         "paint.friend = o; paint.map |= o.out; paint red; paint.roughness = 0.75; paint green;");
    EXPECT_TRUE(r.scene->findNode("paint")->isDefinition());
    EXPECT_EQ(r.scene->findNode("paint")->type(), "paint");
    EXPECT_FALSE(r.node("red").isDefinition());
    EXPECT_EQ(r.value("red.roughness").asReal(), 0.5);
    EXPECT_EQ(r.value("green.roughness").asReal(), 0.75);
    EXPECT_STREQ(r.value("red.deep.list[1].name").asString(), "n");
    EXPECT_EQ(r.input("red.deep.list")->size(), 2U);
    EXPECT_EQ(r.value("red.many[0]").elements<float>()[0], 3);
    EXPECT_EQ(r.input("red.many")->untypedElements(), 0U);
    EXPECT_EQ(r.input("paint.friend")->nodeValue(), &r.node("o"));
    // Links are resolved at the end of the file, so these nodes copied the definition before it had any.
    readMore(r, "paint blue;");
    ASSERT_NE(r.input("blue.friend"), nullptr);
    EXPECT_EQ(r.input("blue.friend")->type(), AttrType::Node);
    EXPECT_EQ(r.input("blue.friend")->nodeValue(), nullptr) << "copies have no links";
    EXPECT_EQ(r.input("blue.map")->connection(), nullptr);
    EXPECT_NE(r.input("paint.map")->connection(), nullptr);
    r.scene->removeNode("paint");
    EXPECT_EQ(r.value("red.roughness").asReal(), 0.5);
}

TEST(Scene, undoesLinksWithTheirNodes) {
    Reading r = readText("t a; t b; b.in |= a.out; b.ref = a; a.self |= a.out; a.back = b;");
    EXPECT_EQ(r.input("b.in")->connection()->label(), "a.out");
    EXPECT_EQ(r.input("b.in")->connection()->connectionCount(), 2U);
    r.scene->removeNode("a");
    EXPECT_EQ(r.input("b.in")->connection(), nullptr);
    EXPECT_EQ(r.input("b.ref")->nodeValue(), nullptr);
    EXPECT_EQ(r.input("b.ref")->type(), AttrType::Node);
}

TEST(Scene, leavesAnInputThatIsHeldEmptyAndAlone) {
    Reading r = readText("t a; a.list[0].x = 1; a.in |= a.out; a.name = \"n\";");
    Input* list = r.input("a.list");
    Input* x = r.input("a.list[0].x");
    list->retain();
    x->retain();
    EXPECT_TRUE(x->isAttached());
    EXPECT_EQ(x->label(), "a.list[0].x");
    r.scene->removeNode("a");
    EXPECT_FALSE(x->isAttached());
    EXPECT_FALSE(list->isAttached());
    EXPECT_EQ(list->size(), 0U);
    EXPECT_EQ(x->label(), ".x");
    x->release();
    list->release();
}

TEST(Scene, survivesInputsOfAnyDepth) {
    const int depth = scaled(100000);
    std::string path = "a";
    for (int i = 0; i < depth; ++i)
        path += i % 2 ? "[0]" : ".m";
    Reading r = readText("define a; " + String(std::string_view(path)) + ".x = 5;");
    EXPECT_TRUE(r.isOk);
    readMore(r, "a b;"); // a deep copy
    EXPECT_TRUE(r.isOk);
    std::size_t count = 0;
    u64 length = 0;
    forEachInput(r.node("b"), [&](const Input& input) {
        ++count;
        length = input.type() == AttrType::Int ? input.label().len() : 0;
    });
    EXPECT_EQ(count, static_cast<std::size_t>(depth) + 1);
    EXPECT_EQ(length, path.size() + 2);
    EXPECT_GT(r.json().size(), path.size());
    r.scene->removeNode("a");
    readMore(r, "b.m = [];");
    EXPECT_EQ(r.input("b.m")->size(), 0U);
}

TEST(Scene, limitsArrays) {
    Scene scene;
    scene.setLimits({.maxArrayElements = 2});
    Input* array = scene.createNode("t", "a")->createArray("list", AttrType::Int);
    EXPECT_NE(array->appendElement(), nullptr);
    EXPECT_NE(array->appendElement(), nullptr);
    EXPECT_EQ(array->appendElement(), nullptr);
    EXPECT_EQ(array->size(), 2U);
}

// Members and elements that a new value removes are no longer found, by name or index, regardless of their number.
TEST(Scene, findsOnlyTheMembersOfTheLastValue) {
    Scene scene;
    Input* object = scene.createNode("t", "a")->createInput("object", AttrType::Object);
    Input* inArray = scene.findNode("a")->createArray("array", AttrType::Object)->appendElement();
    for (Input* parent : {object, inArray})
        for (const char* prefix : {"first", "second", "third"}) {
            parent->assign(AttrData::zero(AttrType::Object));
            EXPECT_EQ(parent->size(), 0U);
            for (u64 i = 0; i < 40; ++i) {
                Input* made = parent->createInput(prefix + String(i), AttrType::Int);
                ASSERT_EQ(made, parent->children().back()) << prefix << i << " is taken for an earlier member";
                ASSERT_EQ(made->index(), i);
                ASSERT_EQ(made->key(), prefix + String(i));
            }
            for (u64 i = 0; i < 40; ++i) {
                for (const char* other : {"first", "second", "third"})
                    ASSERT_EQ(parent->input(other + String(i)), prefix == other ? parent->children()[i] : nullptr);
                ASSERT_EQ(parent->input(prefix + String(i)), parent->children()[i]);
            }
        }
}

TEST(Scene, findsOnlyTheMembersThatTheTextLeaves) {
    std::string text = "t n;";
    for (const char* prefix : {"a", "b"}) {
        text += "n.o = {};";
        for (int i = 0; i < 20; ++i)
            text += String::format("n.o.%s%d = %d;", prefix, i, i).buf();
    }
    const Reading r = readText(String(std::string_view(text)));
    EXPECT_EQ(r.log, Log{});
    ASSERT_EQ(r.input("n.o")->size(), 20U);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(r.input(String::format("n.o.a%d", i)), nullptr);
        ASSERT_NE(r.input(String::format("n.o.b%d", i)), nullptr);
        EXPECT_EQ(r.value(String::format("n.o.b%d", i)).asInt(), i);
    }
}

TEST(Node, findsInputsAndOutputsAmongMany) {
    Scene scene;
    Node* node = scene.createNode("t", "a");
    for (u64 i = 0; i < 100; ++i) {
        Input* made = node->createInput("in" + String(i), AttrType::Int);
        EXPECT_EQ(node->input("in" + String(i)), made);
        EXPECT_EQ(made->index(), i);
        EXPECT_EQ(node->createInput("in" + String(i), AttrType::Real), made) << "a name that is there";
        EXPECT_EQ(node->findOutput("out" + String(i)), node->findOutput("out" + String(i)));
    }
    EXPECT_EQ(node->input("in7")->type(), AttrType::Int);
    EXPECT_EQ(node->input("in100"), nullptr);
    EXPECT_TRUE(node->hasInput("in7"));
    EXPECT_TRUE(node->hasInput("in7", AttrType::Int));
    EXPECT_FALSE(node->hasInput("in7", AttrType::Real));
    EXPECT_FALSE(node->hasInput("nope"));
    EXPECT_EQ(node->inputs().size(), 100U);
    EXPECT_EQ(node->outputs().size(), 100U);
}

TEST(Node, growsNoOutputWhenTheSceneIsStrict) {
    Scene scene;
    Node* node = scene.createNode("t", "a");
    scene.setStrictOutputs(true);
    EXPECT_EQ(node->findOutput("out"), nullptr);
    scene.setStrictOutputs(false);
    EXPECT_NE(node->findOutput("out"), nullptr);
}

TEST(Input, takesOnlyValuesOfItsType) {
    Scene scene;
    Input* input = scene.createNode("t", "a")->createInput("x", AttrType::Null);
    input->assign(AttrData());
    EXPECT_EQ(input->type(), AttrType::Null);
    input->assign(AttrData::real(1));
    EXPECT_EQ(input->type(), AttrType::Real);
    input->assign(AttrData::integer(2));
    input->set(AttrData::integer(2));
    EXPECT_EQ(input->value().asReal(), 1);
    input->set(AttrData::real(3));
    EXPECT_EQ(input->value().asReal(), 3);
    input->setNode(&*scene.nodes().begin());
    EXPECT_EQ(input->type(), AttrType::Real);
    EXPECT_EQ(input->nodeValue(), nullptr);
}

TEST(Input, becomesANodeInputByReference) {
    Scene scene;
    Node* node = scene.createNode("t", "a");
    Input* input = node->createInput("x", AttrType::Null);
    input->setNode(nullptr);
    EXPECT_EQ(input->type(), AttrType::Node);
    input->setNode(node);
    EXPECT_EQ(input->nodeValue(), node);
    input->assign(AttrData::zero(AttrType::Node));
    EXPECT_EQ(input->nodeValue(), nullptr);
}

TEST(Input, emptiesOnNewObjectsAndArrays) {
    Reading r = readText("t a; a.o.x = 1; a.l[2] = 5;");
    Input* object = r.input("a.o");
    Input* array = r.input("a.l");
    object->assign(AttrData::zero(AttrType::Object));
    EXPECT_EQ(object->size(), 0U);
    EXPECT_EQ(object->input("x"), nullptr);
    EXPECT_NE(object->createInput("x", AttrType::Real), nullptr);
    EXPECT_EQ(object->createInput("x", AttrType::Int)->type(), AttrType::Real);
    array->set(AttrData::array(AttrType::Real));
    EXPECT_EQ(array->elementType(), AttrType::Int) << "set gives an element type only where there is none";
    EXPECT_EQ(array->size(), 3U);
    array->assign(AttrData::array(AttrType::Null));
    EXPECT_EQ(array->size(), 0U);
    EXPECT_EQ(array->elementType(), AttrType::Int) << "the element type stays";
    array->assign(AttrData::array(AttrType::Real));
    EXPECT_EQ(array->elementType(), AttrType::Real);
    EXPECT_EQ(array->element(0), nullptr);
    EXPECT_EQ(object->element(0), nullptr);
    EXPECT_EQ(object->appendElement(), nullptr);
    EXPECT_EQ(array->createInput("x", AttrType::Int), nullptr);
}

TEST(Input, countsElementsWithoutAType) {
    Scene scene;
    Input* buffers = scene.createNode("t", "a")->createArray("b", AttrType::Null);
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(buffers->appendElement());
    EXPECT_EQ(buffers->untypedElements(), 0U) << "not an array of buffers yet";
    buffers->set(AttrData::array(AttrType::Buffer));
    EXPECT_EQ(buffers->untypedElements(), 3U);
    ASSERT_TRUE(buffers->appendElement());
    EXPECT_EQ(buffers->untypedElements(), 4U);
    buffers->element(0)->set(AttrData::buffer(DataType::Float));
    buffers->element(3)->assign(AttrData::buffer(DataType::Float, 2));
    buffers->element(3)->assign(AttrData::buffer(DataType::Float, 3));
    EXPECT_EQ(buffers->untypedElements(), 2U);
    buffers->element(3)->assign(AttrData::buffer(DataType::Null));
    EXPECT_EQ(buffers->untypedElements(), 3U) << "one that has lost its type";
    buffers->assign(AttrData::array(AttrType::Null));
    EXPECT_EQ(buffers->untypedElements(), 0U);

    Input* arrays = scene.findNode("a")->createArray("c", AttrType::Array);
    ASSERT_TRUE(arrays->appendElement());
    EXPECT_EQ(arrays->untypedElements(), 1U);
    arrays->element(0)->set(AttrData::array(AttrType::Int));
    EXPECT_EQ(arrays->untypedElements(), 0U);
}

TEST(Input, countsElementsOfTypeNull) {
    Scene scene;
    Node& node = *scene.createNode("t", "a");
    Input* array = node.createArray("b", AttrType::Null);
    for (int i = 0; i < 4; ++i)
        ASSERT_TRUE(array->appendElement());
    EXPECT_EQ(array->nullElements(), 4U);
    array->element(1)->setNode(&node);
    EXPECT_EQ(array->nullElements(), 3U);
    array->element(3)->assign(AttrData::array(AttrType::Null));
    array->element(3)->assign(AttrData::array(AttrType::Null));
    EXPECT_EQ(array->nullElements(), 2U);
    ASSERT_TRUE(array->appendElement()) << "an array now";
    EXPECT_EQ(array->nullElements(), 2U);
    array->assign(AttrData::array(AttrType::Null));
    EXPECT_EQ(array->nullElements(), 0U);
}

TEST(Input, givesItsArrayAnElementType) {
    Scene scene;
    Node& node = *scene.createNode("t", "a");
    Input* array = node.createArray("b", AttrType::Null);
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(array->appendElement());
    array->element(0)->setNode(&node);
    EXPECT_EQ(array->elementType(), AttrType::Null) << "a reference is none";
    array->element(1)->assign(AttrData::real(1));
    EXPECT_EQ(array->elementType(), AttrType::Real);
    array->element(2)->assign(AttrData::integer(1));
    EXPECT_EQ(array->element(2)->type(), AttrType::Null) << "of another type";
    ASSERT_TRUE(array->appendElement());
    EXPECT_EQ(array->element(3)->type(), AttrType::Real);
}

TEST(Input, elementsFitTheirArray) {
    Scene scene;
    Input* array = scene.createNode("t", "a")->createArray("l", AttrType::Null);
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(array->appendElement());
    array->element(0)->assign(AttrData::zero(AttrType::Object));
    array->element(1)->setNode(scene.findNode("a"));
    array->set(AttrData::array(AttrType::Int));
    EXPECT_EQ(array->elementType(), AttrType::Object) << "as an element is one";
    array->set(AttrData::array(AttrType::Object));
    EXPECT_EQ(array->elementType(), AttrType::Object);
    array->element(2)->assign(AttrData::integer(1));
    EXPECT_EQ(array->element(2)->type(), AttrType::Null) << "the array is of objects";
    array->element(2)->assign(AttrData::zero(AttrType::Object));
    EXPECT_EQ(array->element(2)->type(), AttrType::Object);
}

TEST(Input, connectsToOneOutput) {
    Scene scene;
    Node* node = scene.createNode("t", "a");
    Input* input = node->createInput("x", AttrType::Real);
    Output* first = node->findOutput("first");
    Output* second = node->findOutput("second");
    input->connect(first);
    input->connect(first);
    EXPECT_EQ(first->connectionCount(), 1U);
    input->connect(second);
    EXPECT_EQ(first->connectionCount(), 0U);
    EXPECT_EQ(input->connection(), second);
    EXPECT_EQ(input->connection()->node(), node);
    input->connect(nullptr);
    EXPECT_EQ(input->connection(), nullptr);
    EXPECT_EQ(second->connectionCount(), 0U);
    input->disconnect();
}

TEST(InputCursor, visitsInputsOfAnyDepthInOrder) {
    const Reading r = readText("t n; n.a = 1; n.b.c.d = 2; n.b.e[1] = 3; n.f = 4;");
    std::string visited;
    const auto walk = [&](std::span<const Input* const> inputs) {
        visited.clear();
        for (InputCursor cursor(inputs); !cursor.isDone();) {
            if (cursor.isAtEnd()) {
                EXPECT_EQ(cursor.depth() == 0, cursor.parent() == nullptr);
                cursor.leave();
                visited += ')';
                cursor.next();
            } else {
                visited += std::string(cursor->name().view()) + (cursor.isLast() ? "!" : "") + '(';
                cursor.enter();
            }
        }
    };
    walk(r.node("n").inputs());
    EXPECT_EQ(visited, "a()b(c(d!())e!(0()1!()))f!()");
    walk(r.node("n").inputs().subspan(1)); // a part of the siblings
    EXPECT_EQ(visited, "b(c(d!())e!(0()1!()))f!()");
    walk({});
    EXPECT_EQ(visited, "");
}

TEST(Input, isSmall) { EXPECT_LE(sizeof(Input), 96U); }

TEST(Scene, mayGoBeforeAnInputThatIsHeld) {
    auto scene = std::make_unique<Scene>();
    Node* node = scene->createNode("t", "n");
    Input* object = node->createInput("o", AttrType::Object);
    Input* member = object->createInput("m", AttrType::Vec3);
    member->connect(node->findOutput("out"));
    member->retain();
    scene.reset();
    EXPECT_FALSE(member->isAttached());
    EXPECT_EQ(member->connection(), nullptr);
    EXPECT_EQ(member->value().components().size(), 3U);
    member->release();
}

TEST(Input, takesNoLinksAndNoChildrenOnceItIsTakenOut) {
    Scene scene;
    Output* output = scene.createNode("t", "other")->findOutput("out");
    for (const AttrType type : {AttrType::Null, AttrType::Node, AttrType::Object, AttrType::Array, AttrType::String}) {
        Input* input = scene.createNode("t", "n")->createInput("i", type);
        input->retain();
        scene.removeNode("n");
        input->connect(output);
        input->setNode(scene.findNode("other"));
        input->setEnumeration({"a"});
        EXPECT_EQ(input->createInput("m", AttrType::Int), nullptr);
        EXPECT_EQ(input->createArray("a", AttrType::Int), nullptr);
        EXPECT_EQ(input->appendElement(), nullptr);
        EXPECT_EQ(input->connection(), nullptr);
        EXPECT_EQ(input->nodeValue(), nullptr);
        EXPECT_TRUE(input->enumeration().isEmpty());
        EXPECT_EQ(input->type(), type);
        input->release();
    }
}

TEST(Scene, takesHintsOfAnyNames) {
    const std::vector<String> names{"a", "", "not there", "a name that is long enough to be shared"};
    std::vector<const String*> expected;
    for (int i = 0; i < 50; ++i) // more than are prefetched together
        expected.push_back(&names[static_cast<std::size_t>(i) % names.size()]);
    Scene scene;
    scene.expectNodes(expected);
    EXPECT_EQ(scene.findNode("a"), nullptr);
    Node* node = scene.createNode("t", "a");
    scene.expectNodes(expected);
    scene.expectNodes({});
    EXPECT_EQ(scene.findNode("a"), node);
    EXPECT_EQ(scene.findNode("not there"), nullptr);
}

} // namespace vrn::test
