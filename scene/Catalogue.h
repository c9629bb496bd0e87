// Catalogue: what a host knows of its node types, so that nodes start as they should.
//
//     NodeType camera("camera");
//     camera.addInput({.name = "fov", .type = AttrType::Real, .defaultValue = AttrData::real(45)});
//     camera.addOutput("image");
//     camera.renameInput("fovy", "fov");           // texts that say fovy mean fov
//     auto catalogue = std::make_shared<Catalogue>();
//     catalogue->add(std::move(camera));
//     scene.setCatalogue(std::move(catalogue));
//
// readCatalogue() in CatalogueJson.h reads one from a file. A catalogue does not change once a scene
// has it, so scenes on several threads may share one.
#pragma once

#include "scene/AttrData.h"
#include "scene/core/Export.h"
#include "scene/core/String.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vor::velmo_sdk::impl {

// An input that every node of a type starts with.
struct VRN_API InputType {
    String name;
    AttrType type = AttrType::Null;
    DataType dataType = DataType::Null;    // of a Buffer
    AttrType elementType = AttrType::Null; // of an Array
    AttrData defaultValue{};               // of `type`; Null stands for the zero value
    StringVector enumeration{};            // of a String
    bool isLocked = false;
    bool isLinkOnly = false;

    // The value that a new input has.
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
    [[nodiscard]] String currentInputName(const String& name) const { return current(renamedInputs_, name); }
    [[nodiscard]] String currentOutputName(const String& name) const { return current(renamedOutputs_, name); }

    // A name by which texts mean the input or output `name`: that name, or if that is an older name of another one, the
    // first older name that leads to it. Nothing if there is none.
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
    // Adds a type; one of the same name is replaced.
    void add(NodeType type);

    // The type of that name, or null.
    [[nodiscard]] const NodeType* find(std::string_view name) const noexcept;

    [[nodiscard]] std::size_t size() const noexcept { return types_.size(); }

private:
    std::map<std::string, NodeType, std::less<>> types_;
};

} // namespace vor::velmo_sdk::impl
