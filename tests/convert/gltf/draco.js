// Meshes compressed with Draco, to and from plain arrays.
const { encoders, decoders } = require("./codecs.js");

const ADDERS = new Map([
    [Int8Array, "AddInt8Attribute"],
    [Uint8Array, "AddUInt8Attribute"],
    [Int16Array, "AddInt16Attribute"],
    [Uint16Array, "AddUInt16Attribute"],
    [Uint32Array, "AddUInt32Attribute"],
    [Float32Array, "AddFloatAttribute"],
]);

// Calls the function with new objects of the module's classes, and destroys them afterwards.
function withObjects(module, classes, use) {
    const objects = classes.map((name) => new module[name]());
    try {
        return use(...objects);
    } finally {
        for (const object of objects) module.destroy(object);
    }
}

// Compresses triangles. `attributes` is a list of { kind, size, array }, where `kind` is POSITION, NORMAL, TEX_COORD,
// COLOR or GENERIC, and may have `quantization` in bits. Returns the bytes; attribute n gets the unique id n.
function encode(indices, attributes, method = "MESH_SEQUENTIAL_ENCODING") {
    const draco = encoders.draco;
    return withObjects(
        draco,
        ["Encoder", "MeshBuilder", "Mesh", "DracoInt8Array"],
        (encoder, builder, mesh, target) => {
            builder.AddFacesToMesh(mesh, indices.length / 3, indices);
            for (const { kind, size, array, quantization } of attributes) {
                const adder = ADDERS.get(array.constructor);
                const id = builder[adder](mesh, draco[kind], array.length / size, size, array);
                if (quantization) encoder.SetAttributeQuantization(draco[kind], quantization);
                if (id < 0) throw new Error(`Draco does not accept the attribute ${kind}`);
            }
            encoder.SetEncodingMethod(draco[method]);
            const length = encoder.EncodeMeshToDracoBuffer(mesh, target);
            if (length <= 0) throw new Error("Draco cannot encode this mesh");
            return Buffer.from(Array.from({ length }, (_, at) => target.GetValue(at) & 255));
        }
    );
}

function triangles(draco, decoder, mesh) {
    return withObjects(draco, ["DracoInt32Array"], (face) => {
        const indices = [];
        for (let at = 0; at < mesh.num_faces(); ++at) {
            decoder.GetFaceFromMesh(mesh, at, face);
            indices.push(face.GetValue(0), face.GetValue(1), face.GetValue(2));
        }
        return indices;
    });
}

function valuesOf(draco, decoder, mesh, id, isFloat) {
    return withObjects(draco, [isFloat ? "DracoFloat32Array" : "DracoInt32Array"], (target) => {
        const attribute = decoder.GetAttributeByUniqueId(mesh, id);
        if (isFloat) decoder.GetAttributeFloatForAllPoints(mesh, attribute, target);
        else decoder.GetAttributeInt32ForAllPoints(mesh, attribute, target);
        return {
            size: attribute.num_components(),
            values: Array.from({ length: target.size() }, (_, at) => target.GetValue(at)),
        };
    });
}

// Decompresses a mesh. `ids` has the unique ids of attributes by name, `isFloat` is a function from a name to whether
// to read floats. Returns { indices, attributes }, where each attribute has `size` and `values`.
function decode(bytes, ids, isFloat) {
    const draco = decoders.draco;
    return withObjects(draco, ["Decoder", "DecoderBuffer", "Mesh"], (decoder, buffer, mesh) => {
        buffer.Init(new Int8Array(bytes), bytes.length);
        const status = decoder.DecodeBufferToMesh(buffer, mesh);
        if (!status.ok()) throw new Error(status.error_msg());
        const attributes = {};
        for (const [name, id] of Object.entries(ids))
            attributes[name] = valuesOf(draco, decoder, mesh, id, isFloat(name));
        return { indices: triangles(draco, decoder, mesh), attributes };
    });
}

module.exports = { encode, decode };
