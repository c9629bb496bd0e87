// Where the content of most models is.
const NODE = "/scenes/0/nodes/0";
const MESH = `${NODE}/mesh`;
const PRIMITIVE = `${MESH}/primitives/0`;
const ATTRIBUTES = `${PRIMITIVE}/attributes`;
const MATERIAL = `${PRIMITIVE}/material`;

module.exports = { NODE, MESH, PRIMITIVE, ATTRIBUTES, MATERIAL };
