#!/bin/sh
# build-deb.sh - builds the Debian packages libproperties1, libproperties-dev
# and propctl from a copy of the source tree, then checks them with lintian.
#
#   build-deb.sh OUT-DIR [JOBS]
#
# OUT-DIR (emptied first) receives the copy in OUT-DIR/src/libproperties-<v>/
# and, beside it as dpkg-buildpackage leaves them, the .deb, .buildinfo and
# .changes files; the working tree itself is not touched. The copy holds the
# files git tracks plus new files it does not ignore, so uncommitted changes
# are built too. Fails on any lintian error; warnings are shown.
# `make deb` runs it after `sh tools/install-deps.sh deb`.
set -eu

if [ $# -lt 1 ] || [ $# -gt 2 ]; then
  echo "usage: build-deb.sh OUT-DIR [JOBS]" >&2
  exit 2
fi
out=$1
jobs=${2:-2}
case "$jobs" in
  ''|*[!0-9]*) echo "build-deb.sh: JOBS must be a number, not '$jobs'" >&2; exit 2 ;;
esac

top=$(cd "$(dirname "$0")/.." && pwd)
version=$(dpkg-parsechangelog -l "$top/debian/changelog" -S Version)
source_name=$(dpkg-parsechangelog -l "$top/debian/changelog" -S Source)

rm -rf "$out"
mkdir -p "$out/src"
out=$(cd "$out" && pwd)
tree=$out/src/$source_name-$version

echo "== copy the source to $tree"
mkdir "$tree"
if git -C "$top" rev-parse --is-inside-work-tree >/dev/null 2>&1; then
  # Files deleted but not yet committed are still listed by git: skip them.
  (cd "$top" && git ls-files --cached --others --exclude-standard |
    while IFS= read -r f; do [ -e "$f" ] && printf '%s\n' "$f"; done) \
    >"$out/files"
  (cd "$top" && tar -cf - --no-recursion -T "$out/files") | tar -xf - -C "$tree"
else
  (cd "$top" && tar -cf - --exclude='./build*' --exclude='./obj-*' .) |
    tar -xf - -C "$tree"
fi

echo "== dpkg-buildpackage -us -uc -b -j$jobs"
(cd "$tree" && dpkg-buildpackage -us -uc -b "-j$jobs")

changes=$(ls "$out"/src/*.changes)
echo "== lintian $(basename "$changes")"
lintian --fail-on error "$changes"

echo "== packages"
ls -l "$out"/src/*.deb
