"""What is inside a release, as SPDX 2.3 in JSON: the artefacts, their files, and what is linked into the programs."""

import hashlib
import io
import json
import subprocess
import tarfile
import time
import uuid
import zipfile
from pathlib import Path

OWN_LICENCE = "MIT"
OWNER = "Copyright (c) 2026 the Orvanta USB tool authors"
COPYRIGHTS = "/usr/share/doc/{}/copyright"
# What is linked into the programs for Windows, and what runs in their installer: name, Debian package, its licence;
# without one the package's own file about it is quoted.
LINKED = (
    ("mingw-w64-runtime", "mingw-w64-x86-64-dev", None),
    ("winpthreads", "mingw-w64-x86-64-dev", "MIT AND BSD-3-Clause"),
    ("libgcc", "gcc-mingw-w64-x86-64-posix", "GPL-3.0-or-later WITH GCC-exception-3.1"),
    ("libstdc++", "g++-mingw-w64-x86-64-posix", "GPL-3.0-or-later WITH GCC-exception-3.1"),
)
INSTALLER = (("nsis", "nsis", None),)
NOT_TOLD = "NOASSERTION"


def package_version(package):
    found = subprocess.run(["dpkg-query", "-W", "-f=${Version}", package], text=True, capture_output=True, check=False)
    return found.stdout if found.returncode == 0 and found.stdout else NOT_TOLD


def sums(data):
    return [{"algorithm": name, "checksumValue": hashlib.new(name.lower(), data).hexdigest()}
            for name in ("SHA1", "SHA256")]


def contents(artefact):
    """{path: bytes} of an artefact that can be looked into; nothing of others."""
    if artefact.suffix == ".zip":
        with zipfile.ZipFile(artefact) as archive:
            return {name: archive.read(name) for name in sorted(archive.namelist()) if not name.endswith("/")}
    if artefact.suffix == ".deb":
        tree = subprocess.run(["dpkg-deb", "--fsys-tarfile", artefact], check=True, stdout=subprocess.PIPE).stdout
        with tarfile.open(fileobj=io.BytesIO(tree)) as archive:
            return {entry.name: archive.extractfile(entry).read() for entry in archive if entry.isfile()}
    return {}


def verification_code(files):
    """As SPDX has it: the sum of the sums of all files."""
    digests = sorted(file["checksums"][0]["checksumValue"] for file in files)
    return hashlib.sha1("".join(digests).encode()).hexdigest()


class SoftwareList:
    def __init__(self):
        self.packages = []
        self.files = []
        self.relations = []
        self.licences = {}
        self._parts = {}

    def relate(self, one, how, other):
        self.relations.append({"spdxElementId": one, "relationshipType": how, "relatedSpdxElement": other})

    def add_artefact(self, artefact, version):
        identity = f"SPDXRef-artefact-{len(self.relations)}"
        self.relate("SPDXRef-DOCUMENT", "DESCRIBES", identity)
        files = [self._file(artefact, path, data) for path, data in contents(artefact).items()]
        package = {"SPDXID": identity, "name": artefact.name, "versionInfo": version, "packageFileName": artefact.name,
                   "checksums": sums(artefact.read_bytes()), "downloadLocation": NOT_TOLD,
                   "filesAnalyzed": bool(files), "licenseConcluded": OWN_LICENCE, "licenseDeclared": OWN_LICENCE,
                   "copyrightText": OWNER}
        if files:
            package["packageVerificationCode"] = {"packageVerificationCodeValue": verification_code(files)}
            package["licenseInfoFromFiles"] = [OWN_LICENCE]
        self.packages.append(package)
        for file in files:
            self.relate(identity, "CONTAINS", file["SPDXID"])
            if artefact.suffix == ".zip" and file["fileName"].endswith(".exe"):
                self._link(file["SPDXID"], LINKED)
        if artefact.suffix == ".exe":
            self._link(identity, LINKED + INSTALLER)

    def _file(self, artefact, path, data):
        file = {"SPDXID": f"SPDXRef-file-{len(self.files)}", "fileName": f"./{path.removeprefix('./')}",
                "checksums": sums(data), "licenseConcluded": OWN_LICENCE, "licenseInfoInFiles": [OWN_LICENCE],
                "copyrightText": OWNER, "comment": f"in {artefact.name}"}
        self.files.append(file)
        return file

    def _link(self, identity, parts):
        for part in parts:
            self.relate(identity, "STATIC_LINK", self._part(*part))

    def _part(self, name, package, licence):
        if name in self._parts:
            return self._parts[name]
        identity = "SPDXRef-part-" + name.replace("+", "x")
        self._parts[name] = identity
        self.packages.append({
            "SPDXID": identity, "name": name, "versionInfo": package_version(package), "downloadLocation": NOT_TOLD,
            "filesAnalyzed": False, "licenseConcluded": licence or self._quoted(name, package),
            "licenseDeclared": licence or self._quoted(name, package), "copyrightText": NOT_TOLD,
            "comment": f"of the Debian package {package}"})
        return identity

    def _quoted(self, name, package):
        file = Path(COPYRIGHTS.format(package))
        if not file.exists():
            return NOT_TOLD
        identity = f"LicenseRef-{name}"
        self.licences[identity] = {"licenseId": identity, "name": f"{name}, as Debian's {package} tells",
                                   "extractedText": file.read_text(encoding="utf-8")}
        return identity

    def text(self, name, seconds):
        created = time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(seconds))
        body = {"packages": self.packages, "files": self.files, "relationships": self.relations,
                "hasExtractedLicensingInfos": list(self.licences.values())}
        digest = hashlib.sha256(json.dumps(body, sort_keys=True).encode()).hexdigest()
        head = {"spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT", "name": name,
                "documentNamespace": uuid.uuid5(uuid.NAMESPACE_OID, digest).urn,
                "creationInfo": {"created": created, "creators": ["Tool: orvanta-usbtool-packaging"]}}
        return json.dumps(head | body, indent=1, ensure_ascii=False) + "\n"


def write(target, artefacts, version, seconds):
    software = SoftwareList()
    for artefact in artefacts:
        software.add_artefact(artefact, version)
    target.write_text(software.text(target.name.removesuffix(".spdx.json"), seconds), encoding="utf-8")
