// The content of a glTF file: what it shows, independent of how it is stored.
//
// It is a tree of objects, lists and Numbers. Indices are replaced by what they refer to. Undefined members and members
// that are absent are the same. Not part of the content: the generator, bounds and names of accessors, buffers, the
// extensions that are declared, extensions that are not read here, and objects that nothing refers to.
const { identity } = require("./identity.js");
const { check } = require("../file.js");
const { MATERIAL_EXTENSIONS, Materials } = require("./materials.js");
const { Nodes, sharing } = require("./nodes.js");
const { numbersOf } = require("./numbers.js");

// What a file may require.
const EXTENSIONS = [
    ...MATERIAL_EXTENSIONS,
    "EXT_mesh_gpu_instancing",
    "EXT_meshopt_compression",
    "EXT_texture_webp",
    "KHR_draco_mesh_compression",
    "KHR_lights_punctual",
    "KHR_materials_variants",
    "KHR_mesh_quantization",
    "KHR_texture_basisu",
    "KHR_texture_transform",
];

function rootsOf(json) {
    const children = new Set((json.nodes ?? []).flatMap((node) => node.children ?? []));
    return [...(json.nodes ?? []).keys()].filter((node) => !children.has(node));
}

// A file without scenes has one with all roots. Without a default scene, viewers show the first.
function scenesContent(json, roots, nodes) {
    const scenes = (json.scenes ?? [{ nodes: roots }]).map((scene, at) => ({
        ...identity(scene),
        nodes: (scene.nodes ?? []).map((node, root) => nodes.get(node, `/scenes/${at}/nodes/${root}`)),
    }));
    const outside = roots.filter((root) => !nodes.paths.has(root));
    return { scenes, outside: outside.map((root, at) => nodes.get(root, `/outside/${at}`)) };
}

// Channels whose target is not a node, such as those of KHR_animation_pointer, are not part of the content. Neither is
// the order of channels, as each has another target.
function animationContent(file, animation, nodes) {
    const channels = animation.channels.filter(({ target }) => target.node !== undefined);
    const contents = channels.map(({ sampler: index, target }) => {
        const sampler = animation.samplers[index];
        return {
            target: `${nodes.pathOf(target.node)}/${target.path}`,
            interpolation: sampler.interpolation ?? "LINEAR",
            times: numbersOf(file.accessor(sampler.input)),
            values: numbersOf(file.accessor(sampler.output)),
        };
    });
    return {
        ...identity(animation),
        channels: contents.sort((a, b) => (a.target < b.target ? -1 : 1)),
    };
}

function variantsContent(json) {
    return (json.extensions?.KHR_materials_variants?.variants ?? []).map(identity);
}

function contentOf(file) {
    const { json } = file;
    for (const name of json.extensionsRequired ?? []) check(EXTENSIONS.includes(name), `${name} is not supported`);
    const nodes = new Nodes(file, new Materials(file));
    const { scenes, outside } = scenesContent(json, rootsOf(json), nodes);
    nodes.addSkins();
    return {
        asset: { copyright: json.asset.copyright, extras: json.asset.extras },
        extras: json.extras,
        scene: json.scene ?? 0,
        scenes,
        outside,
        animations: (json.animations ?? []).map((animation) => animationContent(file, animation, nodes)),
        variants: variantsContent(json),
        sharedMeshes: sharing(nodes.usersOfMeshes),
        sharedSkins: sharing(nodes.usersOfSkins),
    };
}

module.exports = { contentOf };
