// Models whose numbers exceed 8 and 16 bits. They are too large to change each of their numbers.
const { ATTRIBUTES } = require("./paths.js");

// Points in the reverse order of the buffer, so that the indices are needed.
function points(count, Index) {
    return (m) => {
        const positions = Float32Array.from({ length: count * 3 }, (_, at) => at / 4);
        const attributes = { POSITION: m.bounded("VEC3", positions) };
        const indices = m.accessor(
            "SCALAR",
            Index.from({ length: count }, (_, at) => count - 1 - at)
        );
        m.node({ mesh: m.mesh({ attributes, mode: 0, indices }) });
        const last = (count - 1) * 3;
        return { [`${ATTRIBUTES}/POSITION/values/0`]: last / 4, [`${ATTRIBUTES}/POSITION/values/${last}`]: 0 };
    };
}

// A chain of joints, each of which moves one point.
function joints(count) {
    return (m) => {
        const numbers = [...Array(count).keys()];
        for (const joint of numbers) m.node({ children: joint + 1 < count ? [joint + 1] : undefined });
        const attributes = {
            POSITION: m.positions(...numbers.flatMap((joint) => [joint, 0, 0])),
            JOINTS_0: m.accessor("VEC4", Uint16Array.from(numbers.flatMap((joint) => [joint, 0, 0, 0]))),
            WEIGHTS_0: m.floats("VEC4", ...numbers.flatMap(() => [1, 0, 0, 0])),
        };
        m.add("skins", { joints: numbers });
        m.node({ mesh: m.mesh({ attributes, mode: 0 }), skin: 0 });
        return { [`/scenes/0/nodes/1/mesh/primitives/0/influences/${count - 1}/joints`]: [count - 1] };
    };
}

function targets(count) {
    return (m) => {
        const lift = (at) => ({ POSITION: m.positions(0, 0, at + 1, 0, 0, 0, 0, 0, 0) });
        const weights = Array.from({ length: count }, (_, at) => at / count);
        const mesh = m.triangle({ targets: [...Array(count).keys()].map(lift) });
        m.json.meshes[mesh].weights = weights;
        m.node({ mesh });
        return { "/scenes/0/nodes/0/weights": weights };
    };
}

function chain(count) {
    return (m) => {
        for (let at = 0; at < count; ++at)
            m.node({ children: at + 1 < count ? [at + 1] : undefined, translation: [1, 0, 0] });
        return { [`/scenes/0/nodes/0${"/children/0".repeat(count - 1)}/name`]: `node ${count - 1}` };
    };
}

module.exports = {
    "large-points-255": points(255, Uint8Array),
    "large-points-256": points(256, Uint16Array),
    "large-points-65535": points(65535, Uint16Array),
    "large-points-65537": points(65537, Uint32Array),
    "large-skin-of-300-joints": joints(300),
    "large-100-targets": targets(100),
    "large-chain-of-900-nodes": chain(900),
};
