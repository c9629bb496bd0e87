#include "convert/import/GltfUnsharing.h"

#include <map>
#include <set>

namespace vrn::convert {

using namespace vor;

namespace {

class Unsharing {
public:
    explicit Unsharing(GltfDocument& json) : json_(json), mostBytes_(json.GetAllocator().Size() + (16U << 20U)) {}

    std::vector<std::string> run() {
        for (u64 i = 0; GltfValue* node = itemOf<GltfValue>(json_, "nodes", i); ++i) {
            setName(*node, std::to_string(i));
            dropIncompleteSkin(*node);
            separateMesh(*node);
            separate(*node, "camera", memberOf<GltfValue>(&json_, "cameras"), cameras_);
            if (GltfValue* light = lightsOf(memberOf(node, "extensions")))
                separate(*light, "light", memberOf(lightsOf(memberOf<GltfValue>(&json_, "extensions")), "lights"),
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

    // Assimp would end the process.
    void dropIncompleteSkin(GltfValue& node) {
        const GltfValue* skin = itemOf<GltfValue>(json_, "skins", numberIn(node, "skin"));
        if (!skin || skin->HasMember("inverseBindMatrices"))
            return;
        losses_.insert("skins without inverseBindMatrices");
        node.RemoveMember("skin");
    }

    // Where `object` says the number of a thing that another node has already, it gets a copy.
    void separate(GltfValue& object, const char* name, GltfValue* list, std::set<u64>& used) {
        const std::optional<u64> number = numberIn(object, name);
        if (number && !used.insert(*number).second)
            if (const auto copy = copyOf(list, *number))
                object[name].SetUint64(*copy);
    }

    void separateMesh(GltfValue& node) {
        const std::optional<u64> mesh = numberIn(node, "mesh");
        if (!mesh)
            return;
        const std::optional<u64> skin = numberIn(node, "skin");
        const auto [first, isFirst] = firstSkins_.emplace(*mesh, skin);
        if (isFirst || first->second == skin)
            return;
        const auto [known, isNew] = meshes_.emplace(std::pair(*mesh, skin), *mesh);
        if (isNew)
            known->second = copyOf(memberOf<GltfValue>(&json_, "meshes"), *mesh).value_or(*mesh);
        node["mesh"].SetUint64(known->second);
    }

    // The number of a copy at the end of the list. A small file must not become as large as it likes.
    std::optional<u64> copyOf(GltfValue* list, u64 number) {
        if (!list || !list->IsArray() || number >= list->Size())
            return {};
        if (json_.GetAllocator().Size() > mostBytes_) {
            losses_.insert("cameras, lights and skins of further nodes that share them");
            return {};
        }
        GltfValue copy((*list)[static_cast<rapidjson::SizeType>(number)], json_.GetAllocator());
        list->PushBack(copy, json_.GetAllocator());
        return list->Size() - 1;
    }

    GltfDocument& json_;
    std::size_t mostBytes_;
    std::set<u64> cameras_;
    std::set<u64> lights_;
    std::map<u64, std::optional<u64>> firstSkins_; // the skin with which a mesh is met first
    std::map<std::pair<u64, std::optional<u64>>, u64> meshes_;
    std::set<std::string> losses_;
};

} // namespace

std::vector<std::string> unshare(GltfDocument& json) { return Unsharing(json).run(); }

} // namespace vrn::convert
