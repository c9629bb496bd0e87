#include "convert/import/GltfUnsharing.h"

#include <map>
#include <set>

namespace vrn::convert {

namespace {

class Unsharer {
public:
    explicit Unsharer(GltfDocument& json) : json_(json), maxBytes_(json.GetAllocator().Size() + (16U << 20U)) {}

    std::vector<std::string> run() {
        for (u64 i = 0; GltfValue* node = itemOf<GltfValue>(json_, "nodes", i); ++i) {
            setName(*node, std::to_string(i));
            dropIncompleteSkin(*node);
            unshareMesh(*node);
            unshare(*node, "camera", memberOf<GltfValue>(&json_, "cameras"), cameras_);
            if (GltfValue* light = lightsOf(memberOf(node, "extensions")))
                unshare(*light, "light", memberOf(lightsOf(memberOf<GltfValue>(&json_, "extensions")), "lights"),
                        lights_);
        }
        return {losses_.begin(), losses_.end()};
    }

private:
    static GltfValue* lightsOf(GltfValue* extensions) { return memberOf(extensions, "KHR_lights_punctual"); }

    void setName(GltfValue& node, const std::string& name) {
        node.RemoveMember("name");
        node.AddMember("name", GltfValue(name.c_str(), json_.GetAllocator()), json_.GetAllocator());
    }

    // Assimp crashes on skins without matrices.
    void dropIncompleteSkin(GltfValue& node) {
        const GltfValue* skin = itemOf<GltfValue>(json_, "skins", numberIn(node, "skin"));
        if (!skin || skin->HasMember("inverseBindMatrices"))
            return;
        losses_.insert("skins without inverseBindMatrices");
        node.RemoveMember("skin");
    }

    // Replaces an index that another node already uses by that of a copy.
    void unshare(GltfValue& object, const char* name, GltfValue* array, std::set<u64>& used) {
        const std::optional<u64> index = numberIn(object, name);
        if (index && !used.insert(*index).second)
            if (const auto copy = appendCopy(array, *index))
                object[name].SetUint64(*copy);
    }

    void unshareMesh(GltfValue& node) {
        const std::optional<u64> mesh = numberIn(node, "mesh");
        if (!mesh)
            return;
        const std::optional<u64> skin = numberIn(node, "skin");
        const auto [first, isFirst] = firstSkins_.emplace(*mesh, skin);
        if (isFirst || first->second == skin)
            return;
        const auto [known, isNew] = meshes_.emplace(std::pair(*mesh, skin), *mesh);
        if (isNew)
            known->second = appendCopy(memberOf<GltfValue>(&json_, "meshes"), *mesh).value_or(*mesh);
        node["mesh"].SetUint64(known->second);
    }

    // The index of a copy, appended to the array. Bounded, because a small file can share a large object many times.
    std::optional<u64> appendCopy(GltfValue* array, u64 index) {
        if (!array || !array->IsArray() || index >= array->Size())
            return {};
        if (json_.GetAllocator().Size() > maxBytes_) {
            losses_.insert("shared cameras, lights and skins beyond the copy limit");
            return {};
        }
        GltfValue copy((*array)[static_cast<rapidjson::SizeType>(index)], json_.GetAllocator());
        array->PushBack(copy, json_.GetAllocator());
        return array->Size() - 1;
    }

    GltfDocument& json_;
    std::size_t maxBytes_;
    std::set<u64> cameras_;
    std::set<u64> lights_;
    std::map<u64, std::optional<u64>> firstSkins_; // the first skin that each mesh is used with
    std::map<std::pair<u64, std::optional<u64>>, u64> meshes_;
    std::set<std::string> losses_;
};

} // namespace

std::vector<std::string> unshare(GltfDocument& json) { return Unsharer(json).run(); }

} // namespace vrn::convert
