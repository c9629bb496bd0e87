#include "convert/import/gltf/GltfMeshImport.h"

#include "convert/import/Bounds.h"
#include "convert/import/gltf/GltfAttributes.h"
#include "convert/import/gltf/GltfPrimitiveModes.h"

#include <algorithm>
#include <set>

namespace vrn::convert {

namespace {

// By convention, the names of morph targets are in the extras of their mesh, which otherwise are any JSON.
constexpr const char* targetNamesMember = "targetNames";

std::vector<std::string> targetNames(const GltfValue& mesh) {
    std::vector<std::string> names;
    const GltfValue extras = mesh["extras"];
    const GltfValue list = extras.isObject() ? extras[targetNamesMember] : extras;
    if (!list.isArray() || !extras.isObject() || mesh["primitives"].size() == 0 ||
        list.size() != mesh["primitives"][u64(0)]["targets"].size())
        return names;
    for (u64 i = 0; i < list.size(); ++i) {
        if (!list[i].isText() || list[i].text().empty())
            return {};
        names.emplace_back(list[i].text());
    }
    return names;
}

// Without the names of the targets, which then are those of the targets here.
void keepMeshExtras(Node& node, const GltfValue& mesh, bool hasTargetNames) {
    const GltfValue extras = mesh["extras"];
    if (!extras.exists())
        return;
    const std::string text = extras.json(hasTargetNames ? targetNamesMember : "");
    if (text != "{}" || !hasTargetNames)
        setText(node, "extras", text);
}

class PrimitiveImport {
public:
    PrimitiveImport(GltfContext& context, const GltfValue& mesh, const GltfValue& primitive,
                    const std::vector<std::string>& targetNames)
        : context_(context), mesh_(mesh), primitive_(primitive), targetNames_(targetNames),
          attributes_(context, primitive) {}

    // Null if there are no points or no whole faces.
    Node* read() {
        if (!attributes_.has("POSITION")) {
            context_.losses.add("meshes without points",
                                [&] { return String(std::string_view(primitive_.pointer())); });
            return nullptr;
        }
        bool isComplete = true;
        const PrimitiveList faces =
            listOf(primitive_["mode"], attributes_.indices(), attributes_.vertices(), isComplete);
        if (faces.indices.empty()) {
            context_.losses.add("meshes without whole faces",
                                [&] { return String(std::string_view(primitive_.pointer())); });
            return nullptr;
        }
        node_ = &context_.maker.create("mesh", mesh_["name"].text(), "mesh");
        if (!isComplete)
            context_.losses.add("corners after the last whole face", *node_);
        addFaces(faces);
        addVertices();
        addSkinning();
        addCustomAttributes();
        addTargets();
        if (Node* material = context_.materialOf(primitive_["material"]))
            connect(*node_, "material", *material, "outColor");
        addVariants();
        context_.keepExtras(*node_, "partExtras", primitive_);
        return node_;
    }

private:
    void addFaces(const PrimitiveList& list) {
        setText(*node_, "topology", list.topology);
        if (list.isSequence)
            return;
        AttrData indices = AttrData::buffer(DataType::UInt32, list.indices.size());
        std::ranges::copy(list.indices, indices.elements<u32>().begin());
        set(*node_, "indices", std::move(indices));
    }

    void addVertices() {
        AttrData points = attributes_.floats("POSITION", DataType::Vec3f);
        setBounds(*node_, points.elements<float>());
        set(*node_, "points", std::move(points));
        if (attributes_.has("NORMAL"))
            set(*node_, "normals", attributes_.floats("NORMAL", DataType::Vec3f));
        if (attributes_.has("TANGENT"))
            set(*node_, "tangents", attributes_.floats("TANGENT", DataType::Vec4f));
        if (attributes_.has("COLOR_0"))
            set(*node_, "colors", attributes_.colors("COLOR_0"));
        forEachSet("TEXCOORD_", 0, [&](const std::string& name, u64 i) {
            Input& uvset = append("uvsets");
            setMember(uvset, "name", AttrData::string("uv" + std::to_string(i)));
            setMember(uvset, "coords", attributes_.floats(name, DataType::Vec2f));
        });
        forEachSet("COLOR_", 1, [&](const std::string& name, u64) {
            setMember(append("colorsets"), "colors", attributes_.colors(name));
        });
    }

    // Four joints and weights per point; further ones in `more`.
    void addSkinning() {
        forEachSet("JOINTS_", 0, [&](const std::string& joints, u64 i) {
            const std::string weights = "WEIGHTS_" + std::to_string(i);
            if (!attributes_.has(weights))
                return context_.losses.add("joints without weights, or weights without joints", *node_);
            Input& owner = i == 0 ? *node_->createInput("skin", AttrType::Object) : append("skin.more");
            setMember(owner, "joints", attributes_.integers(joints));
            setMember(owner, "weights", attributes_.floats(weights, DataType::Vec4f));
        });
    }

    void addCustomAttributes() {
        primitive_["attributes"].forEachMember([&](std::string_view name, const GltfValue& accessor) {
            if (!name.starts_with('_'))
                return;
            context_.appendAttribute(*node_, "attributes", name, accessor,
                                     [&](DataType type) { return attributes_.floats(std::string(name), type); });
        });
    }

    void addTargets() {
        primitive_["targets"].forEach([&](const GltfValue& target, u64 i) {
            Input& to = append("targets");
            if (i < targetNames_.size())
                setMember(to, "name", AttrData::string(targetNames_[i]));
            const auto add = [&](const char* attribute, const char* member, DataType type) {
                if (target[attribute].exists())
                    setMember(to, member, deltas(target[attribute], type));
            };
            add("POSITION", "points", DataType::Vec3f);
            add("NORMAL", "normals", DataType::Vec3f);
            add("TANGENT", "tangents", DataType::Vec3f);
            add("TEXCOORD_0", "coords", DataType::Vec2f);
            const GltfValue colors = target["COLOR_0"];
            if (colors.exists())
                add("COLOR_0", "colors",
                    context_.accessors.componentsOf(colors) == 3 ? DataType::Rgbf : DataType::Rgbaf);
        });
    }

    [[nodiscard]] AttrData deltas(const GltfValue& accessor, DataType type) const {
        AttrData deltas = context_.accessors.floats(accessor, type);
        if (deltas.count() != attributes_.vertices())
            accessor.refuse("the target has " + std::to_string(deltas.count()) + " elements for " +
                            std::to_string(attributes_.vertices()) + " points");
        return deltas;
    }

    // The materials that this primitive has in variants of the whole file.
    void addVariants() {
        const GltfValue names = context_.root.extension("KHR_materials_variants")["variants"];
        const GltfValue mappings = primitive_.extension("KHR_materials_variants")["mappings"];
        mappings.forEach([&](const GltfValue& mapping, u64) {
            Node* material = context_.materialOf(mapping["material"].required());
            mapping["variants"].forEach([&](const GltfValue& variant, u64) {
                Input& to = append("variants");
                setMember(to, "variant", AttrData::unsignedInteger(variant.indexIn(names)));
                to.createInput("material", AttrType::Null)->connect(material->findOutput("outColor"));
            });
        });
    }

    // Calls `act` for the attributes with that prefix and the numbers from `first` on, without a gap, up to 64. Others
    // remain unread and are reported as such.
    void forEachSet(const char* prefix, u64 first, auto act) {
        constexpr u64 most = 64; // the work on joints is quadratic in the number of sets
        for (u64 i = first; i < most && attributes_.has(prefix + std::to_string(i)); ++i)
            act(prefix + std::to_string(i), i);
    }

    Input& append(const char* list) { return context_.append(*node_, list); }

    GltfContext& context_;
    const GltfValue& mesh_;
    const GltfValue& primitive_;
    const std::vector<std::string>& targetNames_;
    GltfAttributes attributes_;
    Node* node_ = nullptr;
};

} // namespace

void importMeshes(GltfContext& context) {
    const GltfValue meshes = context.root["meshes"];
    std::set<u64> used;
    context.root["nodes"].forEach([&](const GltfValue& node, u64) {
        if (node["mesh"].exists())
            used.insert(node["mesh"].indexIn(meshes));
    });
    context.meshes.resize(meshes.size());
    for (const u64 index : used) {
        const GltfValue mesh = meshes[index];
        std::vector<Node*>& parts = context.meshes[index];
        const std::vector<std::string> names = targetNames(mesh);
        mesh["primitives"].required().forEach([&](const GltfValue& primitive, u64) {
            if (Node* part = PrimitiveImport(context, mesh, primitive, names).read())
                parts.push_back(part);
        });
        if (!parts.empty()) {
            keepMeshExtras(*parts[0], mesh, !names.empty());
            context.setWeights(*parts[0], mesh["weights"]);
        }
    }
}

} // namespace vrn::convert
