// Cameras and lights: what they are, where they stand and where they look.
#include "convert/model/ExportContext.h"
#include "scene/Scene.h"

#include <algorithm>
#include <limits>
#include <numbers>

namespace vrn::convert {

namespace {

constexpr auto mostFloat = static_cast<double>(std::numeric_limits<float>::max());
constexpr double degree = std::numbers::pi / 180;

const Patterns cameraInputs = {"name", "projection", "fov",    "aspect", "size",   "near",        "far",
                               "clip", "position",   "lookAt", "up",     "target", "worldMatrix", "parent"};
const Patterns lightInputs = {"name",  "kind",       "direction",  "position", "color",       "intensity",
                              "range", "innerAngle", "outerAngle", "target",   "worldMatrix", "parent"};

Vector minus(const Vector& a, const Vector& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }

// Stands a camera or light at its position, looking along `direction`; a direction of no length is down its -Z axis.
void stand(Placement& placement, const InputReader& reader, const Vector& direction) {
    const Vector position = reader.numbers<3>("position", {0, 0, 0});
    const Vector up = reader.numbers<3>("up", {0, 1, 0});
    const Matrix matrix = lookAlong(position, length(direction) > 0 ? direction : Vector{0, 0, -1}, up);
    const Trs trs = decompose(matrix);
    if (toMatrix(trs) == matrix)
        placement.trs = trs;
    else
        placement.matrix = matrix;
}

// The direction that the inputs themselves give.
Vector ownDirection(const InputReader& reader) {
    if (!reader.has("lookAt"))
        return reader.numbers<3>("direction", {0, 0, 0});
    return minus(reader.numbers<3>("lookAt", {0, 0, 0}), reader.numbers<3>("position", {0, 0, 0}));
}

// Near and far, which may also stand together in `clip`; 0 is what nobody said.
void readClipping(Camera& camera, const InputReader& reader, Losses& losses) {
    const std::array<double, 2> clip = reader.numbers<2>("clip", {0, 0});
    const auto given = [&](const char* name, double otherwise) {
        const double number = reader.number(name, 0);
        return number != 0 ? number : otherwise;
    };
    camera.near = given("near", clip[0]);
    camera.far = given("far", clip[1]);
    if (camera.near < 0)
        losses.add("nearest distances of cameras that are below 0", *camera.source);
    if (camera.near <= 0)
        camera.near = camera.isPerspective ? 0.1 : 0;
    if (camera.far > camera.near)
        return;
    if (camera.far != 0)
        losses.add("farthest distances of cameras that are not behind the nearest", *camera.source);
    camera.far = camera.isPerspective ? 0 : std::max(camera.near + 1000, 2 * camera.near);
}

Camera readCamera(const Node& node, Losses& losses) {
    const InputReader reader(node, losses);
    Camera camera{.source = &node};
    const std::string projection = reader.text("projection");
    if (!projection.empty() && projection != "perspective" && projection != "orthographic")
        losses.add("unknown projections of cameras", node);
    camera.isPerspective = projection != "orthographic";
    camera.fov = reader.number("fov", 45) * degree;
    if (camera.fov <= 0 || camera.fov >= std::numbers::pi) {
        losses.add("angles of cameras that are not between 0 and 180 degrees", node);
        camera.fov = 45 * degree;
    }
    camera.aspect = reader.within("aspect", 0, 0, mostFloat);
    camera.size = reader.numbers<2>("size", {1, 1});
    if (camera.size[0] == 0 || camera.size[1] == 0) {
        losses.add("sizes of cameras that are 0", node);
        camera.size = {1, 1};
    }
    readClipping(camera, reader, losses);
    noteOthers(node, cameraInputs, losses);
    return camera;
}

Light readLight(const Node& node, Losses& losses) {
    const InputReader reader(node, losses);
    Light light{.source = &node};
    light.kind = reader.text("kind");
    if (light.kind != "point" && light.kind != "spot") {
        if (!light.kind.empty() && light.kind != "directional")
            losses.add("unknown kinds of lights", node);
        light.kind = "directional";
    }
    const Vector color = reader.numbers<3>("color", {1, 1, 1});
    for (std::size_t i = 0; i < 3; ++i)
        light.color[i] = std::clamp(color[i], 0.0, 1.0);
    if (light.color != color)
        losses.add("colours of lights outside of 0 to 1", node);
    light.intensity = reader.within("intensity", 1, 0, mostFloat);
    light.range = reader.within("range", 0, 0, mostFloat);
    const double outerAngle = reader.within("outerAngle", 45, 0.1, 90);
    light.outerAngle = outerAngle * degree;
    light.innerAngle = reader.within("innerAngle", 0, 0, outerAngle * 0.999) * degree;
    noteOthers(node, lightInputs, losses);
    return light;
}

// The place of a camera or light; `slot` is the member of a placement that takes it.
Placement& placeOf(ExportContext& reading, const Node& node, u32 Placement::*slot) {
    Placement own;
    const InputReader reader(node, reading.losses);
    stand(own, reader, ownDirection(reader));
    const u32 host = reading.placementOf(reader.node("worldMatrix"));
    const bool addsNothing = own.local() == identity && !reader.node("target") && !reader.node("parent");
    if (host == none || !addsNothing || reading.model.placements[host].*slot != none) {
        Placement& placement = reading.place(node);
        placement.trs = own.trs;
        placement.matrix = own.matrix;
        return placement;
    }
    reading.placements.emplace(&node, host);
    reading.carried.insert(&node);
    return reading.model.placements[host];
}

} // namespace

void readViews(ExportContext& reading) {
    for (const Node& node : reading.scene.nodes()) {
        if (node.isDefinition())
            continue;
        if (node.type() == "camera") {
            placeOf(reading, node, &Placement::camera).camera = static_cast<u32>(reading.model.cameras.size());
            reading.model.cameras.push_back(readCamera(node, reading.losses));
        } else if (node.type() == "light") {
            placeOf(reading, node, &Placement::light).light = static_cast<u32>(reading.model.lights.size());
            reading.model.lights.push_back(readLight(node, reading.losses));
        }
    }
}

void aimAtTargets(ExportContext& reading) {
    std::vector<Matrix> worlds;
    for (Placement& placement : reading.model.placements) {
        const Input* input = placement.source->input("target");
        if ((placement.camera == none && placement.light == none) || !linkedNode(input))
            continue;
        const InputReader reader(*placement.source, reading.losses);
        const u32 target = reading.placementOf(linkedNode(input));
        const bool isAimed = length(ownDirection(reader)) > 0 || placement.parent != none;
        if (isAimed || target == none) {
            reading.losses.add(std::string("targets of ") + (placement.camera != none ? "cameras" : "lights"), *input);
            continue;
        }
        if (worlds.empty())
            worlds = worldMatrices(reading.model.placements);
        const Matrix& at = worlds[target];
        stand(placement, reader, minus({at[12], at[13], at[14]}, reader.numbers<3>("position", {0, 0, 0})));
    }
}

} // namespace vrn::convert
