#include "convert/import/assimp/ImportMeshes.h"

#include "convert/import/Bounds.h"
#include "convert/import/NodeInputs.h"
#include "convert/import/assimp/AssimpValues.h"
#include "convert/import/assimp/ImportMaterials.h"

#include <algorithm>
#include <cstring>

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
    MeshImport(ImportContext& context, unsigned index) : context_(context), mesh_(*context.from.mMeshes[index]) {}

    Node* read() {
        const String name(viewOf(mesh_.mName));
        const FaceSummary faces = summarise(mesh_);
        if (!mesh_.mVertices || mesh_.mNumVertices == 0 || !faces.hasValidIndices) {
            context_.losses.add(faces.hasValidIndices ? "meshes without points" : "meshes with indices out of range",
                                name);
            return nullptr;
        }
        node_ = &context_.create("mesh", name, "mesh");
        setText(*node_, "topology", topologyOf(faces));
        setBounds(*node_, {&mesh_.mVertices->x, std::size_t(3) * mesh_.mNumVertices});
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
        reportUnsupported(name);
        return node_;
    }

private:
    // Faces with the most corners win: points and lines are dropped from a mesh with polygons.
    static const char* topologyOf(const FaceSummary& faces) {
        if (faces.maxCorners <= 1)
            return "points";
        if (faces.maxCorners == 2)
            return "lines";
        return faces.minCorners == 3 && faces.maxCorners == 3 ? "triangles" : "polygons";
    }

    template <class T> AttrData floats(DataType type, const T* from) const {
        AttrData buffer = AttrData::buffer(type, mesh_.mNumVertices);
        std::memcpy(buffer.bytes().data(), from, buffer.bytes().size());
        return buffer;
    }

    // The fourth component is the sign of the bitangent.
    AttrData tangents() const {
        AttrData buffer = AttrData::buffer(DataType::Vec4f, mesh_.mNumVertices);
        const std::span<float> to = buffer.elements<float>();
        for (std::size_t i = 0; i < mesh_.mNumVertices; ++i) {
            const aiVector3D& tangent = mesh_.mTangents[i];
            const bool isFlipped = (mesh_.mNormals[i] ^ tangent) * mesh_.mBitangents[i] < 0;
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
            setMember(*uvset, "name", AttrData::string((String("uv") + String(u64(set))).view()));
            setMember(*uvset, "coords", textureCoordinates(set));
            if (mesh_.mNumUVComponents[set] > 2)
                context_.losses.add("third texture coordinates", *uvset);
        }
    }

    // The origin is the lower left corner of the image in Assimp, and the upper left one here.
    AttrData textureCoordinates(unsigned set) {
        AttrData buffer = AttrData::buffer(DataType::Vec2f, mesh_.mNumVertices);
        const std::span<float> to = buffer.elements<float>();
        bool isExact = true;
        for (std::size_t i = 0; i < mesh_.mNumVertices; ++i) {
            const aiVector3D& from = mesh_.mTextureCoords[set][i];
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
        AttrData indices = AttrData::buffer(isMixed ? DataType::Int32 : DataType::UInt32, countCorners(minCorners));
        std::vector<unsigned> counts;
        auto next = reinterpret_cast<u32*>(indices.bytes().data());
        bool isDropped = false;
        for (const aiFace& face : std::span(mesh_.mFaces, mesh_.mNumFaces)) {
            if (face.mNumIndices < minCorners) {
                isDropped = true;
                continue;
            }
            next = std::copy_n(face.mIndices, face.mNumIndices, next);
            if (isMixed)
                counts.push_back(face.mNumIndices);
        }
        if (isDropped)
            context_.losses.add("lines and points in meshes with larger faces", *node_);
        if (isMixed)
            set(*node_, "faceCounts", countsBuffer(counts));
        set(*node_, isMixed ? "faceIndices" : "indices", std::move(indices));
    }

    u64 countCorners(unsigned minCorners) const {
        u64 corners = 0;
        for (const aiFace& face : std::span(mesh_.mFaces, mesh_.mNumFaces))
            corners += face.mNumIndices < minCorners ? 0 : face.mNumIndices;
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

    void reportUnsupported(const String& name) {
        for (unsigned set = 1; set < AI_MAX_NUMBER_OF_COLOR_SETS; ++set)
            if (mesh_.mColors[set])
                context_.losses.add("additional vertex colours", name);
        if (mesh_.mNumAnimMeshes != 0)
            context_.losses.add("morph targets of meshes", name);
    }

    ImportContext& context_;
    const aiMesh& mesh_;
    Node* node_ = nullptr;
};

} // namespace

void importMeshes(ImportContext& context) {
    for (unsigned index = 0; index < context.from.mNumMeshes; ++index)
        context.meshes[index] = MeshImport(context, index).read();
}

} // namespace vrn::convert
