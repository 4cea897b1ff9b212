"""sbom_test.py SBOM.PY: what the bill of materials says of a library's sources, and that it keeps to SPDX 2.3."""

import hashlib
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from typing import Any, Dict, Set

PROGRAM = Path(sys.argv.pop())

DSC = """Format: 3.0 (quilt)
Source: zlib
Version: 1:1.2.13.dfsg-1
Checksums-Sha1:
 8f0c2a6b8c9f8f0a3e6e0b6b9b3b4f5a0c1d2e3f 10 zlib_1.2.13.dfsg.orig.tar.bz2
Checksums-Sha256:
 1111111111111111111111111111111111111111111111111111111111111111 10 zlib_1.2.13.dfsg.orig.tar.bz2
Files:
 22222222222222222222222222222222 10 zlib_1.2.13.dfsg.orig.tar.bz2
"""
# Of SPDX 2.3, for what stands in ours.
OF_DOCUMENT = {"spdxVersion", "dataLicense", "SPDXID", "name", "documentNamespace", "creationInfo"}
OF_PACKAGE = {"SPDXID", "name", "downloadLocation"}
OF_FILE = {"SPDXID", "fileName", "checksums"}
LENGTHS = {"SHA1": 40, "SHA256": 64}
KINDS = {"DESCRIBES", "STATIC_LINK", "DYNAMIC_LINK", "GENERATED_FROM"}
LICENCE = re.compile(r"^(NOASSERTION|[A-Za-z0-9.-]+( (AND|WITH) [A-Za-z0-9.-]+)*)$")


class BillTest(unittest.TestCase):
    """The program, on the sources of one library."""

    def setUp(self) -> None:
        self.directory = tempfile.TemporaryDirectory()
        self.addCleanup(self.directory.cleanup)
        self.dsc = Path(self.directory.name) / "zlib_1.2.13.dfsg-1.dsc"
        self.dsc.write_text(DSC, encoding="utf-8")

    def run_program(self, system: str = "linux", **environment: str) -> "subprocess.CompletedProcess[str]":
        """The program's run."""
        return subprocess.run([str(PROGRAM), system, self.directory.name], check=False, env={**os.environ, **environment},
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, universal_newlines=True)

    def bill(self, system: str = "linux", **environment: str) -> Dict[str, Any]:
        """What it prints."""
        run = self.run_program(system, **environment)
        self.assertEqual(run.returncode, 0, run.stderr)
        return dict(json.loads(run.stdout))

    def test_keeps_to_the_form(self) -> None:
        for system in ("linux", "windows"):
            with self.subTest(system):
                bill = self.bill(system)
                self.assertLessEqual(OF_DOCUMENT, set(bill))
                self.assertEqual((bill["spdxVersion"], bill["dataLicense"]), ("SPDX-2.3", "CC0-1.0"))
                self.assertRegex(bill["creationInfo"]["created"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
                self.assertTrue(all(re.match(r"^(Tool|Person|Organization): .", creator)
                                    for creator in bill["creationInfo"]["creators"]))
                self.assertRegex(bill["documentNamespace"], r"^urn:uuid:[0-9a-f-]{36}$")
                self.check_elements(bill)

    def check_elements(self, bill: Dict[str, Any]) -> None:
        """Every element is whole, has a name of its own, and is related to others that are there."""
        known: Set[str] = {bill["SPDXID"]}
        for required, element in [(OF_PACKAGE, one) for one in bill["packages"]] + [
                (OF_FILE, one) for one in bill["files"]]:
            self.assertLessEqual(required, set(element))
            self.assertRegex(element["SPDXID"], r"^SPDXRef-[A-Za-z0-9.-]+$")
            self.assertNotIn(element["SPDXID"], known)
            known.add(element["SPDXID"])
            self.assertRegex(element["licenseConcluded"], LICENCE)
            for digest in element.get("checksums", []):
                self.assertRegex(digest["checksumValue"], r"^[0-9a-f]{%d}$" % LENGTHS[digest["algorithm"]])
        for element in bill["files"]:
            self.assertIn("SHA1", [digest["algorithm"] for digest in element["checksums"]])
        related = set()
        for relationship in bill["relationships"]:
            self.assertIn(relationship["relationshipType"], KINDS)
            self.assertLessEqual({relationship["spdxElementId"], relationship["relatedSpdxElement"]}, known)
            related.add(relationship["relatedSpdxElement"])
        self.assertEqual(related, known - {bill["SPDXID"]})

    def test_names_the_version_and_the_digest_of_a_source(self) -> None:
        packages = [one for one in self.bill()["packages"] if one["name"] == "zlib"]
        self.assertEqual(len(packages), 1)
        self.assertEqual(packages[0]["versionInfo"], "1:1.2.13.dfsg-1")
        self.assertEqual(packages[0]["checksums"][0]["checksumValue"], hashlib.sha256(DSC.encode()).hexdigest())

    def test_names_the_digests_of_an_archive(self) -> None:
        archive = self.bill()["files"][0]
        self.assertEqual(archive["fileName"], "./zlib_1.2.13.dfsg.orig.tar.bz2")
        self.assertIn({"algorithm": "SHA256", "checksumValue": "1" * 64}, archive["checksums"])

    def test_is_the_same_for_the_same_sources(self) -> None:
        self.assertEqual(self.bill(), self.bill())

    def test_takes_its_time_from_the_environment(self) -> None:
        bill = self.bill(SOURCE_DATE_EPOCH="86400")
        self.assertEqual(bill["creationInfo"]["created"], "1970-01-02T00:00:00Z")

    def test_refuses_a_directory_without_sources(self) -> None:
        self.dsc.unlink()
        run = self.run_program()
        self.assertNotEqual(run.returncode, 0)
        self.assertIn("there is no .dsc", run.stderr)

    def test_refuses_sources_without_digests(self) -> None:
        self.dsc.write_text(DSC.split("Checksums-Sha1", maxsplit=1)[0], encoding="utf-8")
        run = self.run_program()
        self.assertNotEqual(run.returncode, 0)
        self.assertIn("no digests", run.stderr)


if __name__ == "__main__":
    unittest.main()
