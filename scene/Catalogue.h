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
// Some members only say what to expect of a scene: the reader ignores them, checks use them (check/SceneCheck.h).
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

// What the number of elements of an input is compared with.
struct VRN_API CountTerm {
    enum class Of { Elements, Numbers, Sum };
    Of of = Of::Elements; // of the input at `path`: its elements, its numbers, or the sum of its numbers
    String path;          // as in InputType::indexes
    u64 factor = 1;       // of the count
    String text;          // as written, for messages
};

// What an input says of the hierarchy of nodes.
enum class HierarchyRole { None, Parent, Children };

// An input that every node of a type has from its creation, unless it is optional; or a member of such an input.
//
// For an Array, the values and links that are described are those of its elements, and so are the members. A path leads
// from the node to an input: `points`, `skin.joints`. In `uvsets[].coords`, `[]` stands for the element that contains
// the input which has the path.
struct VRN_API InputType {
    String name;
    AttrType type = AttrType::Null;
    DataType dataType = DataType::Null;    // of a Buffer
    AttrType elementType = AttrType::Null; // of an Array
    AttrData defaultValue{};               // of `type`; otherwise the zero value applies
    StringVector enumeration{};            // of a String
    bool isLocked = false;
    bool isLinkOnly = false;

    // For checks only.
    bool isOptional = false;          // new nodes do not have it
    std::vector<InputType> members{}; // of an Object, or of the Objects of an Array
    StringVector accepts{};           // the node types that links may lead to; empty for all
    std::optional<double> minimum{};  // of all numbers of a value
    std::optional<double> maximum{};  // likewise
    StringVector indexes{};           // paths of what the numbers of a Buffer are indices of
    std::vector<CountTerm> countOf{}; // the count of a Buffer or Array is one of these; empty for any
    bool isFile = false;              // a String is the name of a file
    StringVector embeddedIn{};        // paths of inputs that may hold the contents of the file instead
    HierarchyRole hierarchy = HierarchyRole::None;

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
    void setOpen(bool open) noexcept { isOpen_ = open; }
    void setRoot(bool root) noexcept { isRoot_ = root; }

    [[nodiscard]] const String& name() const noexcept { return name_; }
    [[nodiscard]] const std::vector<InputType>& inputs() const noexcept { return inputs_; }
    [[nodiscard]] const StringVector& outputs() const noexcept { return outputs_; }

    // For checks only: whether nodes may have inputs that are not declared, and whether they need no other node to
    // refer to them.
    [[nodiscard]] bool isOpen() const noexcept { return isOpen_; }
    [[nodiscard]] bool isRoot() const noexcept { return isRoot_; }

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
    bool isOpen_ = false;
    bool isRoot_ = false;
};

class VRN_API Catalogue {
public:
    // Adds a type, which replaces one of the same name.
    void add(NodeType type);

    // The type of that name, or null; valid until it is replaced. O(log n).
    [[nodiscard]] const NodeType* find(std::string_view name) const noexcept;

    [[nodiscard]] std::size_t size() const noexcept { return types_.size(); }

    // The names of all types, sorted; valid until one is added.
    [[nodiscard]] std::vector<std::string_view> typeNames() const;

private:
    std::map<std::string, NodeType, std::less<>> types_;
};

} // namespace vor::velmo_sdk::impl
