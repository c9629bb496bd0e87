// Morph targets.
const { bytesOf } = require("../model.js");
const { MESH, NODE, PRIMITIVE } = require("./paths.js");

const LIFT = [0, 0, 1, 0, 0, 0.5, 0, 0, 0.25];
const PUSH = [1, 0, 0, 0, 0, 0, 0, 0.1, 0];

function morphed(m, targets, mesh = {}, node = {}) {
    const index = m.triangle({ targets });
    Object.assign(m.json.meshes[index], mesh);
    m.node({ mesh: index, ...node });
}

function two(m) {
    return [{ POSITION: m.positions(...LIFT) }, { POSITION: m.positions(...PUSH) }];
}

module.exports = {
    "morph-positions": (m) => {
        morphed(m, two(m));
        return { [`${PRIMITIVE}/targets`]: [{ POSITION: LIFT }, { POSITION: PUSH }], [`${NODE}/weights`]: [0, 0] };
    },
    "morph-names": (m) => {
        morphed(m, two(m), { extras: { targetNames: ["l\u00e4cheln", "zorn"], author: "n" }, weights: [0.25, 0.75] });
        return {
            [`${MESH}/extras`]: { targetNames: ["l\u00e4cheln", "zorn"], author: "n" },
            [`${MESH}/weights`]: [0.25, 0.75],
            [`${NODE}/weights`]: [0.25, 0.75],
        };
    },
    "morph-weights-of-nodes": (m) => {
        morphed(m, two(m), { weights: [0.25, 0.75] }, { weights: [1, 0] });
        m.node({ mesh: 0 });
        m.node({ mesh: 0, weights: [0, 0.5] });
        return {
            "/scenes/0/nodes/0/weights": [1, 0],
            "/scenes/0/nodes/1/weights": [0.25, 0.75],
            "/scenes/0/nodes/2/weights": [0, 0.5],
            [`${MESH}/weights`]: [0.25, 0.75],
        };
    },
    "morph-normals-tangents": (m) => {
        const attributes = {
            POSITION: m.corner(),
            NORMAL: m.floats("VEC3", 0, 0, 1, 0, 0, 1, 0, 0, 1),
            TANGENT: m.floats("VEC4", 1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1),
        };
        const [normals, tangents] = [
            [0, 1, -1, 0, 0, 0, 1, 0, -1],
            [-1, 1, 0, 0, 0, 0, -1, 0, 1],
        ];
        const targets = [
            {
                POSITION: m.positions(...LIFT),
                NORMAL: m.floats("VEC3", ...normals),
                TANGENT: m.floats("VEC3", ...tangents),
            },
        ];
        m.node({ mesh: m.mesh({ attributes, targets }) });
        return { [`${PRIMITIVE}/targets/0`]: { POSITION: LIFT, NORMAL: normals, TANGENT: tangents } };
    },
    "morph-texcoords-colors": (m) => {
        const attributes = {
            POSITION: m.corner(),
            TEXCOORD_0: m.floats("VEC2", 0, 0, 1, 0, 0, 1),
            COLOR_0: m.floats("VEC4", 1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 1),
        };
        const coordinates = [0.5, 0, 0, 0.5, 0.25, 0.25];
        const colors = [-1, 0.5, 0, 0, 0, -0.5, 0, 0, 0, 0, 0, -0.5];
        const targets = [{ TEXCOORD_0: m.floats("VEC2", ...coordinates), COLOR_0: m.floats("VEC4", ...colors) }];
        m.node({ mesh: m.mesh({ attributes, targets }) });
        return { [`${PRIMITIVE}/targets/0`]: { TEXCOORD_0: coordinates, COLOR_0: colors } };
    },
    "morph-sparse": (m) => {
        const target = (replaced, ...delta) => ({
            POSITION: m.add("accessors", {
                componentType: 5126,
                count: 3,
                type: "VEC3",
                min: [0, 0, 0],
                max: delta,
                sparse: {
                    count: 1,
                    indices: { bufferView: m.view(bytesOf(Uint16Array.of(replaced))), componentType: 5123 },
                    values: { bufferView: m.view(bytesOf(Float32Array.from(delta))) },
                },
            }),
        });
        morphed(m, [target(1, 0, 0, 2), target(2, 3, 4, 0)]);
        return {
            [`${PRIMITIVE}/targets`]: [
                { POSITION: [0, 0, 0, 0, 0, 2, 0, 0, 0] },
                { POSITION: [0, 0, 0, 0, 0, 0, 3, 4, 0] },
            ],
        };
    },
    "morph-of-an-indexed-strip": (m) => {
        const attributes = { POSITION: m.positions(0, 0, 0, 1, 1, 0, 2, 0, 0, 3, 1, 0) };
        const targets = [{ POSITION: m.positions(0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0, 4) }];
        m.node({
            mesh: m.mesh({ attributes, targets, mode: 5, indices: m.accessor("SCALAR", Uint16Array.of(1, 0, 2, 3)) }),
        });
        return { [`${PRIMITIVE}/targets/0/POSITION`]: [0, 0, 1, 0, 0, 3, 0, 0, 2, 0, 0, 1, 0, 0, 4, 0, 0, 3] };
    },
    "morph-of-two-primitives": (m) => {
        m.node({
            mesh: m.mesh(
                { attributes: { POSITION: m.corner() }, targets: two(m) },
                { attributes: { POSITION: m.positions(0, 0, 5, 1, 0, 5, 0, 1, 5) }, targets: two(m).reverse() }
            ),
        });
        return {
            [`${MESH}/primitives`]: [
                { targets: [{ POSITION: LIFT }, { POSITION: PUSH }] },
                { targets: [{ POSITION: PUSH }, { POSITION: LIFT }] },
            ],
        };
    },
    "morph-and-skin": (m) => {
        const joint = m.node({ name: "joint" });
        m.add("skins", { joints: [joint] });
        const attributes = {
            POSITION: m.corner(),
            JOINTS_0: m.accessor("VEC4", new Uint8Array(12)),
            WEIGHTS_0: m.floats("VEC4", 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0),
        };
        const mesh = m.mesh({ attributes, targets: two(m) });
        m.node({ mesh, skin: 0, weights: [0.5, 0] });
        return {
            "/scenes/0/nodes/1/weights": [0.5, 0],
            "/scenes/0/nodes/1/skin/joints": [{ node: "/scenes/0/nodes/0" }],
        };
    },
};
