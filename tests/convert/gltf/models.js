// All small models, each of which shows one feature of glTF.
//
// A model is made by a function that fills a Model and returns what its content must be: values by their paths in the
// content, or parts of objects. These expectations do not depend on a reader.
const { Model } = require("./model.js");

const TABLES = ["accessors", "animations", "attributes", "compression", "materials", "morphs", "scenes", "textures"];

const SMALL = Object.assign({}, ...TABLES.map((table) => require(`./models/${table}.js`)));
const LARGE = require("./models/large.js");
const MAKERS = { ...SMALL, ...LARGE };

// { files, expected } of the model with a name. The first file is the glTF file.
function makeModel(name) {
    const model = new Model();
    const expected = MAKERS[name](model);
    return { files: model.files(), expected };
}

module.exports = { modelNames: Object.keys(MAKERS), smallNames: Object.keys(SMALL), makeModel };
