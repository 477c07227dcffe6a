#!/bin/sh
# run.sh - installs a build of libproperties to a scratch prefix and builds a
# program against the installed tree, the two ways clients do:
#   1. the installed tree has the expected layout, and its headers compile
#      together as C++11 with only include/libproperties on the path;
#   2. CMake: find_package(libproperties) with the targets
#      libproperties::properties and libproperties::TextNumbers (this
#      directory's CMakeLists.txt);
#   3. pkg-config: c++ main.cpp $(pkg-config --cflags --libs libproperties),
#      which links libproperties and libTextNumbers.
# main.cpp uses both libraries, so both programs link both. They run with
# LD_LIBRARY_PATH set to the scratch prefix's libdir, as with any prefix
# outside the loader's search path; the pkg-config program is also linked
# once more with an rpath to that libdir and runs without LD_LIBRARY_PATH.
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

links_both() {  # links_both PROGRAM: true if it needs both libraries
  readelf -d "$1" | grep -q 'NEEDED.*\[libproperties\.so\.1\]' &&
    readelf -d "$1" | grep -q 'NEEDED.*\[libTextNumbers\.so\.1\]'
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
links_both "$scratch/cmake-build/consumer" ||
  fail "the CMake-built program does not link both libraries"
mkdir "$scratch/cmake-work"
LD_LIBRARY_PATH=$lib "$scratch/cmake-build/consumer" "$scratch/cmake-work" ||
  fail "the CMake-built program"

echo "== pkg-config: libproperties.pc"
pc() { PKG_CONFIG_PATH=$lib/pkgconfig pkg-config "$@" libproperties; }
[ "$(pc --modversion)" = "$(cached CMAKE_PROJECT_VERSION)" ] ||
  fail "pkg-config --modversion says '$(pc --modversion)'"
[ "$(pc --variable=prefix)" = "$prefix" ] ||
  fail "pkg-config --variable=prefix says '$(pc --variable=prefix)'"
pc --libs | grep -q -- '-lTextNumbers' ||
  fail "pkg-config --libs does not link TextNumbers: '$(pc --libs)'"
# pkg-config alone is enough to link: no LD_LIBRARY_PATH here.
# shellcheck disable=SC2046,SC2086
quiet env -u LD_LIBRARY_PATH "$cxx" -std=c++11 -Wall -Wextra -Wpedantic \
  -Werror $flags "$source/tests/consumer/main.cpp" \
  -o "$scratch/pkg-config-consumer" $(pc --cflags --libs)
links_both "$scratch/pkg-config-consumer" ||
  fail "the pkg-config-built program does not link both libraries"
mkdir "$scratch/pkg-config-work"
LD_LIBRARY_PATH=$lib "$scratch/pkg-config-consumer" "$scratch/pkg-config-work" ||
  fail "the pkg-config-built program"

echo "== pkg-config with an rpath: runs without LD_LIBRARY_PATH"
# shellcheck disable=SC2046,SC2086
quiet env -u LD_LIBRARY_PATH "$cxx" -std=c++11 -Wall -Wextra -Wpedantic \
  -Werror $flags "$source/tests/consumer/main.cpp" \
  -o "$scratch/rpath-consumer" $(pc --cflags --libs) \
  -Wl,-rpath,"$(pc --variable=libdir)"
mkdir "$scratch/rpath-work"
env -u LD_LIBRARY_PATH "$scratch/rpath-consumer" "$scratch/rpath-work" ||
  fail "the pkg-config-built program with an rpath"

echo "== the installed tree works both ways"
