#!/usr/bin/env bash
# nuget_package_test.sh BUILD-DIRECTORY VERSION MODELS PHOTO: packs the NuGet package with the libraries of a build,
# unpacks it into an empty directory, builds hosts from what lies there, and runs them there with Mono.
set -euo pipefail

build=$1
version=$2
models=$3
photo=$4
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset LD_LIBRARY_PATH # everything is to be found by the package alone

fail() {
  echo "$*"
  exit 1
}

python3 "$root/bindings/dotnet/pack.py" "$work" --linux "$build"
package=$work/QOROCV460.$version.nupkg
python3 "$root/bindings/dotnet/pack.py" "$work/again" --linux "$build" >/dev/null
cmp "$package" "$work/again/QOROCV460.$version.nupkg" || fail "packed again, it is another file"
unzip -q "$package" -d "$work/package"
grep -qF "<version>$version</version>" "$work/package/QOROCV460.nuspec" || fail "the package has another version"
head -n 1 "$work/package/contentFiles/cs/netcoreapp3.0/Qorocv460.cs" | grep -qxF '#nullable enable' ||
  fail "the source for later compilers is not annotated"

# As a host's build does: the source compiled in, the libraries beside the program.
mkdir "$work/host"
cp "$work"/package/runtimes/linux-x64/native/* "$work/host/"
source=$work/package/contentFiles/cs/any/Qorocv460.cs
mcs -langversion:7.2 -warnaserror -doc:"$work/host/FirstProgram.xml" -out:"$work/host/FirstProgram.exe" \
  "$root/docs/examples/FirstProgram.cs" "$source"
for host in DotnetErrors DotnetOneNetwork; do
  mcs -warnaserror -out:"$work/host/$host.exe" "$here/$host.cs" "$source"
done

cd "$work/host"
mono FirstProgram.exe "$models" "$photo" | grep -qE '^from 180, 58 to 273, 180$' || fail "the first program finds no face"
code=0
mono FirstProgram.exe nowhere "$photo" 2>errors || code=$?
[[ $code == 2 ]] || fail "without models the first program ends with $code"
grep -q '^models missing in nowhere: model01' errors || fail "it says: $(cat errors)"
code=0
mono FirstProgram.exe 2>errors || code=$?
[[ $code == 2 ]] || fail "without arguments the first program ends with $code"
grep -qx 'FirstProgram MODELS PHOTO...' errors || fail "it says: $(cat errors)"
for host in DotnetErrors DotnetOneNetwork; do
  mono "$host.exe" "$models" "$photo" "$here/nuget_package_test.sh" || fail "$host ends with $?"
done
