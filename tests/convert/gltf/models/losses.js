// Files with extensions that are not read. Each lists them with the number of objects that carry them, and the first.
const UNKNOWN = "EXT_of_the_future";

// Two nodes that carry an unknown extension, which is not required.
function unreadExtension(m) {
    m.node(m.extension(UNKNOWN, { level: 1 }, { name: "a" }));
    m.node({ name: "b" });
    m.node(m.extension(UNKNOWN, { level: 2 }, { name: "c", mesh: m.triangle() }));
    return [{ extension: UNKNOWN, count: 2, first: "/nodes/0" }];
}

function unreadExtensionInOtherPlaces(m) {
    const material = m.material(m.extension("EXT_material_of_the_future", {}));
    m.node({ mesh: m.triangle({ material }) });
    m.json.asset = m.extension("EXT_asset_of_the_future", { list: [1] }, m.json.asset);
    return [
        { extension: "EXT_material_of_the_future", count: 1, first: "/materials/0" },
        { extension: "EXT_asset_of_the_future", count: 1, first: "/asset" },
    ];
}

// One channel animates a property of a material, the other a node.
function animatedPointer(m) {
    const node = m.node({ mesh: m.triangle({ material: m.material({ name: "fading" }) }) });
    const input = m.times(0, 1);
    const pointer = "/materials/0/pbrMetallicRoughness/roughnessFactor";
    m.add("animations", {
        samplers: [
            { input, output: m.floats("SCALAR", 0, 1) },
            { input, output: m.floats("VEC3", 0, 0, 0, 1, 1, 1) },
        ],
        channels: [
            { sampler: 0, target: m.extension("KHR_animation_pointer", { pointer }, { path: "pointer" }) },
            { sampler: 1, target: { node, path: "translation" } },
        ],
    });
    return [{ extension: "KHR_animation_pointer", count: 1, first: "/animations/0/channels/0" }];
}

module.exports = {
    "unread-extension": unreadExtension,
    "unread-extension-in-other-places": unreadExtensionInOtherPlaces,
    "animated-pointer": animatedPointer,
};
