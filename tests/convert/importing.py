"""The base of tests that convert models: what the importers make of each model, the catalogue declares."""
import json
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
                self.check_import(pathlib.Path(argument), [option for option in ("--triangulate",) if option in arguments])
        return result

    def check_import(self, argument, options):
        model = self.folder / argument
        if argument.suffix.lower() in NOT_MODELS or not model.is_file():
            return
        content = (argument.suffix, model.read_bytes(), *options)
        if hash(content) in CHECKED:
            return
        CHECKED.add(hash(content))
        scene, catalogue = self.folder / "imported.vrn", self.file("closed.json", closed_catalogue())
        if super().run_here("convert", *options, argument, scene).returncode == 0:
            report = super().run_here("check", "--no-lint", "--format", "json", "--types", catalogue, scene)
            found = json.loads(report.stdout)["diagnostics"]
            self.assertEqual([each for each in found if each["rule"] in RULES], [])
        scene.unlink(missing_ok=True)
        catalogue.unlink()
