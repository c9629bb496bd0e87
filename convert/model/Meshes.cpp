#include "convert/model/Meshes.h"

#include "convert/model/Inputs.h"
#include "convert/model/Polygons.h"
#include "convert/model/Welding.h"

#include <algorithm>
#include <numeric>

namespace vrn::convert {

namespace {

constexpr const char* mismatchedAttribute = "attributes that do not match the points of their mesh";

constexpr const char* incompleteSkin = "joints without weights, or weights without joints";

bool hasElements(const Input* input) {
    return input && (input->type() == AttrType::Array ? input->size() : input->value().count()) != 0;
}

class MeshReader {
public:
    MeshReader(const Node& mesh, const TargetFormat& target, Losses& losses)
        : mesh_(mesh), target_(target), losses_(losses) {}

    std::optional<Geometry> read() {
        geometry_.source = &mesh_;
        if (!readPoints() || !readFaces())
            return {};
        readNormals();
        readUvsets();
        if (const Input* colors = attribute("colors", target_.hasColors))
            geometry_.colors = perPoint(readFloats(colors, 4, losses_), 4, *colors);
        if (const Input* tangents = attribute("tangents", target_.hasTangents))
            geometry_.tangents = perPoint(readFloats(tangents, 4, losses_), 4, *tangents);
        readSkin();
        if (target_.hasScene) {
            readMoreColors();
            readAttributes();
            readTargets();
        }
        if (std::ranges::any_of(corners_, [](const auto& indices) { return !indices.empty(); }))
            weld(geometry_, corners_);
        if (geometry_.topology == Topology::Polygons && !target_.hasPolygons)
            triangulate(geometry_, losses_);
        return std::move(geometry_);
    }

private:
    bool reject(const char* reason) {
        losses_.add(std::string("meshes with ") + reason, mesh_);
        return false;
    }

    // The input if it has elements and the target supports it; a loss if only the latter is missing.
    const Input* attribute(const char* name, bool isSupported) {
        const Input* input = mesh_.input(name);
        if (!hasElements(input))
            return nullptr;
        if (!isSupported)
            losses_.add(std::string(name) + " of meshes", *input);
        return isSupported ? input : nullptr;
    }

    bool readPoints() {
        geometry_.points = readFloats(mesh_.input("points"), 3, losses_);
        if (geometry_.points.empty() || geometry_.vertices() >= none)
            return reject(geometry_.points.empty() ? "no points" : "too many points");
        return allFinite(geometry_.points.span()) || reject("points that are not finite");
    }

    bool readFaces() {
        const Input* indices = nullptr;
        if (hasElements(indices = mesh_.input("faceIndices"))) {
            geometry_.topology = Topology::Polygons;
        } else if (hasElements(indices = mesh_.input("triangles"))) {
            geometry_.topology = Topology::Triangles;
        } else {
            indices = mesh_.input("indices");
            if (!readTopology())
                return false;
        }
        return readCorners(hasElements(indices) ? indices : nullptr) && readFaceCounts() && fitsTarget();
    }

    bool readTopology() {
        const Input* input = mesh_.input("topology");
        const std::string_view topology = input ? input->value().asString() : "";
        if (topology == "lines")
            geometry_.topology = Topology::Lines;
        else if (topology == "points")
            geometry_.topology = Topology::Points;
        else if (topology != "triangles" && !topology.empty())
            return reject(topology == "polygons" ? "polygons without indices" : "an unknown topology");
        return true;
    }

    // Without indices, each point is a corner.
    bool readCorners(const Input* indices) {
        if (!indices) {
            std::vector<u32> corners(geometry_.vertices());
            std::iota(corners.begin(), corners.end(), 0U);
            geometry_.indices = Values<u32>(std::move(corners));
        } else if (std::optional<Values<u32>> corners = readIndices(indices, geometry_.vertices())) {
            geometry_.indices = std::move(*corners);
        } else {
            return reject("indices that are out of range or not integers");
        }
        return geometry_.indices.size() % cornersPerFace(geometry_.topology) == 0 || reject("an incomplete last face");
    }

    bool readFaceCounts() {
        if (geometry_.topology != Topology::Polygons)
            return true;
        const std::optional<Values<u32>> counts = readIndices(mesh_.input("faceCounts"), none);
        if (!counts)
            return reject("polygons without valid faceCounts");
        if (std::accumulate(counts->begin(), counts->end(), u64(0)) != geometry_.indices.size())
            return reject("faceCounts that do not sum to the number of faceIndices");
        if (std::ranges::any_of(*counts, [](u32 count) { return count < 3; }))
            return reject("polygons with fewer than three corners");
        geometry_.faceCounts.assign(counts->begin(), counts->end());
        return true;
    }

    bool fitsTarget() {
        const bool isFlat = geometry_.topology == Topology::Triangles || geometry_.topology == Topology::Polygons;
        return isFlat || target_.hasLinesAndPoints || reject("lines or points instead of faces");
    }

    // The values if there is one per point and all are finite; otherwise a loss.
    template <class T> Values<T> perPoint(Values<T> values, std::size_t components, const Input& input) {
        if (values.empty())
            return {};
        bool isValid = values.size() == geometry_.vertices() * components;
        if constexpr (std::is_same_v<T, float>)
            isValid = isValid && allFinite(values.span());
        if (isValid)
            return values;
        losses_.add(mismatchedAttribute, input);
        return {};
    }

    // The same for values that may also be per corner or have their own indices, which go into `corners`.
    Values<float> perPointOrCorner(Values<float> values, std::size_t components, const Input& input,
                                   const Input* indices, Values<u32>& corners) {
        const std::size_t count = values.size() / components;
        if (count == 0)
            return {};
        if (hasElements(indices)) {
            std::optional<Values<u32>> own = readIndices(indices, count);
            if (own && own->size() == geometry_.indices.size() && allFinite(values.span())) {
                corners = std::move(*own);
                return values;
            }
        } else if (count != geometry_.vertices() && count == geometry_.indices.size() && allFinite(values.span())) {
            std::vector<u32> sequence(count);
            std::iota(sequence.begin(), sequence.end(), 0U);
            corners = Values<u32>(std::move(sequence));
            return values;
        } else {
            return perPoint(std::move(values), components, input);
        }
        losses_.add(mismatchedAttribute, input);
        return {};
    }

    void readNormals() {
        if (const Input* normals = attribute("normals", target_.hasNormals))
            geometry_.normals = perPointOrCorner(readFloats(normals, 3, losses_), 3, *normals, nullptr, normalCorners_);
    }

    void readUvsets() {
        const Input* uvsets = mesh_.input("uvsets");
        if (uvsets)
            for (const Input* uvset : uvsets->children())
                readUvset(*uvset);
        corners_.push_back(std::move(normalCorners_));
    }

    void readUvset(const Input& uvset) {
        const Input* coords = uvset.input("coords");
        if (!hasElements(coords))
            return void(isUvsetMissing_ = true);
        if (isUvsetMissing_) // materials refer to uvsets by their numbers
            return losses_.add("uvsets after one that is left out", uvset);
        if (geometry_.uvsets.size() >= target_.maxUvsets)
            return losses_.add("uvsets beyond the limit of the format", uvset);
        Values<u32> corners;
        Values<float> values =
            perPointOrCorner(readFloats(coords, 2, losses_), 2, *coords, uvset.input("indices"), corners);
        if (values.empty())
            return void(isUvsetMissing_ = true);
        const Input* name = uvset.input("name");
        const bool hasName = name && name->type() == AttrType::String;
        if (hasName && String(name->value().asString()) != String("uv") + String(u64(geometry_.uvsets.size())))
            losses_.add("names of uvsets", *name);
        geometry_.uvsets.push_back(std::move(values));
        corners_.push_back(std::move(corners));
    }

    void readSkin() {
        const Input* skin = mesh_.input("skin");
        const Input* joints = skin ? skin->input("joints") : nullptr;
        const Input* weights = skin ? skin->input("weights") : nullptr;
        if (!hasElements(joints) && !hasElements(weights) && !(skin && hasElements(skin->input("more"))))
            return;
        if (!hasElements(joints) || !hasElements(weights))
            return losses_.add(incompleteSkin, *skin);
        if (!target_.hasScene)
            return losses_.add("skins of meshes", *skin);
        addInfluences(*joints, *weights);
        if (const Input* more = skin->input("more"))
            for (const Input* some : more->children())
                addMore(*some);
    }

    void addMore(const Input& some) {
        const Input* joints = some.input("joints");
        const Input* weights = some.input("weights");
        if (hasElements(joints) && hasElements(weights))
            addInfluences(*joints, *weights);
        else
            losses_.add(incompleteSkin, some);
    }

    void addInfluences(const Input& joints, const Input& weights) {
        std::optional<Values<u32>> indices = readIndices(&joints, none);
        if (!indices || elementLayout(joints.dataType()).components != 4)
            return losses_.add("joints that are not four integers per point", joints);
        Influences influences{.joints = perPoint(std::move(*indices), 4, joints),
                              .weights = perPoint(readFloats(&weights, 4, losses_), 4, weights)};
        if (!influences.joints.empty() && !influences.weights.empty())
            geometry_.influences.push_back(std::move(influences));
    }

    // Calls `act` for each object of an array.
    void forEachObject(const char* array, auto act) {
        if (const Input* list = mesh_.input(array))
            for (const Input* object : list->children())
                act(*object);
    }

    void readMoreColors() {
        if (geometry_.colors.empty() && hasElements(mesh_.input("colorsets")))
            return losses_.add("colorsets of meshes without colors", mesh_);
        forEachObject("colorsets", [&](const Input& set) {
            const Input* colors = set.input("colors");
            if (!hasElements(colors))
                return;
            if (Values<float> values = perPoint(readFloats(colors, 4, losses_), 4, *colors); !values.empty())
                geometry_.moreColors.push_back(std::move(values));
        });
    }

    void readAttributes() {
        forEachObject("attributes", [&](const Input& attribute) {
            if (std::optional<NamedValues> values = readNamedValues(attribute, losses_)) {
                values->values = perPoint(std::move(values->values), values->components, attribute);
                if (std::ranges::find(geometry_.attributes, values->name, &NamedValues::name) !=
                    geometry_.attributes.end())
                    losses_.add("attributes with the name of another", attribute);
                else if (!values->values.empty())
                    geometry_.attributes.push_back(std::move(*values));
            }
        });
    }

    void readTargets() {
        forEachObject("targets", [&](const Input& object) {
            MorphTarget target;
            const auto read = [&](const char* member, u32 components) {
                const Input* values = object.input(member);
                return hasElements(values) ? perPoint(readFloats(values, components, losses_), components, *values)
                                           : Values<float>();
            };
            if (const Input* name = object.input("name"))
                target.name = name->value().asString();
            target.points = read("points", 3);
            target.normals = read("normals", 3);
            target.tangents = read("tangents", 3);
            target.coords = read("coords", 2);
            if (const Input* colors = object.input("colors"))
                target.colorComponents = elementLayout(colors->dataType()).components == 3 ? 3 : 4;
            target.colors = read("colors", target.colorComponents);
            geometry_.targets.push_back(std::move(target));
        });
        const Input* weights = mesh_.input("weights");
        if (!hasElements(weights))
            return;
        geometry_.targetWeights = readFloats(weights, 1, losses_);
        if (geometry_.targetWeights.size() != geometry_.targets.size() || !allFinite(geometry_.targetWeights.span())) {
            losses_.add("weights that do not match the morph targets", *weights);
            geometry_.targetWeights = {};
        }
    }

    const Node& mesh_;
    const TargetFormat& target_;
    Losses& losses_;
    Geometry geometry_;
    std::vector<Values<u32>> corners_; // indices of each uvset, then of the normals; empty if per point
    Values<u32> normalCorners_;
    bool isUvsetMissing_ = false;
};

} // namespace

bool isMesh(const Node& node) { return node.hasInput("points", AttrType::Buffer); }

std::optional<Geometry> readMesh(const Node& mesh, const TargetFormat& target, Losses& losses) {
    return MeshReader(mesh, target, losses).read();
}

} // namespace vrn::convert
