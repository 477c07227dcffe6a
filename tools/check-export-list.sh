#!/bin/sh
# check-export-list.sh - shows that every build type exports the same
# symbols: builds libproperties.so.1 as Debug and as Release in scratch
# directories and compares what each exports with abi/libproperties.symbols
# (made from RelWithDebInfo by check-abi.sh). The export list
# (cmake/libproperties.map) and -fvisibility-inlines-hidden are what make
# them agree; inline functions the compiler happens to emit in one build type
# and not in another would otherwise show up here.
set -eu

root=$(cd "$(dirname "$0")/.." && pwd)
scratch=$(mktemp -d "${TMPDIR:-/tmp}/libproperties-exports-XXXXXX")
trap 'rm -rf "$scratch"' EXIT INT TERM
jobs=$(nproc 2>/dev/null || echo 2)
status=0
for type in Debug Release; do
  cmake -S "$root" -B "$scratch/$type" -DCMAKE_BUILD_TYPE=$type \
    -DPROPERTIES_BUILD_TESTS=OFF -DPROPERTIES_BUILD_EXAMPLES=OFF >/dev/null
  cmake --build "$scratch/$type" -j "$jobs" --target properties >/dev/null
  nm -D --defined-only "$scratch/$type/libproperties.so.1" |
    awk '{ print $2, $3 }' | c++filt | LC_ALL=C sort -k2 -k1,1 -u \
    >"$scratch/$type.symbols"
  if diff -u "$root/abi/libproperties.symbols" "$scratch/$type.symbols" \
       >"$scratch/$type.diff"; then
    echo "check-export-list.sh: $type exports the baseline's" \
         "$(wc -l <"$scratch/$type.symbols") symbols"
  else
    echo "check-export-list.sh: $type exports other symbols than the" \
         "baseline (- baseline, + $type):"
    sed -n '/^[-+][^-+]/p' "$scratch/$type.diff"
    status=1
  fi
done
exit $status
