// The views of a node and of an input: `node.inputs`, `node.outputs`, `input.children`; walks through all inputs of a
// node.
#pragma once

#include "python/src/References.h"

#include <ranges>

namespace vrn::python {

struct NodeInputs {
    NodeReference node;
};
struct NodeOutputs {
    NodeReference node;
};

// The members of an object by name, and the elements of an array by index.
struct Children {
    InputReference input;
};

// The inputs of a node in preorder. Holds the input it is at; if that is removed in the meantime, next() raises
// RemovedError.
class Walk {
public:
    explicit Walk(const NodeReference& node);
    [[nodiscard]] std::optional<InputReference> next(); // nothing at the end

private:
    InputReference moveTo(const Input* input);

    NodeReference node_;
    std::optional<InputReference> at_;
    std::size_t nextTop_ = 0;
};

// `with node.edit(name) as array`: a writable array, which is read-only from the end of the block on.
class Editing {
public:
    explicit Editing(InputReference input) : input_(std::move(input)) {}
    ~Editing() { end(); }
    Editing(const Editing&) = delete;
    Editing& operator=(const Editing&) = delete;

    // Raises RuntimeError if the buffer is being edited already.
    [[nodiscard]] nb::object enter();

    // Raises RuntimeError if the buffer was replaced in the meantime, so that what was written is lost; unless the
    // block has raised an exception itself.
    void exit(bool hasRaised);

private:
    void end();

    InputReference input_;
    std::string label_; // of the input, which can be removed
    nb::object array_;
    const std::byte* bytes_ = nullptr; // of the buffer, to notice another one
};

// The names of inputs or outputs.
[[nodiscard]] auto keysOf(const auto& items) {
    return items | std::views::transform([](const auto* item) { return item->key().view(); });
}
[[nodiscard]] nb::list namesOf(const auto& items) {
    nb::list names;
    for (const std::string_view name : keysOf(items))
        names.append(str(name));
    return names;
}

// Whether a node or an object has an input of that name; any other key is in none.
[[nodiscard]] bool contains(const auto& parent, nb::handle name) {
    const std::optional<std::string> text = nameIn(name);
    return text && parent.input(std::string_view(*text)) != nullptr;
}

void bindNamedViews(nb::module_& m);

} // namespace vrn::python
