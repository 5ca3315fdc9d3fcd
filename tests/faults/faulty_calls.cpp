// Stands between the process and what it calls (--wrap): counts the calls, and lets those of the plan fail.
#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/epoll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>
#include <vector>

#include "faults/fault_plan.h"
#include "platform/host/link_results.h"
#include "platform/qmi_client.h"

extern "C" void* __real_mmap64(void* at, size_t size, int protection, int flags, int file, off_t offset);

namespace faults {
namespace {

constexpr uint32_t kShortWaitMs = 1500;
constexpr unsigned kLifetimeMaxS = 60;

enum Trait : unsigned { kPlain = 0, kInterruptible = 1, kTransfers = 2 };

FaultPlan* mapPlan() {
  static FaultPlan none{};
  const char* path = getenv(kPlanVariable);
  alarm(kLifetimeMaxS);  // one that hangs ends by its signal
  const long file = path != nullptr ? syscall(SYS_open, path, O_RDWR | O_CLOEXEC) : -1;
  if (file < 0) return &none;
  void* mapped = __real_mmap64(nullptr, sizeof(FaultPlan), PROT_READ | PROT_WRITE, MAP_SHARED,
                               static_cast<int>(file), 0);
  syscall(SYS_close, file);
  return mapped == MAP_FAILED ? &none : static_cast<FaultPlan*>(mapped);
}

FaultPlan& plan() {
  static FaultPlan* const mapped = mapPlan();
  return *mapped;
}

bool losesAnswers() {
  return plan().first_struck != 0 && kFaultClasses[plan().fault_class].group == Group::link;
}

bool canStrike(const FaultClass& fault, Group group, unsigned traits) {
  if (fault.group != group) return false;
  if (fault.effect == Effect::interrupted) return (traits & kInterruptible) != 0;
  if (fault.effect == Effect::shortened || fault.effect == Effect::reset) return (traits & kTransfers) != 0;
  return true;
}

/// Counts a call. The class that strikes it, with errno set, or none.
const FaultClass* strike(Group group, unsigned traits, const char* name) {
  FaultPlan& shared = plan();
  const FaultClass* struck = nullptr;
  for (size_t i = 0; i < kFaultClasses.size(); ++i) {
    if (!canStrike(kFaultClasses[i], group, traits)) continue;
    const uint32_t call = ++shared.calls[i];
    if (i == shared.fault_class && shared.first_struck != 0 && call >= shared.first_struck &&
        call - shared.first_struck < shared.struck_count)
      struck = &kFaultClasses[i];
  }
  if (struck == nullptr) return nullptr;
  if (shared.strikes++ == 0) strncpy(shared.struck_name, name, sizeof shared.struck_name - 1);
  if (struck->effect == Effect::killed) kill(getpid(), SIGKILL);
  errno = struck->error;
  return struck;
}

/// The log is never struck: it is what tells.
bool isLog(int descriptor) {
  return descriptor == STDERR_FILENO;
}

Group groupOf(int descriptor) {
  struct stat status {};
  if (fstat(descriptor, &status) != 0 || S_ISSOCK(status.st_mode)) return Group::link;
  return S_ISFIFO(status.st_mode) ? Group::pipe : Group::file;
}

}  // namespace
}  // namespace faults

using faults::Group;
using faults::strike;

// A call that fails as a whole: its group, traits, result, name, parameters, arguments, and what it gives
// then.
#define FAULTY(group, traits, result, name, parameters, arguments, failure)            \
  extern "C" result __real_##name parameters;                                          \
  extern "C" result __wrap_##name parameters {                                         \
    return strike(group, faults::traits, #name) ? (failure) : __real_##name arguments; \
  }

// clang-format off
FAULTY(Group::memory, kPlain, void*, malloc, (size_t size), (size), nullptr)
FAULTY(Group::memory, kPlain, void*, calloc, (size_t count, size_t size), (count, size), nullptr)
// The stand-in's new (std::nothrow), of an object and of an array.
FAULTY(Group::memory, kPlain, void*, _ZnwmRKSt9nothrow_t, (size_t size, const std::nothrow_t& tag), (size, tag), nullptr)
FAULTY(Group::memory, kPlain, void*, _ZnamRKSt9nothrow_t, (size_t size, const std::nothrow_t& tag), (size, tag), nullptr)

FAULTY(Group::file, kInterruptible, int, open64, (const char* path, int flags, mode_t mode), (path, flags, mode), -1)
FAULTY(Group::file, kPlain, FILE*, fopen64, (const char* path, const char* mode), (path, mode), nullptr)
FAULTY(Group::file, kPlain, char*, fgets, (char* line, int size, FILE* file), (line, size, file), nullptr)
FAULTY(Group::file, kPlain, int, stat64, (const char* path, struct stat* status), (path, status), -1)
FAULTY(Group::file, kPlain, int, fstatat64, (int folder, const char* path, struct stat* status, int flags), (folder, path, status, flags), -1)
FAULTY(Group::file, kInterruptible, int, fsync, (int file), (file), -1)
FAULTY(Group::file, kPlain, int, link, (const char* from, const char* to), (from, to), -1)
FAULTY(Group::file, kPlain, int, symlink, (const char* target, const char* path), (target, path), -1)
FAULTY(Group::file, kPlain, ssize_t, readlink, (const char* path, char* target, size_t size), (path, target, size), -1)
FAULTY(Group::file, kPlain, int, ftruncate64, (int file, off_t size), (file, size), -1)
FAULTY(Group::file, kPlain, int, rename, (const char* from, const char* to), (from, to), -1)
FAULTY(Group::file, kPlain, int, remove, (const char* path), (path), -1)
FAULTY(Group::file, kPlain, int, unlink, (const char* path), (path), -1)
FAULTY(Group::file, kPlain, int, unlinkat, (int folder, const char* path, int flags), (folder, path, flags), -1)
FAULTY(Group::file, kPlain, int, mkdir, (const char* path, mode_t mode), (path, mode), -1)
FAULTY(Group::file, kPlain, int, rmdir, (const char* path), (path), -1)
FAULTY(Group::file, kPlain, DIR*, opendir, (const char* path), (path), nullptr)
FAULTY(Group::file, kPlain, dirent*, readdir64, (DIR * folder), (folder), nullptr)
FAULTY(Group::file, kPlain, int, fchown, (int file, uid_t user, gid_t group), (file, user, group), -1)
FAULTY(Group::file, kPlain, int, fchmod, (int file, mode_t mode), (file, mode), -1)
FAULTY(Group::file, kPlain, int, mkostemp64, (char* path, int flags), (path, flags), -1)
FAULTY(Group::file, kPlain, void*, mmap64, (void* at, size_t size, int protection, int flags, int file, off_t offset), (at, size, protection, flags, file, offset), MAP_FAILED)

FAULTY(Group::link, kPlain, int, socket, (int domain, int type, int protocol), (domain, type, protocol), -1)
FAULTY(Group::link, kPlain, int, setsockopt, (int socket, int level, int option, const void* value, socklen_t size), (socket, level, option, value, size), -1)
FAULTY(Group::link, kInterruptible, int, connect, (int socket, const sockaddr* address, socklen_t size), (socket, address, size), -1)
FAULTY(Group::link, kInterruptible, int, ppoll, (pollfd * waits, nfds_t count, const timespec* limit, const sigset_t* mask), (waits, count, limit, mask), -1)
FAULTY(Group::link, kPlain, int, epoll_create1, (int flags), (flags), -1)
FAULTY(Group::link, kPlain, int, epoll_ctl, (int epoll, int operation, int file, epoll_event* event), (epoll, operation, file, event), -1)
FAULTY(Group::link, kInterruptible, int, epoll_wait, (int epoll, epoll_event* events, int count, int timeout), (epoll, events, count, timeout), -1)
FAULTY(Group::link, kPlain, int, timerfd_create, (int clock, int flags), (clock, flags), -1)
FAULTY(Group::link, kPlain, int, timerfd_settime, (int timer, int flags, const itimerspec* time, itimerspec* before), (timer, flags, time, before), -1)
FAULTY(Group::link, kPlain, int, eventfd, (unsigned value, int flags), (value, flags), -1)
FAULTY(Group::link, kPlain, int, ioctl, (int file, unsigned long request, int* value), (file, request, value), -1)
FAULTY(Group::thread, kPlain, int, pthread_create, (pthread_t * thread, const pthread_attr_t* attributes, void* (*run)(void*), void* argument), (thread, attributes, run, argument), EAGAIN)
// Of these only the dispatch loop's is on a pipe.
FAULTY(faults::groupOf(waits->fd) == Group::pipe ? Group::pipe : Group::link, kInterruptible, int, poll, (pollfd * waits, nfds_t count, int timeout), (waits, count, timeout), -1)
// clang-format on

// Transfers, which may be shortened. Of a message on the link, its second part is.
#define FAULTY_TRANSFER(name, Bytes)                                                                       \
  extern "C" ssize_t __real_##name(int file, Bytes bytes, size_t size);                                    \
  extern "C" ssize_t __wrap_##name(int file, Bytes bytes, size_t size) {                                   \
    if (faults::isLog(file)) return __real_##name(file, bytes, size);                                      \
    const auto* fault = strike(faults::groupOf(file), faults::kInterruptible | faults::kTransfers, #name); \
    if (fault != nullptr && fault->effect != faults::Effect::shortened) return -1;                         \
    return __real_##name(file, bytes, fault != nullptr ? size / 2 : size);                                 \
  }
FAULTY_TRANSFER(read, void*)
FAULTY_TRANSFER(write, const void*)

extern "C" ssize_t __real_recv(int socket, void* bytes, size_t size, int flags);
extern "C" ssize_t __wrap_recv(int socket, void* bytes, size_t size, int flags) {
  const auto* fault = strike(Group::link, faults::kInterruptible | faults::kTransfers, "recv");
  if (fault != nullptr && fault->effect != faults::Effect::shortened) return -1;
  const ssize_t received = __real_recv(socket, bytes, size, flags);
  return fault != nullptr && received > 0 ? received / 2 : received;
}

extern "C" ssize_t __real_sendmsg(int socket, const msghdr* message, int flags);
extern "C" ssize_t __wrap_sendmsg(int socket, const msghdr* message, int flags) {
  const auto* fault = strike(Group::link, faults::kInterruptible | faults::kTransfers, "sendmsg");
  if (fault != nullptr && fault->effect != faults::Effect::shortened) return -1;
  if (fault != nullptr) message->msg_iov[1].iov_len /= 2;
  return __real_sendmsg(socket, message, flags);
}

// What is waited a second for comes at once, or not at all.
extern "C" int __real_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                             const timespec* deadline);
extern "C" int __wrap_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                             const timespec* /*deadline*/) {
  const auto* fault = strike(Group::thread, faults::kPlain, "pthread_cond_timedwait");
  if (fault != nullptr) return EINVAL;
  timespec soon{};
  clock_gettime(CLOCK_REALTIME, &soon);
  soon.tv_nsec += 2'000'000;
  if (soon.tv_nsec > 999'999'999) soon = {.tv_sec = soon.tv_sec + 1, .tv_nsec = soon.tv_nsec - 1'000'000'000};
  return __real_pthread_cond_timedwait(condition, mutex, &soon);
}

extern "C" time_t __real_time(time_t* stored);
extern "C" time_t __wrap_time(time_t* stored) {
  const auto* fault = strike(Group::clock, faults::kPlain, "time");
  const time_t now = __real_time(nullptr) + (fault != nullptr ? fault->error : 0);
  if (stored != nullptr) *stored = now;
  return now;
}

extern "C" int __real_gettimeofday(timeval* now, void* zone);
extern "C" int __wrap_gettimeofday(timeval* now, void* zone) {
  const auto* fault = strike(Group::clock, faults::kPlain, "gettimeofday");
  const int result = __real_gettimeofday(now, zone);
  if (fault != nullptr) now->tv_sec += fault->error;
  return result;
}

extern "C" qmi_client_error_type __real_qmi_client_send_msg_sync(qmi_client_type, uint32_t, const void*,
                                                                 uint32_t, void*, uint32_t, uint32_t);
extern "C" qmi_client_error_type __wrap_qmi_client_send_msg_sync(qmi_client_type client, uint32_t id,
                                                                 const void* request, uint32_t request_size,
                                                                 void* response, uint32_t response_size,
                                                                 uint32_t timeout) {
  const auto* fault = strike(Group::exchange, faults::kPlain, "qmi_client_send_msg_sync");
  // An answer that a fault may lose is not to be waited for.
  if (faults::losesAnswers()) timeout = std::min<uint32_t>(timeout, faults::kShortWaitMs);
  if (fault == nullptr)
    return __real_qmi_client_send_msg_sync(client, id, request, request_size, response, response_size,
                                           timeout);
  if (fault->effect == faults::Effect::refused) return fault->error;
  if (fault->effect == faults::Effect::late)
    return __real_qmi_client_send_msg_sync(client, id, request, request_size, response, response_size, 0);
  std::vector<char> lost(response_size);
  __real_qmi_client_send_msg_sync(client, id, request, request_size, lost.data(), response_size, timeout);
  return fault->effect == faults::Effect::undecoded ? host::kNotDecoded : host::kTimedOut;
}
