// Vertex attributes, and every mode of a primitive.
const { ATTRIBUTES, MESH, PRIMITIVE } = require("./paths.js");

// Of a band of triangles. A point with a lower number has a lower x.
const BAND = [
    [0, 0, 0],
    [1, 1, 0],
    [2, 0, 0],
    [3, 1, 0],
    [4, 0, 0],
    [5, 1, 0],
];

function points(...numbers) {
    return numbers.flatMap((number) => BAND[number]);
}

function attributes(accessors, expected) {
    return (m) => {
        m.node({ mesh: m.mesh({ attributes: { POSITION: m.corner(), ...accessors(m) } }) });
        return Object.fromEntries(Object.entries(expected).map(([name, value]) => [`${ATTRIBUTES}/${name}`, value]));
    };
}

// A custom attribute numbers the vertices, so that each corner names its vertex.
function mode(number, vertices, indices, topology, expected) {
    return (m) => {
        const attributes = { POSITION: m.positions(...points(...Array(vertices).keys())) };
        attributes._NUMBER = m.floats("SCALAR", ...Array(vertices).keys());
        const drawn = indices && { indices: m.accessor("SCALAR", Uint16Array.from(indices)) };
        m.node({ mesh: m.mesh({ attributes, mode: number, ...drawn }) });
        return {
            [`${PRIMITIVE}/topology`]: topology,
            [`${ATTRIBUTES}/_NUMBER`]: expected,
            [`${ATTRIBUTES}/POSITION`]: points(...expected),
        };
    };
}

function skinned(m, more) {
    const joints = [m.node({ name: "hip", children: [1] }), m.node({ name: "knee" })];
    const mesh = m.mesh({ attributes: { POSITION: m.corner(), ...more } });
    m.add("skins", { joints });
    m.node({ mesh, skin: 0 });
}

function influences(...corners) {
    const content = corners.map((pairs) => ({
        joints: pairs.map(([joint]) => joint),
        weights: pairs.map(([, weight]) => weight),
    }));
    return { "/scenes/0/nodes/1/mesh/primitives/0/influences": content };
}

const HALVES = influences(
    [[0, 1]],
    [
        [0, 0.4],
        [1, 0.6],
    ],
    [[1, 1]]
);

module.exports = {
    "attribute-normal-tangent": attributes(
        (m) => ({
            NORMAL: m.floats("VEC3", 0, 0, 1, 0, 1, 0, 1, 0, 0),
            TANGENT: m.floats("VEC4", 1, 0, 0, 1, 0, 0, 1, -1, 0, 1, 0, 1),
        }),
        { NORMAL: [0, 0, 1, 0, 1, 0, 1, 0, 0], TANGENT: [1, 0, 0, 1, 0, 0, 1, -1, 0, 1, 0, 1] }
    ),
    "attribute-texcoord-f32": attributes(
        (m) => ({
            TEXCOORD_0: m.floats("VEC2", 0, 0, 1, 0, 0, 1),
            TEXCOORD_1: m.floats("VEC2", -1, 2, 0.1, 0.2, 0.3, 0.4),
            TEXCOORD_2: m.floats("VEC2", 5, 5, 6, 5, 5, 6),
        }),
        { TEXCOORD_0: [0, 0, 1, 0, 0, 1], TEXCOORD_1: [-1, 2, 0.1, 0.2, 0.3, 0.4], TEXCOORD_2: [5, 5, 6, 5, 5, 6] }
    ),
    "attribute-texcoord-u16": attributes(
        (m) => ({ TEXCOORD_0: m.accessor("VEC2", Uint16Array.of(0, 0, 65535, 0, 13107, 65535), { normalized: true }) }),
        { TEXCOORD_0: [0, 0, 1, 0, 0.2, 1] }
    ),
    "attribute-color-rgb-f32": attributes((m) => ({ COLOR_0: m.floats("VEC3", 1, 0, 0, 0, 0.25, 0, 0, 0, 0.1) }), {
        COLOR_0: [1, 0, 0, 1, 0, 0.25, 0, 1, 0, 0, 0.1, 1],
    }),
    "attribute-color-rgba-u16": attributes(
        (m) => ({
            COLOR_0: m.accessor("VEC4", Uint16Array.of(65535, 0, 0, 13107, 0, 65535, 0, 26214, 0, 0, 65535, 0), {
                normalized: true,
            }),
        }),
        { COLOR_0: [1, 0, 0, 0.2, 0, 1, 0, 0.4, 0, 0, 1, 0] }
    ),
    "attribute-color-two-sets": attributes(
        (m) => ({
            COLOR_0: m.accessor("VEC4", Uint8Array.of(255, 0, 0, 255, 0, 255, 0, 51, 0, 0, 255, 0), {
                normalized: true,
            }),
            COLOR_1: m.floats("VEC4", 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 1, 0, 1),
        }),
        {
            COLOR_0: [1, 0, 0, 1, 0, 1, 0, 0.2, 0, 0, 1, 0],
            COLOR_1: [0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 1, 0, 1],
        }
    ),
    "attribute-custom": attributes(
        (m) => ({
            _TEMPERATURE: m.floats("SCALAR", 20.5, -273.15, 1e6),
            _FLOW: m.floats("VEC3", 1, 2, 3, 4, 5, 6, 7, 8, 9),
            _lower_case: m.floats("VEC2", 1, 2, 3, 4, 5, 6),
        }),
        { _TEMPERATURE: [20.5, -273.15, 1e6], _FLOW: [1, 2, 3, 4, 5, 6, 7, 8, 9], _lower_case: [1, 2, 3, 4, 5, 6] }
    ),
    "attribute-joints-u8": (m) => {
        const JOINTS_0 = m.accessor("VEC4", Uint8Array.of(0, 0, 0, 0, 0, 1, 0, 0, 1, 0, 0, 0));
        skinned(m, { JOINTS_0, WEIGHTS_0: m.floats("VEC4", 1, 0, 0, 0, 0.4, 0.6, 0, 0, 1, 0, 0, 0) });
        return HALVES;
    },
    "attribute-joints-u16": (m) => {
        const JOINTS_0 = m.accessor("VEC4", Uint16Array.of(0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0));
        const weights = Uint8Array.of(255, 0, 0, 0, 153, 102, 0, 0, 255, 0, 0, 0);
        skinned(m, { JOINTS_0, WEIGHTS_0: m.accessor("VEC4", weights, { normalized: true }) });
        return HALVES;
    },
    "attribute-weights-u16": (m) => {
        const JOINTS_0 = m.accessor("VEC4", Uint16Array.of(0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0));
        const weights = Uint16Array.of(65535, 0, 0, 0, 39321, 26214, 0, 0, 65535, 0, 0, 0);
        skinned(m, { JOINTS_0, WEIGHTS_0: m.accessor("VEC4", weights, { normalized: true }) });
        return HALVES;
    },
    "attribute-eight-joints": (m) => {
        const joints = [...Array(8).keys()];
        for (const joint of joints)
            m.node({ name: `joint${joint}`, ...(joint === 0 && { children: joints.slice(1) }) });
        m.add("skins", { joints });
        const four = [0.125, 0.125, 0.125, 0.125];
        const mesh = m.mesh({
            attributes: {
                POSITION: m.corner(),
                JOINTS_0: m.accessor("VEC4", Uint8Array.of(0, 1, 2, 3, 3, 2, 1, 0, 0, 0, 0, 0)),
                WEIGHTS_0: m.floats("VEC4", ...four, 0.1, 0.2, 0.1, 0.1, 1, 0, 0, 0),
                JOINTS_1: m.accessor("VEC4", Uint8Array.of(4, 5, 6, 7, 7, 6, 5, 4, 0, 0, 0, 0)),
                WEIGHTS_1: m.floats("VEC4", ...four, 0.05, 0.05, 0.1, 0.3, 0, 0, 0, 0),
            },
        });
        m.node({ mesh, skin: 0 });
        const all = [0, 1, 2, 3, 4, 5, 6, 7];
        return {
            "/scenes/0/nodes/1/mesh/primitives/0/influences": [
                { joints: all, weights: all.map(() => 0.125) },
                { joints: all, weights: [0.1, 0.1, 0.2, 0.1, 0.3, 0.1, 0.05, 0.05] },
                { joints: [0], weights: [1] },
            ],
        };
    },

    "mode-points": mode(0, 3, undefined, "points", [0, 1, 2]),
    "mode-points-indexed": mode(0, 3, [2, 0, 1], "points", [2, 0, 1]),
    "mode-lines": mode(1, 4, undefined, "lines", [0, 1, 2, 3]),
    "mode-lines-indexed": mode(1, 3, [2, 0, 0, 1], "lines", [2, 0, 0, 1]),
    "mode-line-loop": mode(2, 3, undefined, "lines", [0, 1, 1, 2, 2, 0]),
    "mode-line-loop-indexed": mode(2, 4, [3, 0, 2, 1], "lines", [3, 0, 0, 2, 2, 1, 1, 3]),
    "mode-line-strip": mode(3, 4, undefined, "lines", [0, 1, 1, 2, 2, 3]),
    "mode-line-strip-indexed": mode(3, 3, [2, 0, 1], "lines", [2, 0, 0, 1]),
    "mode-triangles": mode(4, 6, undefined, "triangles", [0, 1, 2, 3, 4, 5]),
    "mode-triangles-indexed": mode(4, 4, [0, 1, 2, 0, 3, 2], "triangles", [0, 1, 2, 0, 3, 2]),
    // The corners of a triangle are listed from the lowest number, in the direction in which it is wound.
    "mode-triangle-strip": mode(5, 5, undefined, "triangles", [0, 1, 2, 1, 3, 2, 2, 3, 4]),
    "mode-triangle-strip-indexed": mode(5, 4, [3, 2, 1, 0], "triangles", [1, 3, 2, 0, 1, 2]),
    "mode-triangle-fan": mode(6, 5, undefined, "triangles", [0, 1, 2, 0, 2, 3, 0, 3, 4]),
    "mode-triangle-fan-indexed": mode(6, 4, [3, 0, 1, 2], "triangles", [0, 1, 3, 1, 2, 3]),

    "primitives-of-one-mesh": (m) => {
        const NORMAL = m.floats("VEC3", 0, 0, 1, 0, 0, 1, 0, 0, 1);
        const POSITION = m.positions(0, 0, 1, 1, 0, 1, 0, 1, 1);
        m.node({
            mesh: m.mesh(
                { attributes: { POSITION: m.corner() }, material: m.material({ name: "red" }) },
                { attributes: { POSITION, NORMAL }, material: m.material({ name: "green" }) },
                { attributes: { POSITION }, mode: 1, indices: m.accessor("SCALAR", Uint8Array.of(0, 1, 1, 2)) },
                { attributes: { POSITION }, mode: 0 }
            ),
        });
        return {
            [`${MESH}/primitives`]: [
                { topology: "triangles", material: { name: "red" } },
                { topology: "triangles", material: { name: "green" } },
                { topology: "lines", corners: 4 },
                { topology: "points", corners: 3 },
            ],
        };
    },
    "mesh-shared-by-nodes": (m) => {
        const mesh = m.triangle();
        m.json.meshes[mesh].name = "tile";
        m.node({ mesh, name: "left" });
        m.node({ mesh, name: "right", translation: [2, 0, 0] });
        return {
            "/sharedMeshes": [["/scenes/0/nodes/0", "/scenes/0/nodes/1"]],
            "/scenes/0/nodes/1/mesh/name": "tile",
            "/scenes/0/nodes/1/translation": [2, 0, 0],
        };
    },
    "mesh-vertices-shared-by-primitives": (m) => {
        const POSITION = m.positions(...points(0, 1, 2, 3));
        const drawn = (...indices) => ({
            attributes: { POSITION },
            indices: m.accessor("SCALAR", Uint16Array.from(indices)),
        });
        m.node({ mesh: m.mesh(drawn(0, 1, 2), drawn(1, 3, 2)) });
        return { [`${MESH}/primitives/1/attributes/POSITION`]: points(1, 3, 2) };
    },
};
