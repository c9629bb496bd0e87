// Compressed and quantized data, with values that survive it exactly or to a known precision.
const { encoders } = require("../codecs.js");
const draco = require("../draco.js");
const { bounds, bytesOf, fractions } = require("../model.js");
const { ATTRIBUTES, PRIMITIVE } = require("./paths.js");

const MESHOPT = "EXT_meshopt_compression";
const DRACO = "KHR_draco_mesh_compression";
const CORNERS = [0, 0, 0, 1, 0, 0, 0, 1, 0];
const BOX = { min: [0, 0, 0], max: [1, 1, 0] };

// A buffer view whose bytes are compressed. The fallback are the bytes that readers without the extension read.
function meshoptView(m, bytes, { count, mode, filter, fallback }) {
    const byteStride = bytes.length / count;
    const compressed = Buffer.from(encoders.meshopt.encodeGltfBuffer(bytes, count, byteStride, mode, 0));
    const at = m.view(compressed);
    const stored = m.json.bufferViews.splice(at, 1)[0]; // only the extension refers to these bytes
    const content = { ...stored, byteStride, count, mode, ...(filter && { filter }) };
    m.use(MESHOPT, !fallback);
    const buffer = (m.json.buffers ??= [undefined]).length;
    const uri = fallback && { uri: "fallback.bin" };
    if (fallback) m.more["fallback.bin"] = fallback;
    m.add("buffers", { byteLength: bytes.length, ...uri, extensions: { [MESHOPT]: { fallback: true } } });
    const view = { buffer, byteLength: bytes.length, extensions: { [MESHOPT]: content } };
    if (mode === "ATTRIBUTES") view.byteStride = byteStride;
    return m.add("bufferViews", view);
}

function compressedPositions(m, more = {}) {
    const bufferView = meshoptView(m, bytesOf(Float32Array.from(CORNERS)), { count: 3, mode: "ATTRIBUTES", ...more });
    return m.add("accessors", { bufferView, componentType: 5126, count: 3, type: "VEC3", ...BOX });
}

// The same triangle wound the other way round, so that it is noticed if the fallback is read.
const OTHER_CORNERS = bytesOf(Float32Array.of(0, 0, 0, 0, 1, 0, 1, 0, 0));

function meshoptPositions(more) {
    return (m) => {
        m.node({ mesh: m.mesh({ attributes: { POSITION: compressedPositions(m, more) } }) });
        return { [`${ATTRIBUTES}/POSITION`]: CORNERS };
    };
}

function compressedIndices(m, Type, mode, indices) {
    const bytes = bytesOf(Type.from(indices));
    const bufferView = meshoptView(m, bytes, { count: indices.length, mode });
    const componentType = Type === Uint16Array ? 5123 : 5125;
    return m.add("accessors", { bufferView, componentType, count: indices.length, type: "SCALAR" });
}

const GRID_POINTS = [0, 0, 0, 1, 0, 0, 2, 0, 0, 0, 1, 0, 1, 1, 0, 2, 1, 0];
const GRID = [0, 1, 3, 1, 4, 3, 1, 2, 4, 2, 5, 4];

// From the corner with the lowest x and, in a tie, the lowest y.
function gridCorners() {
    const triangles = [
        [0, 1, 3],
        [3, 1, 4],
        [1, 2, 4],
        [4, 2, 5],
    ];
    return triangles.flat().flatMap((point) => GRID_POINTS.slice(point * 3, point * 3 + 3));
}

function meshoptTriangles(Type) {
    return (m) => {
        const POSITION = m.positions(...GRID_POINTS);
        m.node({ mesh: m.mesh({ attributes: { POSITION }, indices: compressedIndices(m, Type, "TRIANGLES", GRID) }) });
        return { [`${ATTRIBUTES}/POSITION`]: gridCorners() };
    };
}

function meshoptSequence(Type) {
    return (m) => {
        const POSITION = m.positions(...CORNERS);
        const indices = compressedIndices(m, Type, "INDICES", [0, 1, 1, 2, 2, 0]);
        m.node({ mesh: m.mesh({ attributes: { POSITION }, mode: 1, indices }) });
        return { [`${ATTRIBUTES}/POSITION`]: [0, 0, 0, 1, 0, 0, 1, 0, 0, 0, 1, 0, 0, 1, 0, 0, 0, 0] };
    };
}

// Normals and tangents along the axes, which the octahedral filter keeps exactly.
function octahedral(Type, bits) {
    return (m) => {
        const filtered = (values) => {
            const stride = 4 * Type.BYTES_PER_ELEMENT;
            const bytes = encoders.meshopt.encodeFilterOct(Float32Array.from(values), 3, stride, bits);
            return meshoptView(m, Buffer.from(bytes), { count: 3, mode: "ATTRIBUTES", filter: "OCTAHEDRAL" });
        };
        const vectors = (type, values) => ({
            bufferView: filtered(values),
            componentType: Type === Int8Array ? 5120 : 5122,
            normalized: true,
            count: 3,
            type,
        });
        m.use("KHR_mesh_quantization", true);
        const NORMAL = m.add("accessors", vectors("VEC3", [0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0]));
        const TANGENT = m.add("accessors", vectors("VEC4", [1, 0, 0, 1, 0, 1, 0, -1, 0, 0, 1, 1]));
        m.node({ mesh: m.mesh({ attributes: { POSITION: m.corner(), NORMAL, TANGENT } }) });
        return {
            [`${ATTRIBUTES}/NORMAL`]: [0, 0, 1, 0, 1, 0, -1, 0, 0],
            [`${ATTRIBUTES}/TANGENT`]: [1, 0, 0, 1, 0, 1, 0, -1, 0, 0, 1, 1],
        };
    };
}

const TURNS = [0, 0, 0, 1, 0, 0, 1, 0, 1, 0, 0, 0];

// An animation whose output has a filter.
function animated(path, values, output) {
    return (m) => {
        const node = m.node({ name: "moved" });
        const input = m.times(0, 1, 2);
        m.add("animations", {
            samplers: [{ input, output: m.add("accessors", { ...output(m, Float32Array.from(values)), count: 3 }) }],
            channels: [{ sampler: 0, target: { node, path } }],
        });
        return { "/animations/0/channels/0/values": values };
    };
}

function quaternions(m, values) {
    const bytes = Buffer.from(encoders.meshopt.encodeFilterQuat(values, 3, 8, 16));
    const bufferView = meshoptView(m, bytes, { count: 3, mode: "ATTRIBUTES", filter: "QUATERNION" });
    delete m.json.bufferViews[bufferView].byteStride; // not allowed for animations
    return { bufferView, componentType: 5122, normalized: true, type: "VEC4" };
}

function exponentials(m, values) {
    const bytes = Buffer.from(encoders.meshopt.encodeFilterExp(values, 3, 12, 15));
    const bufferView = meshoptView(m, bytes, { count: 3, mode: "ATTRIBUTES", filter: "EXPONENTIAL" });
    delete m.json.bufferViews[bufferView].byteStride;
    return { bufferView, componentType: 5126, type: "VEC3" };
}

// A primitive that is only stored compressed. The accessors have no buffer views.
function dracoPrimitive(m, indices, attributes, method) {
    m.use(DRACO, true);
    const bufferView = m.view(draco.encode(Uint32Array.from(indices), Object.values(attributes), method));
    const accessor = ({ accessor }, count) => m.add("accessors", { componentType: 5126, count, ...accessor });
    const ids = Object.fromEntries(Object.keys(attributes).map((name, id) => [name, id]));
    return m.mesh({
        attributes: Object.fromEntries(
            Object.entries(attributes).map(([name, one]) => [name, accessor(one, one.array.length / one.size)])
        ),
        indices: m.add("accessors", { componentType: 5125, count: indices.length, type: "SCALAR" }),
        extensions: { [DRACO]: { bufferView, attributes: ids } },
    });
}

function dracoPositions(values, more) {
    const accessor = { type: "VEC3", ...bounds(values, 3) };
    return { kind: "POSITION", size: 3, array: Float32Array.from(values), accessor, ...more };
}

// The corners of each triangle, as one text each.
function triangleTexts(positions) {
    const triangles = Array.from({ length: positions.length / 9 }, (_, at) => positions.slice(at * 9, at * 9 + 9));
    return triangles.map((triangle) => triangle.map((value) => value.toFixed(2)).join()).sort();
}

// The triangles may be in any order.
function dracoGrid(method, more) {
    return (m) => {
        m.node({ mesh: dracoPrimitive(m, GRID, { POSITION: dracoPositions(GRID_POINTS, more) }, method) });
        const expected = String(triangleTexts(gridCorners()));
        return { [`${ATTRIBUTES}/POSITION`]: ({ values }) => String(triangleTexts(values)) === expected };
    };
}

function dracoAttributes(m) {
    const attributes = {
        POSITION: dracoPositions(CORNERS),
        NORMAL: {
            kind: "NORMAL",
            size: 3,
            array: Float32Array.of(0, 0, 1, 0, 1, 0, 1, 0, 0),
            accessor: { type: "VEC3" },
        },
        TEXCOORD_0: {
            kind: "TEX_COORD",
            size: 2,
            array: Float32Array.of(0, 0, 1, 0, 0, 1),
            accessor: { type: "VEC2" },
        },
        TEXCOORD_1: {
            kind: "TEX_COORD",
            size: 2,
            array: Float32Array.of(5, 0, 6, 0, 5, 1),
            accessor: { type: "VEC2" },
        },
        COLOR_0: {
            kind: "COLOR",
            size: 4,
            array: Uint8Array.of(255, 0, 0, 255, 0, 255, 0, 51, 0, 0, 255, 102),
            accessor: { type: "VEC4", componentType: 5121, normalized: true },
        },
        _NUMBER: {
            kind: "GENERIC",
            size: 1,
            array: Uint16Array.of(7, 8, 9000),
            accessor: { type: "SCALAR", componentType: 5123 },
        },
    };
    m.node({ mesh: dracoPrimitive(m, [0, 1, 2], attributes) });
    return {
        [`${ATTRIBUTES}/POSITION`]: CORNERS,
        [`${ATTRIBUTES}/NORMAL`]: [0, 0, 1, 0, 1, 0, 1, 0, 0],
        [`${ATTRIBUTES}/TEXCOORD_0`]: [0, 0, 1, 0, 0, 1],
        [`${ATTRIBUTES}/TEXCOORD_1`]: [5, 0, 6, 0, 5, 1],
        [`${ATTRIBUTES}/COLOR_0`]: [1, 0, 0, 1, 0, 1, 0, 0.2, 0, 0, 1, 0.4],
        [`${ATTRIBUTES}/_NUMBER`]: [7, 8, 9000],
    };
}

function dracoSkin(m) {
    const joints = [m.node({ name: "hip", children: [1] }), m.node({ name: "knee" })];
    m.add("skins", { joints });
    const attributes = {
        POSITION: dracoPositions(CORNERS),
        JOINTS_0: {
            kind: "GENERIC",
            size: 4,
            array: Uint8Array.of(0, 0, 0, 0, 0, 1, 0, 0, 1, 0, 0, 0),
            accessor: { type: "VEC4", componentType: 5121 },
        },
        WEIGHTS_0: {
            kind: "GENERIC",
            size: 4,
            array: Float32Array.of(1, 0, 0, 0, 0.25, 0.75, 0, 0, 1, 0, 0, 0),
            accessor: { type: "VEC4" },
        },
    };
    m.node({ mesh: dracoPrimitive(m, [0, 1, 2], attributes), skin: 0 });
    return {
        "/scenes/0/nodes/1/mesh/primitives/0/influences": [
            { joints: [0], weights: [1] },
            { joints: [0, 1], weights: [0.25, 0.75] },
            { joints: [1], weights: [1] },
        ],
    };
}

// The uncompressed data is complete, so that the extension is not required. The texture coordinates differ, so
// that it is noticed if the uncompressed ones are read.
function dracoFallback(m) {
    const POSITION = dracoPositions(CORNERS);
    const TEXCOORD_0 = {
        kind: "TEX_COORD",
        size: 2,
        array: Float32Array.of(0, 0, 1, 0, 0, 1),
        accessor: { type: "VEC2" },
    };
    const bufferView = m.view(draco.encode(Uint32Array.of(0, 1, 2), [POSITION, TEXCOORD_0]));
    const primitive = m.extension(DRACO, { bufferView, attributes: { POSITION: 0, TEXCOORD_0: 1 } });
    const attributes = { POSITION: m.corner(), TEXCOORD_0: m.floats("VEC2", 0, 0, 0.5, 0, 0, 0.5) };
    m.node({ mesh: m.mesh({ attributes, indices: m.accessor("SCALAR", Uint16Array.of(0, 1, 2)), ...primitive }) });
    return { [`${ATTRIBUTES}/TEXCOORD_0`]: [0, 0, 1, 0, 0, 1] };
}

// A triangle whose positions are integers, and whose node scales them back.
function quantizedPositions(array, more = {}) {
    return (m) => {
        m.use("KHR_mesh_quantization", true);
        const POSITION = m.bounded("VEC3", array, more);
        m.node({ mesh: m.mesh({ attributes: { POSITION } }), scale: [0.5, 0.5, 0.5] });
        return { [`${ATTRIBUTES}/POSITION`]: more.normalized ? fractions(array) : [...array] };
    };
}

function quantizedAttributes(m) {
    m.use("KHR_mesh_quantization", true);
    const normalized = { normalized: true };
    const attributes = {
        POSITION: m.bounded("VEC3", Uint8Array.of(0, 0, 0, 200, 0, 0, 0, 200, 0)),
        NORMAL: m.attribute("VEC3", Int16Array.of(0, 0, 32767, 0, 32767, 0, -32767, 0, 0), normalized),
        TANGENT: m.attribute("VEC4", Int8Array.of(127, 0, 0, 127, -127, 0, 0, -127, 0, 127, 0, 127), normalized),
        TEXCOORD_0: m.attribute("VEC2", Int16Array.of(-32767, 0, 32767, 0, 0, 1), normalized),
        TEXCOORD_1: m.attribute("VEC2", Uint8Array.of(0, 0, 1, 0, 0, 255)),
        TEXCOORD_2: m.attribute("VEC2", Int8Array.of(-128, 0, 127, 0, 0, 64), normalized),
    };
    m.node({ mesh: m.mesh({ attributes }) });
    return {
        [`${ATTRIBUTES}/NORMAL`]: [0, 0, 1, 0, 1, 0, -1, 0, 0],
        [`${ATTRIBUTES}/TANGENT`]: [1, 0, 0, 1, -1, 0, 0, -1, 0, 1, 0, 1],
        [`${ATTRIBUTES}/TEXCOORD_0`]: [-1, 0, 1, 0, 0, 1 / 32767],
        [`${ATTRIBUTES}/TEXCOORD_1`]: [0, 0, 1, 0, 0, 255],
        [`${ATTRIBUTES}/TEXCOORD_2`]: [-1, 0, 1, 0, 0, 64 / 127],
    };
}

function quantizedTargets(m) {
    m.use("KHR_mesh_quantization", true);
    const attributes = { POSITION: m.bounded("VEC3", Int16Array.of(-9, 0, 0, 1000, 0, 0, 0, 1000, 0)) };
    const targets = [{ POSITION: m.bounded("VEC3", Int8Array.of(0, 0, 5, -7, 0, 0, 0, 0, 0)) }];
    m.node({ mesh: m.mesh({ attributes, targets }) });
    return { [`${PRIMITIVE}/targets/0/POSITION`]: [0, 0, 5, -7, 0, 0, 0, 0, 0] };
}

module.exports = {
    "quantized-i8": quantizedPositions(Int8Array.of(-128, 0, 0, 127, 0, 0, 0, 64, 0)),
    "quantized-u8": quantizedPositions(Uint8Array.of(0, 0, 0, 255, 0, 0, 0, 128, 0)),
    "quantized-i16": quantizedPositions(Int16Array.of(-32768, 0, 0, 32767, 0, 0, 0, 64, 0)),
    "quantized-u16": quantizedPositions(Uint16Array.of(0, 0, 0, 65535, 0, 0, 0, 64, 0)),
    "quantized-i8-normalized": quantizedPositions(Int8Array.of(-127, 0, 0, 127, 0, 0, 0, 64, 0), { normalized: true }),
    "quantized-u16-normalized": quantizedPositions(Uint16Array.of(0, 0, 0, 65535, 0, 0, 0, 64, 0), {
        normalized: true,
    }),
    "quantized-attributes": quantizedAttributes,
    "quantized-targets": quantizedTargets,

    "meshopt-attributes": meshoptPositions(),
    "meshopt-attributes-with-fallback": meshoptPositions({ fallback: OTHER_CORNERS }),
    "meshopt-triangles-u16": meshoptTriangles(Uint16Array),
    "meshopt-triangles-u32": meshoptTriangles(Uint32Array),
    "meshopt-indices-u16": meshoptSequence(Uint16Array),
    "meshopt-indices-u32": meshoptSequence(Uint32Array),
    "meshopt-octahedral-8": octahedral(Int8Array, 8),
    "meshopt-octahedral-16": octahedral(Int16Array, 16),
    "meshopt-quaternion": animated("rotation", TURNS, quaternions),
    "meshopt-exponential": animated("translation", [0, 1, -2, 0.25, 3, 100, 7, 8, 9], exponentials),

    "draco-attributes": dracoAttributes,
    "draco-sequential": dracoGrid("MESH_SEQUENTIAL_ENCODING"),
    "draco-edgebreaker": dracoGrid("MESH_EDGEBREAKER_ENCODING"),
    "draco-quantized": dracoGrid("MESH_EDGEBREAKER_ENCODING", { quantization: 11 }),
    "draco-skin": dracoSkin,
    "draco-with-fallback": dracoFallback,
};
