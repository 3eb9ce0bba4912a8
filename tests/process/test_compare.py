"""Differences and merges from the shell, and in a repository of the real git."""

import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

from host import HOST, IS_EMULATED, ROOT

PROTOTYPE = [
    {"do": "newDocument", "as": "doc"},
    {"do": "newNode", "as": "clamp", "patch": "HXRClampNode"},
    {"do": "addNode", "node": "clamp", "to": "doc"},
    {"do": "newNode", "as": "delay", "patch": "HXRDelayNode"},
    {"do": "addNode", "node": "delay", "to": "doc"},
]


class CompareTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        self.edit(None, "base.document", PROTOTYPE)

    def host(self, *arguments, status=0):
        done = subprocess.run([HOST, *arguments], cwd=self.folder, capture_output=True, text=True,
                              check=False, timeout=60)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done

    def edit(self, source, target, operations):
        """Makes a document of another by an editing session, with keys."""
        script = list(operations)
        if source:
            script.insert(0, {"do": "open", "file": source, "as": "doc", "codingType": 3})
        script.append({"do": "save", "file": target, "codingType": 3})
        (self.folder / "script.json").write_text(json.dumps(script), encoding="utf-8")
        self.host("run", "script.json")

    def rename(self, source, target, name, to):
        keys = self.keys(source)
        self.edit(source, target, [{"do": "setName", "node": keys[name], "value": to}])

    def keys(self, file):
        shape = json.loads(self.host("open", file, "--json").stdout)
        return {node["name"]: node["uniqueKey"] for node in shape["subnodeGroup"]["subnodes"]}

    def names(self, file):
        return set(self.keys(file))


class DiffTest(CompareTest):
    def test_exit_statuses_and_forms(self):
        self.rename("base.document", "new.document", "Clamp", "Limit")
        self.assertEqual(self.host("diff", "base.document", "base.document").stdout, "")
        told = self.host("diff", "base.document", "new.document", status=1)
        self.assertEqual(told.stdout, 'Limit\n  ~ renamed from "Clamp" to "Limit"\n')
        self.assertEqual(self.host("diff", "--quiet", "base.document", "new.document",
                                   status=1).stdout, "")
        change, = json.loads(self.host("diff", "--json", "base.document", "new.document",
                                       status=1).stdout)["changes"]
        self.assertEqual((change["change"], change["address"], change["old"], change["new"]),
                         ("nodeRenamed", "Limit", '"Clamp"', '"Limit"'))
        self.assertIn("none.document", self.host("diff", "base.document", "none.document",
                                                 status=2).stderr)

    def test_fresh_keys_are_no_difference(self):
        self.host("save", "base.document", "-o", "keyless.document", "--to", "0")
        self.host("diff", "base.document", "keyless.document")

    def test_positions_are_one_line_a_group(self):
        keys = self.keys("base.document")
        self.edit("base.document", "new.document",
                  [{"do": "setPosition", "node": key, "value": [5, 6]} for key in keys.values()])
        self.assertEqual(self.host("diff", "base.document", "new.document", status=1).stdout,
                         "/\n  ~ 2 nodes in other positions\n")
        told = self.host("diff", "--view-state", "base.document", "new.document", status=1).stdout
        self.assertEqual(told.count("position (0, 0) → (5, 6)"), 2)


class MergeTest(CompareTest):
    def test_clean_conflicting_and_favored(self):
        self.rename("base.document", "ours.document", "Clamp", "Mine")
        self.rename("base.document", "other.document", "Delay", "Wait")
        self.rename("base.document", "theirs.document", "Clamp", "Yours")
        self.host("merge", "base.document", "ours.document", "other.document", "-o",
                  "out.document")
        self.assertEqual(self.names("out.document"), {"Mine", "Wait"})
        three = ["merge", "base.document", "ours.document", "theirs.document", "-o",
                 "out.document"]
        told = self.host(*three, "--json", status=1)
        self.assertIn("Mine: name", told.stderr)
        conflict, = json.loads(told.stdout)["conflicts"]
        self.assertEqual((conflict["ours"], conflict["theirs"], conflict["taken"]),
                         ('"Mine"', '"Yours"', '"Mine"'))
        self.assertEqual(self.names("out.document"), {"Mine", "Delay"})
        told = self.host(*three, "--favor", "theirs:Nobody", status=1)
        self.assertIn('nothing conflicts at "Nobody"', told.stderr)
        told = self.host(*three, "--favor", "theirs:Mine: name")
        self.assertEqual(told.stderr, "")
        self.assertEqual(self.names("out.document"), {"Yours", "Delay"})
        (self.folder / "broken.document").write_text("no document", encoding="utf-8")
        self.host("merge", "base.document", "broken.document", "theirs.document", "-o",
                  "out.document", status=2)
        self.assertEqual(self.names("out.document"), {"Yours", "Delay"})


@unittest.skipUnless(shutil.which("git"), "git is not installed")
@unittest.skipIf(IS_EMULATED, "git starts the host without its emulator")
class GitTest(CompareTest):
    def git(self, *arguments, status=0):
        environment = {**os.environ, "HOME": str(self.folder), "GIT_CONFIG_NOSYSTEM": "1"}
        for name in ("GIT_DIR", "GIT_WORK_TREE", "GIT_INDEX_FILE", "XDG_CONFIG_HOME"):
            environment.pop(name, None)
        done = subprocess.run(["git", "-c", "user.name=A", "-c", "user.email=a@b.c", *arguments],
                              cwd=self.folder, env=environment, capture_output=True, text=True,
                              check=False, timeout=60)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done

    def commit(self, name, to):
        self.rename("page.document", "page.document", name, to)
        self.git("commit", "-q", "-a", "-m", to)

    def test_a_repository_compares_and_merges_documents(self):
        shutil.move(self.folder / "base.document", self.folder / "page.document")
        self.git("init", "-q", "-b", "main")
        self.host("git", "--enable")
        self.git("add", "page.document")
        self.git("commit", "-q", "-m", "base")
        self.git("checkout", "-q", "-b", "other")
        self.commit("Delay", "Wait")
        self.git("checkout", "-q", "main")
        self.commit("Clamp", "Mine")
        self.assertIn('renamed from "Clamp" to "Mine"', self.git("diff", "HEAD~").stdout)
        command = f"diff.tarnkit.command={HOST} diff --html changes.html"
        self.git("-c", command, "diff", "HEAD~", "--", "page.document")
        self.assertIn("Mine", (self.folder / "changes.html").read_text(encoding="utf-8"))
        self.git("merge", "-q", "-m", "both", "other")
        self.assertEqual(self.names("page.document"), {"Mine", "Wait"})

        self.git("checkout", "-q", "-b", "third")
        self.commit("Mine", "Theirs")
        self.git("checkout", "-q", "main")
        self.commit("Mine", "Ours")
        told = self.git("merge", "third", status=1)
        self.assertIn("Ours: name", told.stderr)
        self.assertIn("UU page.document", self.git("status", "--short").stdout)
        self.assertEqual(self.names("page.document"), {"Ours", "Wait"})

        self.host("git", "--disable")
        self.assertEqual(self.git("config", "--local", "--get-regexp", "tarnkit", status=1).stdout,
                         "")
        attributes = (self.folder / ".git/info/attributes").read_text(encoding="utf-8")
        self.assertNotIn("tarnkit", attributes)

    def test_the_images_of_a_text_stand_beside_it(self):
        designs = self.folder / "designs"
        designs.mkdir()
        text, archive = designs / "page.tarn.json", self.folder / "made.document"
        photos = sorted((ROOT / "examples/photos").iterdir())
        self.git("init", "-q", "-b", "main")
        self.host("git", "--enable")

        def save(*operations):
            if text.exists():
                self.host("save", text, "-o", archive)
            self.edit("made.document" if text.exists() else "base.document", "made.document",
                      operations)
            self.host("save", archive, "-o", text, "--images", designs / "pictures")
            self.git("add", "designs")
            self.git("commit", "-q", "-m", "step")

        save({"do": "addImage", "file": str(photos[0])})
        keys = self.keys("made.document")
        self.git("checkout", "-q", "-b", "other")
        save({"do": "addImage", "file": str(photos[1])},
             {"do": "setName", "node": keys["Delay"], "value": "Wait"})
        self.git("checkout", "-q", "main")
        save({"do": "setName", "node": keys["Clamp"], "value": "Limit"})
        self.assertIn('renamed from "Clamp" to "Limit"', self.git("diff", "HEAD~").stdout)
        self.assertIn("Limit", self.git("log", "-p", "-1").stdout)
        self.git("merge", "-q", "-m", "both", "other")
        self.assertEqual(self.names("designs/page.tarn.json"), {"Limit", "Wait"})
        files = [image["file"] for image in json.loads(text.read_text("utf-8"))["images"]]
        self.assertEqual(len(set(files)), 2)
        for file in files:
            self.assertTrue((designs / file).is_file())


if __name__ == "__main__":
    unittest.main()
