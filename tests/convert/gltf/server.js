// Serves the tests of glTF: node server.js NODE_MODULES
//
// Each line of the standard input is a JSON array of the name of a request and its arguments. It is answered with a line:
// the JSON of the result, or of { "error": ... }.
const fs = require("fs");
const path = require("path");
const readline = require("readline");
const { prepare } = require("./codecs.js");
const { compare, open } = require("./compare.js");
const { contentOf } = require("./content/content.js");
const { unexpected } = require("./expect.js");
const { Model } = require("./model.js");
const { makeModel, modelNames, smallNames } = require("./models.js");
const faults = require("./models/faults.js");
const losses = require("./models/losses.js");
const { exemptions, unnoticed } = require("./mutations.js");
const { wrongPairs } = require("./pairs.js");
const { report } = require("../validate.js");

// Writes files, by their names relative to a folder. Returns the path of the first.
function write(folder, files) {
    for (const [name, bytes] of Object.entries(files)) {
        fs.mkdirSync(path.dirname(path.join(folder, name)), { recursive: true });
        fs.writeFileSync(path.join(folder, name), bytes);
    }
    return path.join(folder, Object.keys(files)[0]);
}

function isReadable(file) {
    try {
        contentOf(open(file));
        return true;
    } catch {
        return false;
    }
}

// The validator does not report on a file that is not glTF at all.
function rejection(error) {
    return { severity: 0, pointer: "", message: String(error) };
}

const requests = {
    names: () => ({
        models: modelNames,
        small: smallNames,
        faults: Object.keys(faults),
        losses: Object.keys(losses),
        exemptions,
    }),

    // Writes a model to a folder and returns its path.
    model: (name, folder) => write(folder, makeModel(name).files),

    fault: (name, folder) => {
        const { files, pointers } = faults[name]();
        return { file: write(folder, files), pointers };
    },

    loss: (name, folder) => {
        const model = new Model();
        const lost = losses[name](model);
        return { file: write(folder, model.files()), lost };
    },

    // How the content of a file differs from what is expected of a model.
    unexpected: (name, file) => unexpected(contentOf(open(file)), makeModel(name).expected),

    isFaulty: async (file) => (await requests.validate(file)).length > 0 || !isReadable(file),

    // The changes of a file that comparing it does not notice.
    unnoticed: (file) => unnoticed(open(file)),

    compare,

    wrongPairs,

    // The errors in a file.
    validate: async (file) => {
        const { issues } = await report(file).catch((error) => ({ issues: { messages: [rejection(error)] } }));
        return issues.messages
            .filter(({ severity }) => severity === 0)
            .map(({ pointer, message }) => `${pointer}: ${message}`);
    },
};

async function answer(line) {
    const [name, ...values] = JSON.parse(line);
    try {
        return await requests[name](...values);
    } catch (error) {
        return { error: error.stack };
    }
}

async function main() {
    await prepare(path.resolve(process.argv[2]));
    for await (const line of readline.createInterface({ input: process.stdin }))
        console.log(JSON.stringify(await answer(line)));
}

main();
