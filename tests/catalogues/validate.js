// Validates the catalogues named after the schema on the command line, and prints the violations.
const fs = require("fs");
const Ajv = require("ajv");

const [schema, ...catalogues] = process.argv.slice(2).map((path) => JSON.parse(fs.readFileSync(path, "utf8")));
const isValid = new Ajv({ allErrors: true }).compile(schema);

catalogues.forEach((catalogue, i) => {
    if (isValid(catalogue)) return;
    console.error(`catalogue ${i + 1}: ${new Ajv().errorsText(isValid.errors)}`);
    process.exitCode = 1;
});
