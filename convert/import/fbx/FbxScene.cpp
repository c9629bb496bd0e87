#include "convert/import/fbx/FbxScene.h"

#include "convert/shared/Floats.h"

#include <algorithm>

namespace vrn::convert {

namespace {

constexpr std::size_t firstValue = 4; // of a property, after its name, types and flags

const FbxElement* propertyIn(const FbxElement* parent, std::string_view name) {
    const FbxElement* list = parent ? parent->child("Properties70") : nullptr;
    if (!list)
        return nullptr;
    const auto found =
        std::ranges::find_if(list->children, [&](const FbxElement& p) { return p.value(0).text() == name; });
    return found == list->children.end() ? nullptr : &*found;
}

// The defaults of the properties of a class; null if the file has none.
const FbxElement* templateOf(const FbxElement& root, std::string_view kind) {
    const FbxElement* definitions = root.child("Definitions");
    if (!definitions)
        return nullptr;
    for (const FbxElement& type : definitions->children)
        if (type.name == "ObjectType" && type.value(0).text() == kind)
            return type.child("PropertyTemplate");
    return nullptr;
}

// Reads the properties of an object, or their defaults.
class Properties {
public:
    Properties(const FbxElement& object, const FbxElement* defaults) : object_(object), defaults_(defaults) {}

    [[nodiscard]] Vector vector(std::string_view name, const Vector& fallback) const {
        const FbxElement* property = find(name);
        if (!property)
            return fallback;
        return {property->value(firstValue).number(), property->value(firstValue + 1).number(),
                property->value(firstValue + 2).number()};
    }
    [[nodiscard]] double number(std::string_view name, double fallback) const {
        const FbxElement* property = find(name);
        return property ? property->value(firstValue).number() : fallback;
    }
    [[nodiscard]] i64 integer(std::string_view name, i64 fallback) const {
        const FbxElement* property = find(name);
        return property ? property->value(firstValue).integer() : fallback;
    }

private:
    [[nodiscard]] const FbxElement* find(std::string_view name) const {
        const FbxElement* own = propertyIn(&object_, name);
        return own ? own : propertyIn(defaults_, name);
    }

    const FbxElement& object_;
    const FbxElement* defaults_;
};

FbxTransform readTransform(const FbxElement& object, const Properties& properties, Losses& losses) {
    constexpr Vector zero = {0, 0, 0};
    constexpr Vector one = {1, 1, 1};
    FbxTransform t{.translation = properties.vector("Lcl Translation", zero),
                   .rotation = properties.vector("Lcl Rotation", zero),
                   .scaling = properties.vector("Lcl Scaling", one),
                   .rotationOffset = properties.vector("RotationOffset", zero),
                   .rotationPivot = properties.vector("RotationPivot", zero),
                   .scalingOffset = properties.vector("ScalingOffset", zero),
                   .scalingPivot = properties.vector("ScalingPivot", zero),
                   .geometricTranslation = properties.vector("GeometricTranslation", zero),
                   .geometricRotation = properties.vector("GeometricRotation", zero),
                   .geometricScaling = properties.vector("GeometricScaling", one)};
    // Otherwise the rotation order and the pre and post rotations have no effect.
    const bool hasRotationSpace =
        properties.integer("RotationActive", 1) != 0 && properties.integer("RotationSpaceForLimitOnly", 0) == 0;
    if (!hasRotationSpace)
        return t;
    t.preRotation = properties.vector("PreRotation", zero);
    t.postRotation = properties.vector("PostRotation", zero);
    const i64 order = properties.integer("RotationOrder", 0);
    if (order >= 0 && order <= static_cast<i64>(FbxRotationOrder::Zyx))
        t.order = static_cast<FbxRotationOrder>(order);
    else
        losses.add("spherical rotations (read as rotations about X, Y and Z)",
                   String(std::string_view(nameOf(object))));
    return t;
}

constexpr i64 inheritsAll = 1;

FbxModel readModel(const FbxElement& object, const Properties& properties, Losses& losses) {
    return {.id = object.value(0).integer(),
            .name = nameOf(object),
            .transform = readTransform(object, properties, losses),
            .isVisible = properties.number("Visibility", 1) != 0,
            .inheritance = properties.integer("InheritType", inheritsAll)};
}

Placement readPlacement(const FbxElement& root, Losses& losses) {
    static const FbxElement none;
    const FbxElement* settings = root.child("GlobalSettings");
    const Properties properties(settings ? *settings : none, nullptr);
    constexpr double metresPerCentimetre = 0.01;
    Placement placement;
    if (const double centimetres = properties.number("UnitScaleFactor", 1); centimetres > 0 && fitsFloat(centimetres))
        placement.metres = centimetres * metresPerCentimetre;
    else
        losses.add("units of length that are not positive and finite (read as centimetres)", String("UnitScaleFactor"));
    // Which axes of the file are X, Y and Z of the scene.
    const std::array<i64, 3> axes = {properties.integer("CoordAxis", 0), properties.integer("UpAxis", 1),
                                     properties.integer("FrontAxis", 2)};
    const std::array<i64, 3> signs = {properties.integer("CoordAxisSign", 1), properties.integer("UpAxisSign", 1),
                                      properties.integer("FrontAxisSign", 1)};
    if (!std::ranges::is_permutation(axes, std::array<i64, 3>{0, 1, 2})) {
        losses.add("axes that are not X, Y and Z (read as Y up)", String("UpAxis"));
        return placement;
    }
    placement.axes = {};
    placement.axes[15] = 1;
    for (std::size_t i = 0; i < 3; ++i)
        placement.axes[4 * static_cast<std::size_t>(axes[i]) + i] = signs[i] < 0 ? -1 : 1;
    return placement;
}

// New files may have another unit, unless their definition of it has the number of the usual one.
double readTicksPerSecond(const FbxElement& root) {
    constexpr double usual = 46186158000;
    constexpr double other = 141120000;
    constexpr i64 numberOfUsual = 127;
    constexpr i64 firstHeaderWithDefinition = 1004;
    const FbxElement* header = root.child("FBXHeaderExtension");
    const FbxElement* version = header ? header->child("FBXHeaderVersion") : nullptr;
    const FbxElement* flags = header ? header->child("OtherFlags") : nullptr;
    const FbxElement* definition = flags ? flags->child("TCDefinition") : nullptr;
    const bool isDefined = definition && version && version->value(0).integer() >= firstHeaderWithDefinition;
    return isDefined && definition->value(0).integer() != numberOfUsual ? other : usual;
}

const std::vector<FbxConnection>& connectionsIn(const std::unordered_map<i64, std::vector<FbxConnection>>& all,
                                                i64 id) {
    static const std::vector<FbxConnection> none;
    const auto found = all.find(id);
    return found == all.end() ? none : found->second;
}

} // namespace

FbxScene::FbxScene(const FbxFile& file, Losses& losses)
    : placement_(readPlacement(file.root(), losses)), ticksPerSecond_(readTicksPerSecond(file.root())) {
    readObjects(file.root(), losses);
    readConnections(file.root());
    reportInheritance(losses);
}

void FbxScene::readObjects(const FbxElement& root, Losses& losses) {
    allObjects_ = root.child("Objects");
    if (!allObjects_)
        return;
    const FbxElement* defaults = templateOf(root, "Model");
    for (const FbxElement& object : allObjects_->children) {
        const i64 id = object.value(0).integer();
        objects_.emplace(id, &object);
        const std::string_view kind = object.value(2).text();
        if (object.name == "Model" && kind != "IKEffector" && kind != "FKEffector")
            models_.emplace(id, readModel(object, Properties(object, defaults), losses));
    }
}

void FbxScene::readConnections(const FbxElement& root) {
    const FbxElement* connections = root.child("Connections");
    if (!connections)
        return;
    for (const FbxElement& each : connections->children) {
        const std::string_view kind = each.value(0).text();
        if (kind != "OO" && kind != "OP")
            continue;
        const FbxConnection connection{.source = each.value(1).integer(),
                                       .destination = each.value(2).integer(),
                                       .property = each.value(3).text()};
        to_[connection.destination].push_back(connection);
        from_[connection.source].push_back(connection);
    }
}

// A scale of 1 is the same in all ways of inheriting it.
void FbxScene::reportInheritance(Losses& losses) const {
    if (!allObjects_)
        return;
    for (const FbxElement& object : allObjects_->children) {
        const auto parent = models_.find(object.value(0).integer());
        if (object.name != "Model" || parent == models_.end())
            continue;
        const Vector& scaling = parent->second.transform.scaling;
        const bool isAnimated = hasAnimatedScaling(parent->first);
        const bool isOne = scaling == Vector{1, 1, 1} && !isAnimated;
        const bool isUniform = scaling[0] == scaling[1] && scaling[1] == scaling[2] && !isAnimated;
        for (const FbxModel* child : children(parent->first)) {
            const bool isSame = child->inheritance == inheritsAll || isOne || (child->inheritance == 0 && isUniform);
            if (!isSame)
                losses.add("other ways of inheriting the scale of the parent (the scale is inherited)",
                           String(std::string_view(child->name)));
        }
    }
}

// Many files have curves for all properties, also of a scale that stays 1.
bool FbxScene::hasAnimatedScaling(i64 model) const {
    for (const FbxConnection& node : connectionsTo(model))
        if (node.property == "Lcl Scaling")
            for (const FbxConnection& curve : connectionsTo(node.source)) {
                const FbxElement* object = this->object(curve.source);
                const FbxElement* values = object ? object->child("KeyValueFloat") : nullptr;
                if (values && std::ranges::any_of(values->numbers(), [](double value) { return value != 1; }))
                    return true;
            }
    return false;
}

std::vector<const FbxModel*> FbxScene::children(i64 parent) const {
    std::vector<const FbxModel*> found;
    for (const FbxConnection& connection : connectionsTo(parent))
        if (const FbxModel* child = model(connection.source); child && connection.property.empty())
            found.push_back(child);
    return found;
}

const FbxModel* FbxScene::model(i64 id) const {
    const auto found = models_.find(id);
    return found == models_.end() ? nullptr : &found->second;
}

std::vector<const FbxElement*> FbxScene::objects() const {
    std::vector<const FbxElement*> found;
    if (allObjects_)
        for (const FbxElement& object : allObjects_->children)
            found.push_back(&object);
    return found;
}

std::vector<const FbxElement*> FbxScene::objects(std::string_view kind) const {
    std::vector<const FbxElement*> found = objects();
    std::erase_if(found, [&](const FbxElement* object) { return object->name != kind; });
    return found;
}

const FbxElement* FbxScene::object(i64 id) const {
    const auto found = objects_.find(id);
    return found == objects_.end() ? nullptr : found->second;
}

const std::vector<FbxConnection>& FbxScene::connectionsTo(i64 id) const { return connectionsIn(to_, id); }
const std::vector<FbxConnection>& FbxScene::connectionsFrom(i64 id) const { return connectionsIn(from_, id); }

// A binary file has the name, two bytes and the class; a text file has the class, two colons and the name.
std::string nameOf(const FbxElement& object) {
    const std::string_view name = object.value(1).text();
    if (const std::size_t end = name.find(std::string_view("\0\1", 2)); end != std::string_view::npos)
        return std::string(name.substr(0, end));
    const std::size_t start = name.find("::");
    return std::string(start == std::string_view::npos ? name : name.substr(start + 2));
}

const FbxElement* propertyOf(const FbxElement& object, std::string_view name) { return propertyIn(&object, name); }

double numberOf(const FbxElement& object, std::string_view name, double fallback) {
    return Properties(object, nullptr).number(name, fallback);
}

} // namespace vrn::convert
