"""The base of tests that convert models: what the importers make of each model, the catalogue declares.

That is not checked in slow builds (VRN_SLOW_BUILD), where it would find the same as in a fast one."""
import json
import os
import pathlib

from command import ROOT, Folder

NOT_MODELS = (".vrn", ".json")
RULES = {"unknownType", "unknownInput", "wrongType", "notListed", "wrongNode", "cycle"}
CHECKED = set()  # the models that were checked: tests read many of them more than once


def closed_catalogue():
    """The catalogue that is built in, without leave for inputs that it does not declare."""
    catalogue = json.loads((ROOT / "catalogues" / "scene.json").read_text())
    for declared in catalogue["types"].values():
        del declared["open"]
    return json.dumps(catalogue)


class Importing(Folder):
    def run_here(self, *arguments, **more):
        result = super().run_here(*arguments, **more)
        if arguments[0] == "convert" and result.returncode == 0:
            for argument in arguments[1:-1]:
                self.check_import(pathlib.Path(argument), arguments)
        return result

    def check_import(self, model, arguments):
        options = [option for option in ("--triangulate",) if option in arguments]
        path = self.folder / model
        if "VRN_SLOW_BUILD" in os.environ or model.suffix.lower() in NOT_MODELS or not path.is_file():
            return
        content = (model.suffix, path.read_bytes(), *options)
        if hash(content) in CHECKED:
            return
        CHECKED.add(hash(content))
        target = pathlib.Path(arguments[-1])
        if target.suffix == ".vrn" and len(arguments) == len(("convert", *options, model, target)):
            self.check_scene(target)  # the import itself
            return
        scene = self.folder / "imported.vrn"
        if super().run_here("convert", *options, model, scene).returncode == 0:
            self.check_scene(scene)
        scene.unlink(missing_ok=True)

    def check_scene(self, scene):
        catalogue = self.file("closed.json", closed_catalogue())
        report = super().run_here("check", "--no-lint", "--format", "json", "--types", catalogue, scene)
        found = json.loads(report.stdout)["diagnostics"]
        self.assertEqual([each for each in found if each["rule"] in RULES], [])
        catalogue.unlink()
