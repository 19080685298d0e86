# Installs the packages as users do and uses them. Sourced by ./test, whose `check` counts the results, and which says by
# `bits` whose modules are used.

# A folder with blanks and letters outside every 8-bit code page.
place="$PWD/build/unpacked/Stoffe und Phäsen 水"

pack_and_unpack() {
  make_packages || { tail -n 20 build/log/packing.log && return 1; }
  rm -rf build/unpacked
  mkdir -p "$place" build/unpacked/linux &&
    (cd build/unpacked && cmake -E tar xf ../packages/*-windows.zip && cmake -E tar xf ../packages/*-linux-*.tar.gz) &&
    mv build/unpacked/*-windows/* "$place" && mv build/unpacked/*-linux-*/* build/unpacked/linux
}

package_is_whole() {
  local file missing=0
  for file in {x64,x86}/{qscontainers.dll,qshostkit.dll,qs{containers,hostkit}.sxs.manifest,qscontainers.tlb,qsdb.exe} \
    include/qscontainers.{h,idl} database/purecmp1.{idx,dat,src} README.md docs/install.md examples/collection/collection.vbs; do
    [[ -s $place/$file ]] || { echo "no $file" && missing=1; }
  done
  return $missing
}

linux_package_works() {
  local root=build/unpacked/linux
  local database=$root/share/qscontainers/database
  "$root/bin/qsdb" doctor && "$root/bin/flash" "$database" &&
    cmake -S "$root/share/qscontainers/examples" -B build/unpacked/examples -G Ninja -DCMAKE_PREFIX_PATH="$PWD/$root" \
      -DCMAKE_CXX_COMPILER_LAUNCHER=ccache && cmake --build build/unpacked/examples --target first_steps &&
    build/unpacked/examples/first_steps "$database" build/unpacked/heptane.xml
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
  check "the Windows package is whole" package_is_whole
  check "the Linux package, and examples built with it" linux_package_works
  check "qsdb doctor misses a module on Linux" linux_doctor_misses libqscontainers.so
  check "qsdb doctor misses the arrays on Linux" linux_doctor_misses libqshostkit.so
}

# test_installing: the modules of one bitness, in every way and in every state that the doctor knows.
test_installing() {
  local folder=$place/x86 way state
  [[ $bits == 32 ]] || folder=$place/x64
  for way in for_all_users for_the_user without_registration between_apartments; do
    check "installed ${way//_/ }, $bits bits" in_fresh_prefix $way
  done
  for state in unregistered arrays_missing all_well other_bitness other_type_library moved_module; do
    check "qsdb doctor, ${state//_/ }, $bits bits" in_fresh_prefix $state
  done
}
