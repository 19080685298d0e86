# What ./demo, ./test and ./bench share: the packages they need, quiet builds, and the Wine prefix they run in.
# Sourced by them from the repository's root.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mkdir -p build/log
export LC_ALL=C.UTF-8 TZ=UTC
# What a file includes is asked of the compiler, which saves ccache a reading by the preprocessor.
export CCACHE_DIR="${CCACHE_DIR:-$PWD/build/ccache}" CCACHE_SLOPPINESS=pch_defines,time_macros CCACHE_DEPEND=1
# Each command has a prefix of its own, so that what one registers is not there for another.
export WINEPREFIX="$PWD/build/wine-$(basename "$0")" WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml=

fail() {
  echo "$(basename "$0"): $*" >&2
  exit 1
}

# What is needed, as `file-or-command package`; a package is installed when one of its lines names what is not there.
needed='
cmake cmake
ninja ninja-build
ccache ccache
pkg-config pkg-config
g++ g++
x86_64-w64-mingw32-g++-posix g++-mingw-w64-x86-64-posix
i686-w64-mingw32-g++-posix g++-mingw-w64-i686-posix
x86_64-w64-mingw32-widl mingw-w64-tools
x86_64-w64-mingw32-windres binutils-mingw-w64-x86-64
wine wine
/usr/lib/wine/wine64 wine64
/usr/include/wine/wine/windows/oaidl.idl libwine-dev
/usr/src/googletest/CMakeLists.txt googletest
/usr/include/boost/math/tools/toms748_solve.hpp libboost-dev
/usr/include/nlohmann/json.hpp nlohmann-json3-dev
/usr/include/eigen3/Eigen/QR libeigen3-dev
/usr/include/CLI/CLI.hpp libcli11-dev
/usr/include/expat.h libexpat1-dev
/usr/include/benchmark/benchmark.h libbenchmark-dev
/usr/share/i18n/locales/de_DE locales
'
# What tools/wine32 needs besides.
needed_for_wine32='
make make
autoconf autoconf
flex flex
bison bison
xz xz-utils
'
# What ./test needs besides.
needed_for_browser='
chromium chromium
'
# What the Python wheels and their tests need besides.
needed_for_python='
/usr/bin/python3 python3
/usr/lib/python3/dist-packages/pip python3-pip
/usr/share/doc/python3-venv python3-venv
/usr/bin/pytest-3 python3-pytest
/usr/lib/python3/dist-packages/numpy python3-numpy
/usr/lib/python3/dist-packages/pandas python3-pandas
/usr/lib/python3/dist-packages/matplotlib python3-matplotlib
/usr/lib/python3/dist-packages/distributed python3-distributed
'
# What ./test deep needs besides.
needed_for_deep='
clang-tidy clang-tidy
/usr/bin/clang++-14 clang-14
/usr/lib/llvm-14/bin/llvm-cov llvm-14
/usr/lib/llvm-14/lib/clang/14.0.6/lib/linux/libclang_rt.fuzzer-x86_64.a libclang-rt-14-dev
'

missing_packages() {
  local what package
  while read -r what package; do
    [[ -n $what ]] || continue
    if [[ $what == /* ]]; then [[ -e $what ]]; else command -v "$what" >/dev/null; fi || echo "$package"
  done
}

# install_packages LIST...: those of the first list above, and of others.
install_packages() {
  local packages
  packages=$(missing_packages <<<"$needed$*" | sort -u | tr '\n' ' ')
  [[ -n $packages ]] || return 0
  command -v apt-get >/dev/null || fail "these Debian packages are needed: $packages"
  echo "installing $packages"
  local as_root=()
  [[ $(id -u) == 0 ]] || as_root=(sudo)
  {
    "${as_root[@]}" apt-get update &&
      "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $packages
  } >build/log/packages.log 2>&1 || fail "the packages cannot be installed, see build/log/packages.log"
}

# build PRESET TARGET...: configures when needed and builds; the log is shown only when that fails.
build() {
  local preset=$1 log=build/log/build-$1.log
  # The presets native and wheel compile the same, which ccache notices by paths that are relative.
  [[ $preset != native && $preset != wheel ]] || local -x CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
  shift
  echo "building $preset"
  {
    [[ -f build/$preset/build.ninja ]] || cmake --preset "$preset"
    cmake --build --preset "$preset" --target "$@"
  } >"$log" 2>&1 || {
    tail -n 40 "$log" >&2
    fail "building $preset failed, see $log"
  }
}

# copy_prefix FROM TO: a Wine prefix like another. The system's files are shared, the registry is not.
copy_prefix() {
  rm -rf "$2"
  cp -al "$1" "$2" && rm "$2"/*.reg && cp -p "$1"/*.reg "$2"
}

# make_wine_prefix: the prefix is made once, as a copy of $fresh, in which nothing of ours is ever registered.
fresh=build/wine-fresh
make_wine_prefix() {
  if [[ ! -f $fresh/system.reg ]]; then
    echo "making a Wine prefix"
    WINEPREFIX=$PWD/build/wine-making fill_prefix >build/log/wine.log 2>&1 ||
      fail "Wine does not start, see build/log/wine.log"
    mv build/wine-making "$fresh"
  fi
  [[ -f $WINEPREFIX/system.reg ]] || copy_prefix "$fresh" "$WINEPREFIX"
}

# 32-bit programs need their modules in the prefix, and the system's components registered.
fill_prefix() {
  local component
  wine wineboot --init && wineserver -w || return 1
  [[ -n ${WINEDLLPATH:-} ]] || return 0
  cp "$WINEDLLPATH"/i386-windows/* "$WINEPREFIX/drive_c/windows/syswow64/"
  for component in ole32 oleaut32 msxml3 msxml6 vbscript jscript scrrun; do
    wine 'C:\windows\syswow64\regsvr32.exe' /s "$component.dll" || return 1
  done
  wineserver -k && wineserver -w
}

# From here on Wine runs 32-bit programs as well, in prefixes of their own.
use_wine32() {
  WINEDLLPATH=$(tools/wine32)
  export WINEDLLPATH
  fresh=build/wine-fresh-x86 WINEPREFIX+=-x86
}

# windows_path FILE: what Windows programs call it.
windows_path() { winepath -w "$1" 2>>build/log/wine.log; }

# run_wine PROGRAM ARGUMENT...: Windows line ends are taken off.
run_wine() { wine "$@" 2>>build/log/wine.log | tr -d '\r'; }

# The bundled database in build/database, for native and Windows programs alike.
build_database() { build/native/bin/qsdb build --force data/compounds.json build/database >build/log/database.log; }

# same_lines EXAMPLE [PRESET]: the example's C++ host prints the same under Wine and on Linux, into
# build/log/EXAMPLE-{windows,linux}.txt. Needs build_database.
same_lines() {
  local windows linux log=build/log/$1
  windows=("$(windows_path "$PWD/build/database")") linux=(build/database)
  if [[ $1 == collection ]]; then
    windows+=("$(windows_path "$PWD/data")")
    linux+=(data)
  fi
  run_wine "build/${2:-windows-x64}/bin/$1.exe" "${windows[@]}" >"$log-windows.txt" &&
    "build/native/bin/$1" "${linux[@]}" >"$log-linux.txt" &&
    [[ -s $log-linux.txt ]] && cmp "$log-windows.txt" "$log-linux.txt"
}

# make_wheels PRESET...: the Python wheels in build/wheels, of the modules that the presets wheel and windows-x64 have
# built. Needs build_database. Debian's interpreter is the one whose packages the list above has.
python=/usr/bin/python3
make_wheels() {
  local preset
  rm -rf build/wheels
  for preset; do
    $python python/build_wheel.py build/wheels --modules build/$preset/bin --database build/database || return 1
  done >build/log/wheels.log 2>&1
}

# make_packages [windows-x86]: the packages in build/packages, of what the presets native, windows-x64 and the one named
# have built as qs_product.
make_packages() {
  local windows="$PWD/build/windows-x64;qscontainers;ALL;/${1:+;$PWD/build/$1;qscontainers;programs;/}"
  rm -rf build/packages
  {
    cpack --config build/native/CPackConfig.cmake -B build/packages &&
      cpack --config build/windows-x64/CPackConfig.cmake -B build/packages -D "CPACK_INSTALL_CMAKE_PROJECTS=$windows"
  } >build/log/packing.log 2>&1
}
