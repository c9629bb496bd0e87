// Validates the glTF files that are named and prints, as JSON, what is said of each.
// node validate.js FOLDER_OF_NODE_MODULES FILE...
const fs = require("fs");
const path = require("path");

const [modules, ...files] = process.argv.slice(2);
const validator = require(path.join(modules, "gltf-validator"));

// Stands for all images, which are not there.
const image = Buffer.from(
    "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg==",
    "base64"
);

function beside(file) {
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
            externalResourceFunction: beside(file),
        });
        reports[file] = report;
    }
    console.log(JSON.stringify(reports));
}

main();
