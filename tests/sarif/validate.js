// Validates the SARIF logs named on the command line against the schema of SARIF 2.1.0 and prints the violations.
const fs = require("fs");
const Ajv = require("ajv");

const validator = new Ajv({ schemaId: "auto", allErrors: true });
validator.addMetaSchema(require("ajv/lib/refs/json-schema-draft-04.json"));
const isValid = validator.compile(require("@microsoft/jest-sarif/lib/schemas/sarif-2.1.0-rtm.5.json"));

for (const path of process.argv.slice(2)) {
    if (isValid(JSON.parse(fs.readFileSync(path, "utf8")))) continue;
    console.error(`${path}: ${validator.errorsText(isValid.errors)}`);
    process.exitCode = 1;
}
