#include "convert/import/assimp/ImportMeshes.h"

#include "convert/import/VertexWelding.h"
#include "convert/import/assimp/AssimpValues.h"
#include "convert/import/assimp/ImportMaterials.h"
#include "convert/import/assimp/ImportSkins.h"
#include "convert/shared/NodeInputs.h"
#include "convert/shared/Triangulation.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace vrn::convert {

namespace {

static_assert(sizeof(aiVector3D) == 3 * sizeof(float) && sizeof(aiColor4D) == 4 * sizeof(float),
              "arrays are copied as floats");

// The properties that determine the topology of a mesh.
struct FaceSummary {
    unsigned minCorners = ~0U; // of a face
    unsigned maxCorners = 0;
    bool hasValidIndices = true;
};

FaceSummary summarise(const aiMesh& mesh) {
    FaceSummary summary;
    for (const aiFace& face : std::span(mesh.mFaces, mesh.mNumFaces)) {
        if (face.mNumIndices == 0)
            continue;
        summary.minCorners = std::min(summary.minCorners, face.mNumIndices);
        summary.maxCorners = std::max(summary.maxCorners, face.mNumIndices);
        summary.hasValidIndices &= std::ranges::all_of(std::span(face.mIndices, face.mNumIndices),
                                                       [&](unsigned index) { return index < mesh.mNumVertices; });
    }
    return summary;
}

class MeshImport {
public:
    MeshImport(ImportContext& context, unsigned index)
        : context_(context), index_(index), mesh_(*context.from.mMeshes[index]), welding_(mesh_.mNumVertices) {}

    Node* read() {
        const String name(viewOf(mesh_.mName));
        const FaceSummary faces = summarise(mesh_);
        if (!mesh_.mVertices || mesh_.mNumVertices == 0 || !faces.hasValidIndices) {
            context_.losses.add(faces.hasValidIndices ? "meshes without points" : "meshes with indices out of range",
                                labelOf(mesh_.mName, "mesh", index_));
            return nullptr;
        }
        weld();
        node_ = &context_.create("mesh", name, "mesh");
        setText(*node_, "topology", topologyOf(faces));
        setBounds();
        set(*node_, "points", floats(DataType::Vec3f, mesh_.mVertices));
        if (mesh_.mNormals)
            set(*node_, "normals", floats(DataType::Vec3f, mesh_.mNormals));
        if (mesh_.mTangents && mesh_.mBitangents && mesh_.mNormals)
            set(*node_, "tangents", tangents());
        if (mesh_.mColors[0])
            set(*node_, "colors", floats(DataType::Rgbaf, mesh_.mColors[0]));
        addUvsets();
        addFaces(faces);
        if (Node* material = importMaterial(context_, mesh_.mMaterialIndex))
            connect(*node_, "material", *material, "outColor");
        reportUnsupported(labelOf(mesh_.mName, "mesh", index_));
        return node_;
    }

private:
    // Faces with the most corners win: points and lines are dropped from a mesh with polygons.
    const char* topologyOf(const FaceSummary& faces) const {
        if (faces.maxCorners <= 1)
            return "points";
        if (faces.maxCorners == 2)
            return "lines";
        const bool hasTriangles = faces.minCorners == 3 && faces.maxCorners == 3;
        return hasTriangles || context_.isTriangulated ? "triangles" : "polygons";
    }

    // Formats without indices repeat vertices. Without faces, each vertex is a point of its own.
    void weld() {
        const std::size_t count = mesh_.mNumVertices;
        const std::vector<BoneInfluences> influences = influencesOf(context_, mesh_, nullptr);
        std::vector<u32> numbers;
        welding_.add(std::span<const aiVector3D>(mesh_.mVertices, count));
        for (const aiVector3D* vectors : {mesh_.mNormals, mesh_.mTangents, mesh_.mBitangents})
            if (vectors)
                welding_.add(std::span<const aiVector3D>(vectors, count));
        if (mesh_.mColors[0])
            welding_.add(std::span<const aiColor4D>(mesh_.mColors[0], count));
        for (unsigned set = 0; set < AI_MAX_NUMBER_OF_TEXTURECOORDS && mesh_.mTextureCoords[set]; ++set)
            welding_.add(std::span<const aiVector3D>(mesh_.mTextureCoords[set], count));
        if (!influences.empty())
            welding_.add(std::span<const BoneInfluences>(influences));
        if (mesh_.mNumFaces == 0) {
            numbers.resize(count);
            std::iota(numbers.begin(), numbers.end(), 0U);
            welding_.add(std::span<const u32>(numbers));
        }
        welding_.weld();
        context_.keptVertices[index_] = welding_.kept();
    }

    [[nodiscard]] const std::vector<u32>& kept() const { return welding_.kept(); }

    template <class T> AttrData floats(DataType type, const T* from) const {
        AttrData buffer = AttrData::buffer(type, kept().size());
        std::byte* to = buffer.bytes().data();
        for (const u32 vertex : kept()) {
            std::memcpy(to, &from[vertex], sizeof(T));
            to += sizeof(T);
        }
        return buffer;
    }

    void setBounds() {
        double min[3];
        double max[3];
        for (unsigned axis = 0; axis < 3; ++axis) {
            const auto [low, high] = std::ranges::minmax(std::span(mesh_.mVertices, mesh_.mNumVertices), {},
                                                         [&](const aiVector3D& point) { return point[axis]; });
            min[axis] = static_cast<double>(low[axis]);
            max[axis] = static_cast<double>(high[axis]);
        }
        Input& bounds = *node_->createInput("bounds", AttrType::Object);
        setMember(bounds, "min", valueOf(AttrType::Pos3, min));
        setMember(bounds, "max", valueOf(AttrType::Pos3, max));
    }

    // The fourth component is the sign of the bitangent.
    AttrData tangents() const {
        AttrData buffer = AttrData::buffer(DataType::Vec4f, kept().size());
        const std::span<float> to = buffer.elements<float>();
        for (std::size_t i = 0; i < kept().size(); ++i) {
            const u32 vertex = kept()[i];
            const aiVector3D& tangent = mesh_.mTangents[vertex];
            const bool isFlipped = (mesh_.mNormals[vertex] ^ tangent) * mesh_.mBitangents[vertex] < 0;
            std::memcpy(&to[4 * i], &tangent, sizeof tangent);
            to[4 * i + 3] = isFlipped ? -1.F : 1.F;
        }
        return buffer;
    }

    void addUvsets() {
        Input* uvsets = nullptr;
        for (unsigned set = 0; set < AI_MAX_NUMBER_OF_TEXTURECOORDS && mesh_.mTextureCoords[set]; ++set) {
            if (!uvsets)
                uvsets = node_->createArray("uvsets", AttrType::Object);
            Input* uvset = uvsets->appendElement();
            setMember(*uvset, "name", AttrData::string(uvsetName(set)));
            setMember(*uvset, "coords", textureCoordinates(set));
            if (mesh_.mNumUVComponents[set] > 2)
                context_.losses.add("third coordinates of uvsets", *uvset);
        }
    }

    [[nodiscard]] std::string uvsetName(unsigned set) const {
        const aiString* name = mesh_.HasTextureCoordsName(set) ? mesh_.GetTextureCoordsName(set) : nullptr;
        return name && name->length != 0 ? std::string(viewOf(*name)) : "uv" + std::to_string(set);
    }

    // The origin is the lower left corner of the image in Assimp, and the upper left one here.
    AttrData textureCoordinates(unsigned set) {
        AttrData buffer = AttrData::buffer(DataType::Vec2f, kept().size());
        const std::span<float> to = buffer.elements<float>();
        bool isExact = true;
        for (std::size_t i = 0; i < kept().size(); ++i) {
            const aiVector3D& from = mesh_.mTextureCoords[set][kept()[i]];
            to[2 * i] = from.x;
            to[2 * i + 1] = 1 - from.y;
            isExact &= 1 - to[2 * i + 1] == from.y;
        }
        if (!isExact)
            context_.losses.add("last digits of texture coordinates (v is flipped)", *node_);
        return buffer;
    }

    void addFaces(const FaceSummary& faces) {
        const bool isMixed = faces.maxCorners > 2 && !(faces.minCorners == 3 && faces.maxCorners == 3);
        const unsigned minCorners = faces.maxCorners > 2 ? 3 : faces.maxCorners; // smaller faces are dropped
        std::vector<u32> corners;
        std::vector<unsigned> counts;
        corners.reserve(3 * std::size_t(mesh_.mNumFaces));
        bool isDropped = false;
        for (const aiFace& face : std::span(mesh_.mFaces, mesh_.mNumFaces)) {
            if (face.mNumIndices < minCorners) {
                isDropped = true;
                continue;
            }
            for (const unsigned vertex : std::span(face.mIndices, face.mNumIndices))
                corners.push_back(welding_.newIndex()[vertex]);
            if (isMixed)
                counts.push_back(face.mNumIndices);
        }
        if (isDropped)
            context_.losses.add("lines and points in meshes with larger faces", *node_);
        if (isMixed && context_.isTriangulated)
            setIndices("indices", DataType::UInt32, triangulated(corners, counts));
        else if (isMixed)
            setPolygons(corners, counts);
        else
            setIndices("indices", DataType::UInt32, corners);
    }

    void setPolygons(std::span<const u32> corners, const std::vector<unsigned>& counts) {
        set(*node_, "faceCounts", countsBuffer(counts));
        setIndices("faceIndices", DataType::Int32, corners);
    }

    void setIndices(const char* name, DataType type, std::span<const u32> corners) {
        AttrData indices = AttrData::buffer(type, corners.size());
        if (!corners.empty()) // null pointers must not be copied
            std::memcpy(indices.bytes().data(), corners.data(), corners.size_bytes());
        set(*node_, name, std::move(indices));
    }

    std::vector<u32> triangulated(std::span<const u32> corners, const std::vector<unsigned>& counts) {
        const std::span<const float> points = node_->input("points")->value().elements<float>();
        std::vector<u32> triangles;
        bool isExact = true;
        for (const unsigned count : counts) {
            isExact &= addTriangles(corners.first(count), points, triangles);
            corners = corners.subspan(count);
        }
        if (!isExact)
            context_.losses.add(lostConcavities, *node_);
        return triangles;
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

    void reportUnsupported(const String& name) {
        for (unsigned set = 1; set < AI_MAX_NUMBER_OF_COLOR_SETS; ++set)
            if (mesh_.mColors[set])
                context_.losses.add("further vertex colours of meshes", name);
        if (mesh_.mNumAnimMeshes != 0)
            context_.losses.add("morph targets of meshes", name);
    }

    ImportContext& context_;
    unsigned index_;
    const aiMesh& mesh_;
    VertexWelding welding_;
    Node* node_ = nullptr;
};

} // namespace

void importMeshes(ImportContext& context) {
    for (unsigned index = 0; index < context.from.mNumMeshes; ++index)
        context.meshes[index] = MeshImport(context, index).read();
}

} // namespace vrn::convert
