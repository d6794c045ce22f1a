"""packaging/release on small repositories of its own, with builders that make little and a real Debian package."""

import errno
import hashlib
import json
import os
import shutil
import subprocess
import sys
import tarfile
import tempfile
import unittest
import unittest.mock
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "packaging"))

import release_folder  # noqa: E402
import software_list  # noqa: E402

NEW_BUILD = """
import os, sys
if sys.argv[3] != "--build" or os.path.exists(sys.argv[4]):
    sys.exit("this is no build of its own")
"""
ZIP_MAKER = NEW_BUILD + """
import zipfile
servers = "[Server]\\r\\nUpdate=" + os.environ.get("ORVANTA_UPDATE_SERVER", "http://usual.example") + "\\r\\n"
with zipfile.ZipFile(sys.argv[2] + "/orvanta-usbtool-3.4-windows-x64.zip", "w") as archive:
    for name, text in (("orvanta-usbtool.exe", os.environ["SOURCE_DATE_EPOCH"]), ("Server.ini", servers)):
        archive.writestr(zipfile.ZipInfo("orvanta-usbtool/" + name), text)
"""
SETUP_MAKER = NEW_BUILD + """
open(sys.argv[2] + "/orvanta-usbtool-3.4-windows-x64-setup.exe", "wb").write(bytes(2_000_000))
"""
DEB_MAKER = """
import pathlib, subprocess, sys, tempfile
with tempfile.TemporaryDirectory() as folder:
    for name, text in (("DEBIAN/control", "Package: sample\\nVersion: 3.4\\nArchitecture: all\\n"
                        "Maintainer: A Tester <tester@sample.example>\\nDescription: sample\\n"),
                       ("usr/share/sample/file", "sample")):
        file = pathlib.Path(folder, name)
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)
    made = sys.argv[2] + "/orvanta-usbtool_3.4_all.deb"
    subprocess.run(["dpkg-deb", "--root-owner-group", "-b", folder, made], check=True)
pathlib.Path(sys.argv[2], "orvanta-usbtool_3.4.build.log").touch()
"""


class ReleaseCase(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="usbtool-release-test-")
        self.addCleanup(temporary.cleanup)
        self.root = Path(temporary.name) / "sources"
        self.output = Path(temporary.name) / "out"
        self.root.mkdir()
        self.git("init", "-q", "-b", "main")
        self.put("CMakeLists.txt", "project(orvanta-usbtool VERSION 3.4 LANGUAGES CXX)\n")
        self.commit("cmake: the first of all")

    def git(self, *words):
        moment = "1700000000 +0000"
        environment = os.environ | {"GIT_AUTHOR_DATE": moment, "GIT_COMMITTER_DATE": moment,
                                    "GIT_CONFIG_GLOBAL": "/dev/null"}
        return subprocess.run(["git", "-c", "user.name=A Tester", "-c", "user.email=tester@sample.example", *words],
                              cwd=self.root, env=environment, check=True, text=True, stdout=subprocess.PIPE).stdout

    def put(self, name, text):
        file = self.root / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")

    def commit(self, message):
        self.git("add", "-A")
        self.git("commit", "-q", "--allow-empty", "-m", message)

    def put_windows(self):
        self.put("packaging/windows/make_zip.py", ZIP_MAKER)
        self.put("packaging/windows/make_setup.py", SETUP_MAKER)

    def put_debian(self):
        self.put("packaging/linux/make_deb.py", DEB_MAKER)

    def release(self, *arguments):
        return subprocess.run([sys.executable, ROOT / "packaging" / "release", "--sources", self.root, "--output",
                               self.output, *arguments], text=True, capture_output=True, check=False)

    def made(self):
        return sorted(file.name for file in self.output.iterdir()) if self.output.exists() else []

    def bytes_of_all(self):
        return {name: (self.output / name).read_bytes() for name in self.made()}

    def software(self):
        return json.loads((self.output / "orvanta-usbtool-3.4.spdx.json").read_text(encoding="utf-8"))


class Whole(ReleaseCase):
    def setUp(self):
        super().setUp()
        for tool in ("dpkg-buildpackage", "dh", "cmake", "makensis", "x86_64-w64-mingw32-g++-posix"):
            if shutil.which(tool) is None:
                self.fail(f"{tool} is missing")
        self.put_windows()
        self.put_debian()
        self.commit("packaging: all of it")

    def test_all_is_made_and_once_more_the_same(self):
        first = self.release()
        self.assertEqual(first.returncode, 0, first.stdout + first.stderr)
        self.assertEqual(self.made(), [
            "NOTES.md", "SHA256SUMS", "orvanta-usbtool-3.4-windows-x64-setup.exe",
            "orvanta-usbtool-3.4-windows-x64.zip", "orvanta-usbtool-3.4.spdx.json", "orvanta-usbtool-3.4.tar.xz",
            "orvanta-usbtool_3.4_all.deb"])
        self.assertIn("\nUpdate=http://usual.example\n", first.stdout)
        software = self.software()
        self.assertRegex(software["documentNamespace"], "^urn:uuid:[0-9a-f-]{36}$")
        before = self.bytes_of_all()
        (self.output / "mine.txt").write_text("mine", encoding="utf-8")
        self.assertEqual(self.release().returncode, 0)
        self.assertEqual(self.bytes_of_all(), before | {"mine.txt": b"mine"})

    def test_sums_are_those_of_the_files(self):
        self.release()
        found = subprocess.run(["sha256sum", "--strict", "-c", "SHA256SUMS"], cwd=self.output, text=True,
                               capture_output=True, check=False)
        self.assertEqual(found.returncode, 0, found.stderr)
        self.assertEqual(len(found.stdout.splitlines()), len(self.made()) - 1)

    def test_sizes_stand_beside_the_peers(self):
        table = self.release().stdout.splitlines()
        self.assertIn("   2.00 MB  orvanta-usbtool-3.4-windows-x64-setup.exe", table)
        self.assertLess(table.index("   1.50 MB  (Rufus)"), table.index("  20.00 MB  (Fedora Media Writer)"))

    def test_what_is_gone_from_the_release_goes(self):
        self.release()
        self.assertEqual(self.release("--only", "source").returncode, 0)
        self.assertEqual(self.made(), ["NOTES.md", "SHA256SUMS", "orvanta-usbtool-3.4.spdx.json",
                                       "orvanta-usbtool-3.4.tar.xz"])

    def test_the_software_list(self):
        self.release()
        found = self.software()
        self.assertEqual(found["spdxVersion"], "SPDX-2.3")
        self.assertEqual(found["creationInfo"]["created"], "2023-11-14T22:13:20Z")
        names = {package["SPDXID"]: package["name"] for package in found["packages"]}
        described = [names[relation["relatedSpdxElement"]] for relation in found["relationships"]
                     if relation["relationshipType"] == "DESCRIBES"]
        self.assertEqual(sorted(described), [name for name in self.made()
                                             if Path(name).suffix in (".deb", ".exe", ".xz", ".zip")])
        self.assertEqual(sorted(file["fileName"] for file in found["files"]), [
            "./orvanta-usbtool/Server.ini", "./orvanta-usbtool/orvanta-usbtool.exe", "./usr/share/sample/file"])

    def test_every_name_in_the_software_list_is_there(self):
        self.release()
        found = self.software()
        known = {"SPDXRef-DOCUMENT"} | {part["SPDXID"] for part in found["packages"] + found["files"]}
        self.assertEqual(len(known), 1 + len(found["packages"]) + len(found["files"]))
        for relation in found["relationships"]:
            self.assertIn(relation["spdxElementId"], known)
            self.assertIn(relation["relatedSpdxElement"], known)
        licences = {licence["licenseId"] for licence in found["hasExtractedLicensingInfos"]}
        used = {package["licenseDeclared"] for package in found["packages"]}
        self.assertEqual({licence for licence in used if licence.startswith("LicenseRef-")}, licences)

    def test_linked_parts_have_the_versions_of_this_machine(self):
        self.release()
        found = self.software()
        linked = {package["name"]: package["versionInfo"] for package in found["packages"]
                  if package["SPDXID"].startswith("SPDXRef-part-")}
        self.assertEqual(sorted(linked), ["libgcc", "libstdc++", "mingw-w64-runtime", "nsis", "winpthreads"])
        for name, version in linked.items():
            self.assertRegex(version, r"^\d", name)

    def test_the_sum_over_an_artefact_s_files(self):
        files = [{"checksums": software_list.sums(data)} for data in (b"one", b"two")]
        sums = sorted(hashlib.sha1(data).hexdigest() for data in (b"one", b"two"))
        self.assertEqual(software_list.verification_code(files), hashlib.sha1("".join(sums).encode()).hexdigest())


class Missing(ReleaseCase):
    def test_what_cannot_be_made_is_told_and_the_rest_is_there(self):
        found = self.release()
        self.assertEqual(found.returncode, 1)
        self.assertIn("not made: zip: there is no packaging/windows/make_zip.py\n", found.stdout)
        self.assertIn("not made: deb: there is no packaging/linux/make_deb.py\n", found.stdout)
        self.assertIn("orvanta-usbtool-3.4.tar.xz", self.made())

    def test_what_was_not_asked_for_is_no_failure(self):
        self.assertEqual(self.release("--only", "source").returncode, 0)
        self.assertEqual(self.release("--only", "source,deb").returncode, 1)
        self.assertEqual(self.release("--only", "flute").returncode, 2)

    def test_a_builder_that_fails(self):
        self.put("packaging/windows/make_zip.py", "raise SystemExit(7)")
        self.commit("packaging: it fails")
        found = self.release("--only", "zip,source")
        self.assertEqual(found.returncode, 1)
        self.assertRegex(found.stdout, r"not made: zip: (failed: make_zip.py ended with 7|missing: )")
        self.assertIn("orvanta-usbtool-3.4.tar.xz", self.made())


    def test_a_builder_that_leaves_nothing(self):
        self.put("packaging/windows/make_zip.py", "")
        self.commit("packaging: it does nothing")
        found = self.release("--only", "zip,source")
        self.assertEqual(found.returncode, 1)
        self.assertRegex(found.stdout, r"not made: zip: (make_zip.py has left no \*.zip|missing: )")
        self.assertEqual([name for name in self.made() if name.endswith(".zip")], [])


class Folder(ReleaseCase):
    """What is another's in it is neither deleted nor replaced."""

    def expect_refused(self, name, text):
        self.output.mkdir(exist_ok=True)
        (self.output / name).write_text(text, encoding="utf-8")
        found = self.release("--only", "source")
        self.assertEqual(found.returncode, 1)
        self.assertNotIn("Traceback", found.stderr)
        self.assertIn(f"{name} is not that of a release", found.stderr)
        self.assertEqual((self.output / name).read_text(encoding="utf-8"), text)
        self.assertEqual(self.made(), [name])

    def test_sums_of_something_else(self):
        beside = self.output.parent / "orvanta-usbtool"
        beside.write_text("mine", encoding="utf-8")
        for line in ("mine.txt", "../orvanta-usbtool", "orvanta-usbtool/../../orvanta-usbtool"):
            self.expect_refused("SHA256SUMS", f"{'0' * 64}  {line}\n")
        self.expect_refused("SHA256SUMS", f"{'0' * 64} *orvanta-usbtool\n")
        self.assertTrue(beside.exists())

    def test_notes_of_something_else(self):
        self.expect_refused("NOTES.md", "# Mine\n")

    def test_an_artefact_of_somebody_s(self):
        """Whether or not there is an earlier release beside it."""
        name = "orvanta-usbtool-3.4.tar.xz"
        self.expect_refused(name, "mine")
        (self.output / name).unlink()
        self.assertEqual(self.release("--only", "source").returncode, 0)
        sums = self.output / "SHA256SUMS"
        others = [line for line in sums.read_text(encoding="utf-8").splitlines(True) if name not in line]
        sums.write_text("".join(others), encoding="utf-8")
        (self.output / name).write_text("mine", encoding="utf-8")
        self.assertEqual(self.release("--only", "source").returncode, 1)
        self.assertEqual((self.output / name).read_text(encoding="utf-8"), "mine")
        self.assertEqual(sums.read_text(encoding="utf-8"), "".join(others))

    def test_a_link_of_somebody_s_that_leads_nowhere(self):
        self.output.mkdir()
        link = self.output / "orvanta-usbtool-3.4.tar.xz"
        link.symlink_to("nowhere")
        self.assertEqual(self.release("--only", "source").returncode, 1)
        self.assertEqual(os.readlink(link), "nowhere")

    def test_a_release_that_does_not_fit_leaves_the_earlier_one(self):
        """Of two files the first is there, and then the disk is full."""
        self.assertEqual(self.release("--only", "source").returncode, 0)
        before = self.bytes_of_all()
        made = Path(tempfile.mkdtemp(dir=self.root.parent))
        (made / "NOTES.md").write_text("new", encoding="utf-8")
        (made / "orvanta-usbtool-3.4.tar.xz").write_text("new", encoding="utf-8")
        move = shutil.move

        def first_alone(source, target):
            if Path(source).name != "NOTES.md":
                raise OSError(errno.ENOSPC, "full")
            return move(source, target)

        with unittest.mock.patch("shutil.move", first_alone), self.assertRaises(OSError):
            release_folder.replace(self.output, made)
        self.assertEqual(self.bytes_of_all(), before)

    def test_a_folder_of_somebody_s_stays(self):
        (self.output / "orvanta-usbtool-3.4").mkdir(parents=True)
        self.assertEqual(self.release("--only", "source").returncode, 0)
        self.assertTrue((self.output / "orvanta-usbtool-3.4").is_dir())


class Sources(ReleaseCase):
    def test_changes_that_are_not_committed_are_refused(self):
        for name in ("CMakeLists.txt", "new.txt"):
            self.put(name, "project(orvanta-usbtool VERSION 3.5 LANGUAGES CXX)\n")
            found = self.release("--only", "source")
            self.assertEqual(found.returncode, 1)
            self.assertIn(name, found.stderr)
            self.assertEqual(self.made(), [])
            self.git("checkout", "-q", "CMakeLists.txt")
            (self.root / "new.txt").unlink(missing_ok=True)
        self.assertEqual(self.release("--only", "source").returncode, 0)

    def test_the_archive_holds_what_was_committed(self):
        self.put(".gitignore", "ignored\n")
        self.put("folder/name", "text")
        self.commit("folder: a name")
        self.put("ignored", "never")
        self.release("--only", "source")
        with tarfile.open(self.output / "orvanta-usbtool-3.4.tar.xz") as archive:
            files = {entry.name: entry.mtime for entry in archive if entry.isfile()}
        self.assertEqual(files, dict.fromkeys((f"orvanta-usbtool-3.4/{name}" for name in
                                               (".gitignore", "CMakeLists.txt", "folder/name")), 1_700_000_000))


class Notes(ReleaseCase):
    def notes(self, *arguments):
        found = self.release("--only", "source", *arguments)
        self.assertEqual(found.returncode, 0, found.stderr)
        return (self.output / "NOTES.md").read_text(encoding="utf-8")

    def test_all_without_a_tag(self):
        self.commit("online: asks once")
        self.commit("Whatever else")
        self.assertEqual(self.notes(), "# Orvanta USB-Stick Internetupdate Tool 3.4\n\nAll changes:\n\n"
                                       "## cmake\n\n- the first of all\n\n## online\n\n- asks once\n\n"
                                       "## other\n\n- Whatever else\n")

    def test_since_the_last_tag(self):
        self.git("tag", "v3.3")
        self.commit("online: asks once")
        self.commit("online: waits longer")
        self.git("tag", "v3.4")  # the release itself
        self.assertEqual(self.notes(), "# Orvanta USB-Stick Internetupdate Tool 3.4\n\nChanges since v3.3:\n\n"
                                       "## online\n\n- asks once\n- waits longer\n")

    def test_since_a_commit(self):
        self.commit("online: asks once")
        since = self.git("rev-parse", "HEAD").strip()
        self.commit("job: waits longer")
        text = self.notes("--since", since)
        self.assertIn("- waits longer", text)
        self.assertNotIn("asks once", text)

    def test_a_commit_that_is_not_there(self):
        found = self.release("--only", "source", "--since", "v9")
        self.assertNotEqual(found.returncode, 0)
        self.assertIn("v9", found.stderr)
        self.assertEqual(self.made(), [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
