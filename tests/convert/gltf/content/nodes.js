// The content of nodes: a tree in which each node has its transform and what is attached to it.
const { check } = require("../file.js");
const { identity } = require("./identity.js");
const { meshContent, weightsContent } = require("./meshes.js");
const { near, Numbers, numbersOf } = require("./numbers.js");

const LIGHTS = "KHR_lights_punctual";
const INSTANCING = "EXT_mesh_gpu_instancing";
const IDENTITY = [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1];

// Column-major, like in glTF.
function composed([x, y, z, w], [sx, sy, sz], translation) {
    const rotation = [
        [1 - 2 * (y * y + z * z), 2 * (x * y + z * w), 2 * (x * z - y * w)],
        [2 * (x * y - z * w), 1 - 2 * (x * x + z * z), 2 * (y * z + x * w)],
        [2 * (x * z + y * w), 2 * (y * z - x * w), 1 - 2 * (x * x + y * y)],
    ];
    const scaled = [sx, sy, sz].map((scale, column) => rotation[column].map((value) => value * scale));
    return { linear: scaled.flat(), translation };
}

function split(matrix) {
    const last = [3, 7, 11, 15].map((at) => matrix[at]);
    check(last.join() === "0,0,0,1", "a matrix is not affine");
    return { linear: [0, 1, 2, 4, 5, 6, 8, 9, 10].map((at) => matrix[at]), translation: matrix.slice(12, 15) };
}

// A matrix is the same as the translation, rotation and scale that it consists of. These are compared one by one if the
// node is animated, because an animation replaces one of them.
function transformContent(node, isAnimated) {
    const { translation = [0, 0, 0], rotation = [0, 0, 0, 1], scale = [1, 1, 1] } = node;
    const matrix = node.matrix ? split(node.matrix) : composed(rotation, scale, translation);
    const content = {
        linear: new Numbers(matrix.linear, { size: 9 }),
        translation: new Numbers(matrix.translation),
    };
    if (isAnimated && !node.matrix) {
        content.rotation = new Numbers(rotation, { size: 4 });
        content.scale = new Numbers(scale, { size: 3 });
    }
    return content;
}

// Whether nodes share a camera is not compared, and the same for lights.
function cameraContent(file, index) {
    if (index === undefined) return undefined;
    const camera = file.get("cameras", index);
    const { type, perspective, orthographic } = camera;
    const members = Object.entries(perspective ?? orthographic).map(([member, value]) => [member, near(value)]);
    return { ...identity(camera), type, ...Object.fromEntries(members) };
}

function lightContent(file, index) {
    if (index === undefined) return undefined;
    const light = file.json.extensions[LIGHTS].lights[index];
    check(light, `there is no light ${index}`);
    const { type, color = [1, 1, 1], intensity = 1, range = Infinity, spot } = light;
    const content = {
        ...identity(light),
        type,
        color: new Numbers(color),
        intensity: near(intensity),
        range: near(range),
    };
    if (type === "spot") {
        content.innerConeAngle = near(spot?.innerConeAngle ?? 0);
        content.outerConeAngle = near(spot?.outerConeAngle ?? Math.PI / 4);
    }
    return content;
}

const INSTANCE_DEFAULTS = { TRANSLATION: [0, 0, 0], ROTATION: [0, 0, 0, 1], SCALE: [1, 1, 1] };

function instancesContent(file, attributes) {
    if (!attributes) return undefined;
    const accessors = Object.entries(attributes).map(([name, index]) => [name, file.accessor(index)]);
    const counts = new Set(accessors.map(([, { count }]) => count));
    check(counts.size === 1, "the attributes of instances have different counts");
    const [count] = counts;
    const content = Object.fromEntries(accessors.map(([name, accessor]) => [name, numbersOf(accessor)]));
    for (const [name, value] of Object.entries(INSTANCE_DEFAULTS))
        content[name] ??= new Numbers(Array(count).fill(value).flat(), { size: value.length });
    return content;
}

class Nodes {
    constructor(file, materials) {
        this.file = file;
        this.materials = materials;
        this.paths = new Map(); // of the nodes that were read
        this.open = new Set(); // their children are being read
        this.meshes = new Map();
        this.animated = new Set(
            (file.json.animations ?? []).flatMap(({ channels }) => channels.map(({ target }) => target.node))
        );
        this.usersOfMeshes = new Map();
        this.usersOfSkins = new Map();
        this.skinned = []; // content of nodes with skins, which are added when all paths are known
    }

    // A node that was read as part of another scene is only referred to.
    get(index, path) {
        check(!this.open.has(index), "the nodes form a cycle");
        if (this.paths.has(index)) return { again: this.paths.get(index) };
        this.paths.set(index, path);
        this.open.add(index);
        const content = this.nodeContent(this.file.get("nodes", index), index, path);
        this.open.delete(index);
        return content;
    }

    nodeContent(node, index, path) {
        const content = {
            ...identity(node),
            ...transformContent(node, this.animated.has(index)),
            camera: cameraContent(this.file, node.camera),
            light: lightContent(this.file, node.extensions?.[LIGHTS]?.light),
            instances: instancesContent(this.file, node.extensions?.[INSTANCING]?.attributes),
            children: (node.children ?? []).map((child, at) => this.get(child, `${path}/children/${at}`)),
        };
        if (node.mesh !== undefined) this.addMesh(content, node, path);
        if (node.skin !== undefined) this.skinned.push({ content, skin: node.skin, path });
        return content;
    }

    addMesh(content, node, path) {
        const mesh = this.file.get("meshes", node.mesh);
        if (!this.meshes.has(node.mesh)) this.meshes.set(node.mesh, meshContent(this.file, mesh, this.materials));
        content.mesh = this.meshes.get(node.mesh);
        content.weights = weightsContent(mesh, node.weights);
        // A skin may belong to a mesh elsewhere, which then needs a copy for each skin.
        if (node.skin === undefined) addUser(this.usersOfMeshes, node.mesh, path);
    }

    addSkins() {
        for (const { content, skin, path } of this.skinned) {
            content.skin = this.skinContent(this.file.get("skins", skin));
            addUser(this.usersOfSkins, skin, path);
        }
    }

    skinContent(skin) {
        const matrices =
            skin.inverseBindMatrices === undefined ? undefined : this.file.accessor(skin.inverseBindMatrices).values;
        return {
            ...identity(skin),
            skeleton: skin.skeleton === undefined ? undefined : this.pathOf(skin.skeleton),
            joints: skin.joints.map((joint, at) => ({
                node: this.pathOf(joint),
                inverseBind: new Numbers(matrices?.slice(at * 16, at * 16 + 16) ?? IDENTITY, { size: 16 }),
            })),
        };
    }

    pathOf(index) {
        check(this.paths.has(index), `there is no node ${index}`);
        return this.paths.get(index);
    }
}

function addUser(users, index, path) {
    users.set(index, [...(users.get(index) ?? []), path]);
}

// The groups of nodes that share an object.
function sharing(users) {
    return [...users.values()].filter((paths) => paths.length > 1).sort();
}

module.exports = { Nodes, sharing };
