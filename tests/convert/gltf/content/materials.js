// The content of materials and their textures. What has the default value is the same as what is absent.
const path = require("path");
const crypto = require("crypto");
const { identity } = require("./identity.js");
const { near, Numbers } = require("./numbers.js");

const CORE = {
    alphaMode: "OPAQUE",
    alphaCutoff: 0.5,
    doubleSided: false,
    emissiveFactor: [0, 0, 0],
    normalTexture: "texture",
    occlusionTexture: "texture",
    emissiveTexture: "texture",
};

const METALLIC_ROUGHNESS = {
    baseColorFactor: [1, 1, 1, 1],
    metallicFactor: 1,
    roughnessFactor: 1,
    baseColorTexture: "texture",
    metallicRoughnessTexture: "texture",
};

// The members of each extension of materials with their defaults.
const EXTENSIONS = {
    KHR_materials_emissive_strength: { emissiveStrength: 1 },
    KHR_materials_clearcoat: {
        clearcoatFactor: 0,
        clearcoatTexture: "texture",
        clearcoatRoughnessFactor: 0,
        clearcoatRoughnessTexture: "texture",
        clearcoatNormalTexture: "texture",
    },
    KHR_materials_transmission: { transmissionFactor: 0, transmissionTexture: "texture" },
    KHR_materials_volume: {
        thicknessFactor: 0,
        thicknessTexture: "texture",
        attenuationDistance: Infinity,
        attenuationColor: [1, 1, 1],
    },
    KHR_materials_ior: { ior: 1.5 },
    KHR_materials_sheen: {
        sheenColorFactor: [0, 0, 0],
        sheenColorTexture: "texture",
        sheenRoughnessFactor: 0,
        sheenRoughnessTexture: "texture",
    },
    KHR_materials_specular: {
        specularFactor: 1,
        specularTexture: "texture",
        specularColorFactor: [1, 1, 1],
        specularColorTexture: "texture",
    },
    KHR_materials_anisotropy: { anisotropyStrength: 0, anisotropyRotation: 0, anisotropyTexture: "texture" },
    KHR_materials_iridescence: {
        iridescenceFactor: 0,
        iridescenceTexture: "texture",
        iridescenceIor: 1.3,
        iridescenceThicknessMinimum: 100,
        iridescenceThicknessMaximum: 400,
        iridescenceThicknessTexture: "texture",
    },
    KHR_materials_dispersion: { dispersion: 0 },
};

// An image file is compared by its bytes wherever they are, or by its path if there is none.
function imageContent(file, index) {
    if (index === undefined) return undefined;
    const image = file.get("images", index);
    const bytes = image.uri === undefined ? file.viewBytes(image.bufferView) : file.resource(image.uri);
    const digest = bytes && `${bytes.length} bytes: ${crypto.createHash("sha256").update(bytes).digest("hex")}`;
    return { ...identity(image), content: digest ?? path.posix.normalize(decodeURIComponent(image.uri)) };
}

function samplerContent(file, index) {
    const sampler = index === undefined ? {} : file.get("samplers", index);
    const { wrapS = 10497, wrapT = 10497, magFilter, minFilter } = sampler;
    return { ...identity(sampler), wrapS, wrapT, magFilter, minFilter };
}

function textureContent(file, index) {
    const texture = file.get("textures", index);
    return {
        ...identity(texture),
        sampler: samplerContent(file, texture.sampler),
        image: imageContent(file, texture.source),
        basisu: imageContent(file, texture.extensions?.KHR_texture_basisu?.source),
        webp: imageContent(file, texture.extensions?.EXT_texture_webp?.source),
    };
}

// Only the effective set of texture coordinates is compared: what a transform overrides is for readers without it.
function textureInfoContent(file, info) {
    if (!info) return undefined;
    const { offset = [0, 0], rotation = 0, scale = [1, 1], texCoord } = info.extensions?.KHR_texture_transform ?? {};
    return {
        texture: textureContent(file, info.index),
        texCoord: texCoord ?? info.texCoord ?? 0,
        transform: { offset: new Numbers(offset), rotation: near(rotation), scale: new Numbers(scale) },
        normalScale: near(info.scale ?? 1),
        occlusionStrength: near(info.strength ?? 1),
    };
}

function memberContent(file, value, byDefault) {
    if (byDefault === "texture") return textureInfoContent(file, value);
    const given = value ?? byDefault;
    if (typeof given === "number") return near(given);
    return Array.isArray(given) ? new Numbers(given) : given;
}

function membersContent(file, object, defaults) {
    const members = Object.entries(defaults);
    return Object.fromEntries(
        members.map(([name, byDefault]) => [name, memberContent(file, object?.[name], byDefault)])
    );
}

function materialContent(file, material) {
    const extensions = Object.entries(EXTENSIONS).map(([name, defaults]) => [
        name,
        membersContent(file, material.extensions?.[name], defaults),
    ]);
    return {
        ...identity(material),
        ...membersContent(file, material, CORE),
        pbrMetallicRoughness: membersContent(file, material.pbrMetallicRoughness, METALLIC_ROUGHNESS),
        extensions: Object.fromEntries(extensions),
        isUnlit: material.extensions?.KHR_materials_unlit !== undefined,
    };
}

// Materials by their indices. The default material is undefined.
class Materials {
    constructor(file) {
        this.file = file;
        this.read = new Map();
    }

    get(index) {
        if (index === undefined) return undefined;
        if (!this.read.has(index)) this.read.set(index, materialContent(this.file, this.file.get("materials", index)));
        return this.read.get(index);
    }
}

const MATERIAL_EXTENSIONS = [...Object.keys(EXTENSIONS), "KHR_materials_unlit"];

module.exports = { MATERIAL_EXTENSIONS, Materials };
