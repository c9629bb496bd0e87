#include "convert/model/InputTypes.h"
#include "inspect/read/NamedCatalogue.h"
#include "scene/Catalogue.h"

#include <gtest/gtest.h>

#include <set>

namespace vrn::test {

using namespace vrn::convert;

namespace {

// What the exporters can take from an input that the catalogue declares.
InputUse useOf(const InputType& input) {
    const AttrType type = input.type == AttrType::Array ? input.elementType : input.type;
    switch (vor::velmo_sdk::valueKind(type)) {
    case ValueKind::String:
        return {.taken = Taken::Text};
    case ValueKind::Bool:
        return {.taken = Taken::Boolean};
    case ValueKind::Int:
    case ValueKind::UInt:
    case ValueKind::Real:
        return {.taken = Taken::Number};
    case ValueKind::Components:
        return {.taken = Taken::Components, .components = vor::velmo_sdk::componentCount(type)};
    case ValueKind::Buffer:
        return {.taken = Taken::Buffer};
    case ValueKind::Null: // a connection
    case ValueKind::Node:
    case ValueKind::Array:
    case ValueKind::Object:
        break;
    }
    return {.taken = Taken::Link};
}

using Declared = std::map<std::string, InputUse>;

void addDeclared(const std::vector<InputType>& inputs, const std::string& prefix, Declared& declared) {
    for (const InputType& input : inputs) {
        const std::string suffix = input.type == AttrType::Array ? "[]" : "";
        const std::string pattern = prefix + std::string(input.name.view()) + suffix;
        if (input.members.empty())
            declared[pattern] = useOf(input);
        else
            addDeclared(input.members, pattern + '.', declared);
    }
}

Declared declaredInputs() {
    const auto file = inspect::readNamedCatalogue(VRN_TEST_DATA "/../../catalogues/scene.json");
    Declared declared;
    for (const std::string_view name : file->typeNames())
        addDeclared(file->find(name)->inputs(), "", declared);
    return declared;
}

} // namespace

TEST(InputTypes, areThoseOfTheCatalogue) {
    const std::set<std::string> unread = {"castShadows", "height", "loop", "pixels", "visible", "width"};
    for (const auto& [pattern, use] : declaredInputs()) {
        SCOPED_TRACE(pattern);
        if (pattern.starts_with("subdivision.")) // what none of the exporters can express
            continue;
        const auto known = inputUses().find(pattern);
        ASSERT_EQ(known == inputUses().end(), unread.contains(pattern));
        if (unread.contains(pattern))
            continue;
        EXPECT_EQ(known->second.taken, use.taken);
        EXPECT_LE(known->second.components, use.components);
    }
}

TEST(InputTypes, areDeclaredInTheCatalogue) {
    const Declared declared = declaredInputs();
    for (const auto& [pattern, use] : inputUses())
        EXPECT_TRUE(declared.contains(pattern)) << pattern;
}

} // namespace vrn::test
