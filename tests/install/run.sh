#!/bin/sh
# run.sh package|pkgconfig|elsewhere|folder|debian SOURCE BUILD WORK
# Builds and runs a tiny host in WORK, against the library installed from BUILD or with SOURCE as a folder.
set -eu
way=$1 source=$2 build=$3 work=$4
here=$source/tests/install
rm -rf "$work"
mkdir -p "$work"
prefix=$work/prefix

fail() {
  echo "$1"
  exit 1
}

install_library() {
  "$CMAKE" --install "$build" --prefix "$prefix" >"$work/install.log" || fail "cmake --install failed"
}

configure_host() {
  host=$1 asked=$2
  shift 2
  "$CMAKE" -S "$here/$host" -B "$work/$host" -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$prefix" \
    ${LAUNCHER:+-DCMAKE_CXX_COMPILER_LAUNCHER="$LAUNCHER"} -DOXACORE_SOURCE="$source" -DASKED_VERSION="$asked" "$@"
}

# The host must not get at the headers of the source tree by chance.
check_host() {
  out=$("$1") || fail "the host ended with status $?"
  [ "$out" = "caught: Probe 3 is gone" ] || fail "the host says: $out"
}

with_package() {
  install_library
  configure_host host 2.1
  "$CMAKE" --build "$work/host"
  grep -q -e '-fnon-call-exceptions' "$work/host/compile_commands.json" || fail "the compile flag didn't reach the host"
  ! grep -q "$source/include" "$work/host/compile_commands.json" || fail "the host reads headers of the source tree"
  check_host "$work/host/host"
  check_versions
  check_tree
  check_printers
}

# A range of versions is one of one major version, for CMake as for hosts: it may end before the next one only.
check_versions() {
  found="2 2.0 2.1.6 2.1...<3 2.0...2.2 2.0...2.9 2.1.6...2.1.6"
  refused="3.0 1.9 2.9 2.1.7 2.0...2.1 2.0...<2.1.6 2.2...2.9 1.0...1.9 1.0...2.9 3.0...4.0"
  configure_host versions none -DASKED="$(echo "$found $refused" | tr ' ' ';')" >"$work/versions.log" || fail "versions"
  for version in $found; do echo "$version found"; done >"$work/expected"
  for version in $refused; do echo "$version refused"; done >>"$work/expected"
  diff "$work/expected" "$work/versions/outcome" || fail "other versions were accepted"
}

# gdb takes the printers in with the library, if that place is told to it.
check_printers() {
  place=$(find "$prefix/share/gdb/auto-load" -name '*-gdb.py')
  [ "$place" = "$prefix/share/gdb/auto-load$lib/libOxaCore.so.$VERSION-gdb.py" ] || fail "the printers lie in $place"
  if ! command -v gdb >/dev/null || gdb -nx -batch -ex 'python import gdb.printing' 2>&1 | grep -q .; then
    return
  fi
  gdb -nx -batch -iex "add-auto-load-safe-path $prefix" -iex "add-auto-load-scripts-directory $prefix/share/gdb/auto-load" \
    -ex 'info pretty-printer' "$lib/libOxaCore.so" >"$work/gdb.log" 2>&1
  grep -q '^  OxaCore$' "$work/gdb.log" || fail "gdb has no printers: $(cat "$work/gdb.log")"
}

# What lies in the prefix, to the file: the library in its three names, the headers, two packages.
check_tree() {
  lib=$(dirname "$(find "$prefix" -name 'libOxaCore.so')")
  [ "$(readlink "$lib/libOxaCore.so")" = libOxaCore.so.2 ] || fail "libOxaCore.so doesn't lead to the soname"
  [ "$(readlink "$lib/libOxaCore.so.2")" = "libOxaCore.so.$VERSION" ] || fail "the soname doesn't lead to the library"
  (cd "$source/include" && find . -name '*.h' | sort) >"$work/expected"
  (cd "$prefix/include" && find . -type f | sort) >"$work/installed"
  diff "$work/expected" "$work/installed" || fail "the headers differ from the public ones"
}

with_pkgconfig() {
  command -v pkg-config >/dev/null || exit 77
  install_library
  build_by_pkgconfig "$(dirname "$(find "$prefix" -name OxaCore.pc)")"
}

# build_by_pkgconfig FOLDER: with the file that lies there.
build_by_pkgconfig() {
  PKG_CONFIG_PATH=$1
  export PKG_CONFIG_PATH
  [ "$(pkg-config --modversion OxaCore)" = "$VERSION" ] || fail "pkg-config tells another version"
  "$CXX" -std=c++17 $(pkg-config --cflags OxaCore) "$here/host/host.cpp" -o "$work/plain" $(pkg-config --libs OxaCore)
  LD_LIBRARY_PATH=$(pkg-config --variable=libdir OxaCore)
  export LD_LIBRARY_PATH
  check_host "$work/plain"
}

# The folder of libraries is named whole, and lies outside of the prefix. Nothing is compiled anew.
with_elsewhere() {
  command -v pkg-config >/dev/null || exit 77
  elsewhere=$work/elsewhere/lib
  "$CMAKE" -S "$source" -B "$work/build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" \
    -DCMAKE_INSTALL_LIBDIR="$elsewhere" -DOXACORE_BUILD_TESTS=OFF -DOXACORE_BUILD_EXAMPLES=OFF \
    -DOXACORE_BUILD_BENCHMARKS=OFF -DOXACORE_BUILD_TOOLS=OFF >"$work/configure.log"
  cp -a "$build"/src/libOxaCore.so* "$work/build/src"
  build=$work/build
  install_library
  build_by_pkgconfig "$elsewhere/pkgconfig"
  configure_host host 2.1 -DOxaCore_DIR="$elsewhere/cmake/OxaCore"
  [ -e "$prefix/share/gdb/auto-load$elsewhere/libOxaCore.so.$VERSION-gdb.py" ] || fail "gdb doesn't find the printers"
}

# All of the library is compiled once more, by the flags of a host: without optimisation, for the time that takes.
with_folder() {
  configure_host folder none -DCMAKE_CXX_FLAGS_RELEASE=-O0 -DCMAKE_UNITY_BUILD=ON
  "$CMAKE" --build "$work/folder" --parallel 2
  check_host "$work/folder/host"
  [ ! -e "$work/folder/oxacore/tests" ] || fail "a host builds our tests"
}

# The Debian packages, of what is built already: what they say of themselves, and the host with them unpacked.
with_debian() {
  for tool in dpkg-deb dpkg-shlibdeps file; do
    command -v $tool >/dev/null || { echo "There is no $tool here."; exit 77; }
  done
  mkdir "$work/packages"
  (cd "$work/packages" && umask 022 &&
    "$(dirname "$CMAKE")/cpack" --config "$build/CPackConfig.cmake" -B "$work/packages") >"$work/cpack.log" 2>&1 ||
    fail "cpack failed: $(cat "$work/cpack.log")"
  major=${VERSION%%.*}
  library=liboxacore$major
  for name in "$library" liboxacore-dev oxacore-tools; do
    check_package "$name"
  done
  [ "$(field "$library" Recommends)" = "libdw1, tzdata" ] || fail "$library recommends something else"
  has_words "$(field "$library" Depends)" libc6 'libstdc++6' libnettle
  has_words "$(field liboxacore-dev Depends)" "$library (= $VERSION-1)" libboost-dev
  has_words "$(field oxacore-tools Depends)" "$library (= $VERSION-1)" libc6
  [ "$(cat "$work/$library/DEBIAN/triggers")" = "activate-noawait ldconfig" ] || fail "the linker's cache isn't told"
  [ "$(cat "$work/$library/DEBIAN/shlibs")" = "libOxaCore $major $library (>= $VERSION-1)" ] || fail "shlibs says something else"
  prefix=$work/root/usr
  configure_host host 2.1
  "$CMAKE" --build "$work/host"
  check_host "$work/host/host"
  ! find "$work/$library/usr/lib" -name 'libOxaCore.so' | grep . || fail "the link for builds is in the runtime package"
  LD_LIBRARY_PATH=$(dirname "$(find "$prefix" -name 'libOxaCore.so')")
  export LD_LIBRARY_PATH
  "$prefix/bin/oxatest" --help >/dev/null || fail "the unpacked oxatest doesn't run"
}

# check_package NAME: unpacks it into a folder of its own and into the common root, and looks at what every package needs.
check_package() {
  file=$work/packages/$1_$VERSION-1_$(dpkg --print-architecture).deb
  dpkg-deb -R "$file" "$work/$1"
  dpkg-deb -x "$file" "$work/root"
  ! dpkg-deb -c "$file" | grep -v -e '^drwxr-xr-x root/root' -e '^-rw-r--r-- root/root' -e '^-rwxr-xr-x root/root' \
    -e '^lrwxrwxrwx root/root' || fail "$1 has other owners or rights"
  (cd "$work/$1" && md5sum --quiet -c DEBIAN/md5sums) || fail "$1 has other sums"
  for paper in copyright changelog.gz changelog.Debian.gz; do
    [ -s "$work/$1/usr/share/doc/$1/$paper" ] || fail "$1 has no $paper"
  done
  for word in Maintainer Section Description; do
    [ -n "$(field "$1" $word)" ] || fail "$1 has no field $word"
  done
}

field() { dpkg-deb -f "$work/packages/$1_$VERSION-1_$(dpkg --print-architecture).deb" "$2"; }

# has_words TEXT WORD...
has_words() {
  text=$1
  shift
  for word in "$@"; do
    case $text in *"$word"*) ;; *) fail "'$word' isn't in '$text'" ;; esac
  done
}

with_"$way"
