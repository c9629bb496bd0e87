// Animations of transforms and of the weights of morph targets.
const { bytesOf } = require("../model.js");

const CHANNEL = "/animations/0/channels/0";

const VALUES = {
    translation: {
        type: "VEC3",
        keys: [
            [0, 0, 0],
            [1, 2, 3],
            [-1, 0.1, 0.5],
        ],
    },
    rotation: {
        type: "VEC4",
        keys: [
            [0, 0, 0, 1],
            [0, 0, 0.6, 0.8],
            [1, 0, 0, 0],
        ],
    },
    scale: {
        type: "VEC3",
        keys: [
            [1, 1, 1],
            [2, 2, 2],
            [0.5, 1, 1.5],
        ],
    },
    weights: {
        type: "SCALAR",
        keys: [
            [0, 1],
            [0.5, 0.25],
            [1, 0],
        ],
    },
};
const TIMES = [0, 0.5, 2.25];

// The node to be animated; its weights are those of two targets.
function target(m, path) {
    if (path !== "weights") return m.node({ name: "moved" });
    const targets = [
        { POSITION: m.positions(0, 0, 1, 0, 0, 1, 0, 0, 1) },
        { POSITION: m.positions(1, 0, 0, 1, 0, 0, 1, 0, 0) },
    ];
    return m.node({ name: "morphed", mesh: m.triangle({ targets }) });
}

// In-tangent, value and out-tangent of each key. The tangents differ from each other and from key to key.
function cubic(keys) {
    return keys.flatMap((key, at) => [key.map((v) => v + 0.25 * at), key, key.map((v) => v - 0.5 * at)]);
}

function animated(interpolation, path) {
    return (m) => {
        const { type, keys } = VALUES[path];
        const values = (interpolation === "CUBICSPLINE" ? cubic(keys) : keys).flat();
        const node = target(m, path);
        m.add("animations", {
            name: "play",
            samplers: [{ input: m.times(...TIMES), output: m.floats(type, ...values), interpolation }],
            channels: [{ sampler: 0, target: { node, path } }],
        });
        return {
            "/animations/0/name": "play",
            [CHANNEL]: { target: `/scenes/0/nodes/0/${path}`, interpolation, times: TIMES, values },
        };
    };
}

function normalized(type, path, array, expected) {
    return (m) => {
        const node = target(m, path);
        const output = m.accessor(type, array, { normalized: true });
        m.add("animations", {
            samplers: [{ input: m.times(0, 1), output }],
            channels: [{ sampler: 0, target: { node, path } }],
        });
        return { [`${CHANNEL}/values`]: expected, [`${CHANNEL}/interpolation`]: "LINEAR" };
    };
}

const table = {};
for (const interpolation of ["STEP", "LINEAR", "CUBICSPLINE"])
    for (const path of Object.keys(VALUES))
        table[`animation-${path}-${interpolation.toLowerCase()}`] = animated(interpolation, path);

module.exports = {
    ...table,
    "animation-rotation-i8": normalized(
        "VEC4",
        "rotation",
        Int8Array.of(0, 0, 0, 127, 127, 0, 0, 0),
        [0, 0, 0, 1, 1, 0, 0, 0]
    ),
    "animation-rotation-i16": normalized(
        "VEC4",
        "rotation",
        Int16Array.of(0, 0, 0, 32767, 0, -32767, 0, 0),
        [0, 0, 0, 1, 0, -1, 0, 0]
    ),
    "animation-rotation-u16": normalized(
        "VEC4",
        "rotation",
        Uint16Array.of(0, 0, 0, 65535, 65535, 0, 0, 0),
        [0, 0, 0, 1, 1, 0, 0, 0]
    ),
    "animation-weights-u8": normalized("SCALAR", "weights", Uint8Array.of(0, 51, 255, 102), [0, 0.2, 1, 0.4]),
    "animation-of-the-rest-pose": (m) => {
        const node = m.node({ translation: [1, 2, 3], rotation: [0, 0.6, 0, 0.8], scale: [2, 2, 2] });
        const input = m.times(0, 1);
        m.add("animations", {
            samplers: [
                { input, output: m.floats("VEC3", 1, 2, 3, 1, 2, 3) },
                { input, output: m.floats("VEC4", 0, 0.6, 0, 0.8, 0, 0.6, 0, 0.8) },
                { input, output: m.floats("VEC3", 2, 2, 2, 2, 2, 2) },
            ],
            channels: ["translation", "rotation", "scale"].map((path, sampler) => ({
                sampler,
                target: { node, path },
            })),
        });
        return {
            "/animations/0/channels": [
                { target: "/scenes/0/nodes/0/rotation", values: [0, 0.6, 0, 0.8, 0, 0.6, 0, 0.8] },
                { target: "/scenes/0/nodes/0/scale", values: [2, 2, 2, 2, 2, 2] },
                { target: "/scenes/0/nodes/0/translation", values: [1, 2, 3, 1, 2, 3] },
            ],
        };
    },
    "animation-sparse": (m) => {
        const node = m.node();
        const output = m.floats("VEC3", 1, 1, 1, 2, 2, 2, 3, 3, 3);
        m.json.accessors[output].sparse = {
            count: 1,
            indices: { bufferView: m.view(Buffer.from([2])), componentType: 5121 },
            values: { bufferView: m.view(bytesOf(Float32Array.of(4, 5, 6))) },
        };
        m.add("animations", {
            samplers: [{ input: m.times(0, 1, 2), output }],
            channels: [{ sampler: 0, target: { node, path: "scale" } }],
        });
        return { [`${CHANNEL}/values`]: [1, 1, 1, 2, 2, 2, 4, 5, 6] };
    },
    "animation-in-one-view": (m) => {
        const node = m.node();
        const bufferView = m.view(bytesOf(Float32Array.of(0.5, 1, 1, 2, 3, 4, 5, 6)));
        const input = m.add("accessors", {
            bufferView,
            componentType: 5126,
            count: 2,
            type: "SCALAR",
            min: [0.5],
            max: [1],
        });
        const output = m.add("accessors", { bufferView, byteOffset: 8, componentType: 5126, count: 2, type: "VEC3" });
        m.add("animations", {
            samplers: [{ input, output }],
            channels: [{ sampler: 0, target: { node, path: "translation" } }],
        });
        return { [CHANNEL]: { times: [0.5, 1], values: [1, 2, 3, 4, 5, 6] } };
    },
    "animation-with-one-key": (m) => {
        const node = m.node();
        const sampler = { input: m.times(0.75), output: m.floats("VEC3", 1, 2, 3) };
        m.add("animations", { samplers: [sampler], channels: [{ sampler: 0, target: { node, path: "translation" } }] });
        return { [`${CHANNEL}/times`]: [0.75] };
    },
    "animation-that-starts-late": (m) => {
        const node = m.node();
        const sampler = { input: m.times(10, 11.1), output: m.floats("VEC3", 1, 2, 3, 4, 5, 6) };
        m.add("animations", { samplers: [sampler], channels: [{ sampler: 0, target: { node, path: "scale" } }] });
        return { [`${CHANNEL}/times`]: [10, 11.1] };
    },
    "animations-several": (m) => {
        const node = m.node({ name: "walker" });
        const input = m.times(0, 1);
        const animation = (name, ...values) => ({
            name,
            samplers: [{ input, output: m.floats("VEC3", ...values) }],
            channels: [{ sampler: 0, target: { node, path: "translation" } }],
        });
        m.add("animations", animation("walk", 0, 0, 0, 1, 0, 0));
        m.add("animations", animation("run", 0, 0, 0, 5, 0, 0));
        m.add("animations", animation("run", 0, 0, 0, 6, 0, 0));
        m.add("animations", animation(undefined, 0, 0, 0, 7, 0, 0));
        return {
            "/animations": [
                { name: "walk", channels: [{ values: [0, 0, 0, 1, 0, 0] }] },
                { name: "run", channels: [{ values: [0, 0, 0, 5, 0, 0] }] },
                { name: "run", channels: [{ values: [0, 0, 0, 6, 0, 0] }] },
                { name: undefined, channels: [{ values: [0, 0, 0, 7, 0, 0] }] },
            ],
        };
    },
    "animation-sampler-of-two-channels": (m) => {
        const [left, right] = [m.node({ name: "left" }), m.node({ name: "right" })];
        m.add("animations", {
            samplers: [{ input: m.times(0, 1), output: m.floats("VEC3", 0, 0, 0, 0, 1, 0) }],
            channels: [
                { sampler: 0, target: { node: left, path: "translation" } },
                { sampler: 0, target: { node: right, path: "translation" } },
                { sampler: 0, target: { node: left, path: "scale" } },
            ],
        });
        return {
            "/animations/0/channels": [
                { target: "/scenes/0/nodes/0/scale", values: [0, 0, 0, 0, 1, 0] },
                { target: "/scenes/0/nodes/0/translation", values: [0, 0, 0, 0, 1, 0] },
                { target: "/scenes/0/nodes/1/translation", values: [0, 0, 0, 0, 1, 0] },
            ],
        };
    },
    "animation-of-a-child-and-a-joint": (m) => {
        const child = m.node({ name: "child" });
        m.node({ name: "parent", children: [child] });
        m.add("skins", { joints: [child] });
        const attributes = {
            POSITION: m.corner(),
            JOINTS_0: m.accessor("VEC4", new Uint8Array(12)),
            WEIGHTS_0: m.floats("VEC4", 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0),
        };
        m.node({ mesh: m.mesh({ attributes }), skin: 0 });
        m.add("animations", {
            samplers: [{ input: m.times(0, 1), output: m.floats("VEC4", 0, 0, 0, 1, 0, 0, 1, 0) }],
            channels: [{ sampler: 0, target: { node: child, path: "rotation" } }],
        });
        return { [`${CHANNEL}/target`]: "/scenes/0/nodes/0/children/0/rotation" };
    },
    "animation-of-a-node-with-camera-and-light": (m) => {
        m.light({ type: "point" });
        m.add("cameras", { type: "perspective", perspective: { yfov: 1, znear: 0.1 } });
        const node = m.node(m.extension("KHR_lights_punctual", { light: 0 }, { camera: 0, translation: [0, 1, 0] }));
        m.add("animations", {
            samplers: [{ input: m.times(0, 2), output: m.floats("VEC3", 0, 1, 0, 0, 2, 0) }],
            channels: [{ sampler: 0, target: { node, path: "translation" } }],
        });
        return { [`${CHANNEL}/target`]: "/scenes/0/nodes/0/translation", "/scenes/0/nodes/0/camera/yfov": 1 };
    },
};
