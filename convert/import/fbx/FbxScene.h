// The models of an FBX file, their transforms, and the axes and units of the file.
#pragma once

#include "convert/import/fbx/FbxElement.h"
#include "convert/import/fbx/FbxTransform.h"
#include "convert/scenes/Placement.h"
#include "convert/shared/Losses.h"

#include <unordered_map>

namespace vrn::convert {

struct FbxModel {
    i64 id = 0;
    std::string name{};
    FbxTransform transform{};
    bool isVisible = true;
    i64 inheritance = 0; // of the scale of the parent
};

// One object belongs to another, or sets a property of it.
struct FbxConnection {
    i64 source = 0;
    i64 destination = 0;
    std::string_view property{}; // empty if it belongs to the object itself
};

class FbxScene {
public:
    static constexpr i64 rootId = 0;

    // Views the elements of `file`, which must outlive this.
    FbxScene(const FbxFile& file, Losses& losses);

    // The models below a model or the root, in the order of the file.
    [[nodiscard]] std::vector<const FbxModel*> children(i64 parent) const;

    // A model, or null.
    [[nodiscard]] const FbxModel* model(i64 id) const;

    // All objects; those of a class, such as `AnimationStack`; an object, or null.
    [[nodiscard]] std::vector<const FbxElement*> objects() const;
    [[nodiscard]] std::vector<const FbxElement*> objects(std::string_view kind) const;
    [[nodiscard]] const FbxElement* object(i64 id) const;

    // The connections to an object, and those from it.
    [[nodiscard]] const std::vector<FbxConnection>& connectionsTo(i64 id) const;
    [[nodiscard]] const std::vector<FbxConnection>& connectionsFrom(i64 id) const;

    // The axes and units of the file, and the unit of its times.
    [[nodiscard]] const Placement& placement() const noexcept { return placement_; }
    [[nodiscard]] double ticksPerSecond() const noexcept { return ticksPerSecond_; }

private:
    void readObjects(const FbxElement& root, Losses& losses);
    void readConnections(const FbxElement& root);
    [[nodiscard]] bool hasAnimatedScaling(i64 model) const;
    void reportInheritance(Losses& losses) const;

    const FbxElement* allObjects_ = nullptr;
    std::unordered_map<i64, const FbxElement*> objects_;
    std::unordered_map<i64, FbxModel> models_;
    std::unordered_map<i64, std::vector<FbxConnection>> to_;
    std::unordered_map<i64, std::vector<FbxConnection>> from_;
    Placement placement_;
    double ticksPerSecond_;
};

// The name of an object without its class.
[[nodiscard]] std::string nameOf(const FbxElement& object);

// A property of an object: the element whose values from the fifth on are its value, or null.
[[nodiscard]] const FbxElement* propertyOf(const FbxElement& object, std::string_view name);

// The number that it has as a property, without regard to the defaults of its class.
[[nodiscard]] double numberOf(const FbxElement& object, std::string_view name, double fallback);

} // namespace vrn::convert
