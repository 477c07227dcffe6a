#!/bin/sh
# check-abi.sh - compares the binary interface of a build's libproperties.so.1
# with the committed baseline in abi/, and fails when it changed.
#
#   tools/check-abi.sh BUILD-DIR            compare (exit 1 on any change)
#   tools/check-abi.sh --update BUILD-DIR   rewrite the baseline from BUILD-DIR
#
# The baseline:
#   abi/libproperties.symbols  the exported dynamic symbols, demangled and
#                              sorted (nm -D --defined-only -C) with their nm
#                              type letter: the list cmake/libproperties.map
#                              lets out, and nothing else
#   abi/libproperties.suppr    what the description leaves out (see there)
#   abi/libproperties.abi      libabigail's description of the interface
#                              (abidw): every exported function and variable
#                              and the types it reaches, with their sizes,
#                              bases, members and offsets, and virtual tables
# Programs built against libproperties.so.1 rely on all of it (README,
# Compatibility). Any difference fails, also a compatible one such as an
# added function: a change that adds to the interface updates the baseline
# with --update in the same commit. abidiff's report says whether a change
# is incompatible.
#
# BUILD-DIR must hold a build of make's configuration: RelWithDebInfo (abidw
# reads the debug information), without sanitizers. Every build type exports
# the same symbols. Needs abigail-tools: sh tools/install-deps.sh abi
set -eu

usage() {
  echo "usage: check-abi.sh [--update] BUILD-DIR" >&2
  exit 2
}
update=no
if [ "${1:-}" = "--update" ]; then
  update=yes
  shift
fi
[ $# -eq 1 ] || usage
build=$1
root=$(cd "$(dirname "$0")/.." && pwd)
baseline=$root/abi/libproperties
suppressions=$baseline.suppr

for tool in abidw abidiff nm c++filt readelf; do
  if ! command -v $tool >/dev/null 2>&1; then
    echo "check-abi.sh: $tool is missing (sh tools/install-deps.sh abi)" >&2
    exit 2
  fi
done
if [ ! -f "$build/CMakeCache.txt" ]; then
  echo "check-abi.sh: $build is not a CMake build directory" >&2
  exit 2
fi
cached() {  # cached VARIABLE: its value in the build's CMake cache
  sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"
}
if [ "$(cached CMAKE_BUILD_TYPE)" != "RelWithDebInfo" ] ||
   [ -n "$(cached PROPERTIES_SANITIZE)" ]; then
  echo "check-abi.sh: $build is a $(cached CMAKE_BUILD_TYPE) build" \
       "with sanitizers '$(cached PROPERTIES_SANITIZE)';" \
       "compare a RelWithDebInfo build without sanitizers (make abi-check)" >&2
  exit 2
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT INT TERM

# The installed tree: the library as shipped, and the public headers, which
# tell abidw the public types from the internal ones.
# Only the library's components: the rest of the build need not be built.
for component in Runtime Development; do
  if ! cmake --install "$build" --prefix "$work/prefix" \
         --component $component >"$work/install.log" 2>&1; then
    cat "$work/install.log" >&2
    echo "check-abi.sh: cmake --install $build --component $component" \
         "failed (is it built?)" >&2
    exit 2
  fi
done
library=$work/prefix/$(cached CMAKE_INSTALL_LIBDIR)/libproperties.so.1
headers=$work/prefix/include/libproperties
if ! readelf -S "$library" | grep -q '\.debug_info'; then
  echo "check-abi.sh: $library has no debug information" >&2
  exit 2
fi

# Symbols: all of them. The export list keeps the standard library's
# template instances local, so any that shows up here is a mistake.
nm -D --defined-only "$library" | awk '{ print $2, $3 }' | c++filt |
  LC_ALL=C sort -k2 -k1,1 -u >"$work/symbols"

# Types: paths of the translation units are made relative to the source
# tree, so that every checkout writes the same file.
abidw --no-corpus-path --no-comp-dir-path --no-show-locs \
  --type-id-style hash --headers-dir "$headers" --drop-private-types \
  --suppressions "$suppressions" --out-file "$work/abi.raw" "$library"
sed "s|path='$root/|path='|" "$work/abi.raw" >"$work/abi"

if [ "$update" = yes ]; then
  cp "$work/symbols" "$baseline.symbols"
  cp "$work/abi" "$baseline.abi"
  echo "check-abi.sh: baseline written from $build:" \
       "$(wc -l <"$baseline.symbols") symbols," \
       "abi/libproperties.symbols and abi/libproperties.abi"
  exit 0
fi

for file in "$baseline.symbols" "$baseline.abi"; do
  if [ ! -f "$file" ]; then
    echo "check-abi.sh: no baseline $file (tools/check-abi.sh --update)" >&2
    exit 2
  fi
done

changed=no
if ! diff -u "$baseline.symbols" "$work/symbols" >"$work/symbols.diff"; then
  changed=yes
  echo "== Exported symbols changed (- baseline, + $build):"
  sed -n '/^[-+][^-+]/p' "$work/symbols.diff"
  echo
fi

status=0
abidiff --suppressions "$suppressions" "$baseline.abi" "$work/abi" \
  >"$work/abidiff" 2>&1 || status=$?
if [ $((status & 3)) -ne 0 ]; then
  cat "$work/abidiff" >&2
  echo "check-abi.sh: abidiff failed (exit $status)" >&2
  exit 2
fi
if [ "$status" -ne 0 ]; then
  changed=yes
  echo "== Types, layouts and functions changed (abidiff, baseline first):"
  cat "$work/abidiff"
  echo
fi

if [ "$changed" = yes ]; then
  # Only additions: no symbol lost, and abidiff counts nothing removed or
  # changed (a size, member, base or virtual-table change is a "Changed").
  if ! grep -q '^-[^-]' "$work/symbols.diff" &&
     ! grep 'changes summary: ' "$work/abidiff" |
       grep -Ev 'summary: 0 Removed, (0 Changed|[0-9]+ Added)' |
       grep -q .; then
    echo "check-abi.sh: libproperties.so.1 only adds to its interface" \
         "(compatible). If that is intended, update the baseline in the" \
         "same commit: tools/check-abi.sh --update $build"
  else
    echo "check-abi.sh: INCOMPATIBLE change of the interface of" \
         "libproperties.so.1: programs built against it would break."
  fi
  exit 1
fi
echo "check-abi.sh: interface of libproperties.so.1 unchanged" \
     "($(wc -l <"$work/symbols") symbols)"
