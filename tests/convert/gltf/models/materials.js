// Materials: the core model and each extension, with all members and textures.
const { png } = require("./images.js");
const { MATERIAL } = require("./paths.js");

const TRANSFORM = "KHR_texture_transform";

// A texture with an image of its own, so that mixed up textures are noticed.
function texture(m) {
    const number = (m.json.images ?? []).length;
    m.more[`map${number}.png`] = png(number, 0, 0);
    m.add("images", { uri: `map${number}.png` });
    return { index: m.add("textures", { source: number }) };
}

// A triangle with three sets of texture coordinates, tangents for normal maps, and the given material.
function shown(m, material) {
    const attributes = {
        POSITION: m.corner(),
        NORMAL: m.floats("VEC3", 0, 0, 1, 0, 0, 1, 0, 0, 1),
        TANGENT: m.floats("VEC4", 1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1),
    };
    for (let set = 0; set < 3; ++set) attributes[`TEXCOORD_${set}`] = m.floats("VEC2", set, 0, set + 1, 0, set, 1);
    m.node({ mesh: m.mesh({ attributes, material: m.material(material) }) });
}

// The image that a texture has in the content.
function hasImage(number) {
    return { texture: { image: { content: imageContent(png(number, 0, 0)) } } };
}

function imageContent(bytes) {
    const digest = require("crypto").createHash("sha256").update(bytes).digest("hex");
    return `${bytes.length} bytes: ${digest}`;
}

function core(material, expected = material) {
    return (m) => {
        shown(m, material);
        return { [MATERIAL]: expected };
    };
}

// A material with one extension. Members named ...Texture get a texture each.
function extension(name, members, textures = []) {
    return (m) => {
        const content = { ...members };
        textures.forEach((member) => (content[member] = texture(m)));
        shown(m, m.extension(name, content));
        const images = Object.fromEntries(textures.map((member, number) => [member, hasImage(number)]));
        return { [`${MATERIAL}/extensions/${name}`]: { ...members, ...images } };
    };
}

function allTextures(m) {
    const at = (texCoord, more = {}) => ({ ...texture(m), ...(texCoord && { texCoord }), ...more });
    shown(m, {
        pbrMetallicRoughness: { baseColorTexture: at(0), metallicRoughnessTexture: at(1) },
        normalTexture: at(2, { scale: 0.5 }),
        occlusionTexture: at(1, { strength: 0.75 }),
        emissiveTexture: at(2),
        emissiveFactor: [1, 1, 1],
    });
    return {
        [MATERIAL]: {
            pbrMetallicRoughness: {
                baseColorTexture: { texCoord: 0, ...hasImage(0) },
                metallicRoughnessTexture: { texCoord: 1, ...hasImage(1) },
            },
            normalTexture: { texCoord: 2, normalScale: 0.5, ...hasImage(2) },
            occlusionTexture: { texCoord: 1, occlusionStrength: 0.75, ...hasImage(3) },
            emissiveTexture: { texCoord: 2, ...hasImage(4) },
        },
    };
}

function transformed(m, info, transform) {
    return m.extension(TRANSFORM, transform, { ...info });
}

function transforms(m) {
    const first = { offset: [0.25, -0.5], rotation: 1.25, scale: [2, 0.5] };
    const material = {
        pbrMetallicRoughness: {
            baseColorTexture: transformed(m, texture(m), first),
            metallicRoughnessTexture: transformed(m, texture(m), { offset: [0.1, 0] }),
        },
        normalTexture: transformed(m, texture(m), { rotation: -0.5 }),
        occlusionTexture: transformed(m, texture(m), { scale: [3, -1] }),
        emissiveTexture: transformed(m, { ...texture(m), texCoord: 1 }, { texCoord: 2, scale: [5, 5] }),
    };
    m.use("KHR_materials_clearcoat");
    const clearcoatTexture = transformed(m, texture(m), { offset: [1, 2], texCoord: 1 });
    shown(m, { ...material, extensions: { KHR_materials_clearcoat: { clearcoatFactor: 1, clearcoatTexture } } });
    return {
        [MATERIAL]: {
            pbrMetallicRoughness: {
                baseColorTexture: { transform: first },
                metallicRoughnessTexture: { transform: { offset: [0.1, 0], rotation: 0, scale: [1, 1] } },
            },
            normalTexture: { transform: { offset: [0, 0], rotation: -0.5 } },
            occlusionTexture: { transform: { scale: [3, -1] } },
            emissiveTexture: { texCoord: 2, transform: { scale: [5, 5] } },
            extensions: {
                KHR_materials_clearcoat: { clearcoatTexture: { texCoord: 1, transform: { offset: [1, 2] } } },
            },
        },
    };
}

// The same texture with two transforms.
function oneTextureTwice(m) {
    const shared = texture(m);
    shown(m, {
        pbrMetallicRoughness: { baseColorTexture: transformed(m, shared, { scale: [2, 2] }) },
        emissiveTexture: transformed(m, shared, { scale: [4, 4] }),
    });
    return {
        [MATERIAL]: {
            pbrMetallicRoughness: { baseColorTexture: { transform: { scale: [2, 2] }, ...hasImage(0) } },
            emissiveTexture: { transform: { scale: [4, 4] }, ...hasImage(0) },
        },
    };
}

function variants(m) {
    m.json.extensions = {
        KHR_materials_variants: { variants: [{ name: "day" }, { name: "night" }, { name: "rain" }] },
    };
    const [base, dark, wet] = ["base", "dark", "wet"].map((name) => m.material({ name }));
    const mappings = [
        { material: dark, variants: [1] },
        { material: wet, variants: [2] },
        { material: base, variants: [0] },
    ];
    const attributes = { POSITION: m.corner() };
    m.node({
        mesh: m.mesh(
            m.extension("KHR_materials_variants", { mappings }, { attributes, material: base }),
            m.extension("KHR_materials_variants", { mappings: [{ material: wet, variants: [0, 2] }] }, { attributes })
        ),
    });
    return {
        "/variants": [{ name: "day" }, { name: "night" }, { name: "rain" }],
        "/scenes/0/nodes/0/mesh/primitives": [
            { material: { name: "base" }, variants: { 0: { name: "base" }, 1: { name: "dark" }, 2: { name: "wet" } } },
            { material: undefined, variants: { 0: { name: "wet" }, 1: undefined, 2: { name: "wet" } } },
        ],
    };
}

module.exports = {
    "material-core": core({
        name: "paint",
        pbrMetallicRoughness: { baseColorFactor: [0.1, 0.2, 0.3, 0.4], metallicFactor: 0.25, roughnessFactor: 0.6 },
        emissiveFactor: [0.5, 0.25, 1],
        alphaMode: "BLEND",
        doubleSided: true,
    }),
    "material-all-textures": allTextures,
    "material-default": core(
        {},
        { alphaMode: "OPAQUE", pbrMetallicRoughness: { metallicFactor: 1, baseColorFactor: [1, 1, 1, 1] } }
    ),
    "material-defaults-written": core({
        pbrMetallicRoughness: { baseColorFactor: [1, 1, 1, 1], metallicFactor: 1, roughnessFactor: 1 },
        emissiveFactor: [0, 0, 0],
        alphaMode: "OPAQUE",
        doubleSided: false,
    }),
    "material-zero": core({
        pbrMetallicRoughness: { baseColorFactor: [0, 0, 0, 0], metallicFactor: 0, roughnessFactor: 0 },
    }),
    "material-opaque-with-alpha": core({
        alphaMode: "OPAQUE",
        pbrMetallicRoughness: { baseColorFactor: [1, 1, 1, 0.5] },
    }),
    "material-mask": core({ alphaMode: "MASK", alphaCutoff: 0.3 }),
    "material-mask-default": core({ alphaMode: "MASK" }, { alphaMode: "MASK", alphaCutoff: 0.5 }),
    "material-mask-zero": core({ alphaMode: "MASK", alphaCutoff: 0 }),
    "material-shared": (m) => {
        const material = m.material({ name: "shared", pbrMetallicRoughness: { roughnessFactor: 0.1 } });
        m.node({ mesh: m.triangle({ material }) });
        m.node({ mesh: m.triangle({ material }) });
        return { "/scenes/0/nodes/1/mesh/primitives/0/material": { name: "shared" } };
    },

    "material-unlit": (m) => {
        shown(m, m.extension("KHR_materials_unlit"));
        return { [`${MATERIAL}/isUnlit`]: true };
    },
    "material-emissive-strength": (m) => {
        shown(
            m,
            m.extension("KHR_materials_emissive_strength", { emissiveStrength: 7.5 }, { emissiveFactor: [1, 0.5, 0] })
        );
        return {
            [`${MATERIAL}/emissiveFactor`]: [1, 0.5, 0],
            [`${MATERIAL}/extensions/KHR_materials_emissive_strength/emissiveStrength`]: 7.5,
        };
    },
    "material-clearcoat": extension(
        "KHR_materials_clearcoat",
        { clearcoatFactor: 0.9, clearcoatRoughnessFactor: 0.35 },
        ["clearcoatTexture", "clearcoatRoughnessTexture", "clearcoatNormalTexture"]
    ),
    "material-clearcoat-normal-scale": (m) => {
        const clearcoatNormalTexture = { ...texture(m), texCoord: 2, scale: 0.2 };
        shown(m, m.extension("KHR_materials_clearcoat", { clearcoatFactor: 1, clearcoatNormalTexture }));
        return {
            [`${MATERIAL}/extensions/KHR_materials_clearcoat/clearcoatNormalTexture`]: {
                normalScale: 0.2,
                texCoord: 2,
            },
        };
    },
    "material-transmission": extension("KHR_materials_transmission", { transmissionFactor: 0.8 }, [
        "transmissionTexture",
    ]),
    "material-volume": extension(
        "KHR_materials_volume",
        { thicknessFactor: 1.5, attenuationDistance: 0.6, attenuationColor: [0.9, 0.5, 0.1] },
        ["thicknessTexture"]
    ),
    "material-volume-infinite": (m) => {
        shown(m, m.extension("KHR_materials_volume", { thicknessFactor: 2, attenuationColor: [0.5, 1, 1] }));
        return {
            [`${MATERIAL}/extensions/KHR_materials_volume`]: { thicknessFactor: 2, attenuationDistance: Infinity },
        };
    },
    "material-ior": extension("KHR_materials_ior", { ior: 1.33 }),
    "material-ior-zero": extension("KHR_materials_ior", { ior: 0 }),
    "material-sheen": extension(
        "KHR_materials_sheen",
        { sheenColorFactor: [0.9, 0.8, 0.1], sheenRoughnessFactor: 0.3 },
        ["sheenColorTexture", "sheenRoughnessTexture"]
    ),
    "material-specular": extension(
        "KHR_materials_specular",
        { specularFactor: 0.4, specularColorFactor: [0.1, 0.2, 3] },
        ["specularTexture", "specularColorTexture"]
    ),
    "material-anisotropy": extension(
        "KHR_materials_anisotropy",
        { anisotropyStrength: 0.6, anisotropyRotation: 1.57 },
        ["anisotropyTexture"]
    ),
    "material-iridescence": extension(
        "KHR_materials_iridescence",
        {
            iridescenceFactor: 0.7,
            iridescenceIor: 1.8,
            iridescenceThicknessMinimum: 200,
            iridescenceThicknessMaximum: 700,
        },
        ["iridescenceTexture", "iridescenceThicknessTexture"]
    ),
    "material-dispersion": (m) => {
        m.use("KHR_materials_volume");
        const volume = { thicknessFactor: 1 };
        const material = m.extension("KHR_materials_dispersion", { dispersion: 0.25 });
        material.extensions.KHR_materials_volume = volume;
        shown(m, material);
        return { [`${MATERIAL}/extensions/KHR_materials_dispersion/dispersion`]: 0.25 };
    },
    "material-extensions-with-defaults": (m) => {
        const names = ["clearcoat", "transmission", "volume", "ior", "sheen", "specular", "anisotropy", "iridescence"];
        const extensions = Object.fromEntries(names.map((name) => [`KHR_materials_${name}`, {}]));
        for (const name of Object.keys(extensions)) m.use(name);
        shown(m, { name: "plain", extensions });
        return { [`${MATERIAL}/extensions/KHR_materials_ior/ior`]: 1.5, [`${MATERIAL}/name`]: "plain" };
    },
    "material-variants": variants,

    "texture-transforms": transforms,
    "texture-with-two-transforms": oneTextureTwice,
};
