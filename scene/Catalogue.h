// Catalogue: the node types that a host declares: the inputs of their new nodes, their outputs, and older names of
// both.
//
//     NodeType camera("camera");
//     camera.addInput({.name = "fov", .type = AttrType::Real, .defaultValue = AttrData::real(45)});
//     camera.addOutput("image");
//     camera.renameInput("fovy", "fov");           // `fovy` in a file means `fov`
//     auto catalogue = std::make_shared<Catalogue>();
//     catalogue->add(std::move(camera));
//     scene.setCatalogue(std::move(catalogue));
//
// readCatalogue() in CatalogueJson.h reads a catalogue from JSON. A scene shares its catalogue, which must not change
// from then on; several scenes, on several threads, may share one. Additions may throw std::bad_alloc.
#pragma once

#include "scene/AttrData.h"
#include "scene/core/Export.h"
#include "scene/core/String.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vor::velmo_sdk::impl {

// An input that every node of a type has from its creation.
struct VRN_API InputType {
    String name;
    AttrType type = AttrType::Null;
    DataType dataType = DataType::Null;    // of a Buffer
    AttrType elementType = AttrType::Null; // of an Array
    AttrData defaultValue{};               // of `type`; otherwise the zero value applies
    StringVector enumeration{};            // of a String
    bool isLocked = false;
    bool isLinkOnly = false;

    // The value of a new input.
    [[nodiscard]] AttrData initialValue() const;
};

class VRN_API NodeType {
public:
    explicit NodeType(String name) : name_(std::move(name)) {}

    void addInput(InputType input) { inputs_.push_back(std::move(input)); }
    void addOutput(const String& name) { outputs_.push(name); }
    void renameInput(const String& oldName, const String& name) { renamedInputs_[std::string(oldName.view())] = name; }
    void renameOutput(const String& oldName, const String& name) {
        renamedOutputs_[std::string(oldName.view())] = name;
    }

    [[nodiscard]] const String& name() const noexcept { return name_; }
    [[nodiscard]] const std::vector<InputType>& inputs() const noexcept { return inputs_; }
    [[nodiscard]] const StringVector& outputs() const noexcept { return outputs_; }
    // The input or output that a file means by `name`: `name` itself unless it is an older name. O(log n).
    [[nodiscard]] String currentInputName(const String& name) const { return current(renamedInputs_, name); }
    [[nodiscard]] String currentOutputName(const String& name) const { return current(renamedOutputs_, name); }

    // The inverse of the current names: a name that a file can use for the input or output `name`. It is `name` itself,
    // or if that is an older name of another one, the first older name of `name` that is an identifier. Nothing if
    // there is none. Linear in the number of older names.
    [[nodiscard]] std::optional<std::string> inputNameInText(const String& name) const {
        return inText(renamedInputs_, name);
    }
    [[nodiscard]] std::optional<std::string> outputNameInText(const String& name) const {
        return inText(renamedOutputs_, name);
    }

private:
    using Renames = std::map<std::string, String, std::less<>>;
    static String current(const Renames& renames, const String& name);
    static std::optional<std::string> inText(const Renames& renames, const String& name);

    String name_;
    std::vector<InputType> inputs_;
    StringVector outputs_;
    Renames renamedInputs_;
    Renames renamedOutputs_;
};

class VRN_API Catalogue {
public:
    // Adds a type, which replaces one of the same name.
    void add(NodeType type);

    // The type of that name, or null; valid until it is replaced. O(log n).
    [[nodiscard]] const NodeType* find(std::string_view name) const noexcept;

    [[nodiscard]] std::size_t size() const noexcept { return types_.size(); }

private:
    std::map<std::string, NodeType, std::less<>> types_;
};

} // namespace vor::velmo_sdk::impl
