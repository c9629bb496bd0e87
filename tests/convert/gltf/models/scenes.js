// Scenes, nodes, names, extras, cameras, lights, skins and instances.
const { png } = require("./images.js");
const { NODE } = require("./paths.js");

const LIGHTS = "KHR_lights_punctual";
const INSTANCING = "EXT_mesh_gpu_instancing";
const IDENTITY = [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1];

function transform(members, expected) {
    return (m) => {
        m.node({ mesh: m.triangle(), ...members });
        return Object.fromEntries(Object.entries(expected).map(([name, value]) => [`${NODE}/${name}`, value]));
    };
}

function camera(object, expected) {
    return (m) => {
        m.node({ camera: m.add("cameras", object), translation: [0, 1, 5] });
        return { [`${NODE}/camera`]: expected, [`${NODE}/translation`]: [0, 1, 5] };
    };
}

function light(object, expected) {
    return (m) => {
        m.node(m.extension(LIGHTS, { light: m.light(object) }, { rotation: [0.6, 0, 0, 0.8] }));
        return { [`${NODE}/light`]: expected };
    };
}

// A column-major matrix of an inverse bind, which only translates.
function bind(x, y, z) {
    return [...IDENTITY.slice(0, 12), x, y, z, 1];
}

// Two joints and a mesh that they move, at nodes 0, 1 (a child) and 2.
function skinned(m, skin) {
    const knee = m.node({ name: "knee", translation: [0, -1, 0] });
    const hip = m.node({ name: "hip", children: [knee], translation: [0, 2, 0] });
    m.add("skins", { joints: [hip, knee], ...skin });
    m.node({ name: "body", mesh: influenced(m), skin: 0 });
    return { hip: "/scenes/0/nodes/0", knee: "/scenes/0/nodes/0/children/0", skin: "/scenes/0/nodes/1/skin" };
}

function influenced(m) {
    return m.mesh({
        attributes: {
            POSITION: m.corner(),
            JOINTS_0: m.accessor("VEC4", Uint8Array.of(0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0)),
            WEIGHTS_0: m.floats("VEC4", 0.5, 0.5, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0),
        },
    });
}

function instanced(attributes, expected) {
    return (m) => {
        m.node(m.extension(INSTANCING, { attributes: attributes(m) }, { mesh: m.triangle(), translation: [0, 0, 9] }));
        return { [`${NODE}/instances`]: expected };
    };
}

// Extras of each kind of value, on each kind of object.
const EXTRAS = {
    asset: { purpose: "test", nested: { list: [1, "two", null, { three: [] }] } },
    root: [1, 2, { three: 3 }],
    scene: ["a", "b"],
    node: { text: '\u00fc " \\ \n', number: -1.5e-7, big: 12345678901, yes: true, no: false, nothing: null, empty: {} },
    mesh: "a string",
    primitive: { index: 1 },
    material: 42,
    texture: { kind: "t" },
    image: [[], {}],
    sampler: false,
    camera: 0.1,
    light: { lamp: { watt: 60 } },
    skin: [0],
    animation: { "key with spaces / ~ .": 1, constructor: 2 },
};

function extrasOfEverything(m) {
    const { json } = m;
    json.asset.extras = EXTRAS.asset;
    json.extras = EXTRAS.root;
    m.light({ type: "point", extras: EXTRAS.light });
    m.add("images", { bufferView: m.view(png(1, 2, 3)), mimeType: "image/png", extras: EXTRAS.image });
    m.add("samplers", { extras: EXTRAS.sampler });
    m.add("textures", { source: 0, sampler: 0, extras: EXTRAS.texture });
    const material = m.material({ pbrMetallicRoughness: { baseColorTexture: { index: 0 } }, extras: EXTRAS.material });
    const attributes = {
        POSITION: m.corner(),
        TEXCOORD_0: m.floats("VEC2", 0, 0, 1, 0, 0, 1),
        JOINTS_0: m.accessor("VEC4", new Uint8Array(12)),
        WEIGHTS_0: m.floats("VEC4", 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0),
    };
    const mesh = m.mesh({ attributes, material, extras: EXTRAS.primitive });
    json.meshes[mesh].extras = EXTRAS.mesh;
    const joint = m.node({ extras: EXTRAS.node });
    m.add("skins", { joints: [joint], extras: EXTRAS.skin });
    m.add("cameras", { type: "perspective", perspective: { yfov: 1, znear: 1 }, extras: EXTRAS.camera });
    const body = m.node({ mesh, skin: 0 });
    const eye = m.node(m.extension(LIGHTS, { light: 0 }, { camera: 0 }));
    m.add("animations", {
        samplers: [{ input: m.times(0, 1), output: m.floats("VEC3", 0, 0, 0, 1, 1, 1) }],
        channels: [{ sampler: 0, target: { node: joint, path: "scale" } }],
        extras: EXTRAS.animation,
    });
    json.scenes = [{ nodes: [joint, body, eye], extras: EXTRAS.scene }];
    json.scene = 0;
    const primitive = "/scenes/0/nodes/1/mesh/primitives/0";
    const texture = `${primitive}/material/pbrMetallicRoughness/baseColorTexture/texture`;
    return {
        "/asset/extras": EXTRAS.asset,
        "/extras": EXTRAS.root,
        "/scenes/0/extras": EXTRAS.scene,
        "/scenes/0/nodes/0/extras": EXTRAS.node,
        "/scenes/0/nodes/1/mesh/extras": EXTRAS.mesh,
        [`${primitive}/extras`]: EXTRAS.primitive,
        [`${primitive}/material/extras`]: EXTRAS.material,
        [`${texture}/extras`]: EXTRAS.texture,
        [`${texture}/image/extras`]: EXTRAS.image,
        [`${texture}/sampler/extras`]: EXTRAS.sampler,
        "/scenes/0/nodes/2/camera/extras": EXTRAS.camera,
        "/scenes/0/nodes/2/light/extras": EXTRAS.light,
        "/scenes/0/nodes/1/skin/extras": EXTRAS.skin,
        "/animations/0/extras": EXTRAS.animation,
    };
}

module.exports = {
    "scenes-several": (m) => {
        const [a, b, c] = ["a", "b", "c"].map((name) => m.node({ name }));
        m.json.scenes = [{ name: "day", nodes: [b] }, { name: "night", nodes: [c, a] }, { nodes: [] }].map(
            ({ nodes, ...scene }) => ({ ...scene, ...(nodes.length && { nodes }) })
        );
        m.json.scene = 1;
        return {
            "/scene": 1,
            "/scenes": [
                { name: "day", nodes: [{ name: "b" }] },
                { name: "night", nodes: [{ name: "c" }, { name: "a" }] },
                { name: undefined, nodes: [] },
            ],
        };
    },
    "scenes-without-default": (m) => {
        const [a, b] = [m.node({ name: "a" }), m.node({ name: "b" })];
        m.json.scenes = [{ nodes: [a] }, { nodes: [b] }];
        return { "/scenes": [{ nodes: [{ name: "a" }] }, { nodes: [{ name: "b" }] }] };
    },
    "scenes-none": (m) => {
        m.hasNoScenes = true;
        m.node({ name: "parent", children: [1] });
        m.node({ name: "child" });
        m.node({ name: "other", mesh: m.triangle() });
        return { "/scenes": [{ nodes: [{ name: "parent", children: [{ name: "child" }] }, { name: "other" }] }] };
    },
    "scenes-sharing-a-node": (m) => {
        const [a, b] = [m.node({ name: "a", children: [2] }), m.node({ name: "b" })];
        m.node({ name: "child", mesh: m.triangle() });
        m.json.scenes = [{ nodes: [a] }, { nodes: [b, a] }];
        m.json.scene = 0;
        return { "/scenes/1/nodes/1": { again: "/scenes/0/nodes/0" } };
    },
    "nodes-outside-all-scenes": (m) => {
        const inside = m.node({ name: "inside" });
        m.node({ name: "outside", children: [2], translation: [1, 0, 0] });
        m.node({ name: "child", mesh: m.triangle() });
        m.json.scenes = [{ nodes: [inside] }];
        m.json.scene = 0;
        return {
            "/outside": [{ name: "outside", children: [{ name: "child" }] }],
            "/scenes/0/nodes": [{ name: "inside" }],
        };
    },
    "nodes-in-order": (m) => {
        const leaves = ["z", "a", "m"].map((name) => m.node({ name }));
        const second = m.node({ name: "second", children: [leaves[2], leaves[0]] });
        const first = m.node({ name: "first", children: [leaves[1]] });
        m.json.scenes = [{ nodes: [first, second] }];
        m.json.scene = 0;
        return {
            "/scenes/0/nodes": [
                { name: "first", children: [{ name: "a" }] },
                { name: "second", children: [{ name: "m" }, { name: "z" }] },
            ],
        };
    },
    "nodes-with-everything": (m) => {
        m.light({ type: "directional" });
        m.add("cameras", { type: "perspective", perspective: { yfov: 0.5, znear: 0.1 } });
        const child = m.node({ name: "child" });
        const all = { name: "all", camera: 0, mesh: m.triangle(), children: [child] };
        m.node(m.extension(LIGHTS, { light: 0 }, all));
        return {
            [NODE]: {
                name: "all",
                camera: { yfov: 0.5 },
                light: { type: "directional" },
                children: [{ name: "child" }],
            },
        };
    },

    "transform-translation": transform(
        { translation: [1, -2, 0.1] },
        { translation: [1, -2, 0.1], linear: [1, 0, 0, 0, 1, 0, 0, 0, 1] }
    ),
    "transform-rotation": transform(
        { rotation: [0, 0, 0.6, 0.8] },
        { linear: [0.28, 0.96, 0, -0.96, 0.28, 0, 0, 0, 1] }
    ),
    "transform-scale": transform({ scale: [2, 0.5, -1] }, { linear: [2, 0, 0, 0, 0.5, 0, 0, 0, -1] }),
    "transform-scale-zero": transform({ scale: [0, 1, 1] }, { linear: [0, 0, 0, 0, 1, 0, 0, 0, 1] }),
    "transform-all": transform(
        { translation: [1e-3, 1234.5, 0], rotation: [0, 0, 0.6, 0.8], scale: [2, 3, 4] },
        { linear: [0.56, 1.92, 0, -2.88, 0.84, 0, 0, 0, 4], translation: [1e-3, 1234.5, 0] }
    ),
    "transform-matrix": transform(
        { matrix: [0, 2, 0, 0, -2, 0, 0, 0, 0, 0, 2, 0, 5, 6, 7, 1] },
        { linear: [0, 2, 0, -2, 0, 0, 0, 0, 2], translation: [5, 6, 7] }
    ),
    "transform-mirror": transform(
        { matrix: [-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1] },
        { linear: [-1, 0, 0, 0, 1, 0, 0, 0, 1] }
    ),
    "transform-identity-matrix": transform({ matrix: IDENTITY }, { linear: [1, 0, 0, 0, 1, 0, 0, 0, 1] }),

    "names-duplicate": (m) => {
        m.node({ name: "twin", mesh: m.triangle() });
        m.node({ name: "twin", children: [2] });
        m.node({ name: "twin" });
        m.json.meshes[0].name = "twin";
        return {
            "/scenes/0/nodes": [
                { name: "twin", mesh: { name: "twin" } },
                { name: "twin", children: [{ name: "twin" }] },
            ],
        };
    },
    "names-empty-and-absent": (m) => {
        m.node({ name: "" });
        const material = m.material({ doubleSided: true, name: undefined });
        m.node({ name: undefined, mesh: m.triangle({ material }) });
        m.json.meshes[0].name = undefined;
        m.node({ name: " " });
        return {
            "/scenes/0/nodes": [{ name: undefined }, { name: undefined, mesh: { name: undefined } }, { name: " " }],
        };
    },
    "names-of-all-characters": (m) => {
        const names = [
            "\u00e4\u00f6\u00fc\u00df",
            "\u65e5\u672c\u8a9e",
            "\ud83d\ude00",
            "a b\tc\nd",
            '"quoted" \\ /',
            "1st",
            "mesh",
            "a.b[0]",
            "#,;{}",
        ];
        for (const name of names) m.node({ name });
        return { "/scenes/0/nodes": names.map((name) => ({ name })) };
    },
    "names-of-all-objects": (m) => {
        m.light({ type: "point", name: "the light" });
        m.add("images", { bufferView: m.view(png(9, 9, 9)), mimeType: "image/png", name: "the image" });
        m.add("samplers", { name: "the sampler", magFilter: 9728 });
        m.add("textures", { source: 0, sampler: 0, name: "the texture" });
        const material = m.material({ name: "the material", emissiveTexture: { index: 0 } });
        const mesh = m.mesh({
            attributes: { POSITION: m.corner(), TEXCOORD_0: m.floats("VEC2", 0, 0, 1, 0, 0, 1) },
            material,
        });
        m.json.meshes[mesh].name = "the mesh";
        m.add("cameras", {
            name: "the camera",
            type: "orthographic",
            orthographic: { xmag: 1, ymag: 1, znear: 0, zfar: 1 },
        });
        m.node(m.extension(LIGHTS, { light: 0 }, { name: "the node", mesh, camera: 0 }));
        m.add("animations", {
            name: "the animation",
            samplers: [{ input: m.times(0.5), output: m.floats("VEC3", 1, 2, 3) }],
            channels: [{ sampler: 0, target: { node: 0, path: "scale" } }],
        });
        m.json.scenes = [{ name: "the scene", nodes: [0] }];
        m.json.scene = 0;
        return {
            "/scenes/0/name": "the scene",
            [NODE]: {
                name: "the node",
                mesh: { name: "the mesh" },
                camera: { name: "the camera" },
                light: { name: "the light" },
            },
            [`${NODE}/mesh/primitives/0/material`]: {
                name: "the material",
                emissiveTexture: {
                    texture: { name: "the texture", image: { name: "the image" }, sampler: { name: "the sampler" } },
                },
            },
            "/animations/0/name": "the animation",
        };
    },
    "extras-of-everything": extrasOfEverything,
    "asset-copyright": (m) => {
        m.json.asset.copyright = "\u00a9 nobody";
        m.json.asset.generator = "by hand";
        m.node({ name: "n" });
        return { "/asset/copyright": "\u00a9 nobody" };
    },

    "camera-perspective": camera(
        { name: "front", type: "perspective", perspective: { aspectRatio: 1.6, yfov: 0.7, znear: 0.01, zfar: 250 } },
        { name: "front", type: "perspective", aspectRatio: 1.6, yfov: 0.7, znear: 0.01, zfar: 250 }
    ),
    "camera-infinite": camera(
        { type: "perspective", perspective: { yfov: 1.5, znear: 0.5 } },
        { type: "perspective", yfov: 1.5, znear: 0.5, zfar: undefined, aspectRatio: undefined }
    ),
    "camera-orthographic": camera(
        { type: "orthographic", orthographic: { xmag: 3, ymag: 2, znear: 0, zfar: 100 } },
        { type: "orthographic", xmag: 3, ymag: 2, znear: 0, zfar: 100 }
    ),
    "camera-shared": (m) => {
        m.add("cameras", { name: "shared", type: "perspective", perspective: { yfov: 1, znear: 1, zfar: 10 } });
        m.node({ camera: 0, name: "a" });
        m.node({ camera: 0, name: "b", rotation: [0, 1, 0, 0] });
        return { "/scenes/0/nodes": [{ camera: { name: "shared" } }, { camera: { name: "shared" } }] };
    },
    "light-directional": light(
        { type: "directional", color: [1, 0.5, 0.25], intensity: 3.5, name: "sun" },
        { type: "directional", color: [1, 0.5, 0.25], intensity: 3.5, name: "sun", range: Infinity }
    ),
    "light-point": light(
        { type: "point", intensity: 800, range: 12.5 },
        { type: "point", color: [1, 1, 1], intensity: 800, range: 12.5 }
    ),
    "light-spot": light(
        { type: "spot", range: 3, spot: { innerConeAngle: 0.2, outerConeAngle: 0.9 } },
        { type: "spot", intensity: 1, innerConeAngle: 0.2, outerConeAngle: 0.9 }
    ),
    "light-spot-default": light(
        { type: "spot", spot: {} },
        { type: "spot", innerConeAngle: 0, outerConeAngle: Math.PI / 4 }
    ),
    "light-shared": (m) => {
        m.light({ type: "point", intensity: 2 });
        m.light({ type: "point", intensity: 3 });
        [1, 0, 1].forEach((light) => m.node(m.extension(LIGHTS, { light })));
        return {
            "/scenes/0/nodes": [{ light: { intensity: 3 } }, { light: { intensity: 2 } }, { light: { intensity: 3 } }],
        };
    },

    "skin-with-inverse-bind": (m) => {
        const inverseBindMatrices = m.floats("MAT4", ...bind(0, -2, 0), ...bind(0, -1, 0.5));
        const { hip, knee, skin } = skinned(m, { inverseBindMatrices, name: "bones" });
        return {
            [skin]: {
                name: "bones",
                skeleton: undefined,
                joints: [
                    { node: hip, inverseBind: bind(0, -2, 0) },
                    { node: knee, inverseBind: bind(0, -1, 0.5) },
                ],
            },
        };
    },
    "skin-without-inverse-bind": (m) => {
        const { hip, knee, skin } = skinned(m);
        return {
            [`${skin}/joints`]: [
                { node: hip, inverseBind: IDENTITY },
                { node: knee, inverseBind: IDENTITY },
            ],
        };
    },
    "skin-with-skeleton": (m) => {
        const { hip, skin } = skinned(m, { skeleton: 1 });
        return { [`${skin}/skeleton`]: hip };
    },
    "skin-shared": (m) => {
        const { skin } = skinned(m, { inverseBindMatrices: m.floats("MAT4", ...bind(0, -2, 0), ...bind(0, -1, 0)) });
        m.node({ name: "clothes", mesh: influenced(m), skin: 0 });
        m.json.meshes[1].name = "coat";
        return {
            "/sharedSkins": [["/scenes/0/nodes/1", "/scenes/0/nodes/2"]],
            [`${skin}/joints/1/inverseBind`]: bind(0, -1, 0),
        };
    },
    "skin-of-a-shared-mesh": (m) => {
        const { hip, knee } = skinned(m);
        m.add("skins", { joints: [0, 1], name: "reversed" });
        m.node({ mesh: 0, skin: 1 });
        return { "/scenes/0/nodes/2/skin": { name: "reversed", joints: [{ node: knee }, { node: hip }] } };
    },
    "skin-joints-in-another-order": (m) => {
        const knee = m.node({ name: "knee" });
        const hip = m.node({ name: "hip", children: [knee] });
        m.add("skins", { joints: [knee, hip] });
        m.node({ mesh: influenced(m), skin: 0 });
        return {
            "/scenes/0/nodes/1/skin/joints": [{ node: "/scenes/0/nodes/0/children/0" }, { node: "/scenes/0/nodes/0" }],
        };
    },

    "instances-f32": instanced(
        (m) => ({
            TRANSLATION: m.floats("VEC3", 0, 0, 0, 1, 2, 3),
            ROTATION: m.floats("VEC4", 0, 0, 0, 1, 0, 0.6, 0, 0.8),
            SCALE: m.floats("VEC3", 1, 1, 1, 2, 2, 0.5),
        }),
        { TRANSLATION: [0, 0, 0, 1, 2, 3], ROTATION: [0, 0, 0, 1, 0, 0.6, 0, 0.8], SCALE: [1, 1, 1, 2, 2, 0.5] }
    ),
    "instances-translation-only": instanced((m) => ({ TRANSLATION: m.floats("VEC3", 0, 0, 0, 1, 2, 3) }), {
        TRANSLATION: [0, 0, 0, 1, 2, 3],
        ROTATION: [0, 0, 0, 1, 0, 0, 0, 1],
        SCALE: [1, 1, 1, 1, 1, 1],
    }),
    "instances-rotation-i8": instanced(
        (m) => ({ ROTATION: m.accessor("VEC4", Int8Array.of(0, 0, 0, 127, 0, -127, 0, 0), { normalized: true }) }),
        { ROTATION: [0, 0, 0, 1, 0, -1, 0, 0] }
    ),
    "instances-rotation-i16": instanced(
        (m) => ({ ROTATION: m.accessor("VEC4", Int16Array.of(0, 0, 0, 32767, 32767, 0, 0, 0), { normalized: true }) }),
        { ROTATION: [0, 0, 0, 1, 1, 0, 0, 0] }
    ),
    "instances-custom": instanced(
        (m) => ({
            TRANSLATION: m.floats("VEC3", 0, 0, 0, 1, 2, 3, 4, 5, 6),
            _ID: m.floats("SCALAR", 7, 8, 9),
            _TINT: m.floats("VEC3", 1, 0, 0, 0, 1, 0, 0, 0, 1),
        }),
        { _ID: [7, 8, 9], _TINT: [1, 0, 0, 0, 1, 0, 0, 0, 1] }
    ),
};
