# Installs the packages as users do and uses them. Sourced by ./test, whose `check` counts the results, and which says by
# `bits` whose modules are used.

# A folder with blanks and letters outside every 8-bit code page.
place="$PWD/build/unpacked/Stoffe und Phäsen 水"

# pack_and_unpack [windows-x86]
pack_and_unpack() {
  make_packages "$@" || { tail -n 20 build/log/packing.log && return 1; }
  rm -rf build/unpacked
  mkdir -p "$place" build/unpacked/linux &&
    (cd build/unpacked && cmake -E tar xf ../packages/*-windows.zip && cmake -E tar xf ../packages/*-linux-*.tar.gz) &&
    mv build/unpacked/*-windows/* "$place" && mv build/unpacked/*-linux-*/* build/unpacked/linux
}

# package_is_whole FOLDER...: that of Windows, with programs in these folders.
package_is_whole() {
  local folder file missing=0 files=(include/qscontainers.{h,hpp,idl} cmake/qscontainers-config{,-version}.cmake
    database/purecmp1.{idx,dat,src} README.md docs/install.md examples/collection/collection.vbs)
  for folder; do
    files+=("$folder"/{qscontainers.dll,qshostkit.dll,qs{containers,hostkit}.sxs.manifest,qscontainers.tlb,qsdb.exe})
  done
  for file in "${files[@]}"; do
    [[ -s $place/$file ]] || { echo "no $file" && missing=1; }
  done
  return $missing
}

# build_examples PACKAGE FOLDER ARGUMENT...: all hosts in C++, as a user of the package builds them.
build_examples() {
  cmake -S "$1" -B "$2" -G Ninja -DCMAKE_CXX_COMPILER_LAUNCHER=ccache "${@:3}" && cmake --build "$2"
}

# examples_agree PLACE RUN: what each of the built examples prints, started by RUN, is what that of the native build
# prints. PLACE makes a path one of their system.
examples_agree() {
  local example path arguments places
  for example in vapour_pressure first_steps property_table collection flash evaluation; do
    arguments=("$PWD/build/database") places=()
    case $example in
      first_steps) arguments+=("$PWD/build/unpacked/heptane.xml") ;;
      collection) arguments+=("$PWD/data") ;;
    esac
    for path in "${arguments[@]}"; do places+=("$("$1" "$path")"); done
    echo "$example"
    "$2" "$example" "${places[@]}" | tr -d '\r' | cmp - <("build/native/bin/$example" "${arguments[@]}") || return 1
  done
}

run_here() { "build/unpacked/examples/$1" "${@:2}"; }
run_there() { wine "build/unpacked/examples-$bits/$1.exe" "${@:2}"; }

linux_package_works() {
  local root=$PWD/build/unpacked/linux
  "$root/bin/qsdb" doctor && "$root/bin/flash" "$root/share/qscontainers/database" &&
    build_examples "$root/share/qscontainers/examples" build/unpacked/examples -DCMAKE_PREFIX_PATH="$root" &&
    examples_agree echo run_here
}

pkg_config_works() {
  local root=$PWD/build/unpacked/linux database flags
  local -x PKG_CONFIG_PATH=$root/lib/pkgconfig
  database=$(pkg-config --variable=database qscontainers) && flags=$(pkg-config --cflags --libs qscontainers) || return 1
  eval "g++ -std=c++20 examples/vapour_pressure/host.cpp $flags -o build/unpacked/vapour_pressure" &&
    LD_LIBRARY_PATH=$root/lib build/unpacked/vapour_pressure "$database" |
    cmp - <(build/native/bin/vapour_pressure build/database)
}

# A project that asks for a version finds the package, or does not when another major version is asked for.
version_is_found() {
  mkdir -p build/unpacked/version
  printf '%s\n' 'cmake_minimum_required(VERSION 3.25)' 'project(host NONE)' 'find_package(qscontainers ${WANTED} REQUIRED)' \
    >build/unpacked/version/CMakeLists.txt
  local wanted
  for wanted in 1.0 1.1 2.0; do
    if cmake -S build/unpacked/version -B build/unpacked/version/build -DWANTED=$wanted \
      -DCMAKE_PREFIX_PATH="$PWD/build/unpacked/linux"; then
      [[ $wanted == 1.* ]] || return 1
    else
      [[ $wanted == 2.* ]] || return 1
    fi
  done
}

# README's program is the example that the packages build.
readme_has_the_example() {
  sed -n '/^    #include <qscontainers.hpp>/,/^    }$/ { s/^    //; p }' README.md | cmp - examples/vapour_pressure/host.cpp
}

windows_examples_work() {
  build_examples "$place/examples" "build/unpacked/examples-$bits" -DCMAKE_PREFIX_PATH="$place" \
    -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/windows-${folder##*/}.cmake" &&
    examples_agree windows_path run_there &&
    wine "build/unpacked/examples-$bits/without_registration.exe" "$(windows_path "$place/database")"
}

# linux_doctor_misses FILE: without that file of the package it finds a fault and names the file.
linux_doctor_misses() {
  local file=build/unpacked/linux/lib/$1 text
  mv "$file" "$file.away"
  text=$(build/unpacked/linux/bin/qsdb doctor 2>&1)
  local code=$?
  mv "$file.away" "$file"
  echo "$text"
  [[ $code == 1 ]] && grep -q "$1 cannot be loaded" <<<"$text"
}

# in_fresh_prefix COMMAND...: with nothing registered; the prefix is stopped afterwards, which writes its registry.
in_fresh_prefix() {
  local -x WINEPREFIX=$PWD/build/wine-install status=0
  copy_prefix "$fresh" "$WINEPREFIX"
  "$@" || status=1
  wineserver -k
  return $status
}

# regsvr ARGUMENT...: on both modules of the package.
regsvr() {
  wine regsvr32 /s "$@" "$(windows_path "$folder/qscontainers.dll")" &&
    wine regsvr32 /s "$@" "$(windows_path "$folder/qshostkit.dll")"
}

script_works() {
  run_wine "$cscript" //nologo "$(windows_path "$place/examples/collection/collection.vbs")" \
    "$(windows_path "$place/database")" "$(windows_path "$place/data")" | tee build/log/installed.txt | grep 'end of collection'
}

# The registry is written when the prefix is stopped.
stop_prefix() { wineserver -k && wineserver -w; }

# Nothing in the registry names the modules, their files, classes or interfaces.
nothing_left() {
  stop_prefix
  wine reg query "HKCR\\CLSID" >/dev/null || return 1
  ! grep -inE "COQS|QsHostKit|qscontainers|$(grep -oP 'uuid\(\K[0-9A-F-]+' interfaces/qscontainers.idl | paste -sd '|')" \
    "$WINEPREFIX"/{system,user}.reg
}

for_all_users() {
  regsvr && script_works && regsvr /u && nothing_left
}

# Wine's HKEY_CLASSES_ROOT lacks the classes of the current user, which that of Windows shows; a copy of the prefix gets
# them there. Nor are those for 32-bit programs apart among the user's, where the doctor looks for them.
for_the_user() {
  local merge='s/HKEY_CURRENT_USER/HKEY_LOCAL_MACHINE/'
  [[ $bits == 64 ]] || merge+='; s/\\Classes\\CLSID/\\Classes\\Wow6432Node\\CLSID/'
  regsvr /n /i:user && stop_prefix && ! grep -iE 'COQS|QsHostKit|qscontainers' "$WINEPREFIX/system.reg" || return 1
  (
    copy_prefix "$WINEPREFIX" "$PWD/build/wine-merged"
    export WINEPREFIX=$PWD/build/wine-merged
    wine reg export 'HKCU\Software\Classes' "$(windows_path "$WINEPREFIX/user.txt")" /y >/dev/null
    iconv -f UTF-16 -t UTF-8 "$WINEPREFIX/user.txt" | sed "$merge" | iconv -f UTF-8 -t UTF-16 >"$WINEPREFIX/all.txt"
    wine reg import "$(windows_path "$WINEPREFIX/all.txt")" >/dev/null
    script_works && { [[ $bits == 32 ]] || doctor 0 "HKEY_CURRENT_USER, 64-bit programs" "administrator, services"; }
    result=$?
    wineserver -k
    exit $result
  ) && regsvr /u /n /i:user && nothing_left
}

without_registration() {
  wine "$folder/without_registration.exe" "$(windows_path "$place/database")" && nothing_left
}

# Calls between apartments go through the interfaces that the manifest names. Wine registers the type library then.
between_apartments() { wine "$folder/without_registration.exe" "$(windows_path "$place/database")" mta; }

# doctor CODE TEXT...: qsdb doctor ends with that code and says all these texts.
doctor() {
  local code=0 text wanted
  text=$(wine "${qsdb:-$folder/qsdb.exe}" doctor 2>&1) || code=$?
  echo "$text"
  [[ $code == "$1" ]] || return 1
  for wanted in "${@:2}"; do
    grep -qF -- "$wanted" <<<"$text" || { echo "it does not say: $wanted" && return 1; }
  done
}

library='HKLM\Software\Classes\TypeLib\{8915F1F0-5707-11D2-B8D8-00A0C986F9F7}'

set_value() { wine reg add "$1" /ve /d "$2" /f >/dev/null; }

unregistered() { doctor 1 "COQSCompound: not registered for $bits-bit programs" "type library 1.0: not registered" \
  "regsvr32 \"$(windows_path "$folder/qscontainers.dll")\""; }

arrays_missing() {
  wine regsvr32 /s "$(windows_path "$folder/qscontainers.dll")" &&
    doctor 1 "array of reals: not registered" "no phase can be created" "Register qshostkit.dll" "faults found: 3"
}

all_well() { regsvr && doctor 0 "HKEY_LOCAL_MACHINE" "All is well."; }

other_bitness() {
  local other=x86 classes='HKLM\Software\Classes'
  [[ $bits == 64 ]] || other=x64 classes+='\Wow6432Node'
  [[ -d $place/$other ]] || # any module will do
    { mkdir "$place/$other" && i686-w64-mingw32-g++-posix -shared -x c++ /dev/null -o "$place/$other/qscontainers.dll"; } ||
    return 1
  regsvr && set_value "$classes\\CLSID\\{4CA3B834-4CB3-11D2-B8D4-00A0C986F9F7}\\InprocServer32" \
    "$(windows_path "$place/$other/qscontainers.dll")" &&
    doctor 1 "COQSCompound (HKEY_LOCAL_MACHINE, $bits-bit programs)" \
      "is a $((96 - bits))-bit module, which $bits-bit programs cannot load" \
      "faults found: 1"
}

other_type_library() {
  sed 's/version(1.0)/version(2.0)/' interfaces/qscontainers.idl >build/unpacked/other.idl &&
    x86_64-w64-mingw32-widl -I/usr/include/wine/wine/windows -L"$(dirname "$(find /usr/lib -name stdole2.tlb | head -1)")" \
      --win$bits -t -o build/unpacked/other.tlb build/unpacked/other.idl &&
    regsvr && set_value "$library\\1.0\\409\\win$bits" "$(windows_path "$PWD/build/unpacked/other.tlb")" &&
    doctor 1 "has a type library of another version, 2.0" "faults found: 1" &&
    wine reg delete "$library\\1.0" /f >/dev/null && set_value "$library\\0.9" old &&
    doctor 1 "type library 0.9 (HKEY_LOCAL_MACHINE): another version"
}

moved_module() {
  regsvr && mv "$folder" "$place/moved" || return 1
  qsdb=$place/moved/qsdb.exe doctor 1 "$(windows_path "$folder/qscontainers.dll"): this file is not there; it was moved" \
    "regsvr32 \"$(windows_path "$place/moved/qscontainers.dll")\""
  local code=$?
  mv "$place/moved" "$folder"
  return $code
}

test_packages() {
  check "packages" pack_and_unpack
  check "the Windows package is whole" package_is_whole x64
  check "the Linux package, and examples built with it" linux_package_works
  check "a host built by pkg-config" pkg_config_works
  check "versions of the CMake package" version_is_found
  check "the program in README" readme_has_the_example
  check "qsdb doctor misses a module on Linux" linux_doctor_misses libqscontainers.so
  check "qsdb doctor misses the arrays on Linux" linux_doctor_misses libqshostkit.so
}

# test_installing: the modules of one bitness, in every way and in every state that the doctor knows.
test_installing() {
  local folder=$place/x86 way state
  [[ $bits == 32 ]] || folder=$place/x64
  check "examples built with the Windows package, $bits bits" in_fresh_prefix windows_examples_work
  for way in for_all_users for_the_user without_registration between_apartments; do
    check "installed ${way//_/ }, $bits bits" in_fresh_prefix $way
  done
  for state in unregistered arrays_missing all_well other_bitness other_type_library moved_module; do
    check "qsdb doctor, ${state//_/ }, $bits bits" in_fresh_prefix $state
  done
}
