// Assigns Python objects to inputs, by the rules of types that the reader has.
//
//     Preparation prepared = prepare(box, value, inputTypeOf(input), labelOf(input));    // may run code of the value
//     box->turns.beforeChanging();
//     apply(std::move(prepared), input);                                                 // runs none
//
// A value of another type is converted if that loses nothing. Everything is converted before anything changes, so that
// an assignment happens as a whole or not at all.
#pragma once

#include "python/src/References.h"

#include <memory>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

namespace vrn::python {

// The type of an input as Python programs name it: `Real`, `Real[]` for an array of reals, `vec3f[]` for a buffer. Null
// stands for a type that the value determines.
struct InputType {
    AttrType type = AttrType::Null;
    AttrType elements = AttrType::Null; // of an array
    DataType data = DataType::Null;     // of a buffer
};
[[nodiscard]] InputType inputTypeOf(const Input& input);
[[nodiscard]] InputType inputTypeNamed(std::string_view name); // raises ValueError
[[nodiscard]] std::string nameOf(const Input& input);          // the inverse

// What an input will be: nothing, a value, a reference, a connection, or what its elements or members will be.
struct Preparation {
    struct Member {
        String name; // empty for an element
        std::unique_ptr<Preparation> value;
    };
    using Members = std::vector<Member>;

    InputType type{};
    std::variant<std::monostate, AttrData, NodeReference, OutputReference, Members> value{};
};

// Raises TypeError, which names both types, ValueError for a text with NUL, a member whose name no text can say, a node
// of another scene or too many elements, OverflowError for an integer that is too large, and RecursionError. `label` is
// how messages call the input.
[[nodiscard]] Preparation prepare(const Box& box, nb::handle value, const InputType& type, const std::string& label);

// Replaces the value, reference or connection of an input. Raises TypeError if the input has another type since.
void apply(Preparation prepared, Input& input);

// All of it for an input that exists. Raises RemovedError if it is removed in the meantime.
void assign(const InputReference& input, nb::handle value);

// Adds an input to a node or an object; without a value (None) it has the zero value of its type. Raises ValueError if
// the name is taken, or if no text can say it.
template <class Parent>
InputReference addInput(const Reference<Parent>& parent, nb::handle name, const InputType& type, nb::handle value);

} // namespace vrn::python
