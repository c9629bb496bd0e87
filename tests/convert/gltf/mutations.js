// Changes a glTF file in one place at a time, to find out which changes a comparison does not notice.
const { contentOf } = require("./content/content.js");
const { differences } = require("./compare.js");
const { TYPES, SHAPES, componentOffsets } = require("./file.js");

const DRACO = "KHR_draco_mesh_compression";
const MESHOPT = "EXT_meshopt_compression";

// Places that may change unnoticed, by their pointers, and why; some only in files that use an extension or of some kind.
const EXEMPT = [
    [/^\/asset\/(version|generator)$/, "the writer of a file has its own"],
    [/^\/accessors\/\d+\/(min|max)(\/|$)/, "follows from the values; the validator compares them"],
    [/^\/buffers\/0\/byteLength$/, "the chunk of the GLB may be longer"],
    [/^\/bufferViews\/\d+\/(byteLength|target)$/, "accessors tell what is used, and for what"],
    [/^\/extensions(Used|Required)(\/|$)/, "a writer declares what it writes"],
    [/^\/images\/\d+\/mimeType$/, "the bytes tell"],
    [/\/emissiveTexture\/texCoord$/, "overridden by the transform", "KHR_texture_transform"],
    [/\/name$/, "what has no name may get one", "", (json) => json.nodes?.some((node) => !node.name)],
    [/^\/scenes?$/, "without scenes, all roots are in the default scene"],
    [/^\/bufferViews\/\d+\/byteStride$/, "elements without gaps need none"],
    [/^\/textures\/\d+\/sampler$/, "a sampler may have no members"],
    [/^\/buffers\/[12](\/|$)/, "a fallback is not read", MESHOPT],
    [/^\/bufferViews\/\d+\/buffer$/, "a fallback is not read", MESHOPT],
    [/^\/accessors\/\d+(\/componentType|\/bufferView| at)/, "the compressed data is read", DRACO],
    [/^\/bufferViews\/3$|^\/bufferViews\/\d+\/(buffer|byteOffset)$/, "the compressed data is read", DRACO],
    [/^\/meshes\/0\/primitives\/0\/.*attributes\/\w+$/, "the compressed data is read", DRACO],
];

// Members that may be removed if they have these values.
const DEFAULTS = {
    alphaMode: "OPAQUE",
    baseColorFactor: [1, 1, 1, 1],
    byteOffset: 0,
    doubleSided: false,
    emissiveFactor: [0, 0, 0],
    interpolation: "LINEAR",
    matrix: [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1],
    metallicFactor: 1,
    mode: 4,
    name: "",
    pbrMetallicRoughness: { baseColorFactor: [1, 1, 1, 1], metallicFactor: 1, roughnessFactor: 1 },
    roughnessFactor: 1,
    spot: {},
    wrapS: 10497,
    wrapT: 10497,
};

function isDefault(keys, value) {
    const text = JSON.stringify(value);
    const key = keys.at(-1);
    if (key.startsWith("KHR_materials_")) return text === "{}" && key !== "KHR_materials_unlit";
    if (key === "extensions") return Object.entries(value).every(([name, content]) => isDefault([name], content));
    return key in DEFAULTS && JSON.stringify(DEFAULTS[key]) === text;
}

// Pointers of everything in the JSON, as lists of keys.
function* places(value, keys = []) {
    if (keys.length) yield keys;
    if (typeof value !== "object" || value === null) return;
    for (const [key, member] of Object.entries(value)) yield* places(member, [...keys, key]);
}

function pointerTo(keys) {
    return keys.map((key) => `/${key.replaceAll("~", "~0").replaceAll("/", "~1")}`).join("");
}

function changed(value) {
    if (typeof value === "number") return value + 1;
    if (typeof value === "boolean") return !value;
    return value === null ? 0 : `x${value}`;
}

// The JSON after a change of the object or list that contains a place.
function edited(json, keys, edit) {
    const copy = structuredClone(json);
    const parent = keys.slice(0, -1).reduce((part, key) => part[key], copy);
    edit(parent, keys.at(-1));
    return copy;
}

function change(parent, key) {
    parent[key] = changed(parent[key]);
}

function remove(parent, key) {
    if (Array.isArray(parent)) parent.splice(Number(key), 1);
    else delete parent[key];
}

// Changes each string, number, boolean and null of the JSON, and removes each of its parts.
function* jsonMutations(file) {
    for (const keys of places(file.json)) {
        const value = keys.reduce((part, key) => part[key], file.json);
        const pointer = pointerTo(keys);
        if (typeof value !== "object" || value === null)
            yield { pointer, kind: "changed", mutant: () => file.with(edited(file.json, keys, change)) };
        if (!isDefault(keys, value))
            yield { pointer, kind: "removed", mutant: () => file.with(edited(file.json, keys, remove)) };
    }
}

// Where the numbers of a part of an accessor are in the binary chunk, if they are there and not compressed.
function* positions(file, { bufferView, byteOffset = 0 }, type, componentType, elements) {
    if (bufferView === undefined || !file.binary) return;
    const view = file.json.bufferViews[bufferView];
    if (view.extensions || view.buffer !== 0) return;
    const { offsets, elementSize } = componentOffsets(SHAPES[type], TYPES[componentType].size);
    const start = (view.byteOffset ?? 0) + byteOffset;
    const stride = view.byteStride ?? elementSize;
    for (const element of elements) for (const offset of offsets) yield start + element * stride + offset;
}

// The same for all of its parts. What sparse values replace is not used.
function* accessorPositions(file, accessor) {
    const { type, componentType, count, sparse } = accessor;
    const all = (length) => [...Array(length).keys()];
    const replaced = sparse
        ? file.numbers(sparse.indices, SHAPES.SCALAR, sparse.indices.componentType, sparse.count)
        : [];
    const used = all(count).filter((element) => !replaced.includes(element));
    yield* positions(file, accessor, type, componentType, used);
    if (!sparse) return;
    yield* positions(file, sparse.indices, "SCALAR", sparse.indices.componentType, all(sparse.count));
    yield* positions(file, sparse.values, type, componentType, all(sparse.count));
}

// Changes a low bit of each number. Matrices are compared with a tolerance, so their numbers are increased.
function* numberMutations(file) {
    for (const [index, accessor] of (file.json.accessors ?? []).entries())
        for (const at of accessorPositions(file, accessor)) {
            const pointer = `/accessors/${index} at byte ${at}`;
            yield { pointer, kind: "changed", mutant: () => file.with(file.json, numberChanged(file, accessor, at)) };
        }
}

function numberChanged(file, { type }, at) {
    const binary = Buffer.from(file.binary);
    if (type === "MAT4") binary.writeFloatLE(binary.readFloatLE(at) + 1, at);
    else binary[at] ^= 2;
    return binary;
}

function* mutations(file) {
    yield* jsonMutations(file);
    yield* numberMutations(file);
}

// The accessors of joints and weights, and their views. Only shares of a sum are compared, so most of their numbers may
// change alone. pairs.js has tests of these.
function influencePattern({ meshes = [], accessors }) {
    const attributes = meshes.flatMap(({ primitives }) => primitives.flatMap((one) => Object.entries(one.attributes)));
    const found = attributes.filter(([name]) => /^(JOINTS|WEIGHTS)_/.test(name)).map(([, index]) => index);
    const patterns = found.map((index) => `accessors/${index}|bufferViews/${accessors[index].bufferView}`);
    return found.length ? new RegExp(`^/(${patterns.join("|")})( |/|$)`) : undefined;
}

// A file that can no longer be read differs, too.
function isNoticed(content, mutant) {
    try {
        return differences(content, contentOf(mutant())).length > 0;
    } catch {
        return true;
    }
}

// The changes that are not noticed and not exempt, and which exemptions were needed.
function unnoticed(file) {
    const content = contentOf(file);
    const extensions = file.json.extensionsUsed ?? [];
    const exemptions = EXEMPT.filter(
        ([, , extension, applies]) =>
            (!extension || extensions.includes(extension)) && (!applies || applies(file.json))
    );
    const influences = influencePattern(file.json);
    const found = [];
    const needed = new Set();
    for (const { pointer, kind, mutant } of mutations(file)) {
        if (isNoticed(content, mutant)) continue;
        const exemption = exemptions.find(([pattern]) => pattern.test(pointer));
        if (exemption) needed.add(String(exemption[0]));
        else if (!influences?.test(pointer)) found.push(`${pointer} ${kind}`);
    }
    return { found, needed: [...needed] };
}

module.exports = { unnoticed, exemptions: EXEMPT.map(([pattern]) => String(pattern)) };
