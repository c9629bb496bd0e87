// Validates glTF files and prints the reports as JSON.
// node validate.js NODE_MODULES FILE...
const fs = require("fs");
const path = require("path");

const [modules, ...files] = process.argv.slice(2);
const validator = require(path.join(modules, "gltf-validator"));

// Replaces all images, which do not exist.
const image = Buffer.from(
    "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg==",
    "base64"
);

function resourceLoader(file) {
    return (uri) =>
        uri.endsWith(".bin")
            ? fs.promises.readFile(path.join(path.dirname(file), decodeURIComponent(uri)))
            : Promise.resolve(image);
}

async function main() {
    const reports = {};
    for (const file of files) {
        const report = await validator.validateBytes(new Uint8Array(fs.readFileSync(file)), {
            uri: file,
            maxIssues: 100,
            externalResourceFunction: resourceLoader(file),
        });
        reports[file] = report;
    }
    console.log(JSON.stringify(reports));
}

main();
