#include "convert/import/ImportContext.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace vrn::convert {

namespace {

static_assert(sizeof(aiVector3D) == 3 * sizeof(float) && sizeof(aiColor4D) == 4 * sizeof(float),
              "lists of numbers are copied as they stand");

// What the faces of a mesh have in common.
struct FaceSummary {
    u64 faces = 0;
    u64 corners = 0;
    unsigned least = ~0U; // corners of one face
    unsigned most = 0;
    bool isSound = true; // no corner is beyond the points
};

FaceSummary summarise(const aiMesh& mesh) {
    FaceSummary summary;
    for (const aiFace& face : std::span(mesh.mFaces, mesh.mNumFaces)) {
        if (face.mNumIndices == 0)
            continue;
        ++summary.faces;
        summary.corners += face.mNumIndices;
        summary.least = std::min(summary.least, face.mNumIndices);
        summary.most = std::max(summary.most, face.mNumIndices);
        summary.isSound &= std::ranges::all_of(std::span(face.mIndices, face.mNumIndices),
                                               [&](unsigned index) { return index < mesh.mNumVertices; });
    }
    return summary;
}

class MeshImport {
public:
    MeshImport(ImportContext& import, unsigned number)
        : import_(import), number_(number), mesh_(*import.from.mMeshes[number]) {}

    Node* read() {
        const String name(textOf(mesh_.mName));
        const FaceSummary faces = summarise(mesh_);
        if (!mesh_.mVertices || mesh_.mNumVertices == 0 || !faces.isSound) {
            import_.losses.add(
                faces.isSound ? "meshes without points" : "meshes whose faces have points that are not there", name);
            return nullptr;
        }
        node_ = &import_.create("mesh", name, "mesh");
        setText(*node_, "topology", topologyOf(faces));
        setBounds();
        set(*node_, "points", numbers(DataType::Vec3f, mesh_.mVertices));
        if (mesh_.mNormals)
            set(*node_, "normals", numbers(DataType::Vec3f, mesh_.mNormals));
        if (mesh_.mTangents && mesh_.mBitangents && mesh_.mNormals)
            set(*node_, "tangents", tangents());
        if (mesh_.mColors[0])
            set(*node_, "colors", numbers(DataType::Rgbaf, mesh_.mColors[0]));
        addUvsets();
        addFaces(faces);
        if (Node* material = importMaterial(import_, mesh_.mMaterialIndex))
            connect(*node_, "material", *material, "outColor");
        noteOthers(name);
        return node_;
    }

private:
    // Of faces with one, two and more corners, those with most count.
    static const char* topologyOf(const FaceSummary& faces) {
        if (faces.most <= 1)
            return "points";
        if (faces.most == 2)
            return "lines";
        return faces.least == 3 && faces.most == 3 ? "triangles" : "polygons";
    }

    template <class T> AttrData numbers(DataType type, const T* from) const {
        AttrData buffer = AttrData::buffer(type, mesh_.mNumVertices);
        std::memcpy(buffer.bytes().data(), from, buffer.bytes().size());
        return buffer;
    }

    void setBounds() {
        double least[3];
        double most[3];
        for (unsigned axis = 0; axis < 3; ++axis) {
            const auto [low, high] = std::ranges::minmax(std::span(mesh_.mVertices, mesh_.mNumVertices), {},
                                                         [&](const aiVector3D& point) { return point[axis]; });
            least[axis] = static_cast<double>(low[axis]);
            most[axis] = static_cast<double>(high[axis]);
        }
        Input& bounds = *node_->createInput("bounds", AttrType::Object);
        setMember(bounds, "min", numbersOf(AttrType::Pos3, least));
        setMember(bounds, "max", numbersOf(AttrType::Pos3, most));
    }

    // The fourth number says on which side of the normal and the tangent the other tangent is.
    AttrData tangents() const {
        AttrData buffer = AttrData::buffer(DataType::Vec4f, mesh_.mNumVertices);
        const std::span<float> to = buffer.elements<float>();
        for (std::size_t i = 0; i < mesh_.mNumVertices; ++i) {
            const aiVector3D& tangent = mesh_.mTangents[i];
            const bool isOther = (mesh_.mNormals[i] ^ tangent) * mesh_.mBitangents[i] < 0;
            std::memcpy(&to[4 * i], &tangent, sizeof tangent);
            to[4 * i + 3] = isOther ? -1.F : 1.F;
        }
        return buffer;
    }

    void addUvsets() {
        Input* uvsets = nullptr;
        for (unsigned set = 0; set < AI_MAX_NUMBER_OF_TEXTURECOORDS && mesh_.mTextureCoords[set]; ++set) {
            if (!uvsets)
                uvsets = node_->createArray("uvsets", AttrType::Object);
            Input* uvset = uvsets->appendElement();
            setMember(*uvset, "name", AttrData::string((String("uv") + String(u64(set))).view()));
            setMember(*uvset, "coords", coordinates(set));
            if (mesh_.mNumUVComponents[set] > 2)
                import_.losses.add("third coordinates of uvsets", *uvset);
        }
    }

    // They begin in the lower left corner of the picture there, in the upper left one here. Where a file has the
    // latter, too, turning them there and back loses digits, unless the file itself can be asked.
    AttrData coordinates(unsigned set) {
        AttrData buffer = AttrData::buffer(DataType::Vec2f, mesh_.mNumVertices);
        const std::span<float> to = buffer.elements<float>();
        const std::vector<float> exact = import_.gltf.verticals(number_, set, mesh_.mNumVertices);
        bool isSame = true;
        for (std::size_t i = 0; i < mesh_.mNumVertices; ++i) {
            const aiVector3D& from = mesh_.mTextureCoords[set][i];
            const bool isKnown = !exact.empty() && 1 - exact[i] == from.y;
            to[2 * i] = from.x;
            to[2 * i + 1] = isKnown ? exact[i] : 1 - from.y;
            isSame &= isKnown || 1 - to[2 * i + 1] == from.y;
        }
        if (!isSame)
            import_.losses.add("last digits of coordinates of uvsets, which are turned upside down", *node_);
        return buffer;
    }

    void addFaces(const FaceSummary& faces) {
        const bool isMixed = faces.most > 2 && !(faces.least == 3 && faces.most == 3);
        const unsigned least = faces.most > 2 ? 3 : faces.most; // faces with fewer are left out
        AttrData indices = AttrData::buffer(isMixed ? DataType::Int32 : DataType::UInt32, cornersFrom(least));
        std::vector<unsigned> counts;
        auto next = reinterpret_cast<u32*>(indices.bytes().data());
        u64 left = 0;
        for (const aiFace& face : std::span(mesh_.mFaces, mesh_.mNumFaces)) {
            if (face.mNumIndices < least) {
                ++left;
                continue;
            }
            next = std::copy_n(face.mIndices, face.mNumIndices, next);
            if (isMixed)
                counts.push_back(face.mNumIndices);
        }
        if (left != 0)
            import_.losses.add("meshes with lines and points beside their polygons", *node_);
        if (isMixed)
            set(*node_, "faceCounts", countsBuffer(counts));
        set(*node_, isMixed ? "faceIndices" : "indices", std::move(indices));
    }

    u64 cornersFrom(unsigned least) const {
        u64 corners = 0;
        for (const aiFace& face : std::span(mesh_.mFaces, mesh_.mNumFaces))
            corners += face.mNumIndices < least ? 0 : face.mNumIndices;
        return corners;
    }

    static AttrData countsBuffer(const std::vector<unsigned>& counts) {
        const bool isSmall = std::ranges::all_of(counts, [](unsigned count) { return count <= 255; });
        AttrData buffer = AttrData::buffer(isSmall ? DataType::Byte : DataType::UInt32, counts.size());
        if (isSmall)
            std::ranges::transform(counts, buffer.elements<u8>().begin(),
                                   [](unsigned n) { return static_cast<u8>(n); });
        else
            std::ranges::copy(counts, buffer.elements<u32>().begin());
        return buffer;
    }

    void noteOthers(const String& name) {
        for (unsigned set = 1; set < AI_MAX_NUMBER_OF_COLOR_SETS; ++set)
            if (mesh_.mColors[set])
                import_.losses.add("colours of meshes beyond the first", name);
        if (mesh_.mNumAnimMeshes != 0)
            import_.losses.add("morph targets of meshes", name);
    }

    ImportContext& import_;
    unsigned number_;
    const aiMesh& mesh_;
    Node* node_ = nullptr;
};

// The four joints of a vertex that count most.
class Influences {
public:
    // False if one had to go.
    bool add(u32 joint, float weight) {
        const auto least = std::ranges::min_element(weights_);
        const bool isFull = *least != 0;
        if (weight > *least) {
            const auto place = static_cast<std::size_t>(least - weights_.begin());
            weights_[place] = weight;
            joints_[place] = joint;
        }
        return !isFull;
    }
    [[nodiscard]] const std::array<u32, 4>& joints() const noexcept { return joints_; }
    [[nodiscard]] const std::array<float, 4>& weights() const noexcept { return weights_; }

private:
    std::array<u32, 4> joints_{};
    std::array<float, 4> weights_{};
};

void addWeights(ImportContext& import, const aiMesh& mesh, Node& node) {
    std::vector<Influences> influences(mesh.mNumVertices);
    bool isWhole = true;
    for (u32 joint = 0; joint < mesh.mNumBones; ++joint)
        for (const aiVertexWeight& weight : std::span(mesh.mBones[joint]->mWeights, mesh.mBones[joint]->mNumWeights))
            if (weight.mVertexId < influences.size() && weight.mWeight > 0)
                isWhole &= influences[weight.mVertexId].add(joint, weight.mWeight);
    if (!isWhole)
        import.losses.add("weights of skins beyond the four that count most", node);
    AttrData joints = AttrData::buffer(DataType::Vec4u, mesh.mNumVertices);
    AttrData weights = AttrData::buffer(DataType::Vec4f, mesh.mNumVertices);
    for (std::size_t i = 0; i < influences.size(); ++i) {
        std::ranges::copy(influences[i].joints(), joints.elements<u32>().subspan(4 * i).begin());
        std::ranges::copy(influences[i].weights(), weights.elements<float>().subspan(4 * i).begin());
    }
    Input& skin = *node.createInput("skin", AttrType::Object);
    setMember(skin, "joints", std::move(joints));
    setMember(skin, "weights", std::move(weights));
}

// The joints of a mesh and their matrices; null if one of them is no node.
Node* addSkin(ImportContext& import, const aiMesh& mesh, const Node& node) {
    AttrData matrices = AttrData::buffer(DataType::Mat4f, mesh.mNumBones);
    std::vector<Node*> joints;
    for (std::size_t i = 0; i < mesh.mNumBones; ++i) {
        const aiBone& bone = *mesh.mBones[i];
        Node* joint = import.nodeOf(bone.mName);
        if (!joint) {
            import.losses.add("skins with joints that are no nodes", node);
            return nullptr;
        }
        joints.push_back(joint);
        const Matrix matrix = matrixOf(bone.mOffsetMatrix);
        for (std::size_t k = 0; k < 16; ++k)
            matrices.elements<float>()[16 * i + k] = static_cast<float>(matrix[k]);
    }
    Node& skin = import.create("skin", "", (std::string(node.name().view()) + "_skin").c_str());
    Input& list = *skin.createArray("joints", AttrType::Null);
    for (Node* joint : joints)
        if (Input* element = list.appendElement())
            element->setNode(joint);
    set(skin, "inverseBind", std::move(matrices));
    return &skin;
}

} // namespace

void importMeshes(ImportContext& import) {
    for (unsigned number = 0; number < import.from.mNumMeshes; ++number)
        import.meshes[number] = MeshImport(import, number).read();
}

void importSkins(ImportContext& import) {
    for (unsigned number = 0; number < import.from.mNumMeshes; ++number) {
        const aiMesh& mesh = *import.from.mMeshes[number];
        Node* node = import.meshes[number];
        if (!node || mesh.mNumBones == 0)
            continue;
        if (Node* skin = addSkin(import, mesh, *node)) {
            addWeights(import, mesh, *node);
            import.skins[number] = skin;
        }
    }
}

} // namespace vrn::convert
