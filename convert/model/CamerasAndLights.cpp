#include "convert/model/CamerasAndLights.h"

#include "convert/model/InputTypes.h"
#include "convert/model/Inputs.h"
#include "convert/model/NodeHierarchy.h"
#include "scene/Scene.h"

#include <algorithm>
#include <limits>
#include <numbers>

namespace vrn::convert {

namespace {

constexpr auto maxFloat = static_cast<double>(std::numeric_limits<float>::max());

const InputPatterns cameraInputs = {"name",   "projection", "near",   "far",         "clip",   "position",
                                    "lookAt", "up",         "target", "worldMatrix", "parent", "extras"};
const InputPatterns perspectiveInputs = cameraInputs + InputPatterns{"fov", "aspect"};
const InputPatterns orthographicInputs = cameraInputs + InputPatterns{"size"};
const InputPatterns lightInputs = {"name",  "kind",   "direction",   "position", "color", "intensity",
                                   "range", "target", "worldMatrix", "parent",   "extras"};
const InputPatterns spotInputs = lightInputs + InputPatterns{"innerAngle", "outerAngle"};

Vector minus(const Vector& a, const Vector& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }

// Sets the transform of a camera or light from its position, `up` and a direction, which defaults to -Z if it is 0.
void setTransform(ModelNode& node, const InputReader& reader, const Vector& direction) {
    const Vector position = reader.numbers<3>("position", {0, 0, 0});
    const Vector up = reader.numbers<3>("up", {0, 1, 0});
    const Matrix matrix = lookAlong(position, length(direction) > 0 ? direction : Vector{0, 0, -1}, up);
    const Trs trs = decomposeTransform(matrix);
    if (toMatrix(trs) == matrix)
        node.trs = trs;
    else
        node.matrix = matrix;
}

// The direction from `lookAt` or `direction`; 0 if there is neither.
Vector explicitDirection(const InputReader& reader) {
    if (!reader.has("lookAt"))
        return reader.numbers<3>("direction", {0, 0, 0});
    return minus(reader.numbers<3>("lookAt", {0, 0, 0}), reader.numbers<3>("position", {0, 0, 0}));
}

// `near` and `far` have precedence over `clip`; 0 means unspecified.
void readClipping(Camera& camera, const InputReader& reader, Losses& losses) {
    const std::array<double, 2> clip = reader.numbers<2>("clip", {0, 0});
    const auto numberOr = [&](const char* name, double fallback) {
        const double number = reader.number(name, 0);
        return number != 0 ? number : fallback;
    };
    camera.near = numberOr("near", clip[0]);
    camera.far = numberOr("far", clip[1]);
    if (camera.near < 0)
        losses.add("negative near planes of cameras", *camera.source);
    if (camera.near <= 0)
        camera.near = camera.isPerspective ? 0.1 : 0;
    if (camera.far > camera.near)
        return;
    if (camera.far != 0)
        losses.add("far planes of cameras that are not beyond the near plane", *camera.source);
    camera.far = camera.isPerspective ? 0 : std::max(camera.near + 1000, 2 * camera.near);
}

void readPerspective(Camera& camera, const InputReader& reader, Losses& losses) {
    camera.fov = reader.number("fov", 45) * radiansPerDegree;
    if (camera.fov <= 0 || camera.fov >= std::numbers::pi) {
        losses.add("fields of view of cameras outside 0 to 180 degrees", *camera.source);
        camera.fov = 45 * radiansPerDegree;
    }
    camera.aspect = reader.clampedNumber("aspect", 0, 0, maxFloat);
}

void readSize(Camera& camera, const InputReader& reader, Losses& losses) {
    camera.size = reader.numbers<2>("size", {1, 1});
    if (camera.size[0] == 0 || camera.size[1] == 0) {
        losses.add("sizes of cameras that are 0", *camera.source);
        camera.size = {1, 1};
    }
}

Camera readCamera(const Node& node, Losses& losses) {
    const InputReader reader(node, losses);
    Camera camera{.source = &node};
    const std::string projection = reader.text("projection");
    if (!projection.empty() && projection != "perspective" && projection != "orthographic")
        losses.add("unknown projections of cameras", node);
    camera.isPerspective = projection != "orthographic";
    if (camera.isPerspective)
        readPerspective(camera, reader, losses);
    else
        readSize(camera, reader, losses);
    readClipping(camera, reader, losses);
    addUnreadInputs(node, camera.isPerspective ? perspectiveInputs : orthographicInputs, losses);
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
        losses.add("colours of lights outside 0 to 1 (clamped)", node);
    if (const Input* input = node.input("color"); input && hasFurtherComponents(input->value(), 3, true))
        losses.add(furtherComponents, *input);
    light.intensity = reader.clampedNumber("intensity", 1, 0, maxFloat);
    light.range = reader.clampedNumber("range", 0, 0, maxFloat);
    if (light.kind == "spot") {
        const double outerAngle = reader.clampedNumber("outerAngle", 45, 1e-6, 90);
        light.outerAngle = outerAngle * radiansPerDegree;
        light.innerAngle = reader.clampedNumber("innerAngle", 0, 0, outerAngle * (1 - 1e-6)) * radiansPerDegree;
    }
    addUnreadInputs(node, light.kind == "spot" ? spotInputs : lightInputs, losses);
    return light;
}

// The node that positions a camera or light, whose index goes into the member `slot`.
ModelNode& nodeFor(ExportContext& context, const Node& source, u32 ModelNode::*slot) {
    ModelNode own;
    const InputReader reader(source, context.losses);
    setTransform(own, reader, explicitDirection(reader));
    const u32 host = context.nodeIndex(reader.node("worldMatrix"));
    const bool addsNothing = own.local() == identity && !reader.node("target") && !reader.node("parent");
    if (host == none || !addsNothing || context.model.nodes[host].*slot != none) {
        ModelNode& node = context.addNode(source);
        node.trs = own.trs;
        node.matrix = own.matrix;
        return node;
    }
    context.nodeIndices.emplace(&source, host);
    context.visited.insert(&source);
    return context.model.nodes[host];
}

} // namespace

void readCamerasAndLights(ExportContext& context) {
    for (const Node& node : context.scene.nodes()) {
        if (node.isDefinition())
            continue;
        if (node.type() == "camera") {
            nodeFor(context, node, &ModelNode::camera).camera = static_cast<u32>(context.model.cameras.size());
            context.model.cameras.push_back(readCamera(node, context.losses));
        } else if (node.type() == "light") {
            nodeFor(context, node, &ModelNode::light).light = static_cast<u32>(context.model.lights.size());
            context.model.lights.push_back(readLight(node, context.losses));
        }
    }
}

void aimAtTargets(ExportContext& context) {
    std::vector<Matrix> worlds; // computed for the first target
    for (ModelNode& node : context.model.nodes) {
        const Input* input = node.source->input("target");
        if ((node.camera == none && node.light == none) || !linkedNode(input))
            continue;
        const InputReader reader(*node.source, context.losses);
        const u32 target = context.nodeIndex(linkedNode(input));
        const bool isAimed = length(explicitDirection(reader)) > 0 || node.parent != none;
        if (isAimed || target == none) {
            context.losses.add(std::string("targets of ") + (node.camera != none ? "cameras" : "lights"), *input);
            continue;
        }
        if (worlds.empty())
            worlds = worldMatrices(context.model.nodes);
        const Matrix& world = worlds[target];
        setTransform(node, reader, minus({world[12], world[13], world[14]}, reader.numbers<3>("position", {0, 0, 0})));
    }
}

} // namespace vrn::convert
