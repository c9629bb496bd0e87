// The name and the extras that every object of a glTF file may have. An empty name is the same as no name.
function identity({ name, extras }) {
    return { name: name || undefined, extras };
}

module.exports = { identity };
