// Every way to store numbers.
const { bytesOf, fractions } = require("../model.js");
const { ATTRIBUTES, PRIMITIVE } = require("./paths.js");

const CORNERS = [0, 0, 0, 1, 0, 0, 0, 1, 0];

// A triangle with a custom attribute.
function custom(type, array, more) {
    return (m) => {
        const _VALUE = m.attribute(type, array, more);
        m.node({ mesh: m.mesh({ attributes: { POSITION: m.corner(), _VALUE } }) });
        return { [`${ATTRIBUTES}/_VALUE`]: more?.normalized ? fractions(array) : [...array] };
    };
}

// A square of two triangles with indices of the given type.
function indexed(Type) {
    return (m) => {
        const POSITION = m.positions(0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0);
        const indices = m.accessor("SCALAR", Type.of(0, 2, 1, 1, 2, 3));
        m.node({ mesh: m.mesh({ attributes: { POSITION }, indices }) });
        return { [`${ATTRIBUTES}/POSITION`]: [0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0, 1, 0, 0] };
    };
}

function sparse(m, Index, count, indices, replacements, base = {}) {
    return m.add("accessors", {
        componentType: 5126,
        count,
        type: "VEC3",
        ...base,
        sparse: {
            count: indices.length,
            indices: {
                bufferView: m.view(bytesOf(Index.from(indices))),
                componentType: { 1: 5121, 2: 5123, 4: 5125 }[Index.BYTES_PER_ELEMENT],
            },
            values: { bufferView: m.view(bytesOf(Float32Array.from(replacements))) },
        },
    });
}

const BOX = { min: [0, 0, 0], max: [2, 2, 0] };

// Positions that are replaced by sparse values, with indices of the given type.
function sparsePositions(Index) {
    return (m) => {
        const bufferView = m.view(bytesOf(Float32Array.of(0.5, 0.25, 0, 9, 9, 9, 9, 9, 9)));
        const POSITION = sparse(m, Index, 3, [1, 2], [2, 0, 0, 0, 2, 0], { bufferView, ...BOX });
        m.node({ mesh: m.mesh({ attributes: { POSITION } }) });
        return { [`${ATTRIBUTES}/POSITION`]: [0, 2, 0, 0.5, 0.25, 0, 2, 0, 0] };
    };
}

function interleaved(m) {
    const stride = 32; // 12 for the position, 12 for the normal, 4 for the colour, 4 unused
    const bytes = Buffer.alloc(3 * stride, 0xee);
    for (let at = 0; at < 3; ++at) {
        const start = at * stride;
        CORNERS.slice(at * 3, at * 3 + 3).forEach((value, axis) => bytes.writeFloatLE(value, start + axis * 4));
        [0, 0, 1].forEach((value, axis) => bytes.writeFloatLE(value, start + 12 + axis * 4));
        [255, 51 * at, 0, 255].forEach((value, channel) => bytes.writeUInt8(value, start + 24 + channel));
    }
    const bufferView = m.view(bytes, { byteStride: stride });
    const attribute = (byteOffset, componentType, type, more) =>
        m.add("accessors", { bufferView, byteOffset, componentType, count: 3, type, ...more });
    const POSITION = attribute(0, 5126, "VEC3", { min: [0, 0, 0], max: [1, 1, 0] });
    const NORMAL = attribute(12, 5126, "VEC3");
    const COLOR_0 = attribute(24, 5121, "VEC4", { normalized: true });
    m.node({ mesh: m.mesh({ attributes: { POSITION, NORMAL, COLOR_0 } }) });
    return {
        [`${ATTRIBUTES}/POSITION`]: CORNERS,
        [`${ATTRIBUTES}/NORMAL`]: [0, 0, 1, 0, 0, 1, 0, 0, 1],
        [`${ATTRIBUTES}/COLOR_0`]: [1, 0, 0, 1, 1, 0.2, 0, 1, 1, 0.4, 0, 1],
    };
}

// Two accessors in one view, one after the other.
function offset(m) {
    const bufferView = m.view(bytesOf(Float32Array.of(...CORNERS, 5, 0, 0, 6, 0, 0, 5, 1, 0)), { byteStride: 12 });
    const positions = (byteOffset, min, max) =>
        m.add("accessors", { bufferView, byteOffset, componentType: 5126, count: 3, type: "VEC3", min, max });
    const first = positions(0, [0, 0, 0], [1, 1, 0]);
    const second = positions(36, [5, 0, 0], [6, 1, 0]);
    m.node({ mesh: m.mesh({ attributes: { POSITION: first } }, { attributes: { POSITION: second } }) });
    return { [`/scenes/0/nodes/0/mesh/primitives/1/attributes/POSITION`]: [5, 0, 0, 6, 0, 0, 5, 1, 0] };
}

function inContainer(container) {
    return (m) => {
        m.container = container;
        m.node({ mesh: m.triangle() });
        return { [`${ATTRIBUTES}/POSITION`]: CORNERS };
    };
}

// The buffers of a GLB and of a file next to it.
function severalBuffers(m) {
    const other = Float32Array.of(0, 0, 1, 0, 0, 1, 0, 0, 1);
    m.more["normal data.bin"] = bytesOf(other);
    const POSITION = m.corner();
    m.json.buffers = [undefined, { byteLength: other.byteLength, uri: "normal%20data.bin" }];
    const bufferView = m.add("bufferViews", { buffer: 1, byteLength: other.byteLength });
    const NORMAL = m.add("accessors", { bufferView, componentType: 5126, count: 3, type: "VEC3" });
    m.node({ mesh: m.mesh({ attributes: { POSITION, NORMAL } }) });
    return { [`${ATTRIBUTES}/NORMAL`]: [...other] };
}

module.exports = {
    "accessor-i8": custom("SCALAR", Int8Array.of(-128, 0, 127)),
    "accessor-u8": custom("VEC4", Uint8Array.of(0, 128, 255, 1, 2, 3, 4, 5, 6, 7, 8, 9)),
    "accessor-i16": custom("VEC2", Int16Array.of(-32768, 32767, -1, 0, 1, 2)),
    "accessor-u16": custom("VEC2", Uint16Array.of(65535, 0, 1, 2, 3, 4)),
    "accessor-f32": custom("VEC4", Float32Array.of(1e-40, -0, 3.4e38, 0.1, 1 / 3, -1e-7, 16777217, 4, 5, 6, 7, 8)),
    "accessor-i8-normalized": custom("VEC3", Int8Array.of(-128, -127, 127, 0, 64, -64, 1, 2, 3), { normalized: true }),
    "accessor-u8-normalized": custom("VEC4", Uint8Array.of(0, 51, 255, 128, 1, 2, 3, 4, 5, 6, 7, 8), {
        normalized: true,
    }),
    "accessor-i16-normalized": custom("VEC2", Int16Array.of(-32768, -32767, 32767, 0, 1, -1), { normalized: true }),
    "accessor-u16-normalized": custom("VEC2", Uint16Array.of(0, 13107, 65535, 1, 2, 3), { normalized: true }),
    "accessor-mat2-u8": (m) => {
        const bytes = Buffer.from([1, 2, 0, 0, 3, 4, 0, 0, 5, 6, 0, 0, 7, 8, 0, 0, 9, 10, 0, 0, 11, 12, 0, 0]);
        const bufferView = m.view(bytes, { byteStride: 8 }); // columns start at multiples of four bytes
        const _VALUE = m.add("accessors", { bufferView, componentType: 5121, count: 3, type: "MAT2" });
        m.node({ mesh: m.mesh({ attributes: { POSITION: m.corner(), _VALUE } }) });
        return { [`${ATTRIBUTES}/_VALUE`]: [1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12] };
    },
    "accessor-mat3": custom(
        "MAT3",
        Float32Array.from({ length: 27 }, (_, at) => at / 8)
    ),
    "accessor-mat4": custom(
        "MAT4",
        Float32Array.from({ length: 48 }, (_, at) => at / 8)
    ),
    "accessor-indices-u8": indexed(Uint8Array),
    "accessor-indices-u16": indexed(Uint16Array),
    "accessor-indices-u32": indexed(Uint32Array),
    "accessor-sparse-u8": sparsePositions(Uint8Array),
    "accessor-sparse-u16": sparsePositions(Uint16Array),
    "accessor-sparse-u32": sparsePositions(Uint32Array),
    "accessor-sparse-without-view": (m) => {
        const POSITION = sparse(m, Uint16Array, 3, [1, 2], [2, 0, 0, 0, 2, 0], BOX);
        m.node({ mesh: m.mesh({ attributes: { POSITION } }) });
        return { [`${ATTRIBUTES}/POSITION`]: [0, 0, 0, 2, 0, 0, 0, 2, 0] };
    },
    "accessor-sparse-normalized": (m) => {
        const COLOR_0 = m.attribute("VEC4", Uint8Array.of(255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255), {
            normalized: true,
        });
        m.json.accessors[COLOR_0].sparse = {
            count: 1,
            indices: { bufferView: m.view(Buffer.from([1])), componentType: 5121 },
            values: { bufferView: m.view(Buffer.from([51, 102, 153, 204])) },
        };
        m.node({ mesh: m.mesh({ attributes: { POSITION: m.corner(), COLOR_0 } }) });
        return { [`${ATTRIBUTES}/COLOR_0`]: [1, 0, 0, 1, 0.2, 0.4, 0.6, 0.8, 0, 0, 1, 1] };
    },
    "accessor-sparse-indices": (m) => {
        const indices = m.accessor("SCALAR", Uint16Array.of(0, 0, 1));
        m.json.accessors[indices].sparse = {
            count: 1,
            indices: { bufferView: m.view(bytesOf(Uint32Array.of(1))), componentType: 5125 },
            values: { bufferView: m.view(bytesOf(Uint16Array.of(2))) },
        };
        m.node({ mesh: m.mesh({ attributes: { POSITION: m.corner() }, indices }) });
        return { [`${ATTRIBUTES}/POSITION`]: [0, 0, 0, 0, 1, 0, 1, 0, 0] };
    },
    "accessor-without-view": (m) => {
        const _ZERO = m.add("accessors", { componentType: 5126, count: 3, type: "VEC2" });
        m.node({ mesh: m.mesh({ attributes: { POSITION: m.corner(), _ZERO } }) });
        return { [`${ATTRIBUTES}/_ZERO`]: [0, 0, 0, 0, 0, 0] };
    },
    "accessor-interleaved": interleaved,
    "accessor-offset": offset,
    "container-glb": inContainer("glb"),
    "container-gltf-and-bin": inContainer("gltf"),
    "container-data-uri": inContainer("embedded"),
    "container-several-buffers": severalBuffers,
    "container-uri-of-glb": (m) => {
        m.node({ mesh: m.triangle() });
        m.json.buffers = [{ byteLength: m.bytes.length, uri: "buffer.bin" }];
        m.more["buffer.bin"] = m.bytes;
        m.bytes = Buffer.alloc(0);
        return { [`${ATTRIBUTES}/POSITION`]: CORNERS };
    },
    "container-with-another-chunk": (m) => {
        m.node({ mesh: m.triangle() });
        m.chunks = [["TEST", Buffer.from("of the future...")]];
        return { [`${ATTRIBUTES}/POSITION`]: CORNERS };
    },
    "container-padded-buffer": (m) => {
        const attributes = { POSITION: m.corner() };
        m.node({ mesh: m.mesh({ attributes, indices: m.accessor("SCALAR", Uint8Array.of(2, 1, 0)) }) });
        m.json.buffers = [{ byteLength: m.bytes.length - 1 }]; // the chunk has a byte of padding
        return { [`${ATTRIBUTES}/POSITION`]: [0, 0, 0, 0, 1, 0, 1, 0, 0] };
    },
    "container-without-buffer": (m) => {
        m.node({ name: "alone" });
        return { "/scenes/0/nodes": [{ name: "alone" }] };
    },
    "container-empty-scene": (m) => {
        m.json.scenes = [{ name: "nothing" }];
        return { "/scenes/0/name": "nothing" };
    },
    "container-multibyte-json": (m) => {
        m.node({ mesh: m.triangle(), name: "\u4e09\u89d2" }); // the JSON chunk is longer in bytes than in characters
        return { [`${PRIMITIVE}/corners`]: 3, "/scenes/0/nodes/0/name": "\u4e09\u89d2" };
    },
};
