#!/usr/bin/env bash
# linkage_test.sh EXECUTABLE OBJECTS...: the executable exports its instance id, and the process's objects need
# nothing but the platform's symbols, the C library and the C++ runtime.
set -eu
executable=$1
shift

if ! nm -D --print-size "$executable" | grep -qE '^[0-9a-f]+ 0*4 [BD] kes_ext_instance_id$'; then
  echo "kes_ext_instance_id is not exported as 4 bytes of data:"
  nm -D --print-size "$executable" | grep kes_ || true
  exit 1
fi

platform='qmi_client_(notifier_init|get_service_list|init|send_msg_sync|message_decode|release)'
platform+='|(kesext_vs|nas|dms)_get_service_object_internal_v01'
platform+='|__android_log_print|property_[gs]et|_ZN19NativeDropBoxWriter7addTextEPKcS1_|device_path'
sanitizers='__(asan|ubsan|tsan|sanitizer)_.*|__tsan.*|__start_asan.*|__stop_asan.*'
runtime='_GLOBAL_OFFSET_TABLE_|__stack_chk_fail|__[a-z]+_chk|__errno_location|__dso_handle|_Zn[aw]m.*|_Zd[al]Pv.*|_ZSt7nothrow|_ZSt.*'

defined=$(nm --defined-only "$@" | awk 'NF==3 {print $3}' | sort -u)
needed=$(nm --undefined-only "$@" | awk 'NF==2 {print $2}' | sort -u)
libc=$(nm -D --defined-only "$(ldd "$executable" | awk '/libc\.so/ {print $3}')" | awk '{sub(/@.*/, "", $3); print $3}' | sort -u)
strangers=$(comm -23 <(echo "$needed") <(printf '%s\n%s\n' "$defined" "$libc" | sort -u) |
  grep -vxE "$platform|$sanitizers|$runtime" || true)
if [ -n "$strangers" ]; then
  printf 'The process needs symbols that no handset library gives:\n%s\n' "$strangers"
  exit 1
fi
echo "exported and needed symbols are as they should be"
