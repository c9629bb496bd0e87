// Files that must be rejected. Each names the JSON pointers one of which a message has to start with; an empty pointer
// stands for a fault outside the JSON.
const { encoders } = require("../codecs.js");
const dracoCodec = require("../draco.js");
const { bytesOf, glb, Model, padded } = require("../model.js");

// A fault in a GLB with a triangle in node 0, accessor 0 and buffer view 0.
function inTriangle(pointers, change) {
    return () => {
        const m = new Model();
        m.node({ mesh: m.triangle() });
        change(m);
        return { files: m.files(), pointers };
    };
}

function inBytes(change) {
    return () => {
        const m = new Model();
        m.node({ mesh: m.triangle() });
        return { files: { "model.glb": change(m.files()["model.glb"]) }, pointers: [""] };
    };
}

function inGltf(pointers, container, change) {
    return () => {
        const m = new Model();
        m.container = container;
        m.node({ mesh: m.triangle() });
        const files = m.files();
        const json = JSON.parse(files["model.gltf"]);
        change(json, files);
        return { files: { ...files, "model.gltf": Buffer.from(JSON.stringify(json)) }, pointers };
    };
}

function sparse(m, indices, count = indices.length) {
    m.json.accessors[0].sparse = {
        count,
        indices: { bufferView: m.view(bytesOf(Uint16Array.from(indices))), componentType: 5123 },
        values: { bufferView: m.view(bytesOf(new Float32Array(indices.length * 3))) },
    };
}

// What view 0 has, compressed.
function compressed(m) {
    return Buffer.from(encoders.meshopt.encodeGltfBuffer(m.bytes.subarray(0, 36), 3, 12, "ATTRIBUTES", 0));
}

// Replaces buffer view 0 by compressed bytes.
function meshopt(m, bytes, more) {
    const { byteOffset, byteLength } = m.json.bufferViews[m.view(bytes)];
    const extension = { buffer: 0, byteOffset, byteLength, byteStride: 12, count: 3, mode: "ATTRIBUTES", ...more };
    m.use("EXT_meshopt_compression", true);
    m.json.bufferViews[0].extensions = { EXT_meshopt_compression: extension };
}

function draco(m, bytes, attributes = { POSITION: 0 }) {
    const bufferView = m.view(bytes);
    m.use("KHR_draco_mesh_compression", true);
    const primitive = m.json.meshes[0].primitives[0];
    primitive.extensions = { KHR_draco_mesh_compression: { bufferView, attributes } };
    primitive.indices = m.add("accessors", { componentType: 5123, count: 3, type: "SCALAR" });
}

function dracoTriangle() {
    const array = Float32Array.of(0, 0, 0, 1, 0, 0, 0, 1, 0);
    return dracoCodec.encode(Uint32Array.of(0, 1, 2), [{ kind: "POSITION", size: 3, array }]);
}

function textured(m) {
    primitive(m).attributes.TEXCOORD_0 = m.floats("VEC2", 0, 0, 1, 0, 0, 1);
    primitive(m).material = m.material({ normalTexture: { index: 0 } });
}

function primitive(m) {
    return m.json.meshes[0].primitives[0];
}

const POSITION = ["/accessors/0", "/meshes/0/primitives/0/attributes/POSITION"];
const MESHOPT = ["/bufferViews/0/extensions/EXT_meshopt_compression"];
const DRACO = ["/meshes/0/primitives/0/extensions/KHR_draco_mesh_compression"];

module.exports = {
    "accessor-out-of-view": inTriangle(["/accessors/0"], (m) => (m.json.accessors[0].count = 4)),
    "accessor-offset-out-of-view": inTriangle(["/accessors/0"], (m) => (m.json.accessors[0].byteOffset = 4)),
    "accessor-count-2-to-53": inTriangle(["/accessors/0"], (m) => (m.json.accessors[0].count = 2 ** 53)),
    "accessor-count-2-to-61": inTriangle(["/accessors/0"], (m) => (m.json.accessors[0].count = 2 ** 61)),
    "accessor-count-negative": inTriangle(["/accessors/0"], (m) => (m.json.accessors[0].count = -3)),
    "accessor-count-fraction": inTriangle(["/accessors/0"], (m) => (m.json.accessors[0].count = 2.5)),
    "accessor-without-view-count-2-to-53": inTriangle(["/accessors/0"], (m) => {
        m.json.accessors[0] = { componentType: 5126, type: "VEC3", count: 2 ** 53, min: [0, 0, 0], max: [0, 0, 0] };
    }),
    "accessor-component-type": inTriangle(["/accessors/0"], (m) => (m.json.accessors[0].componentType = 5130)),
    "accessor-type": inTriangle(["/accessors/0"], (m) => (m.json.accessors[0].type = "VEC5")),
    "accessor-view-missing": inTriangle(["/accessors/0"], (m) => (m.json.accessors[0].bufferView = 7)),
    "view-out-of-buffer": inTriangle(["/bufferViews/0"], (m) => (m.json.bufferViews[0].byteLength = 4000)),
    "view-offset-out-of-buffer": inTriangle(["/bufferViews/0"], (m) => (m.json.bufferViews[0].byteOffset = 2 ** 52)),
    "view-buffer-missing": inTriangle(["/bufferViews/0"], (m) => (m.json.bufferViews[0].buffer = 3)),
    "view-stride-too-small": inTriangle(
        ["/accessors/0", "/bufferViews/0"],
        (m) => (m.json.bufferViews[0].byteStride = 4)
    ),
    "sparse-index-out-of-range": inTriangle(["/accessors/0/sparse"], (m) => sparse(m, [1, 3])),
    "sparse-indices-not-increasing": inTriangle(["/accessors/0/sparse"], (m) => sparse(m, [2, 1])),
    "sparse-indices-out-of-view": inTriangle(["/accessors/0/sparse"], (m) => sparse(m, [0], 3)),
    "sparse-count-above-count": inTriangle(["/accessors/0/sparse"], (m) => sparse(m, [0, 1, 2], 4)),

    "indices-out-of-range": inTriangle(["/meshes/0/primitives/0/indices", "/accessors/1"], (m) => {
        primitive(m).indices = m.accessor("SCALAR", Uint16Array.of(0, 1, 3));
    }),
    "indices-of-floats": inTriangle(["/meshes/0/primitives/0/indices", "/accessors/1"], (m) => {
        primitive(m).indices = m.floats("SCALAR", 0, 1, 2);
    }),
    "indices-missing": inTriangle(["/meshes/0/primitives/0/indices"], (m) => (primitive(m).indices = 12)),
    "mode-unknown": inTriangle(["/meshes/0/primitives/0/mode"], (m) => (primitive(m).mode = 7)),
    "material-missing": inTriangle(["/meshes/0/primitives/0/material"], (m) => (primitive(m).material = 0)),
    "position-of-two-components": inTriangle(POSITION, (m) => {
        Object.assign(m.json.accessors[0], { type: "VEC2", min: [0, 0], max: [1, 1] });
    }),
    "position-of-integers": inTriangle(POSITION, (m) => (m.json.accessors[0].componentType = 5125)),
    "normal-of-scalars": inTriangle(["/meshes/0/primitives/0/attributes/NORMAL", "/accessors/1"], (m) => {
        primitive(m).attributes.NORMAL = m.floats("SCALAR", 0, 0, 1);
    }),
    "joints-of-floats": inTriangle(["/meshes/0/primitives/0/attributes/JOINTS_0", "/accessors/1"], (m) => {
        primitive(m).attributes.JOINTS_0 = m.accessor("VEC4", new Float32Array(12));
        primitive(m).attributes.WEIGHTS_0 = m.accessor("VEC4", new Float32Array(12));
    }),
    "attributes-of-different-counts": inTriangle(["/meshes/0/primitives/0/attributes/NORMAL", "/accessors/1"], (m) => {
        primitive(m).attributes.NORMAL = m.floats("VEC3", 0, 0, 1, 0, 0, 1);
    }),
    "target-of-another-count": inTriangle(["/meshes/0/primitives/0/targets/0/POSITION", "/accessors/1"], (m) => {
        primitive(m).targets = [{ POSITION: m.positions(0, 0, 1) }];
    }),
    "position-nan": inTriangle(POSITION, (m) => m.bytes.writeFloatLE(NaN, 4)),
    "position-infinite": inTriangle(POSITION, (m) => m.bytes.writeFloatLE(Infinity, 8)),

    "nodes-in-a-cycle": inTriangle(["/nodes/"], (m) => {
        m.json.nodes = [{ children: [1] }, { children: [2] }, { children: [0] }, { mesh: 0 }];
        m.json.scenes = [{ nodes: [3] }];
    }),
    "node-that-is-its-own-child": inTriangle(["/nodes/0/children"], (m) => {
        m.json.nodes = [{ children: [0] }, { mesh: 0 }];
        m.json.scenes = [{ nodes: [1] }];
    }),
    "node-with-two-parents": inTriangle(["/nodes/2/children/0", "/nodes/1/children/0"], (m) => {
        m.json.nodes = [{ mesh: 0 }, { children: [0] }, { children: [0] }];
    }),
    "node-twice-a-child": inTriangle(
        ["/nodes/1/children/1"],
        (m) => (m.json.nodes = [{ mesh: 0 }, { children: [0, 0] }])
    ),
    "node-child-missing": inTriangle(["/nodes/0/children/0"], (m) => (m.json.nodes[0].children = [9])),
    "node-mesh-missing": inTriangle(["/nodes/0/mesh"], (m) => (m.json.nodes[0].mesh = 1)),
    "node-mesh-negative": inTriangle(["/nodes/0/mesh"], (m) => (m.json.nodes[0].mesh = -1)),
    "node-camera-missing": inTriangle(["/nodes/0/camera"], (m) => (m.json.nodes[0].camera = 0)),
    "node-skin-missing": inTriangle(["/nodes/0/skin"], (m) => (m.json.nodes[0].skin = 0)),
    "node-light-missing": inTriangle(["/nodes/0/extensions/KHR_lights_punctual"], (m) => {
        m.light({ type: "point" });
        m.json.nodes[0] = m.extension("KHR_lights_punctual", { light: 1 });
    }),
    "scene-missing": inTriangle(["/scene"], (m) => {
        m.json.scenes = [{ nodes: [0] }];
        m.json.scene = 1;
    }),
    "scene-node-missing": inTriangle(["/scenes/0/nodes/1"], (m) => (m.json.scenes = [{ nodes: [0, 1] }])),
    "skin-joint-missing": inTriangle(["/skins/0/joints/1"], (m) => m.add("skins", { joints: [0, 5] })),
    "skin-with-too-few-matrices": inTriangle(["/skins/0/inverseBindMatrices", "/accessors/1"], (m) => {
        m.json.nodes[0].children = [m.node()];
        m.add("skins", { joints: [0, 1], inverseBindMatrices: m.floats("MAT4", ...new Array(16).fill(0)) });
    }),
    "animation-sampler-missing": inTriangle(["/animations/0/channels/0/sampler"], (m) => {
        const samplers = [{ input: m.times(0), output: m.floats("VEC3", 1, 1, 1) }];
        m.add("animations", { samplers, channels: [{ sampler: 1, target: { node: 0, path: "scale" } }] });
    }),
    "animation-node-missing": inTriangle(["/animations/0/channels/0/target/node"], (m) => {
        const samplers = [{ input: m.times(0), output: m.floats("VEC3", 1, 1, 1) }];
        m.add("animations", { samplers, channels: [{ sampler: 0, target: { node: 4, path: "scale" } }] });
    }),
    "animation-with-too-few-values": inTriangle(
        ["/animations/0/samplers/0", "/animations/0/channels/0", "/accessors/2"],
        (m) => {
            const samplers = [{ input: m.times(0, 1), output: m.floats("VEC3", 1, 1, 1) }];
            m.add("animations", { samplers, channels: [{ sampler: 0, target: { node: 0, path: "scale" } }] });
        }
    ),
    "texture-missing": inTriangle(["/materials/0/normalTexture/index"], textured),
    "image-missing": inTriangle(["/textures/0/source"], (m) => {
        m.add("textures", { source: 2 });
        textured(m);
    }),
    "variant-missing": inTriangle(["/meshes/0/primitives/0/extensions/KHR_materials_variants/mappings/0"], (m) => {
        m.json.extensions = { KHR_materials_variants: { variants: [{ name: "one" }] } };
        const mappings = [{ material: m.material(), variants: [1] }];
        Object.assign(primitive(m), m.extension("KHR_materials_variants", { mappings }));
    }),

    "extension-required-but-unknown": inTriangle(["/extensionsRequired/0"], (m) => m.use("EXT_of_the_future", true)),
    "buffer-file-missing": inGltf(["/buffers/0/uri"], "gltf", (json, files) => delete files["model.bin"]),
    "buffer-file-too-short": inGltf(["/buffers/0"], "gltf", (json, files) => (files["model.bin"] = Buffer.alloc(12))),
    "buffer-data-uri-without-data": inGltf(["/buffers/0/uri"], "embedded", (json) => (json.buffers[0].uri = "data:")),
    "buffer-data-uri-malformed": inGltf(["/buffers/0/uri"], "embedded", (json) => {
        json.buffers[0].uri = "data:application/octet-stream;base64,AAAA!!!*";
    }),
    "buffer-data-uri-too-short": inGltf(["/buffers/0"], "embedded", (json) => {
        json.buffers[0].uri = "data:application/octet-stream;base64,AAAA";
    }),
    "glb-truncated": inBytes((bytes) => bytes.subarray(0, bytes.length - 10)),
    "glb-header-only": inBytes((bytes) => bytes.subarray(0, 12)),
    "glb-half-a-header": inBytes((bytes) => bytes.subarray(0, 7)),
    "glb-length-too-large": inBytes((bytes) => {
        bytes.writeUInt32LE(bytes.length + 100, 8);
        return bytes;
    }),
    "glb-json-chunk-too-long": inBytes((bytes) => {
        bytes.writeUInt32LE(bytes.length, 12);
        return bytes;
    }),
    "glb-json-chunk-length-overflow": inBytes((bytes) => {
        bytes.writeUInt32LE(0xfffffffc, 12);
        return bytes;
    }),
    "glb-bin-chunk-too-long": inBytes((bytes) => {
        const at = 20 + bytes.readUInt32LE(12);
        bytes.writeUInt32LE(bytes.readUInt32LE(at) + 4, at);
        return bytes;
    }),
    "glb-version-3": inBytes((bytes) => {
        bytes.writeUInt32LE(3, 4);
        return bytes;
    }),
    "glb-bin-chunk-first": inBytes(() =>
        glb([
            ["BIN\0", Buffer.alloc(4)],
            ["JSON", padded(Buffer.from("{}"), 0x20)],
        ])
    ),
    "json-malformed": inBytes(() => glb([["JSON", Buffer.from('{"asset":{}]    ')]])),
    "json-not-an-object": inBytes(() => glb([["JSON", Buffer.from("[1]     ".slice(0, 4))]])),

    "meshopt-nonsense": inTriangle(MESHOPT, (m) => meshopt(m, Buffer.alloc(20, 0xab))),
    "meshopt-truncated": inTriangle(MESHOPT, (m) => meshopt(m, Buffer.from([0xa0, 0, 0, 0]))),
    "meshopt-of-an-unknown-mode": inTriangle(MESHOPT, (m) => meshopt(m, compressed(m), { mode: "WAVES" })),
    "meshopt-of-an-unknown-filter": inTriangle(MESHOPT, (m) => meshopt(m, compressed(m), { filter: "WAVES" })),
    "meshopt-of-another-mode": inTriangle(MESHOPT, (m) =>
        meshopt(m, compressed(m), { mode: "TRIANGLES", byteStride: 4, count: 9 })
    ),
    "meshopt-stride-0": inTriangle(MESHOPT, (m) => meshopt(m, compressed(m), { byteStride: 0 })),
    "meshopt-stride-10": inTriangle(MESHOPT, (m) => meshopt(m, compressed(m), { byteStride: 10 })),
    "meshopt-count-2": inTriangle([...MESHOPT, "/accessors/0"], (m) => meshopt(m, compressed(m), { count: 2 })),
    "meshopt-count-2-to-53": inTriangle(MESHOPT, (m) => meshopt(m, compressed(m), { count: 2 ** 53 })),
    "meshopt-out-of-buffer": inTriangle(MESHOPT, (m) => meshopt(m, compressed(m), { byteLength: 5000 })),
    "meshopt-buffer-missing": inTriangle(MESHOPT, (m) => meshopt(m, compressed(m), { buffer: 9 })),
    "draco-nonsense": inTriangle(DRACO, (m) => draco(m, Buffer.alloc(40, 0xab))),
    "draco-header-only": inTriangle(DRACO, (m) => draco(m, Buffer.from("DRACO\x02\x02\x01\0\0\0", "latin1"))),
    "draco-truncated": inTriangle(DRACO, (m) => draco(m, dracoTriangle().subarray(0, 40))),
    "draco-attribute-missing": inTriangle(DRACO, (m) => draco(m, dracoTriangle(), { POSITION: 5 })),
    "draco-huge-count": inTriangle(DRACO, (m) =>
        draco(m, Buffer.from("DRACO\x02\x02\x01\0\0\0\xff\xff\xff\xff\x0f\xff\xff\xff\xff\x0f", "latin1"))
    ),
};
