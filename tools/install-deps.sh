#!/bin/sh
# Installs the Debian packages that building and testing need, if any are
# missing. Runs apt-get as root, or through sudo when that is available.
#   install-deps.sh            what `make demo` and `make test` need
#   install-deps.sh valgrind   and valgrind
#   install-deps.sh fuzz       and clang with its libFuzzer runtime
#   install-deps.sh clang      and clang (make clang)
#   install-deps.sh format     and clang-format 14, the version whose output
#                              the sources are checked against
#   install-deps.sh abi        and abigail-tools (tools/check-abi.sh)
#   install-deps.sh bench      and Google Benchmark with the libraries the
#                              benchmarks compare against
#   install-deps.sh deb        and the Debian packaging tools (make deb):
#                              build-essential, debhelper, dpkg-dev, lintian
set -eu

missing=""
need() {  # need PACKAGE TEST-COMMAND...
  pkg=$1; shift
  if ! "$@" >/dev/null 2>&1; then missing="$missing $pkg"; fi
}
installed() {  # installed PACKAGE: true if dpkg has it fully installed
  [ "$(dpkg-query -W -f='${Status}' "$1" 2>/dev/null)" = "install ok installed" ]
}

need cmake command -v cmake
need g++ command -v g++
need make command -v make
need libgtest-dev test -f /usr/include/gtest/gtest.h
need libgmock-dev test -f /usr/include/gmock/gmock.h
# The locale tests build a German locale from these sources.
need locales test -d /usr/share/i18n/locales
# The test of the installed tree builds a program through pkg-config.
need pkg-config command -v pkg-config
for extra in "$@"; do
  case "$extra" in
    valgrind) need valgrind command -v valgrind ;;
    fuzz)
      need clang command -v clang++
      need libclang-rt-14-dev sh -c 'ls /usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-*.a'
      ;;
    bench)
      need libbenchmark-dev test -f /usr/include/benchmark/benchmark.h
      need pkg-config command -v pkg-config
      need libinih-dev test -f /usr/include/ini.h
      need libsimpleini-dev test -f /usr/include/SimpleIni.h
      need libboost-dev test -f /usr/include/boost/property_tree/ini_parser.hpp
      need libglib2.0-dev test -f /usr/include/glib-2.0/glib.h
      ;;
    clang) need clang command -v clang++ ;;
    format) need clang-format-14 command -v clang-format-14 ;;
    abi) need abigail-tools command -v abidiff ;;
    deb)
      # dpkg-buildpackage checks build-essential along with Build-Depends.
      need build-essential installed build-essential
      need debhelper command -v dh
      need dpkg-dev command -v dpkg-buildpackage
      need lintian command -v lintian
      ;;
    *) echo "install-deps.sh: unknown extra '$extra'" >&2; exit 2 ;;
  esac
done

[ -z "$missing" ] && exit 0

echo "Installing missing packages:$missing"
if [ "$(id -u)" -eq 0 ]; then
  apt=""
elif command -v sudo >/dev/null 2>&1; then
  apt="sudo"
else
  echo "Please install as root: apt-get install$missing" >&2
  exit 1
fi
$apt apt-get update
# shellcheck disable=SC2086
DEBIAN_FRONTEND=noninteractive $apt apt-get install -y --no-install-recommends $missing
