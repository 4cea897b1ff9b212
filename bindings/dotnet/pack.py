"""pack.py OUTPUT-DIRECTORY [--linux DIRECTORY] [--windows DIRECTORY] [--notices DIRECTORY]

Packs QOROCV460.<version>.nupkg: the C# source, which is compiled into the host, and the native libraries for linux-x64
and win-x64 from the directories that hold them. The same content gives the same file.
"""

from __future__ import annotations

import argparse
import re
import sys
import zipfile
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent.parent
EPOCH = (1980, 1, 1, 0, 0, 0)

# What is packed, by the name that the loader asks for; the libraries find each other in one directory.
LINUX = ("libQOROCV460Safe.so", "libQOROCV460.so.0")
WINDOWS = ("QOROCV460Safe.dll", "QOROCV460.dll")

NUSPEC = """<?xml version="1.0" encoding="utf-8"?>
<package xmlns="http://schemas.microsoft.com/packaging/2013/05/nuspec.xsd">
  <metadata minClientVersion="3.3.0">
    <id>QOROCV460</id>
    <version>{version}</version>
    <authors>QOROCV460</authors>
    <description>Finds the faces in photographs: boxes, 68 landmarks, head centres, and masks that tell people from
the background. The C# source is compiled into the host; the native libraries for {platforms} are in the
package.</description>
    <readme>README.md</readme>
    <contentFiles>
      <files include="cs/**/*.cs" buildAction="Compile" />
    </contentFiles>
  </metadata>
</package>
"""

# For .NET Framework and Mono, which do not look into runtimes/: the libraries are copied beside the program.
TARGETS = """<Project xmlns="http://schemas.microsoft.com/developer/msbuild/2003">
  <ItemGroup Condition="'$(TargetFrameworkIdentifier)' == '.NETFramework'">
    <None Include="$(MSBuildThisFileDirectory)../runtimes/win-x64/native/*" Condition="'$(OS)' == 'Windows_NT'">
      <Link>%(Filename)%(Extension)</Link>
      <CopyToOutputDirectory>PreserveNewest</CopyToOutputDirectory>
      <Visible>false</Visible>
    </None>
    <None Include="$(MSBuildThisFileDirectory)../runtimes/linux-x64/native/*" Condition="'$(OS)' != 'Windows_NT'">
      <Link>%(Filename)%(Extension)</Link>
      <CopyToOutputDirectory>PreserveNewest</CopyToOutputDirectory>
      <Visible>false</Visible>
    </None>
  </ItemGroup>
</Project>
"""

CONTENT_TYPES = """<?xml version="1.0" encoding="utf-8"?>
<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">
  <Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml" />
  <Default Extension="nuspec" ContentType="application/octet" />
  <Default Extension="cs" ContentType="application/octet" />
  <Default Extension="md" ContentType="application/octet" />
  <Default Extension="txt" ContentType="application/octet" />
  <Default Extension="targets" ContentType="application/octet" />
  <Default Extension="dll" ContentType="application/octet" />
  <Default Extension="so" ContentType="application/octet" />
  <Default Extension="0" ContentType="application/octet" />
</Types>
"""

RELATIONSHIPS = """<?xml version="1.0" encoding="utf-8"?>
<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
  <Relationship Type="http://schemas.microsoft.com/packaging/2010/07/manifest" Target="/QOROCV460.nuspec" Id="R1" />
</Relationships>
"""

SOURCE = "Qorocv460.cs"


def library_version() -> str:
    header = (ROOT / "include/qorocv460/qorocv460.h").read_text(encoding="utf-8")
    found = re.search(r'^#define QOROCV460_VERSION "(.*)"$', header, flags=re.MULTILINE)
    if found is None:
        raise SystemExit("pack: the header names no version")
    return found[1]


def natives(platform: str, directory: Path | None, names: tuple[str, ...]) -> dict[str, bytes]:
    if directory is None:
        return {}
    missing = [name for name in names if not (directory / name).is_file()]
    if missing:
        raise SystemExit(f"pack: {directory} lacks {', '.join(missing)}")
    return {f"runtimes/{platform}/native/{name}": (directory / name).read_bytes() for name in names}


def contents(arguments: argparse.Namespace, version: str) -> dict[str, bytes]:
    libraries = natives("linux-x64", arguments.linux, LINUX) | natives("win-x64", arguments.windows, WINDOWS)
    if not libraries:
        raise SystemExit("pack: no native library: --linux or --windows")
    platforms = " and ".join(sorted({name.split("/")[1] for name in libraries}))
    source = (HERE / SOURCE).read_bytes()
    files = {
        "[Content_Types].xml": CONTENT_TYPES.encode(),
        "_rels/.rels": RELATIONSHIPS.encode(),
        "QOROCV460.nuspec": NUSPEC.format(version=version, platforms=platforms).encode(),
        "README.md": (HERE / "README.md").read_bytes(),
        "build/QOROCV460.targets": TARGETS.encode(),
        f"contentFiles/cs/any/{SOURCE}": source,
        f"contentFiles/cs/netcoreapp3.0/{SOURCE}": b"#nullable enable\n" + source,
    }
    if arguments.notices is not None:
        files |= {f"notices/{notice.name}": notice.read_bytes() for notice in arguments.notices.glob("*.txt")}
    return files | libraries


def main() -> int:
    parser = argparse.ArgumentParser(description="Packs the NuGet package.")
    parser.add_argument("output", type=Path)
    parser.add_argument("--linux", type=Path, help="directory of the Linux libraries")
    parser.add_argument("--windows", type=Path, help="directory of the Windows libraries")
    parser.add_argument("--notices", type=Path, help="directory of the licences of what the libraries link in")
    arguments = parser.parse_args()
    version = library_version()
    files = contents(arguments, version)
    package = arguments.output / f"QOROCV460.{version}.nupkg"
    arguments.output.mkdir(parents=True, exist_ok=True)
    unfinished = package.with_suffix(".unfinished")
    with zipfile.ZipFile(unfinished, "w", zipfile.ZIP_DEFLATED) as archive:
        for name, content in files.items():
            archive.writestr(zipfile.ZipInfo(name, EPOCH), content, zipfile.ZIP_DEFLATED)
    unfinished.replace(package)
    print(f"pack: {package}, {package.stat().st_size / 1e6:.1f} MB")
    return 0


if __name__ == "__main__":
    sys.exit(main())
