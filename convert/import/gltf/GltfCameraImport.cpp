#include "convert/import/gltf/GltfCameraImport.h"

#include "convert/shared/Transform.h"

#include <array>

namespace vrn::convert {

namespace {

constexpr const char* lightExtension = "KHR_lights_punctual";

// The identifier of a nameless camera or light at a node.
std::string nameFor(const Node& place, const char* suffix) { return std::string(place.name().view()) + suffix; }

void setNumber(Node& node, const char* input, const GltfValue& number, double unit = 1) {
    if (number.exists())
        set(node, input, AttrData::real(number.number(0) * unit));
}

void importCamera(GltfContext& context, const GltfValue& camera, Node& place) {
    Node& node = context.create("camera", camera, nameFor(place, "_camera").c_str());
    const std::string_view type = camera["type"].required().text();
    if (type != "perspective" && type != "orthographic")
        camera["type"].refuse("it is no type of cameras");
    setText(node, "projection", type);
    const GltfValue projection = camera[type == "perspective" ? "perspective" : "orthographic"].required();
    if (type == "perspective") {
        setNumber(node, "fov", projection["yfov"].required(), degreesPerRadian);
        setNumber(node, "aspect", projection["aspectRatio"]);
    } else {
        const std::array size = {projection["xmag"].required().number(1), projection["ymag"].required().number(1)};
        setNumbers(node, "size", AttrType::Vec2, size);
    }
    setNumber(node, "near", projection["znear"].required());
    setNumber(node, "far", projection["zfar"]);
    connect(node, "worldMatrix", place, "outMatrix");
}

void importLight(GltfContext& context, const GltfValue& light, Node& place) {
    Node& node = context.create("light", light, nameFor(place, "_light").c_str());
    const std::string_view type = light["type"].required().text();
    if (type != "directional" && type != "point" && type != "spot")
        light["type"].refuse("it is no type of lights");
    setText(node, "kind", type);
    const auto color = light["color"].numbers<3>({1, 1, 1});
    setNumbers(node, "color", AttrType::Rgba, std::array{color[0], color[1], color[2], 1.0});
    set(node, "intensity", AttrData::real(light["intensity"].number(1)));
    setNumber(node, "range", light["range"]);
    if (type == "spot") {
        setNumber(node, "innerAngle", light["spot"]["innerConeAngle"], degreesPerRadian);
        setNumber(node, "outerAngle", light["spot"]["outerConeAngle"], degreesPerRadian);
    }
    connect(node, "worldMatrix", place, "outMatrix");
}

} // namespace

void importCameraAndLight(GltfContext& context, const GltfValue& from, Node& node) {
    const GltfValue cameras = context.root["cameras"];
    if (from["camera"].exists())
        importCamera(context, cameras[from["camera"].indexIn(cameras)], node);
    const GltfValue light = from.extension(lightExtension)["light"];
    const GltfValue lights = context.root.extension(lightExtension)["lights"];
    if (light.exists())
        importLight(context, lights[light.indexIn(lights)], node);
}

} // namespace vrn::convert
