// The compressors and decompressors of npm packages, which are ready after `await prepare(NODE_MODULES)`.
const path = require("path");
const { pathToFileURL } = require("url");

const encoders = {};
const decoders = {};

async function prepare(modules) {
    const meshopt = await import(pathToFileURL(path.join(modules, "meshoptimizer", "index.js")));
    const draco = require(path.join(modules, "draco3dgltf"));
    await Promise.all([meshopt.MeshoptEncoder.ready, meshopt.MeshoptDecoder.ready]);
    encoders.meshopt = meshopt.MeshoptEncoder;
    decoders.meshopt = meshopt.MeshoptDecoder;
    [encoders.draco, decoders.draco] = await Promise.all([draco.createEncoderModule(), draco.createDecoderModule()]);
}

module.exports = { prepare, encoders, decoders };
