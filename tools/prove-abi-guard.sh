#!/bin/sh
# prove-abi-guard.sh - shows that check-abi.sh catches incompatible changes:
# in a scratch copy of the repository it adds a data member to a class, and
# then a virtual function to another, rebuilds the library each time and
# expects check-abi.sh to fail with "INCOMPATIBLE". The repository itself is
# not touched. Needs abigail-tools (sh tools/install-deps.sh abi).
set -eu

root=$(cd "$(dirname "$0")/.." && pwd)
scratch=$(mktemp -d "${TMPDIR:-/tmp}/libproperties-abi-proof-XXXXXX")
trap 'rm -rf "$scratch"' EXIT
git clone -q "$root" "$scratch/repo"
copy=$scratch/repo
jobs=$(nproc 2>/dev/null || echo 2)

build() {
  cmake -S "$copy" -B "$copy/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DPROPERTIES_BUILD_TESTS=OFF -DPROPERTIES_BUILD_EXAMPLES=OFF >/dev/null
  cmake --build "$copy/build" -j "$jobs" --target properties TextNumbers \
    >/dev/null
}

# expect_incompatible WHAT: the check must fail and call the change
# incompatible.
expect_incompatible() {
  if out=$(sh "$copy/tools/check-abi.sh" "$copy/build" 2>&1); then
    echo "prove-abi-guard.sh: $1 was NOT caught" >&2
    exit 1
  fi
  if ! printf '%s\n' "$out" | grep -q INCOMPATIBLE; then
    printf '%s\n' "$out" >&2
    echo "prove-abi-guard.sh: $1 failed the check, but not as incompatible" >&2
    exit 1
  fi
  echo "prove-abi-guard.sh: $1 caught as incompatible"
}

build
sh "$copy/tools/check-abi.sh" "$copy/build" >/dev/null

sed -i 's|^  IniPropertyFactory\* m_iniPropertyFactory;.*|&\n  int m_addedMember;|' \
  "$copy/Src/Properties.h"
grep -q m_addedMember "$copy/Src/Properties.h"
build
expect_incompatible "a data member added to Properties"

git -C "$copy" checkout -q -- Src/Properties.h
sed -i 's|^  virtual void IsValueValid(const propstring& value) = 0;|&\n  virtual void AddedVirtual();|' \
  "$copy/Src/Property.h"
grep -q AddedVirtual "$copy/Src/Property.h"
printf 'void Property::AddedVirtual() {}\n' >> "$copy/Src/Property.cpp"
build
expect_incompatible "a virtual function added to Property"
