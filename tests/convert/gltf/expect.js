// Compares content with what was expected by hand: values by path, and of objects only the members that are given. A
// function decides by itself.
const { Numbers } = require("./content/numbers.js");

function isPart(content, expected) {
    if (typeof expected === "function") return expected(content);
    if (content instanceof Numbers) {
        const values = new Numbers([expected].flat().map(Math.fround), { size: content.size });
        return new Numbers(content.values.map(Math.fround), { size: content.size }).firstDifference(values) < 0;
    }
    if (expected instanceof RegExp) return expected.test(content);
    if (typeof expected !== "object" || expected === null) return Object.is(content, expected);
    if (Array.isArray(expected) && content?.length !== expected.length) return false;
    return Object.keys(expected).every((member) => isPart(content?.[member], expected[member]));
}

function at(content, path) {
    return path
        .slice(1)
        .split("/")
        .reduce((part, member) => part?.[member], content);
}

// The paths whose content is not as expected, with both values.
function unexpected(content, expected) {
    return Object.entries(expected)
        .filter(([path, value]) => !isPart(at(content, path), value))
        .map(([path, value]) => `${path}: expected ${shown(value)}, found ${shown(at(content, path))}`);
}

function shown(value) {
    return value instanceof RegExp || typeof value === "function"
        ? String(value)
        : JSON.stringify(value instanceof Numbers ? value.values : value);
}

module.exports = { unexpected };
