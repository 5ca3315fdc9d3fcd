#include "support/fake_platform.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>

#include "platform/android_log.h"
#include "qmi/send.h"

namespace kesext_test {

std::vector<std::string> fake_log;
std::vector<FakeSend> fake_sends;
std::function<int32_t(const FakeSend&, uint8_t*)> fake_modem;
bool fake_out_of_memory = false;
std::optional<time_t> fake_time;
std::function<int(const std::string&)> fake_call_error;
std::vector<int> fake_polls;

void resetFakes() {
  fake_log.clear();
  fake_sends.clear();
  fake_out_of_memory = false;
  fake_time.reset();
  fake_call_error = nullptr;
  fake_polls.clear();
  fake_modem = [](const FakeSend&, uint8_t*) { return 0; };
}

}  // namespace kesext_test

int __android_log_print(int priority, const char*, const char* format, ...) {
  char text[8192];
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  kesext_test::fake_log.push_back((priority == ANDROID_LOG_DEBUG ? "D " : "E ") + std::string(text));
  return length;
}

// The messages to the parent are allocated with calloc; the link puts this in its place.
extern "C" void* __real_calloc(size_t count, size_t size);
extern "C" void* __wrap_calloc(size_t count, size_t size) {
  return kesext_test::fake_out_of_memory ? nullptr : __real_calloc(count, size);
}

// The link puts this in place of time.
extern "C" time_t __real_time(time_t* stored);
extern "C" time_t __wrap_time(time_t* stored) {
  const time_t now = kesext_test::fake_time ? *kesext_test::fake_time : __real_time(nullptr);
  if (stored != nullptr) *stored = now;
  return now;
}

// The link puts this in place of poll.
extern "C" int __real_poll(pollfd* waits, nfds_t count, int timeout);
extern "C" int __wrap_poll(pollfd* waits, nfds_t count, int timeout) {
  if (kesext_test::fake_polls.empty()) return __real_poll(waits, count, timeout);
  const int result = kesext_test::fake_polls.front();
  kesext_test::fake_polls.erase(kesext_test::fake_polls.begin());
  errno = EINTR;
  return result;
}

// The link puts these in place of the calls that may be made to fail.
static bool fails(const char* call) {
  const int error = kesext_test::fake_call_error ? kesext_test::fake_call_error(call) : 0;
  if (error != 0) errno = error;
  return error != 0;
}
extern "C" int __real_symlink(const char* target, const char* path);
extern "C" int __wrap_symlink(const char* target, const char* path) {
  return fails("symlink") ? -1 : __real_symlink(target, path);
}
extern "C" int __real_rename(const char* from, const char* to);
extern "C" int __wrap_rename(const char* from, const char* to) {
  return fails("rename") ? -1 : __real_rename(from, to);
}
// These two are so called with 64-bit offsets.
extern "C" int __wrap_stat64(const char* path, struct stat* status) {
  return fails("stat") ? -1 : fstatat(AT_FDCWD, path, status, 0);
}
extern "C" dirent* __real_readdir64(DIR* directory);
extern "C" dirent* __wrap_readdir64(DIR* directory) {
  return fails("readdir") ? nullptr : __real_readdir64(directory);
}

namespace kesext {

namespace {

int32_t fakeSend(uint32_t msg_id, const void* request, uint32_t request_length, void* response,
                 uint32_t response_length) {
  const auto* bytes = static_cast<const uint8_t*>(request);
  kesext_test::fake_sends.push_back({msg_id, {bytes, bytes + request_length}, response_length});
  return kesext_test::fake_modem(kesext_test::fake_sends.back(), static_cast<uint8_t*>(response));
}

}  // namespace

int32_t qmi_kesext_hook_send_msg_sync(uint32_t msg_id, const void* request, uint32_t request_length,
                                      void* response, uint32_t response_length) {
  return fakeSend(msg_id, request, request_length, response, response_length);
}

int32_t qmi_kesext_sprint_nas_send_msg_sync(uint32_t msg_id, const void* request, uint32_t request_length,
                                            void* response, uint32_t response_length) {
  return fakeSend(msg_id, request, request_length, response, response_length);
}

int32_t qmi_kesext_sprint_dms_send_msg_sync(uint32_t msg_id, const void* request, uint32_t request_length,
                                            void* response, uint32_t response_length) {
  return fakeSend(msg_id, request, request_length, response, response_length);
}

}  // namespace kesext
