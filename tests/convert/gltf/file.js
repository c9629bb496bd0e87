// Reads a glTF or GLB file: its JSON, the bytes of its buffers and images, and the values of its accessors.
//
// Bytes are looked up by a function from a relative path to bytes, or undefined if there is no such file.
const { decoders } = require("./codecs.js");

const TYPES = {
    5120: { size: 1, largest: 127, read: (view, at) => view.getInt8(at) },
    5121: { size: 1, largest: 255, read: (view, at) => view.getUint8(at) },
    5122: { size: 2, largest: 32767, read: (view, at) => view.getInt16(at, true) },
    5123: { size: 2, largest: 65535, read: (view, at) => view.getUint16(at, true) },
    5125: { size: 4, read: (view, at) => view.getUint32(at, true) },
    5126: { size: 4, read: (view, at) => view.getFloat32(at, true) },
};
const FLOAT = 5126;

// Rows and columns of an element.
const SHAPES = {
    SCALAR: [1, 1],
    VEC2: [2, 1],
    VEC3: [3, 1],
    VEC4: [4, 1],
    MAT2: [2, 2],
    MAT3: [3, 3],
    MAT4: [4, 4],
};

function check(condition, message) {
    if (!condition) throw new Error(message);
}

function dataUri(uri) {
    const match = /^data:([^,;]*)[^,]*?(;base64)?,(.*)$/s.exec(uri);
    check(match, `not a data URI: ${uri.slice(0, 40)}`);
    return match[2] ? Buffer.from(match[3], "base64") : Buffer.from(decodeURIComponent(match[3]), "latin1");
}

function chunksOf(bytes) {
    check(bytes.readUInt32LE(4) === 2, "not GLB version 2");
    check(bytes.readUInt32LE(8) === bytes.length, "wrong length of the GLB");
    const chunks = {};
    for (let at = 12; at < bytes.length; ) {
        const length = bytes.readUInt32LE(at);
        const type = bytes.toString("latin1", at + 4, at + 8);
        check(at + 8 + length <= bytes.length, `chunk ${type} exceeds the GLB`);
        chunks[type] ??= bytes.subarray(at + 8, at + 8 + length);
        at += 8 + length;
    }
    return chunks;
}

function isGlb(bytes) {
    return bytes.toString("latin1", 0, 4) === "glTF";
}

function componentOffsets([rows, columns], componentSize) {
    const size = rows * componentSize;
    const stride = columns > 1 ? (size + 3) & ~3 : size; // columns of matrices are aligned
    const offsets = [];
    for (let column = 0; column < columns; ++column)
        for (let row = 0; row < rows; ++row) offsets.push(column * stride + row * componentSize);
    return { offsets, elementSize: columns * stride };
}

class GltfFile {
    constructor(bytes, lookUp) {
        const chunks = isGlb(bytes) ? chunksOf(bytes) : { JSON: bytes };
        this.setContent(JSON.parse(chunks.JSON.toString()), chunks["BIN\0"], lookUp);
    }

    // The same file with other JSON or another binary chunk.
    with(json, binary = this.binary) {
        const file = Object.create(GltfFile.prototype);
        file.setContent(json, binary, this.lookUp);
        return file;
    }

    setContent(json, binary, lookUp) {
        this.json = json;
        this.binary = binary;
        this.lookUp = lookUp;
        this.views = new Map();
        this.read = new Map();
    }

    // The object with an index in a list of the JSON.
    get(list, index) {
        const found = this.json[list]?.[index];
        check(found !== undefined, `there is no ${list}[${index}]`);
        return found;
    }

    bufferBytes(index) {
        const buffer = this.get("buffers", index);
        const bytes = buffer.uri === undefined ? index === 0 && this.binary : this.resource(buffer.uri);
        check(bytes, `there is no buffer ${index}`);
        check(bytes.length >= buffer.byteLength, `buffer ${index} is too short`);
        return bytes.subarray(0, buffer.byteLength);
    }

    // The bytes that a URI refers to, or undefined.
    resource(uri) {
        return uri.startsWith("data:") ? dataUri(uri) : this.lookUp(decodeURIComponent(uri));
    }

    slice({ buffer, byteOffset = 0, byteLength }) {
        const bytes = this.bufferBytes(buffer);
        check(byteOffset + byteLength <= bytes.length, "a buffer view exceeds its buffer");
        return bytes.subarray(byteOffset, byteOffset + byteLength);
    }

    viewBytes(index) {
        if (!this.views.has(index)) {
            const view = this.get("bufferViews", index);
            const compressed = view.extensions?.EXT_meshopt_compression;
            this.views.set(index, compressed ? this.decompress(compressed, view) : this.slice(view));
        }
        return this.views.get(index);
    }

    decompress(compressed, view) {
        const { count, byteStride, mode, filter = "NONE" } = compressed;
        check(["ATTRIBUTES", "TRIANGLES", "INDICES"].includes(mode), "unknown compression of a buffer view");
        check(["NONE", "OCTAHEDRAL", "QUATERNION", "EXPONENTIAL"].includes(filter), "unknown filter of a buffer view");
        check(count * byteStride === view.byteLength, "the sizes of compressed and uncompressed data differ");
        const target = Buffer.alloc(count * byteStride);
        decoders.meshopt.decodeGltfBuffer(target, count, byteStride, this.slice(compressed), mode, filter);
        return target;
    }

    // { values, size, count, isFloat } of an accessor; `values` has `size` numbers for each of `count` elements.
    accessor(index) {
        if (!this.read.has(index)) this.read.set(index, this.readAccessor(this.get("accessors", index)));
        return this.read.get(index);
    }

    readAccessor(accessor) {
        const { componentType, count, type, normalized = false, sparse } = accessor;
        check(TYPES[componentType] && SHAPES[type], "unknown type of an accessor");
        const size = SHAPES[type][0] * SHAPES[type][1];
        const values =
            accessor.bufferView === undefined
                ? new Array(count * size).fill(0)
                : this.numbers(accessor, SHAPES[type], componentType, count);
        if (sparse) this.replaceSparse(values, size, accessor);
        const { largest } = TYPES[componentType];
        const isFloat = componentType === FLOAT;
        if (normalized) {
            check(largest, "accessors of this type cannot be normalized");
            for (let at = 0; at < values.length; ++at) values[at] = Math.max(values[at] / largest, -1);
        }
        return { values, size, count, isFloat };
    }

    numbers({ bufferView, byteOffset = 0 }, shape, componentType, count) {
        const bytes = this.viewBytes(bufferView);
        const { size, read } = TYPES[componentType];
        const { offsets, elementSize } = componentOffsets(shape, size);
        const stride = this.get("bufferViews", bufferView).byteStride ?? elementSize;
        check(
            count === 0 || byteOffset + stride * (count - 1) + elementSize <= bytes.length,
            "an accessor exceeds its view"
        );
        const view = new DataView(bytes.buffer, bytes.byteOffset, bytes.length);
        const values = [];
        for (let element = 0; element < count; ++element)
            for (const offset of offsets) values.push(read(view, byteOffset + element * stride + offset));
        return values;
    }

    replaceSparse(values, size, { type, componentType, count, sparse }) {
        const indices = this.numbers(sparse.indices, SHAPES.SCALAR, sparse.indices.componentType, sparse.count);
        const replacements = this.numbers(sparse.values, SHAPES[type], componentType, sparse.count);
        indices.forEach((index, at) => {
            check(index < count, "a sparse index is out of range");
            for (let component = 0; component < size; ++component)
                values[index * size + component] = replacements[at * size + component];
        });
    }
}

module.exports = { GltfFile, TYPES, SHAPES, FLOAT, componentOffsets, check };
