// The content of meshes: the values of the attributes at each corner of each triangle, line or point.
const draco = require("../draco.js");
const { check, FLOAT, TYPES } = require("../file.js");
const { identity } = require("./identity.js");
const { Numbers, numbersOf } = require("./numbers.js");

const DRACO = "KHR_draco_mesh_compression";

function complete(indices, size) {
    check(indices.length % size === 0, "the last line or triangle is incomplete");
    return indices;
}

function path(indices) {
    return indices.slice(1).flatMap((index, at) => [indices[at], index]);
}

function strip(indices) {
    const triangles = [];
    for (let at = 0; at + 2 < indices.length; ++at)
        triangles.push(indices[at], indices[at + 1 + (at % 2)], indices[at + 2 - (at % 2)]);
    return triangles;
}

function fan(indices) {
    const triangles = [];
    for (let at = 1; at + 1 < indices.length; ++at) triangles.push(indices[0], indices[at], indices[at + 1]);
    return triangles;
}

// Every mode of a primitive as a list of points, lines or triangles.
const MODES = [
    { topology: "points", list: (indices) => indices },
    { topology: "lines", list: (indices) => complete(indices, 2) },
    { topology: "lines", list: (indices) => path([...indices, ...indices.slice(0, 1)]) }, // a loop
    { topology: "lines", list: path }, // a strip
    { topology: "triangles", list: (indices) => complete(indices, 3) },
    { topology: "triangles", list: strip },
    { topology: "triangles", list: fan },
];

// { indices, attributes } of a primitive, decompressed.
function geometry(file, primitive) {
    const attributes = {};
    for (const [name, index] of Object.entries(primitive.attributes)) attributes[name] = file.accessor(index);
    const compressed = primitive.extensions?.[DRACO];
    if (compressed) return { attributes, indices: decompress(file, primitive, compressed, attributes) };
    const counts = new Set(Object.values(attributes).map(({ count }) => count));
    check(counts.size === 1, "the attributes of a primitive have different counts");
    const [count] = counts;
    return { indices: indicesOf(file, primitive.indices, count), attributes };
}

function indicesOf(file, index, count) {
    if (index === undefined) return [...Array(count).keys()];
    const { values, size } = file.accessor(index);
    check(size === 1 && values.every((value) => value < count), "the indices are not in range");
    return values;
}

// Replaces attributes by those in the compressed data and returns the indices.
function decompress(file, primitive, compressed, attributes) {
    const accessors = primitive.attributes;
    const isFloat = (name) => file.get("accessors", accessors[name]).componentType === FLOAT;
    const found = draco.decode(file.viewBytes(compressed.bufferView), compressed.attributes, isFloat);
    for (const [name, { size, values }] of Object.entries(found.attributes)) {
        const { normalized, componentType, count } = file.get("accessors", accessors[name]);
        const isExpected = values.length === size * count && size === attributes[name].size;
        check(isExpected, "the compressed data has another number of points or components");
        const largest = normalized ? TYPES[componentType].largest : 1;
        attributes[name] = { ...attributes[name], size, values: values.map((v) => Math.max(v / largest, -largest)) };
    }
    const { count, type } = file.get("accessors", primitive.indices);
    check(type === "SCALAR" && found.indices.length === count, "the compressed data has another number of triangles");
    return found.indices;
}

function gather({ values, size }, indices) {
    return indices.flatMap((index) => values.slice(index * size, index * size + size));
}

// The triangle with the smallest of its corners first: fans and strips become triangles that may start anywhere.
function rotated(corners, compare) {
    const turns = [0, 1, 2].map((turn) => [...corners.slice(turn), ...corners.slice(0, turn)]);
    return turns.reduce((best, turn) => (compare(turn, best) < 0 ? turn : best));
}

function rotateTriangles(indices, attributes) {
    const { POSITION, ...others } = attributes;
    const names = Object.keys(others).sort();
    const lists = [...(POSITION ? [POSITION] : []), ...names.map((name) => others[name])];
    const compare = (a, b) => {
        for (const { values, size } of lists)
            for (let corner = 0; corner < a.length; ++corner)
                for (let at = 0; at < size; ++at) {
                    const difference = values[a[corner] * size + at] - values[b[corner] * size + at];
                    if (difference) return difference;
                }
        return 0;
    };
    const triangles = [];
    for (let at = 0; at + 2 < indices.length; at += 3) triangles.push(...rotated(indices.slice(at, at + 3), compare));
    return triangles;
}

// Colours without alpha are opaque.
function withAlpha({ values, size, isFloat }) {
    if (size !== 3) return { values, size, isFloat };
    return { values: values.flatMap((v, at) => (at % 3 === 2 ? [v, 1] : [v])), size: 4, isFloat };
}

// The joints of each corner with their shares of its weight, in the order of the joints: how they are distributed over
// the attributes does not matter.
function influences(attributes, indices) {
    const corners = indices.map(() => new Map());
    for (let set = 0; attributes[`JOINTS_${set}`]; ++set) {
        const weights = attributes[`WEIGHTS_${set}`];
        check(weights, `there is no WEIGHTS_${set}`);
        indices.forEach((index, corner) => {
            for (let at = index * 4; at < index * 4 + 4; ++at) {
                const [joint, weight] = [attributes[`JOINTS_${set}`].values[at], weights.values[at]];
                if (weight !== 0) corners[corner].set(joint, (corners[corner].get(joint) ?? 0) + weight);
            }
        });
    }
    return corners.map((joints) => {
        const sorted = [...joints].sort(([a], [b]) => a - b);
        const sum = sorted.reduce((total, [, weight]) => total + weight, 0);
        const weights = sorted.map(([, weight]) => weight / sum);
        return { joints: sorted.map(([joint]) => joint), weights: new Numbers(weights, { size: 4, tolerance: 1e-5 }) };
    });
}

// Deltas of zero are the same as no deltas.
function targetContent(file, target, indices, points) {
    const content = {};
    for (const [name, index] of Object.entries(target)) {
        check(file.accessor(index).count === points, "a target has another number of points than its mesh");
        const numbers = numbersOf({ ...file.accessor(index), values: gather(file.accessor(index), indices) });
        if (numbers.values.some((value) => value !== 0)) content[name] = numbers;
    }
    return content;
}

function primitiveContent(file, primitive, materials) {
    const { indices: given, attributes } = geometry(file, primitive);
    const { topology, list } = MODES[primitive.mode ?? 4];
    const listed = list(given);
    const indices = topology === "triangles" ? rotateTriangles(listed, attributes) : listed;
    const content = { topology, corners: indices.length, attributes: {} };
    for (const [name, attribute] of Object.entries(attributes)) {
        if (/^(JOINTS|WEIGHTS)_/.test(name)) continue;
        const complete = name.startsWith("COLOR_") ? withAlpha(attribute) : attribute;
        content.attributes[name] = numbersOf({ ...complete, values: gather(complete, indices) });
    }
    if (attributes.JOINTS_0) content.influences = influences(attributes, indices);
    const points = Object.values(attributes)[0].count;
    content.targets = (primitive.targets ?? []).map((target) => targetContent(file, target, indices, points));
    content.material = materials.get(primitive.material);
    content.variants = variantMaterials(primitive, materials);
    content.extras = primitive.extras;
    return content;
}

function variantMaterials(primitive, materials) {
    const byVariant = {};
    for (const { material, variants } of primitive.extensions?.KHR_materials_variants?.mappings ?? [])
        for (const variant of variants) byVariant[variant] = materials.get(material);
    return byVariant;
}

function targetCount(mesh) {
    return mesh.primitives[0].targets?.length ?? 0;
}

// The weights of the morph targets of a mesh, or of a node that overrides them.
function weightsContent(mesh, weights = mesh.weights) {
    return new Numbers(weights ?? new Array(targetCount(mesh)).fill(0));
}

function meshContent(file, mesh, materials) {
    return {
        ...identity(mesh),
        primitives: mesh.primitives.map((primitive) => primitiveContent(file, primitive, materials)),
        weights: weightsContent(mesh),
    };
}

module.exports = { meshContent, weightsContent };
