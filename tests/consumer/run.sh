#!/bin/sh
# run.sh - installs a build of libproperties to a scratch prefix and builds a
# program against the installed tree, the two ways clients do:
#   1. the installed tree has the expected layout, and its headers compile
#      together as C++11 with only include/libproperties on the path;
#   2. CMake: find_package(libproperties) and libproperties::properties
#      (this directory's CMakeLists.txt);
#   3. pkg-config: c++ main.cpp $(pkg-config --cflags --libs libproperties).
# Both programs run with LD_LIBRARY_PATH set to the scratch prefix's libdir,
# as with any prefix outside the loader's search path: the installed
# libproperties.so.1 finds libTextNumbers.so.1 through it.
# Neither program may link libTextNumbers itself: it is libproperties' own
# dependency.
#
#   run.sh BUILD-DIR SOURCE-DIR SCRATCH-DIR
#
# SCRATCH-DIR is emptied first. Built with sanitizers, the programs are too.
set -eu

if [ $# -ne 3 ]; then
  echo "usage: run.sh BUILD-DIR SOURCE-DIR SCRATCH-DIR" >&2
  exit 2
fi
build=$(cd "$1" && pwd)
source=$(cd "$2" && pwd)
scratch=$3

fail() { echo "FAILED: $*" >&2; exit 1; }

# Runs a command with its output in a log, shown only when it fails.
quiet() {
  log=$scratch/last.log
  if ! "$@" >"$log" 2>&1; then
    cat "$log" >&2
    fail "$*"
  fi
}

cached() {  # cached VARIABLE: its value in the build's CMake cache
  sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"
}
cmake=$(cached CMAKE_COMMAND)
cxx=$(cached CMAKE_CXX_COMPILER)
libdir=$(cached CMAKE_INSTALL_LIBDIR)
sanitize=$(cached PROPERTIES_SANITIZE)
flags=""
[ -n "$sanitize" ] && flags="-fsanitize=$sanitize -fno-omit-frame-pointer"

rm -rf "$scratch"
mkdir -p "$scratch"
scratch=$(cd "$scratch" && pwd)
prefix=$scratch/prefix
case "$libdir" in
  /*) fail "CMAKE_INSTALL_LIBDIR is absolute ($libdir): cannot relocate" ;;
esac
lib=$prefix/$libdir
include=$prefix/include/libproperties

echo "== install to $prefix"
quiet "$cmake" --install "$build" --prefix "$prefix"

echo "== layout"
for name in properties TextNumbers; do
  if [ ! -f "$lib/lib$name.so.1.0.0" ] || [ -L "$lib/lib$name.so.1.0.0" ]; then
    fail "$lib/lib$name.so.1.0.0 is not a file"
  fi
  [ "$(readlink "$lib/lib$name.so.1")" = "lib$name.so.1.0.0" ] ||
    fail "lib$name.so.1 does not link to lib$name.so.1.0.0"
  [ "$(readlink "$lib/lib$name.so")" = "lib$name.so.1" ] ||
    fail "lib$name.so does not link to lib$name.so.1"
done
for file in "$include/Properties.h" "$include/TextNumbers.h" \
            "$lib/pkgconfig/libproperties.pc" \
            "$lib/cmake/libproperties/libpropertiesConfig.cmake" \
            "$lib/cmake/libproperties/libpropertiesConfigVersion.cmake" \
            "$lib/cmake/libproperties/libpropertiesTargets.cmake"; do
  [ -f "$file" ] || fail "$file is missing"
done
[ ! -e "$include/PropertyFile.h" ] || fail "internal header PropertyFile.h installed"

echo "== installed headers compile together as C++11"
all=$scratch/all-headers.cpp
for header in "$include"/*.h; do
  echo "#include \"$(basename "$header")\""
done >"$all"
quiet "$cxx" -std=c++11 -Wall -Wextra -Wpedantic -Werror -fsyntax-only \
  -I"$include" "$all"

needs_textnumbers() {  # needs_textnumbers PROGRAM: true if it links it itself
  readelf -d "$1" | grep -q 'NEEDED.*libTextNumbers'
}

echo "== CMake package: find_package(libproperties)"
quiet "$cmake" -S "$source/tests/consumer" -B "$scratch/cmake-build" \
  -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_EXE_LINKER_FLAGS="$flags"
found=$(sed -n 's/^libproperties_DIR:[A-Z]*=//p' \
  "$scratch/cmake-build/CMakeCache.txt")
[ "$found" = "$lib/cmake/libproperties" ] ||
  fail "found the package in '$found', not in $lib/cmake/libproperties"
quiet "$cmake" --build "$scratch/cmake-build"
needs_textnumbers "$scratch/cmake-build/consumer" &&
  fail "the CMake-built program links libTextNumbers itself"
mkdir "$scratch/cmake-work"
LD_LIBRARY_PATH=$lib "$scratch/cmake-build/consumer" "$scratch/cmake-work" ||
  fail "the CMake-built program"

echo "== pkg-config: libproperties.pc"
pc() { PKG_CONFIG_PATH=$lib/pkgconfig pkg-config "$@" libproperties; }
[ "$(pc --modversion)" = "$(cached CMAKE_PROJECT_VERSION)" ] ||
  fail "pkg-config --modversion says '$(pc --modversion)'"
[ "$(pc --variable=prefix)" = "$prefix" ] ||
  fail "pkg-config --variable=prefix says '$(pc --variable=prefix)'"
# libproperties.so.1 needs libTextNumbers.so.1, which the linker looks for
# on the library path (not -L), like the loader.
# shellcheck disable=SC2046,SC2086
LD_LIBRARY_PATH=$lib quiet "$cxx" -std=c++11 -Wall -Wextra -Wpedantic \
  -Werror $flags "$source/tests/consumer/main.cpp" \
  -o "$scratch/pkg-config-consumer" $(pc --cflags --libs)
needs_textnumbers "$scratch/pkg-config-consumer" &&
  fail "the pkg-config-built program links libTextNumbers itself"
mkdir "$scratch/pkg-config-work"
LD_LIBRARY_PATH=$lib "$scratch/pkg-config-consumer" "$scratch/pkg-config-work" ||
  fail "the pkg-config-built program"

echo "== the installed tree works both ways"
