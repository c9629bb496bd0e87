// Lists the differences between the contents of two glTF files: node compare.js NODE_MODULES A B
const fs = require("fs");
const path = require("path");
const { prepare } = require("./codecs.js");
const { contentOf } = require("./content/content.js");
const { Numbers } = require("./content/numbers.js");
const { GltfFile } = require("./file.js");

const LIMIT = 20;

function shown(value) {
    if (value instanceof Numbers) return shown(value.values);
    const text = value === undefined ? "nothing" : JSON.stringify(value);
    return text.length > 80 ? text.slice(0, 77) + "..." : text;
}

function isTree(value) {
    return typeof value === "object" && value !== null;
}

function membersOf(a, b) {
    return [...new Set([...Object.keys(a), ...Object.keys(b)])];
}

class Differences {
    constructor() {
        this.found = [];
        this.compared = new Map(); // pairs of trees; what several nodes share is compared once
    }

    add(at, a, b) {
        this.found.push(`${at || "/"}: ${shown(a)} became ${shown(b)}`);
    }

    compare(a, b, at = "") {
        if (this.found.length >= LIMIT || Object.is(a, b)) return;
        if (a instanceof Numbers && b instanceof Numbers) this.compareNumbers(a, b, at);
        else if (isTree(a) && isTree(b) && Array.isArray(a) === Array.isArray(b)) this.compareTrees(a, b, at);
        else this.add(at, a, b);
    }

    compareNumbers(a, b, at) {
        const first = a.firstDifference(b);
        if (first < 0) return;
        if (a.values.length === b.values.length && a.values.length > 1)
            this.add(`${at}/${first}`, a.values[first], b.values[first]);
        else this.add(at, a, b);
    }

    compareTrees(a, b, at) {
        if (this.compared.get(a) === b) return;
        this.compared.set(a, b);
        for (const member of membersOf(a, b)) {
            if (member === "name" && a.name === undefined) continue; // what has no name may get one
            this.compare(a[member], b[member], `${at}/${member}`);
        }
    }
}

// The differences of two contents, as lines of text. At most LIMIT are listed.
function differences(a, b) {
    const result = new Differences();
    result.compare(a, b);
    return result.found;
}

// Opens a file; what it refers to is in the same folder.
function open(file) {
    const folder = path.dirname(file);
    const lookUp = (name) => {
        const found = path.join(folder, name);
        return fs.existsSync(found) ? fs.readFileSync(found) : undefined;
    };
    return new GltfFile(fs.readFileSync(file), lookUp);
}

function compare(a, b) {
    return differences(contentOf(open(a)), contentOf(open(b)));
}

async function main([modules, a, b]) {
    await prepare(path.resolve(modules));
    const found = compare(a, b);
    if (found.length) console.log(found.join("\n"));
    process.exitCode = found.length ? 1 : 0;
}

if (require.main === module) main(process.argv.slice(2));

module.exports = { compare, differences, open };
