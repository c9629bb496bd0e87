// Validates the glTF files that are named and prints, as JSON, the messages of each.
// node validate.js FOLDER_OF_NODE_MODULES FILE...
const fs = require("fs");
const path = require("path");

const [modules, ...files] = process.argv.slice(2);
const validator = require(path.join(modules, "gltf-validator"));

async function main() {
    const reports = {};
    for (const file of files) {
        // Images stand elsewhere and are not looked at; the numbers of a .gltf stand beside it.
        const beside = (uri) =>
            uri.endsWith(".bin")
                ? fs.promises.readFile(path.join(path.dirname(file), decodeURIComponent(uri)))
                : Promise.reject(new Error("not looked at"));
        const report = await validator.validateBytes(new Uint8Array(fs.readFileSync(file)), {
            uri: file,
            externalResourceFunction: beside,
        });
        reports[file] = { issues: report.issues, info: report.info };
    }
    console.log(JSON.stringify(reports));
}

main();
