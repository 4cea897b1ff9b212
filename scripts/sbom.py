#!/usr/bin/env python3
"""sbom.py SYSTEM SOURCES: prints what is linked into the product, as a bill of materials in SPDX 2.3 (JSON).

SYSTEM is linux or windows, SOURCES the directory of the .dsc files that scripts/build-opencv.sh built from
(share/sources below the directory that it prints). What comes from a package that Debian has built is named by
the version that is installed here. The time is SOURCE_DATE_EPOCH, by default 0, so that the same content gives the
same text.
"""

import hashlib
import json
import os
import re
import subprocess
import sys
import uuid
from datetime import datetime, timezone
from pathlib import Path
from typing import Any, Dict, List, NamedTuple, Tuple

ROOT = Path(__file__).resolve().parent.parent
Element = Dict[str, Any]

# Licences of what is linked in, under the names of Debian's source packages. docs/licences.md says the same in words.
SOURCE_LICENCES = {
    "opencv": "Apache-2.0",
    "libjpeg-turbo": "IJG AND BSD-3-Clause AND Zlib",
    "libpng1.6": "libpng-2.0",
    "libwebp": "BSD-3-Clause",
    "tiff": "libtiff",
    "protobuf": "BSD-3-Clause",
    "zlib": "Zlib",
}


class Installed(NamedTuple):
    """A package that Debian has built."""

    name: str
    licence: str
    relationship: str


GCC = "GPL-3.0-or-later WITH GCC-exception-3.1"
HEADERS = [Installed("libcli11-dev", "BSD-3-Clause", "STATIC_LINK"),
           Installed("nlohmann-json3-dev", "MIT", "STATIC_LINK")]
INSTALLED = {
    "linux": HEADERS + [Installed("libc6", "LGPL-2.1-or-later", "DYNAMIC_LINK"),
                        Installed("libstdc++6", GCC, "DYNAMIC_LINK"),
                        Installed("libgcc-s1", GCC, "DYNAMIC_LINK")],
    "windows": HEADERS + [Installed("libz-mingw-w64-dev", "Zlib", "STATIC_LINK"),
                          Installed("mingw-w64-x86-64-dev", "ZPL-2.1", "STATIC_LINK"),
                          Installed("gcc-mingw-w64-x86-64-posix-runtime", GCC, "STATIC_LINK")],
}


def identifier(kind: str, name: str) -> str:
    """An SPDX identifier: letters, digits, dots and hyphens."""
    return "SPDXRef-%s-%s" % (kind, re.sub(r"[^A-Za-z0-9.]+", "-", name))


def checksum(algorithm: str, value: str) -> Dict[str, str]:
    """A digest as SPDX writes it."""
    return {"algorithm": algorithm, "checksumValue": value}


def read_dsc(path: Path) -> Tuple[Dict[str, str], Dict[str, Dict[str, str]]]:
    """The fields of a .dsc that stand in one line, and by archive its digests: SHA1 and SHA256."""
    fields: Dict[str, str] = {}
    digests: Dict[str, Dict[str, str]] = {}
    section = ""
    for line in path.read_text(encoding="utf-8").splitlines():
        if line.startswith(" "):
            if section in ("Checksums-Sha1", "Checksums-Sha256"):
                digest, _, name = line.split()
                digests.setdefault(name, {})[section[len("Checksums-"):].upper()] = digest
            continue
        section, _, value = line.partition(":")
        fields.setdefault(section, value.strip())
    if not digests or any(set(kinds) != {"SHA1", "SHA256"} for kinds in digests.values()):
        sys.exit("sbom: %s names no digests of its archives" % path)
    return fields, digests


def package(name: str, version: str, licence: str) -> Element:
    """What every package has."""
    return {
        "SPDXID": identifier("Package", name),
        "name": name,
        "versionInfo": version,
        "supplier": "Organization: Debian",
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": False,
        "licenseConcluded": licence,
        "licenseDeclared": licence,
        "copyrightText": "NOASSERTION",
    }


def located(element: Element, where: str) -> Element:
    """The package with the address by which other tools know it."""
    element["externalRefs"] = [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                                "referenceLocator": "pkg:deb/debian/%s" % where}]
    return element


def in_purl(version: str) -> str:
    """A version as addresses write it."""
    return version.replace("+", "%2B").replace(":", "%3A")


def from_source(dsc: Path) -> Tuple[Element, List[Element]]:
    """A library that is built from Debian's sources, and the archives that it is built from."""
    fields, digests = read_dsc(dsc)
    name, version = fields["Source"], fields["Version"]
    library = package(name, version, SOURCE_LICENCES[name])
    library["packageFileName"] = dsc.name
    library["checksums"] = [checksum("SHA256", hashlib.sha256(dsc.read_bytes()).hexdigest())]
    located(library, "%s@%s?arch=source" % (name, in_purl(version)))
    archives = [{
        "SPDXID": identifier("File", archive),
        "fileName": "./" + archive,
        "checksums": [checksum(kind, kinds[kind]) for kind in sorted(kinds)],
        "licenseConcluded": "NOASSERTION",
        "licenseInfoInFiles": ["NOASSERTION"],
        "copyrightText": "NOASSERTION",
    } for archive, kinds in sorted(digests.items())]
    return library, archives


def installed_version(name: str) -> str:
    """The version of a Debian package that is installed here."""
    found = subprocess.run(["dpkg-query", "--show", "--showformat=${Version}\n", name], check=False,
                           stdout=subprocess.PIPE, universal_newlines=True)
    if found.returncode != 0 or not found.stdout.strip():
        sys.exit("sbom: %s is not installed" % name)
    return found.stdout.split()[0]


def product_version() -> str:
    """The version that stands in the public header."""
    header = (ROOT / "include/qorocv460/qorocv460.h").read_text(encoding="utf-8")
    found = re.search(r'^#define QOROCV460_VERSION "(.*)"$', header, re.MULTILINE)
    if found is None:
        sys.exit("sbom: the header names no version")
    return found.group(1)


def bill(system: str, sources: Path) -> Element:
    """The whole document."""
    product = package("QOROCV460", product_version(), "NOASSERTION")
    product["supplier"] = "NOASSERTION"
    packages, files = [product], []
    relationships = [("SPDXRef-DOCUMENT", "DESCRIBES", product["SPDXID"])]
    descriptions = sorted(sources.glob("*.dsc"))
    if not descriptions:
        sys.exit("sbom: there is no .dsc in %s" % sources)
    for dsc in descriptions:
        library, archives = from_source(dsc)
        packages.append(library)
        files += archives
        relationships.append((product["SPDXID"], "STATIC_LINK", library["SPDXID"]))
        relationships += [(library["SPDXID"], "GENERATED_FROM", archive["SPDXID"]) for archive in archives]
    for installed in INSTALLED[system]:
        version = installed_version(installed.name)
        element = package(installed.name, version, installed.licence)
        packages.append(located(element, "%s@%s" % (installed.name, in_purl(version))))
        relationships.append((product["SPDXID"], installed.relationship, element["SPDXID"]))
    when = datetime.fromtimestamp(int(os.environ.get("SOURCE_DATE_EPOCH", "0")), timezone.utc)
    content = {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": "QOROCV460-%s-%s" % (product["versionInfo"], system),
        "creationInfo": {"created": when.strftime("%Y-%m-%dT%H:%M:%SZ"), "creators": ["Tool: sbom.py"]},
        "packages": packages,
        "files": files,
        "relationships": [{"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}
                          for one, kind, other in relationships],
    }
    # Every document has an address of its own, which follows from what it says.
    content["documentNamespace"] = uuid.uuid5(uuid.NAMESPACE_OID, json.dumps(content, sort_keys=True)).urn
    return content


def main() -> None:
    """What the first lines say."""
    if len(sys.argv) != 3 or sys.argv[1] not in INSTALLED:
        sys.exit("usage: sbom.py linux|windows SOURCES")
    print(json.dumps(bill(sys.argv[1], Path(sys.argv[2])), indent=1))


if __name__ == "__main__":
    main()
