// A glTF file under construction: its JSON, and the bytes of one buffer.
//
//     const model = new Model();
//     const POSITION = model.accessor("VEC3", Float32Array.of(0, 0, 0, 1, 0, 0, 0, 1, 0));
//     model.node({ mesh: model.mesh({ attributes: { POSITION } }) });
//     model.files();  // { "model.glb": bytes }
//
// Nodes become roots of the first scene unless `model.json.scenes` is set. Nothing is checked: faults are models too.

const COMPONENT_TYPES = new Map([
    [Int8Array, 5120],
    [Uint8Array, 5121],
    [Int16Array, 5122],
    [Uint16Array, 5123],
    [Uint32Array, 5125],
    [Float32Array, 5126],
]);

const COMPONENTS = { SCALAR: 1, VEC2: 2, VEC3: 3, VEC4: 4, MAT2: 4, MAT3: 9, MAT4: 16 };

// The objects that viewers show by name.
const NAMED = {
    animations: "animation",
    cameras: "camera",
    images: "image",
    materials: "material",
    meshes: "mesh",
    nodes: "node",
    skins: "skin",
    textures: "texture",
};

function bytesOf(array) {
    return Buffer.from(array.buffer, array.byteOffset, array.byteLength);
}

function aligned(length) {
    return (length + 3) & ~3;
}

function padded(bytes, filler = 0) {
    return Buffer.concat([bytes, Buffer.alloc(aligned(bytes.length) - bytes.length, filler)]);
}

function bounds(values, size) {
    const columns = Array.from({ length: size }, (_, column) => values.filter((_, at) => at % size === column));
    return {
        min: columns.map((column) => column.reduce((a, b) => Math.min(a, b))),
        max: columns.map((column) => column.reduce((a, b) => Math.max(a, b))),
    };
}

// The numbers that normalized integers stand for.
function fractions(array) {
    const largest = { Int8Array: 127, Uint8Array: 255, Int16Array: 32767, Uint16Array: 65535 }[array.constructor.name];
    return [...array].map((value) => Math.max(value / largest, -1));
}

// A GLB from its chunks, as pairs of a type and bytes of a length that is a multiple of four.
function glb(chunks) {
    const content = chunks.flatMap(([type, bytes]) => [u32(bytes.length), Buffer.from(type), bytes]);
    const length = content.reduce((sum, part) => sum + part.length, 12);
    return Buffer.concat([Buffer.from("glTF"), u32(2), u32(length), ...content]);
}

function u32(value) {
    return bytesOf(Uint32Array.of(value));
}

class Model {
    constructor() {
        this.json = { asset: { version: "2.0" } };
        this.bytes = Buffer.alloc(0);
        this.container = "glb"; // or "gltf" with a model.bin, or "embedded", with a data URI
        this.more = {}; // other files, by name
        this.chunks = []; // more chunks of the GLB
        this.hasNoScenes = false;
    }

    // Appends to the list of the JSON with that name and returns the index. Objects get names, so that only the models of
    // names depend on what happens to objects without.
    add(list, object) {
        const objects = (this.json[list] ??= []);
        const name = `${NAMED[list]} ${objects.length}`;
        return objects.push(list in NAMED ? { name, ...object } : object) - 1;
    }

    light(light) {
        this.use("KHR_lights_punctual");
        this.json.extensions ??= { KHR_lights_punctual: { lights: [] } };
        const { lights } = this.json.extensions.KHR_lights_punctual;
        return lights.push({ name: `light ${lights.length}`, ...light }) - 1;
    }

    view(bytes, more = {}) {
        const byteOffset = this.bytes.length;
        this.bytes = Buffer.concat([this.bytes, padded(bytes)]);
        return this.add("bufferViews", { buffer: 0, byteOffset, byteLength: bytes.length, ...more });
    }

    // A tightly packed accessor in a buffer view of its own.
    accessor(type, array, more = {}) {
        const size = COMPONENTS[type];
        return this.add("accessors", {
            bufferView: this.view(bytesOf(array)),
            componentType: COMPONENT_TYPES.get(array.constructor),
            count: array.length / size,
            type,
            ...more,
        });
    }

    // An accessor whose elements start at multiples of four bytes, as those of vertex attributes must.
    attribute(type, array, more = {}) {
        const size = COMPONENTS[type];
        const elements = Array.from({ length: array.length / size }, (_, at) =>
            array.slice(at * size, at * size + size)
        );
        const bytes = Buffer.concat(elements.map((element) => padded(bytesOf(element))));
        const byteStride = bytes.length / elements.length;
        return this.add("accessors", {
            bufferView: this.view(bytes, { byteStride }),
            componentType: COMPONENT_TYPES.get(array.constructor),
            count: elements.length,
            type,
            ...more,
        });
    }

    // An attribute with bounds, which positions need.
    bounded(type, array, more = {}) {
        return this.attribute(type, array, { ...bounds([...array], COMPONENTS[type]), ...more });
    }

    floats(type, ...values) {
        return this.accessor(type, Float32Array.from(values));
    }

    positions(...values) {
        return this.bounded("VEC3", Float32Array.from(values));
    }

    // The times of an animation, which need bounds, too.
    times(...values) {
        const array = Float32Array.from(values);
        return this.accessor("SCALAR", array, bounds(values.map(Math.fround), 1));
    }

    // Positions of three points, which most models need but do not test.
    corner() {
        return (this.cornerAccessor ??= this.positions(0, 0, 0, 1, 0, 0, 0, 1, 0));
    }

    mesh(...primitives) {
        return this.add("meshes", { primitives });
    }

    triangle(more = {}) {
        return this.mesh({ attributes: { POSITION: this.corner() }, ...more });
    }

    node(node = {}) {
        return this.add("nodes", node);
    }

    use(extension, isRequired = false) {
        for (const list of isRequired ? ["extensionsUsed", "extensionsRequired"] : ["extensionsUsed"])
            if (!(this.json[list] ?? []).includes(extension)) this.add(list, extension);
    }

    // Declares an extension and returns an object that carries it.
    extension(name, content = {}, more = {}) {
        this.use(name);
        return { ...more, extensions: { ...more.extensions, [name]: content } };
    }

    material(material = {}) {
        return this.add("materials", material);
    }

    // All files by name; the first is the glTF file.
    files() {
        const json = { ...this.json, ...this.scenes(), ...this.buffers() };
        return { ...(this.container === "glb" ? this.glb(json) : this.gltf(json)), ...this.more };
    }

    scenes() {
        const { nodes, scenes } = this.json;
        if (!nodes || scenes || this.hasNoScenes) return {};
        const children = new Set(nodes.flatMap((node) => node.children ?? []));
        return { scenes: [{ nodes: [...nodes.keys()].filter((node) => !children.has(node)) }], scene: 0 };
    }

    buffers() {
        const [first, ...others] = this.json.buffers ?? [];
        if (first || !this.bytes.length) return {};
        return { buffers: [{ byteLength: this.bytes.length, ...this.bufferMember() }, ...others] };
    }

    glb(json) {
        const bin = this.bytes.length ? [["BIN\0", this.bytes]] : [];
        const chunks = [["JSON", padded(Buffer.from(JSON.stringify(json)), 0x20)], ...bin, ...this.chunks];
        return { "model.glb": glb(chunks) };
    }

    gltf(json) {
        const bin = this.container === "gltf" && this.bytes.length ? { "model.bin": this.bytes } : {};
        return { "model.gltf": Buffer.from(JSON.stringify(json)), ...bin };
    }

    bufferMember() {
        if (this.container === "gltf") return { uri: "model.bin" };
        if (this.container === "glb") return {};
        return { uri: "data:application/octet-stream;base64," + this.bytes.toString("base64") };
    }
}

module.exports = { Model, bounds, bytesOf, fractions, glb, padded };
