// Textures: samplers, and where images are.
const { png, jpeg, webp, ktx2 } = require("./images.js");
const { MATERIAL } = require("./paths.js");

const BASE_COLOR = `${MATERIAL}/pbrMetallicRoughness/baseColorTexture`;
const TEXTURE = `${BASE_COLOR}/texture`;
const WRAPS = { clamp: 33071, mirror: 33648, repeat: 10497 };
const MIN_FILTERS = [9728, 9729, 9984, 9985, 9986, 9987];

function shown(m, texture) {
    const index = m.add("textures", texture);
    const attributes = { POSITION: m.corner(), TEXCOORD_0: m.floats("VEC2", 0, 0, 1, 0, 0, 1) };
    const material = m.material({ pbrMetallicRoughness: { baseColorTexture: { index } } });
    m.node({ mesh: m.mesh({ attributes, material }) });
}

function imageFile(m, name, bytes) {
    m.more[name] = bytes;
    return m.add("images", { uri: encodeURI(name) });
}

function sampled(sampler) {
    return (m) => {
        const texture = { source: imageFile(m, "map.png", png(1, 2, 3)) };
        shown(m, { ...texture, ...(sampler && { sampler: m.add("samplers", sampler) }) });
        const { wrapS = WRAPS.repeat, wrapT = WRAPS.repeat, magFilter, minFilter } = sampler ?? {};
        return { [`${TEXTURE}/sampler`]: { wrapS, wrapT, magFilter, minFilter } };
    };
}

// The expectation of images: the number of their bytes.
function holds(bytes) {
    return { [`${TEXTURE}/image/content`]: new RegExp(`^${bytes.length} bytes: `) };
}

function imageAt(place, container = "glb") {
    return (m) => {
        m.container = container;
        const bytes = png(7, 8, 9);
        shown(m, { source: place(m, bytes) });
        return holds(bytes);
    };
}

function inView(m, bytes, mimeType = "image/png") {
    return m.add("images", { bufferView: m.view(bytes), mimeType });
}

function inDataUri(m, bytes) {
    return m.add("images", { uri: `data:image/png;base64,${bytes.toString("base64")}` });
}

// A texture with another image for readers of an extension, and maybe one for all others.
function alternative(name, bytes, mimeType, hasFallback) {
    return (m) => {
        const source = m.add("images", { bufferView: m.view(bytes), mimeType });
        const fallback = hasFallback && { source: inView(m, png(4, 5, 6)) };
        m.use(name, !hasFallback);
        shown(m, m.extension(name, { source }, { ...fallback }));
        const member = name === "EXT_texture_webp" ? "webp" : "basisu";
        return {
            [`${TEXTURE}/${member}/content`]: new RegExp(`^${bytes.length} bytes: `),
            ...(hasFallback && holds(png(4, 5, 6))),
        };
    };
}

const samplers = {};
for (const [name, wrap] of Object.entries(WRAPS)) {
    samplers[`sampler-u-${name}`] = sampled({ wrapS: wrap });
    samplers[`sampler-v-${name}`] = sampled({ wrapT: wrap, wrapS: WRAPS.clamp });
}
for (const minFilter of MIN_FILTERS) samplers[`sampler-min-${minFilter}`] = sampled({ minFilter });

module.exports = {
    ...samplers,
    "sampler-mag-nearest": sampled({ magFilter: 9728, minFilter: 9729 }),
    "sampler-mag-linear": sampled({ magFilter: 9729 }),
    "sampler-all": sampled({ magFilter: 9728, minFilter: 9984, wrapS: WRAPS.mirror, wrapT: WRAPS.clamp }),
    "sampler-empty": sampled({}),
    "sampler-none": sampled(),
    "image-file": imageAt((m, bytes) => imageFile(m, "a picture \u00fc.png", bytes)),
    "image-file-of-gltf": imageAt((m, bytes) => imageFile(m, "picture.png", bytes), "gltf"),
    "image-file-in-folder": imageAt((m, bytes) => imageFile(m, "maps/deep/picture.png", bytes)),
    "image-data-uri": imageAt(inDataUri),
    "image-data-uri-of-gltf": imageAt(inDataUri, "embedded"),
    "image-view": imageAt(inView),
    "image-view-of-gltf": imageAt(inView, "gltf"),
    "image-jpeg": (m) => {
        shown(m, { source: inView(m, jpeg(), "image/jpeg") });
        return holds(jpeg());
    },
    "image-without-name": (m) => {
        shown(m, { source: m.add("images", { uri: "map.png", name: undefined }) });
        return { [`${TEXTURE}/image`]: { name: undefined, content: "map.png" } };
    },
    "texture-without-name": (m) => {
        shown(m, { source: imageFile(m, "map.png", png(1, 2, 3)), name: undefined });
        return { [TEXTURE]: { name: undefined, image: { name: "image 0" } } };
    },
    "image-missing": (m) => {
        shown(m, { source: m.add("images", { uri: "../elsewhere/./no%20such.png" }) });
        return { [`${TEXTURE}/image/content`]: "../elsewhere/no such.png" };
    },
    "image-of-two-textures": (m) => {
        const source = inView(m, png(1, 1, 1));
        const sampler = m.add("samplers", { wrapS: WRAPS.clamp });
        const second = m.add("textures", { source });
        shown(m, { source, sampler });
        m.json.materials[0].emissiveTexture = { index: second };
        return {
            [`${TEXTURE}/sampler/wrapS`]: WRAPS.clamp,
            [`${MATERIAL}/emissiveTexture/texture/sampler/wrapS`]: WRAPS.repeat,
        };
    },
    "image-basisu": alternative("KHR_texture_basisu", ktx2(), "image/ktx2", false),
    "image-basisu-with-fallback": alternative("KHR_texture_basisu", ktx2(), "image/ktx2", true),
    "image-webp": alternative("EXT_texture_webp", webp(), "image/webp", false),
    "image-webp-with-fallback": alternative("EXT_texture_webp", webp(), "image/webp", true),
    "texture-without-image": (m) => {
        shown(m, { sampler: m.add("samplers", { wrapS: WRAPS.clamp }), name: "later" });
        return { [TEXTURE]: { name: "later", image: undefined } };
    },
};
