// Pairs of files whose contents are the same although they are stored differently, and pairs that barely differ.
const { contentOf } = require("./content/content.js");
const { differences } = require("./compare.js");
const { GltfFile } = require("./file.js");
const { Model } = require("./model.js");
const { makeModel } = require("./models.js");

// Models with the same content.
const SAME_MODELS = [
    ["container-glb", "container-gltf-and-bin", "container-data-uri", "container-uri-of-glb", "meshopt-attributes"],
    ["meshopt-attributes", "meshopt-attributes-with-fallback"],
    ["accessor-sparse-u8", "accessor-sparse-u16", "accessor-sparse-u32"],
    ["accessor-indices-u8", "accessor-indices-u16", "accessor-indices-u32"],
    ["meshopt-triangles-u16", "meshopt-triangles-u32", "draco-sequential"],
    ["attribute-joints-u8", "attribute-joints-u16", "attribute-weights-u16"],
    ["sampler-empty", "sampler-none", "sampler-u-repeat"],
    ["image-data-uri", "image-data-uri-of-gltf", "image-view", "image-view-of-gltf"],
    ["material-default", "material-defaults-written"],
];

function node(members) {
    return (m) => m.node(members);
}

function primitive(make) {
    return (m) => m.node({ mesh: m.mesh({ attributes: { POSITION: m.corner() }, ...make(m) }) });
}

function attributes(make) {
    return primitive((m) => ({ attributes: { POSITION: m.corner(), ...make(m) } }));
}

// Points that are drawn with the given mode and indices.
function drawn(mode, ...indices) {
    return (m) => {
        const POSITION = m.positions(0, 0, 0, 1, 1, 0, 2, 0, 0, 3, 1, 0);
        m.node({
            mesh: m.mesh({ attributes: { POSITION }, mode, indices: m.accessor("SCALAR", Uint16Array.from(indices)) }),
        });
    };
}

// Three corners; those after the first belong to joint 0.
function influenced(joints, weights) {
    return attributes((m) => ({
        JOINTS_0: m.accessor("VEC4", Uint8Array.of(...joints, 0, 0, 0, 0, 0, 0, 0, 0)),
        WEIGHTS_0: m.floats("VEC4", ...weights, 1, 0, 0, 0, 1, 0, 0, 0),
    }));
}

function colored(...colors) {
    return attributes((m) => ({ COLOR_0: m.floats(colors.length === 9 ? "VEC3" : "VEC4", ...colors) }));
}

function tinted(Type, one, fifth) {
    return attributes((m) => ({
        COLOR_0: m.accessor("VEC4", Type.of(one, 0, fifth, one, one, 0, fifth, one, one, 0, fifth, one), {
            normalized: Type !== Float32Array,
        }),
    }));
}

// Two nodes that show one of two equal meshes each.
function shared(...meshes) {
    return (m) => {
        m.mesh({ attributes: { POSITION: m.corner() } });
        m.add("meshes", { ...m.json.meshes[0] });
        for (const mesh of meshes) m.node({ mesh });
    };
}

function skinned(...meshes) {
    return (m) => {
        shared(...meshes)(m);
        m.add("skins", { joints: [0] });
        for (const node of m.json.nodes) node.skin = 0;
    };
}

function animated(members) {
    return (m) => {
        const path = "translation";
        m.add("animations", {
            samplers: [{ input: m.times(0), output: m.floats("VEC3", 1, 2, 3) }],
            channels: [{ sampler: 0, target: { node: m.node(members), path } }],
        });
    };
}

function morphed(...targets) {
    return primitive((m) => ({ targets: targets.map((target) => ({ POSITION: m.positions(...target) })) }));
}

function bound(x) {
    return (m) => {
        m.node();
        m.add("skins", {
            joints: [0],
            inverseBindMatrices: m.floats("MAT4", 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, 0, 0, 1),
        });
        m.node({ mesh: m.triangle(), skin: 0 });
    };
}

function viewed(yfov) {
    return (m) => m.node({ camera: m.add("cameras", { type: "perspective", perspective: { yfov, znear: 1 } }) });
}

function scenes(...lists) {
    return (m) => {
        m.node();
        m.node();
        m.json.scenes = lists.map((nodes) => ({ nodes }));
    };
}

function paint(material) {
    return primitive((m) => ({ material: m.material(material) }));
}

const TURN = { rotation: [0, 0, 0.6, 0.8] };
const EIGHT = [...Array(8).keys()].map((at) => at / 8);

const PAIRS = {
    same: [
        ["a matrix", node({ matrix: [0.28, 0.96, 0, 0, -0.96, 0.28, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1] }), node(TURN)],
        [
            "a rounded matrix",
            node({ matrix: [0.28, 0.9600001, 0, 0, -0.96, 0.28, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1] }),
            node(TURN),
        ],
        ["the negative quaternion", node({ rotation: [0, 0, -0.6, -0.8] }), node(TURN)],
        ["an identity", node({ scale: [1, 1, 1], translation: [0, 0, 0] }), node({})],
        ["an empty name", node({ name: "" }), node({ name: undefined })],
        ["a fan", drawn(6, 0, 1, 2, 3), drawn(4, 0, 1, 2, 0, 2, 3)],
        ["a strip", drawn(5, 0, 1, 2, 3), drawn(4, 0, 1, 2, 1, 3, 2)],
        ["a turned triangle", drawn(4, 0, 1, 2), drawn(4, 1, 2, 0)],
        ["a loop", drawn(2, 0, 1, 2), drawn(1, 0, 1, 1, 2, 2, 0)],
        ["a line strip", drawn(3, 0, 1, 2), drawn(1, 0, 1, 1, 2)],
        [
            "weights in proportion",
            influenced([1, 2, 0, 0], [0.25, 0.25, 0, 0]),
            influenced([1, 2, 0, 0], [0.5, 0.5, 0, 0]),
        ],
        [
            "joints in another order",
            influenced([1, 2, 0, 0], [0.25, 0.75, 0, 0]),
            influenced([0, 2, 1, 0], [0, 0.75, 0.25, 0]),
        ],
        ["a joint without weight", influenced([1, 2, 0, 0], [1, 0, 0, 0]), influenced([1, 0, 0, 0], [1, 0, 0, 0])],
        ["a joint twice", influenced([1, 1, 0, 0], [0.5, 0.5, 0, 0]), influenced([1, 0, 0, 0], [1, 0, 0, 0])],
        ["opaque colours", colored(1, 0, 0, 0, 1, 0, 0, 0, 1), colored(1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 1)],
        ["integers for fractions", tinted(Uint8Array, 255, 51), tinted(Float32Array, 1, 0.2)],
        ["a copy of a skinned mesh", skinned(0, 0), skinned(0, 1)],
        ["a turn as a scale", node({ scale: [-1, -1, 1] }), node({ rotation: [0, 0, 1, 0] })],
        ["a target without deltas", primitive(() => ({ targets: [{}] })), morphed([0, 0, 0, 0, 0, 0, 0, 0, 0])],
        ["a rounded inverse bind", bound(1), bound(1 + 2e-7)],
        ["a rounded angle", viewed(1), viewed(1 + 2e-7)],
        ["no scene", node({}), (m) => m.node() && (m.hasNoScenes = true)],
        [
            "a rounded factor",
            paint({ emissiveFactor: [0.1, 0, 0] }),
            paint({ emissiveFactor: [Math.fround(0.1), 0, 0] }),
        ],
    ],
    different: [
        ["a turn", node({ rotation: [0, 0, 0.60001, 0.79999] }), node(TURN)],
        ["a mirror", node({ scale: [-1, 1, 1] }), node({})],
        ["a matrix", node({ matrix: [1, 0, 0, 0, 1e-5, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1] }), node({})],
        ["a copy of a mesh", shared(0, 0), shared(0, 1)],
        [
            "a turn as a scale of an animated node",
            animated({ scale: [-1, -1, 1] }),
            animated({ rotation: [0, 0, 1, 0] }),
        ],
        ["a small translation", node({ translation: [1000, 1e-5, 0] }), node({ translation: [1000, 0, 0] })],
        ["a name", node({ name: " " }), node({ name: "" })],
        ["a fan for a strip", drawn(6, 0, 1, 2, 3), drawn(5, 0, 1, 2, 3)],
        ["a triangle the other way round", drawn(4, 0, 1, 2), drawn(4, 0, 2, 1)],
        ["triangles in another order", drawn(4, 0, 1, 2, 1, 3, 2), drawn(4, 1, 3, 2, 0, 1, 2)],
        ["an open loop", drawn(2, 0, 1, 2), drawn(3, 0, 1, 2)],
        ["a line the other way round", drawn(1, 0, 1), drawn(1, 1, 0)],
        [
            "other shares",
            influenced([1, 2, 0, 0], [0.25, 0.75, 0, 0]),
            influenced([1, 2, 0, 0], [0.2501, 0.7499, 0, 0]),
        ],
        ["another joint", influenced([1, 2, 0, 0], [0.25, 0.75, 0, 0]), influenced([1, 3, 0, 0], [0.25, 0.75, 0, 0])],
        [
            "exchanged joints",
            influenced([1, 2, 0, 0], [0.25, 0.75, 0, 0]),
            influenced([2, 1, 0, 0], [0.25, 0.75, 0, 0]),
        ],
        ["one joint less", influenced([1, 2, 0, 0], [0.99, 0.01, 0, 0]), influenced([1, 0, 0, 0], [1, 0, 0, 0])],
        ["an alpha", colored(1, 0, 0, 0, 1, 0, 0, 0, 1), colored(1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 0.99)],
        ["the lowest bit of a colour", colored(...EIGHT, 1), colored(...EIGHT, 1 - 2 ** -24)],
        [
            "the sign of a zero",
            attributes((m) => ({ _V: m.floats("SCALAR", 0, 0, 0) })),
            attributes((m) => ({ _V: m.floats("SCALAR", 0, -0, 0) })),
        ],
        [
            "one target less",
            morphed([0, 0, 1, 0, 0, 0, 0, 0, 0], [0, 0, 0, 0, 0, 0, 0, 0, 0]),
            morphed([0, 0, 1, 0, 0, 0, 0, 0, 0]),
        ],
        ["an inverse bind", bound(1), bound(1 + 1e-5)],
        ["an angle", viewed(1), viewed(1 + 1e-5)],
        ["another scene", scenes([0], [1]), scenes([0, 1])],
        ["the order of nodes", scenes([0, 1]), scenes([1, 0])],
        ["a factor", paint({ emissiveFactor: [0.1, 0, 0] }), paint({ emissiveFactor: [0.10001, 0, 0] })],
        ["no material", paint({ name: undefined }), primitive(() => ({}))],
        ["no extras", node({ extras: {} }), node({})],
        ["extras of another type", node({ extras: { a: "1" } }), node({ extras: { a: 1 } })],
        ["extras of another order", node({ extras: [1, 2] }), node({ extras: [2, 1] })],
        ["an unlimited range", (m) => light(m, {}), (m) => light(m, { range: 1e30 })],
    ],
};

function light(m, members) {
    m.node(m.extension("KHR_lights_punctual", { light: m.light({ type: "point", ...members }) }));
}

function read(files) {
    const [bytes] = Object.values(files);
    return contentOf(new GltfFile(bytes, (name) => files[name]));
}

function made(make) {
    const model = new Model();
    make(model);
    return read(model.files());
}

function* samePairs() {
    for (const [name, a, b] of PAIRS.same) yield [name, made(a), made(b)];
    for (const [first, ...others] of SAME_MODELS)
        for (const other of others) yield [other, read(makeModel(first).files), read(makeModel(other).files)];
}

// The pairs that are compared wrongly, each with the differences that were found.
function wrongPairs() {
    const same = [...samePairs()].map(([name, a, b]) => [name, differences(a, b)]);
    const different = PAIRS.different.map(([name, a, b]) => [name, differences(made(a), made(b))]);
    return [...same.filter(([, found]) => found.length > 0), ...different.filter(([, found]) => found.length === 0)];
}

module.exports = { wrongPairs };
