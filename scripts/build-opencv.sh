#!/usr/bin/env bash
# build-opencv.sh [linux|windows]: OpenCV 4.6 with what it needs, as static libraries for this system (the
# default) or for 64-bit Windows, from Debian's own source packages. Prints the directory they are installed in,
# which later runs find in seconds; everything else that it says goes to standard error.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cache=${XDG_CACHE_HOME:-$HOME/.cache}/qorocv460
sources=$cache/sources
packages=(opencv libjpeg-turbo libpng1.6 protobuf libwebp tiff)

say() { echo "build-opencv: $*" >&2; }
fail() {
  say "$*"
  exit 1
}

system=${1:-linux}
case $system in
  linux)
    packages+=(zlib) # Debian's static one cannot go into a shared library
    toolFiles=()
    ;;
  windows)
    toolchain=$root/cmake/mingw-w64.cmake
    setjmpHeader=$root/cmake/windows/setjmp_without_unwinding.h
    toolFiles=("$toolchain" "$setjmpHeader")
    ;;
  *) fail "there is no recipe for $system; usage: build-opencv.sh [linux|windows]" ;;
esac
versions=$sources/$system-versions # a line for each package: the name of its .dsc

# --- Sources ------------------------------------------------------------------------------------------

# apt with lists of its own, in which the configured Debian archives stand as sources.
apt() { # PROGRAM SOURCES-LIST ARGUMENT...
  local program=$1 list=$2
  shift 2
  "$program" -o Dir::Etc::sourcelist="$list" -o Dir::Etc::sourceparts=/dev/null \
    -o Dir::State::lists="$sources/lists" -o Dir::Cache="$sources/apt-cache" \
    -o APT::Sandbox::User=root "$@"
}

listSources() {
  local options='' keyring=/usr/share/keyrings/debian-archive-keyring.gpg
  if [[ -f $keyring ]]; then
    options="[signed-by=$keyring] "
  fi
  # shellcheck disable=SC2016 # the $(…) are apt's
  apt-get indextargets --format "deb-src $options"'$(REPO_URI) $(CODENAME) $(COMPONENT)' \
    'Created-By: Packages' 'Origin: Debian' | sort --unique
}

# Fetches the newest version of a package whose files are all there, and prints the name of its .dsc. The
# files of a security version can be gone while it is still listed, and lie in the main archive instead.
fetch() { # PACKAGE
  local package=$1 version list dsc
  while read -r version; do
    for list in "$sources/all.list" "$sources/main.list"; do
      if apt apt-get "$list" --quiet=2 source --download-only "$package=$version" >/dev/null 2>&1; then
        dsc=${package}_${version#*:}.dsc
        [[ -f $dsc ]] && echo "$dsc" && return
      fi
    done
  done < <(apt apt-cache "$sources/all.list" showsrc --only-source "$package" |
    sed -n 's/^Version: //p' | sort --unique --version-sort --reverse)
  return 1
}

fetchAll() {
  local package
  mkdir -p "$sources/lists/partial" "$sources/apt-cache/archives/partial"
  listSources >"$sources/all.list"
  if [[ ! -s $sources/all.list ]]; then
    say 'apt knows of no Debian archive; perhaps it wants an apt-get update'
    return 1
  fi
  grep -v -e -security "$sources/all.list" >"$sources/main.list"
  apt apt-get "$sources/all.list" --quiet=2 update >&2 || return 1
  : >"$versions.new"
  for package in "${packages[@]}"; do
    (cd "$sources" && fetch "$package") >>"$versions.new" || return 1
  done
  mv "$versions.new" "$versions"
}

# --- Building -----------------------------------------------------------------------------------------

# What tells the systems apart, once it is known where things go.
chooseOptions() {
  # No path of this machine in messages.
  export CFLAGS="-ffile-prefix-map=$work/=" # which every CMake project of ours adds its toolchain's to
  if [[ $system == windows ]]; then
    export QOROCV460_WINDOWS_PREFIX=$prefix # which the toolchain reads
    local mingw=/usr/x86_64-w64-mingw32
    systemOptions=(-DCMAKE_TOOLCHAIN_FILE="$toolchain")
    CFLAGS+=" -include $setjmpHeader" # the codecs' way out of a corrupt picture
    zlib=("-DZLIB_LIBRARY=$mingw/lib/libz.a" "-DZLIB_INCLUDE_DIR=$mingw/include") # not the import library
    opencvOptions=(-DWITH_PTHREADS_PF=OFF)
  else
    # For a shared library that shows nothing of them. What lies in the prefix is found before the system's own.
    systemOptions=(-DCMAKE_POSITION_INDEPENDENT_CODE=ON -DCMAKE_VISIBILITY_INLINES_HIDDEN=ON
      "-DCMAKE_"{C,CXX}"_VISIBILITY_PRESET=hidden"
      -DCMAKE_INSTALL_LIBDIR:STRING=lib "-DCMAKE_PREFIX_PATH=$prefix")
    zlib=("-DZLIB_LIBRARY=$prefix/lib/libz.a" "-DZLIB_INCLUDE_DIR=$prefix/include")
    # For the processors that the distribution's OpenCV is for, with the same arithmetic.
    opencvOptions=(-DWITH_PTHREADS_PF=ON -DCPU_BASELINE=SSE2 -DCPU_BASELINE_DISABLE=SSE3
      "-DCPU_DISPATCH=SSE4_1;SSE4_2;AVX;FP16;AVX2;AVX512_SKX")
  fi
  export CXXFLAGS=$CFLAGS
}

# build NAME SOURCE OPTION...: configures, builds and installs one library.
build() {
  local name=$1 source=$2
  shift 2
  say "building $name"
  if ! { cmake -S "$source" -B "$work/build/$name" "${systemOptions[@]}" \
    -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF "$@" &&
    cmake --build "$work/build/$name" --parallel "$(nproc)" &&
    cmake --install "$work/build/$name"; } >"$work/$name.log" 2>&1; then
    tail -n 40 "$work/$name.log" >&2
    cp "$work/$name.log" "$cache/failed-$name.log"
    fail "building $name failed; all of its output is in $cache/failed-$name.log"
  fi
}

buildZlib() {
  sed -i 's/win32\/zlib1\.rc *#.*//' zlib-*/CMakeLists.txt # which Debian's sources leave out
  build zlib zlib-* -DCMAKE_C_VISIBILITY_PRESET=default # its own examples link the shared library
  rm "$prefix"/lib/libz.so* # nothing is to be linked to it
}

buildCodecs() {
  # Its assembly aligns the stack for itself; written as what the compiler gives, one check holds for all.
  sed -i 's/\bvmovdqa\b/vmovdqu/' libjpeg-turbo-*/simd/x86_64/*.asm
  build libjpeg-turbo libjpeg-turbo-* -DENABLE_SHARED=OFF -DWITH_TURBOJPEG=OFF
  build libpng libpng1.6-* -DPNG_SHARED=OFF -DPNG_TESTS=OFF "${zlib[@]}"
  build libwebp libwebp-* -DWEBP_BUILD_{ANIM_UTILS,CWEBP,DWEBP,GIF2WEBP,IMG2WEBP,VWEBP,WEBPINFO,WEBPMUX,EXTRAS}=OFF
  build tiff tiff-* -Dtiff-{tools,tests,docs,contrib,deprecated}=OFF \
    -D{zstd,lzma,jbig,webp,libdeflate,lerc}=OFF "${zlib[@]}"
  build protobuf protobuf-* -Dprotobuf_{BUILD_TESTS,BUILD_PROTOC_BINARIES,WITH_ZLIB,BUILD_SHARED_LIBS}=OFF
}

buildOpencv() {
  local source
  source=$(echo opencv-*)
  # A model for another face aligner would be downloaded, which nothing here uses.
  sed -i '/^ocv_download(/,/^)/d; /^if(NOT res)/,/^endif()/d' "$source/contrib/modules/face/CMakeLists.txt"
  # Its account of its build names directories and versions of this machine. Two builds are to be the same.
  sed -i 's/^#include "version_string\.inc"$/"OpenCV " CV_VERSION "\\n"/' "$source/modules/core/src/system.cpp"
  # Nor does it look for files where it was built and installed: nothing of ours asks it to.
  sed -i 's/\(#define OPENCV_\(INSTALL_PREFIX\|BUILD_DIR\)\) .*/\1 \\"\\"/' "$source/modules/core/CMakeLists.txt"
  build opencv "$source" \
    -DOPENCV_EXTRA_MODULES_PATH="$PWD/$source/contrib/modules" \
    -DBUILD_LIST=core,imgproc,imgcodecs,highgui,objdetect,dnn,face \
    -DBUILD_PROTOBUF=OFF -DPROTOBUF_UPDATE_FILES=ON -DProtobuf_PROTOC_EXECUTABLE=/usr/bin/protoc \
    -DWITH_{JPEG,PNG,TIFF,WEBP}=ON "${zlib[@]}" \
    -DBUILD_{JPEG,PNG,TIFF,WEBP,ZLIB,ITT}=OFF \
    -DBUILD_{TESTS,PERF_TESTS,EXAMPLES,DOCS,JAVA,opencv_apps,opencv_python3}=OFF \
    -DWITH_{OPENCL,FFMPEG,GSTREAMER,IPP,ITT,QUIRC,DIRECTX,MSMF,DSHOW,OPENEXR,JASPER,OPENJPEG,LAPACK,EIGEN}=OFF \
    -DWITH_{VTK,GTK,QT,1394,V4L,ADE,OPENGL,VA,VA_INTEL,TBB,OPENMP,HALIDE,VULKAN,CUDA}=OFF \
    -DOPENCV_GENERATE_SETUPVARS=OFF "${opencvOptions[@]}"
}

# What each library asks to be told of it goes with the product, and so do the names, versions and digests of
# the sources.
keepNotices() {
  local source dsc
  mkdir -p "$prefix/share/notices" "$prefix/share/sources"
  for source in opencv-* libjpeg-turbo-* libpng1.6-* protobuf-* libwebp-* tiff-*; do
    cp "$source/debian/copyright" "$prefix/share/notices/${source%%-[0-9]*}.txt"
  done
  if [[ $system == windows ]]; then
    cp /usr/share/doc/libz-mingw-w64-dev/copyright "$prefix/share/notices/zlib.txt"
    cp /usr/share/doc/mingw-w64-common/copyright "$prefix/share/notices/mingw-w64.txt"
    cp /usr/share/doc/gcc-mingw-w64-base/copyright "$prefix/share/notices/gcc-runtime.txt"
  else
    cp zlib-*/debian/copyright "$prefix/share/notices/zlib.txt"
  fi
  cp "$versions" "$prefix/share/notices/versions"
  while read -r dsc; do
    cp "$sources/$dsc" "$prefix/share/sources/"
  done <"$versions"
}

# --- Everything ---------------------------------------------------------------------------------------

mkdir -p "$sources"
exec 9>"$cache/lock"
flock 9 # two builds at once would do everything twice

if ! fetchAll; then
  [[ -s $versions ]] || fail "the sources of ${packages[*]} cannot be fetched"
  say "no newer sources can be looked for; going on with those fetched before"
fi

# The name follows from the sources and from what is done with them for this system.
prefix=PREFIX work=WORK
chooseOptions
key=$({
  cat "$versions" "${toolFiles[@]}"
  declare -f build buildZlib buildCodecs buildOpencv keepNotices
  declare -p CFLAGS systemOptions zlib opencvOptions | sed "s|$root/||g"
} | sha256sum | cut -c 1-16)
prefix=$cache/$system-$key
if [[ -d $prefix ]]; then
  echo "$prefix"
  exit 0
fi

# Installed under another name, and given its own once everything is there.
final=$prefix
work=$cache/building
trap 'rm -rf "$work"' EXIT
rm -rf "$work" # of a run that was killed
prefix=$work/prefix
chooseOptions
mkdir -p "$prefix"
cd "$work"
while read -r dsc; do
  dpkg-source --extract "$sources/$dsc" >"$work/extract.log" 2>&1 || fail "cannot unpack $dsc"
done <"$versions"
if [[ $system == linux ]]; then
  buildZlib
fi
buildCodecs
buildOpencv
keepNotices
# OpenCV's package names its codecs by where they were.
grep -rlZ --include='*.cmake' --include='*.pc' -F "$prefix" "$prefix" | xargs -0 sed -i "s|$prefix|$final|g"
mv "$prefix" "$final"
echo "$final"
