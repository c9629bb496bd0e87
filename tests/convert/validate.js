// Validates glTF files: node validate.js NODE_MODULES
//
// Each line of the standard input is a JSON array of paths, and is answered with a line: a JSON array of their reports.
const fs = require("fs");
const path = require("path");
const readline = require("readline");

const validator = require(path.join(process.argv[2], "gltf-validator"));

// Replaces images that do not exist.
const image = Buffer.from(
    "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg==",
    "base64"
);

function resourceLoader(file) {
    return (uri) => {
        const resource = path.join(path.dirname(file), decodeURIComponent(uri));
        const isReplaced = !uri.endsWith(".bin") && !fs.existsSync(resource);
        return isReplaced ? Promise.resolve(image) : fs.promises.readFile(resource);
    };
}

function report(file) {
    return validator.validateBytes(new Uint8Array(fs.readFileSync(file)), {
        uri: file,
        maxIssues: 100,
        externalResourceFunction: resourceLoader(file),
    });
}

async function main() {
    for await (const line of readline.createInterface({ input: process.stdin })) {
        const reports = [];
        for (const file of JSON.parse(line)) reports.push(await report(file));
        console.log(JSON.stringify(reports));
    }
}

if (require.main === module) main();

module.exports = { report };
