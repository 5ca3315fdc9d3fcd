#!/usr/bin/env bash
# linkage_test.sh [TRIPLE]: builds the process for a handset, against stand-ins of the handset's libraries, with
# TRIPLE-g++ (by default for this machine) in a throw-away folder, and looks at what came out: what it needs, what it
# exports, how it is hardened, how large it is, and that it is the same from wherever it is built. For aarch64-linux-gnu
# and arm-linux-gnueabihf the sources are also compiled as for Android (android_objects below).
set -euo pipefail
unset CXXFLAGS LDFLAGS
source=$(cd "$(dirname "$0")/.." && pwd)
triple=${1:-$(gcc -dumpmachine)}
size_max=$((110 * 1024))
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=false

# The handset's libraries and what the process may need of each, as docs/handset.md has them.
handset_libraries='
libqmi_cci qmi_client_notifier_init qmi_client_get_service_list qmi_client_init qmi_client_send_msg_sync
libqmi_cci qmi_client_message_decode qmi_client_release
libqmi_common_so
libqmikesext kesext_vs_get_service_object_internal_v01
libqmiservices nas_get_service_object_internal_v01 dms_get_service_object_internal_v01
liblog __android_log_print
libcutils property_get property_set
libadropbox _ZN19NativeDropBoxWriter7addTextEPKcS1_
'
libraries=$(awk 'NF {print $1}' <<<"$handset_libraries" | sort -u)
# What compilers call by themselves; it is linked in, but for the stack guard, which is the C library's.
compiler_support='_GLOBAL_OFFSET_TABLE_|__dso_handle|__stack_chk_guard|__aeabi_.*|__aarch64_.*'

# complain TEXT [LINES]: the test fails, and goes on to see what else is wrong.
complain() {
  printf '%s: %s\n' "$triple" "$1" >&2
  [ -z "${2:-}" ] || sed 's/^/  /' <<<"$2" >&2
  failed=true
}

# difference NAME-A LIST-A NAME-B LIST-B: the lines that only one of two lists has.
difference() {
  diff <(sort -u <<<"$2") <(sort -u <<<"$4") | sed -n "s/^</only $1:/p; s/^>/only $3:/p" || true
}

# The two lists of sources, CMake's and the one for the tree of a handset's maker, have every source.
check_sources() {
  local in_cmake in_blueprint in_folder wrong
  in_cmake=$(cd "$source/src" && grep -ohE '[a-z0-9_/]+\.cpp' CMakeLists.txt
    grep -ohE '[a-z0-9_/]+\.cpp' "$source/src/platform/handset/CMakeLists.txt" | sed 's,^,platform/handset/,')
  in_blueprint=$(sed -nE 's/^ *"([a-z0-9_/]+\.cpp)",$/\1/p' "$source/src/Android.bp")
  in_folder=$(cd "$source/src" && find . -name '*.cpp' -not -path './platform/host/*' | sed 's,^\./,,')
  wrong=$(difference 'in src' "$in_folder" 'in CMakeLists.txt' "$in_cmake")
  [ -z "$wrong" ] || complain 'src/CMakeLists.txt does not list the sources that there are' "$wrong"
  wrong=$(difference 'in src' "$in_folder" 'in Android.bp' "$in_blueprint")
  [ -z "$wrong" ] || complain 'src/Android.bp does not list the sources that there are' "$wrong"
  wrong=$(difference 'in linkage_test.sh' "$libraries" 'in Android.bp' \
    "$(sed -nE 's/^ *"(lib[a-z0-9_]+)",$/\1/p' "$source/src/Android.bp")")
  [ -z "$wrong" ] || complain 'src/Android.bp links other libraries' "$wrong"
}

make_libraries() {
  local library
  mkdir "$work/libraries"
  for library in $libraries; do
    awk -v library="$library" '$1 == library {for (i = 2; i <= NF; i++) print "void " $i "(void) {}"}' \
      <<<"$handset_libraries" |
      "$triple-gcc" -x c -shared -fPIC -nostdlib -Wl,-soname,"$library.so" - -o "$work/libraries/$library.so"
  done
}

# build SOURCE FOLDER "TARGETS" CMAKE-OPTION...
build() {
  local log=$work/build.log
  if ! { cmake -S "$1" -B "$2" -G Ninja -DKESEXT_PLATFORM=handset -DCMAKE_SYSTEM_NAME=Linux "${@:4}" &&
    ninja -C "$2" $3; } >"$log" 2>&1; then
    complain "building in $2 failed" "$(grep -vE '^(\[|-- |ninja:|FAILED:)| -o .* -c ' "$log" | head -20)"
    exit 1
  fi
}

# build_executable SOURCE FOLDER CMAKE-OPTION...
build_executable() {
  build "$1" "$2" qmi_kesext_hook -DCMAKE_CXX_COMPILER="$triple-g++" -DCMAKE_SYSTEM_PROCESSOR="${triple%%-*}" \
    -DKESEXT_HANDSET_LIBRARIES="$work/libraries" "${@:3}"
}

# check_needs FOLDER: the process's own objects need the handset's libraries and the C library.
check_needs() {
  local objects known needed strangers
  objects=("$1/src/libkesext.a" "$1/src/platform/handset/libplatform_handset.a"
    "$1/src/CMakeFiles/qmi_kesext_hook.dir/core/main.cpp.o")
  known=$({
    "$triple-nm" --defined-only "${objects[@]}" | awk 'NF == 3 {print $3}'
    awk '{for (i = 2; i <= NF; i++) print $i}' <<<"$handset_libraries"
    sed 's/#.*//' "$source/tests/libc_symbols.txt" | tr -s ' ' '\n'
  } | sort -u)
  needed=$("$triple-nm" --undefined-only "${objects[@]}" | awk 'NF == 2 {print $2}' | sort -u)
  strangers=$(comm -23 <(echo "$needed") <(echo "$known") | grep -vxE "$compiler_support" || true)
  [ -z "$strangers" ] ||
    complain "built in $1 it needs symbols that neither docs/handset.md nor tests/libc_symbols.txt has" "$strangers"
}

# check_exports EXECUTABLE HOW-BUILT: the instance id is what the handset's libraries look up, the rest stays inside.
check_exports() {
  local exported
  exported=$("$triple-nm" -D --defined-only --print-size "$1")
  grep -qE '^[0-9a-f]+ 0*4 [BD] kes_ext_instance_id$' <<<"$exported" ||
    complain "kes_ext_instance_id is not exported as 4 bytes of data $2" "$exported"
  exported=$(grep -v ' kes_ext_instance_id$' <<<"$exported" || true)
  [ -z "$exported" ] || complain "more than kes_ext_instance_id is exported $2" "$exported"
}

# check_hardening EXECUTABLE
check_hardening() {
  local dynamic segments undefined stack
  dynamic=$("$triple-readelf" -dW "$1")
  segments=$("$triple-readelf" -lW "$1")
  undefined=$("$triple-nm" -D --undefined-only "$1" | sed 's/@.*//')
  grep -q 'FLAGS_1.*PIE' <<<"$dynamic" && grep -q 'Elf file type is DYN' <<<"$segments" ||
    complain 'the executable is not position-independent (-fPIE, -pie)'
  grep -q 'GNU_RELRO' <<<"$segments" || complain 'relocated data stays writable (-z relro)'
  grep -qE '\(FLAGS\).*BIND_NOW|FLAGS_1.*NOW' <<<"$dynamic" ||
    complain 'symbols are bound late, so RELRO is partial (-z now)'
  stack=$(grep 'GNU_STACK' <<<"$segments" || true)
  grep -qE ' RW +' <<<"$stack" || complain 'the stack is executable (-z noexecstack)' "$stack"
  grep -q ' __stack_chk_fail$' <<<"$undefined" || complain 'nothing guards the stack (-fstack-protector-strong)'
  grep -qE ' __[a-z]+_chk$' <<<"$undefined" || complain 'nothing checks sizes of copies (_FORTIFY_SOURCE)'
  ! grep -q 'TEXTREL' <<<"$dynamic" || complain 'code is relocated (TEXTREL)'
  ! grep -qE 'RPATH|RUNPATH' <<<"$dynamic" ||
    complain 'libraries are looked for in a folder of their own' "$(grep -E 'RPATH|RUNPATH' <<<"$dynamic")"
}

# check_libraries EXECUTABLE: all seven and the C library. Its loader holds the stack guard on some processors.
check_libraries() {
  local wrong
  wrong=$(difference 'documented' "$(printf '%s.so\n' $libraries libc)" 'in the executable' \
    "$("$triple-readelf" -dW "$1" | sed -nE 's/.*NEEDED.*\[(.*)\]/\1/p' | sed 's/^libc\.so.*/libc.so/; /^ld-linux/d')")
  [ -z "$wrong" ] || complain 'the executable names other libraries than the documented ones' "$wrong"
}

# The sources as Android's own compiler sees them: clang's target, libc++'s headers and __ANDROID__. bionic's headers
# are in no Debian package, so below them are glibc's, of the triple's cross-compiler: as bionic's they have a 32-bit
# time_t on 32 bits, and an off_t that _FILE_OFFSET_BITS decides.
android_objects() {
  local target=$1 processor=$2 include=$work/include flags
  flags="-nostdinc++ -nostdlibinc -isystem /usr/lib/llvm-14/include/c++/v1"
  flags+=" -isystem $include -isystem /usr/$triple/include"
  # glibc asks for this one where floating-point numbers are passed as Android does it.
  mkdir -p "$include/gnu"
  touch "$include/gnu/stubs-soft.h"
  set -- 'kesext platform_handset src/CMakeFiles/qmi_kesext_hook.dir/core/main.cpp.o' -DCMAKE_CXX_COMPILER=clang++-14 \
    -DCMAKE_CXX_COMPILER_TARGET="$target" -DCMAKE_SYSTEM_PROCESSOR="$processor" \
    -DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY
  build "$source" "$work/$target" "$@" -DCMAKE_CXX_FLAGS="$flags"
  check_needs "$work/$target"
  found+=("compiles for $target")
  [ "$processor" = arm ] || return 0
  # Not every maker asks for large files.
  build "$source" "$work/$target-plain" "$@" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS="$flags -U_FILE_OFFSET_BITS"
  check_needs "$work/$target-plain"
  found+=("compiles for $target with a 32-bit off_t")
}

found=()
check_sources
make_libraries
build_executable "$source" "$work/first"
executable=$work/first/bin/qmi_kesext_hook
check_needs "$work/first"
check_libraries "$executable"
check_exports "$executable" 'with -fvisibility=hidden'
check_hardening "$executable"

"$triple-strip" -o "$work/stripped" "$executable"
size=$(stat -c %s "$work/stripped")
[ "$size" -le $size_max ] || complain "stripped it is $size bytes, more than $size_max"

mkdir -p "$work/another/folder"
cp -r "$source"/{CMakeLists.txt,cmake,docs,src} "$work/another/folder"
build_executable "$work/another/folder" "$work/another/folder/out"
"$triple-strip" -o "$work/another/stripped" "$work/another/folder/out/bin/qmi_kesext_hook"
cmp -s "$work/stripped" "$work/another/stripped" || complain 'built in another folder its stripped bytes are others'
cmp -s "$executable" "$work/another/folder/out/bin/qmi_kesext_hook" ||
  complain 'built in another folder its bytes are others'

exports='with -fvisibility=hidden'
# A maker's tree hides nothing by itself. ./test, which has its time to keep, is spared that.
check_visible_exports() {
  build_executable "$source" "$work/visible" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_VISIBILITY_PRESET=default
  check_exports "$work/visible/bin/qmi_kesext_hook" 'without -fvisibility=hidden'
  exports='with and without -fvisibility=hidden'
}
case $triple in
  aarch64-*)
    check_visible_exports
    android_objects aarch64-linux-android28 aarch64
    ;;
  arm-*)
    check_visible_exports
    android_objects armv7a-linux-androideabi28 arm
    ;;
esac

! $failed || exit 1
cat <<REPORT
$triple
  size       $size bytes stripped, of $size_max at most
  needs      $("$triple-readelf" -dW "$executable" | sed -nE 's/.*NEEDED.*\[(.*)\]/\1/p' | paste -sd' ')
  exports    kes_ext_instance_id alone, $exports
  hardened   PIE, full RELRO, no executable stack, stack protector, FORTIFY; no text relocation, no RPATH
  the same   from another folder, build id $("$triple-readelf" -n "$executable" | sed -n 's/.*Build ID: //p')
REPORT
[ ${#found[@]} -eq 0 ] || printf '  android    %s\n' "${found[@]}"
