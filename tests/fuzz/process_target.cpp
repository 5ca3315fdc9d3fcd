// The process as a target: it runs from its start to the end of its requests. The first FUZZ_REQUESTS percent
// of an input are the parent's and the modem's answers, the rest the modem's indications and what else
// happens meanwhile.
#include <ftw.h>
#include <poll.h>
#include <sys/stat.h>

#include <atomic>

// The process, with its tables in sight.
#include "adam/reassembly.cpp"
#include "carrier/request_dispatcher.cpp"
#include "core/indication_routing.cpp"
#include "core/request_tables.cpp"
#define main runProcess
#define setuid(user) 0
#include "core/main.cpp"
#undef setuid
#undef main

#include "adam/adam_state.h"
#include "adam/log_names.h"
#include "core/ground/device_file.h"
#include "fuzz/fuzz.h"
#include "nam/nam_info.h"

using namespace kesext;

extern "C" ssize_t __real_write(int file, const void* bytes, size_t size);

namespace {

/// What this thread plays, and whether it gets no memory for messages.
thread_local fuzz::Input input;
thread_local bool without_memory = false;

/// Mostly 0, else an error.
int outcome() {
  return std::max<uint8_t>(input.byte(), 0xF8) - 0xF8;
}

// The parent. Its pipes lead nowhere; what is written is looked at on its way, and by the sanitizer.

// clang-format off
/// Payloads that handlers know, and limits.
constexpr uint32_t kPayloadSizes[] = {
    4, 0, 1, kSpcSize, kAkeySize, sizeof(TotOrder), sizeof(NamInfo), 160, sizeof(utils_req_msg_v01), kRdeDataMax,
    16 + kRdeDataMax, 16 + kRdeDataMax + 1, sizeof(RoamingListRequest), kRequestBufferSize,
};
// clang-format on

/// Until the first of them; before that, mostly all goes well.
fuzz::Input requests;
uint8_t request[kOemHookPayloadOffset];
size_t request_size = 0;
size_t answers = 0;

/// Makes up a record, its header of a row, in a cleared buffer. Its size, which is not 0.
size_t takeRecord(uint8_t (&record)[kRequestBufferSize]) {
  const uint8_t form = input.byte();
  const bool generic = form % 4 == 0;
  uint32_t id = generic ? input.of(genericHookTable).msgId : input.of(kCarrierTable).msgId;
  if (form % 4 == 1) id = input.of(cdmaHookFallbackTable).msgId;
  const uint32_t length = form >= 0xF0 ? input.take<uint32_t>() : input.of(kPayloadSizes);
  input.take(record, kOemHookPayloadOffset);
  if (form < 0xFC) storeLe32(record, generic ? swapBytes32(id) | record[0] % 4 : id);
  storeLe32(record + 4, generic ? swapBytes32(length) : length);
  const size_t header_size = generic ? kGenericHookHeaderSize : kOemHookPayloadOffset;
  const size_t size = std::min(sizeof record, header_size + length);
  input.take(record + header_size, std::min<size_t>(input.byte(), size - header_size));
  return form % 16 == 15 ? 1 + input.take<uint16_t>() % size : size;
}

void takeAnswer(const uint8_t* message, size_t size) {
  ++answers;
  uint32_t family = HOOK_FAMILY_CDMA;
  const uint32_t id = getOemHook(request, static_cast<int32_t>(request_size), &family);
  if (family == HOOK_FAMILY_GENERIC && id == HOOK_DATA_PLMN) return;  // has no header
  assert(size >= kGenericHookHeaderSize && std::memcmp(message, request, 4) == 0);
  const uint32_t length = loadLe32(message + 4);
  const size_t header_size = family == HOOK_FAMILY_CDMA ? kOemHookHeaderCount : kGenericHookHeaderSize;
  assert(size == (length == 0xFFFFFFFF ? kGenericHookHeaderSize : header_size + length));
}

// The modem, and others who are at its logs.

fuzz::Input indications;
/// Nobody looks into a client.
const auto client = reinterpret_cast<qmi_client_type>(&indications);
/// The thread of the indications, and those that it has started.
pthread_t threads[0x1000];
std::atomic<size_t> thread_count = 0;
/// How far the clock is ahead, in seconds.
int64_t clock_ahead = 0;
/// Of the packet before.
uint8_t package_id = 0;
uint8_t sequence_id = 0;

void playAny() {
  static constexpr uint32_t kOthers[] = {IND_CARRIER_VALUE, IND_LTE_ERROR, 0};
  static constexpr uint32_t kSizes[] = {0, 1, 2, 4, 32, sizeof(LteErrorIndication), 132, 232, 520};
  const uint32_t id = input.byte() % 4 == 0 ? input.of(kOthers) : input.of(unsolIndTable).indication_id;
  uint8_t bytes[sizeof(utils_ind_msg_v01)] = {};
  input.take(bytes, input.byte());
  handleUnsolIndication(client, id, bytes, input.of(kSizes), nullptr);
}

/// A packet, mostly the next one.
void playPacket() {
  static constexpr uint16_t kSizes[] = {kPacketPayloadMax, kPacketPayloadMax + 1, 4, 5, 1, 0, 300};
  const uint8_t form = input.byte();
  if (form >= 0xF0) package_id = input.byte();
  if (form / 16 == 0xE) sequence_id = input.byte();
  adam_packet packet{.package_id = package_id, .sequence_id = ++sequence_id};
  packet.last = form % 2;
  storeLe16(packet.size_le, input.of(kSizes));
  storeLe32(packet.payload, form % 4 < 2 ? input.of(kHeaders).header : input.take<uint32_t>());
  if (packet.last == kLastPacket) sequence_id = kFirstSequenceId - 1;
  uint8_t bytes[sizeof(utils_ind_msg_v01)] = {1};
  std::memcpy(bytes + offsetof(utils_ind_msg_v01, data), &packet, sizeof packet);
  handleUnsolIndication(client, IND_UTILITY, bytes, sizeof bytes, nullptr);
}

void removeFolder(const char* folder) {
  const auto visit = [](const char* path, const struct stat*, int, FTW*) { return std::remove(path); };
  nftw(DevicePath(folder).text(), visit, 4, FTW_DEPTH | FTW_PHYS);
}

/// Time passes, and others do what they like with the directory.
void playOthers() {
  static constexpr int64_t kAhead[] = {1, 2, 43'200, 86'401, 172'900, 345'800, -200'000, int64_t{1} << 60};
  static constexpr const char* kFull = "/data/adam/full.log";
  static constexpr const char* kPaths[] = {"/data/adam/.0001",         "/data/adam/.0002",
                                           "/data/adam/adam.new",      kFull,
                                           "/data/adam/~adam0000.log", kLogDirectory};
  const DevicePath link(input.of(kPaths));
  const uint8_t form = input.byte() % 8;
  if (form < 3) std::remove(link.text());
  if (form >= 4) clock_ahead = input.of(kAhead);
  if (form == 0) mkdir(link.text(), 0700);
  if (form == 1) (void)!symlink(input.of(kPaths), link.text());
  if (form == 2)
    (void)!ftruncate(DeviceFile(kFull, O_RDWR | O_CREAT, 0600).descriptor(), 0x1E00000 - input.byte());
  if (form == 3) removeFolder(kLogDirectory);
}

void* playIndications(void*) {
  static constexpr void (*kPlays[])() = {playPacket, playPacket, playPacket, playAny, playAny, playOthers};
  input = indications;
  while (input.left > 0) {
    without_memory = outcome() != 0;
    input.of(kPlays)();
  }
  return nullptr;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  static char root[] = "fuzz_XXXXXX";
  static const char* arguments[] = {"", "1001", "1002", "1003", "0"};
  static const bool ready = mkdtemp(root) != nullptr && setenv("HANDSET_ROOT", root, 1) == 0 &&
                            mkdir(DevicePath("/data").text(), 0700) == 0 &&
                            std::atexit([] { removeFolder("/"); }) == 0 &&
                            dup2(open("/dev/null", O_WRONLY), 1002) == 1002 && dup2(1002, 1003) == 1003;
  assert(ready);
  removeFolder(kLogDirectory);
  removeFolder("/dropbox");
  adam_state = {};
  without_memory = false;
  clock_ahead = package_id = sequence_id = 0;
  requests = {bytes, size * FUZZ_REQUESTS / 100};
  indications = {bytes + requests.left, size - requests.left};
  input = requests.byte() % 8 == 7 ? requests : fuzz::Input{};
  (void)runProcess(5, const_cast<char**>(arguments));
  for (size_t i = 0; i < thread_count; ++i)
    pthread_join(threads[i], nullptr);
  thread_count = 0;
  return 0;
}

// The link puts these in place of the calls that they are named for.
extern "C" {

int __wrap_qmi_client_notifier_init(qmi_idl_service_object_type, QmiSignal* signal, qmi_client_type*) {
  signal->sig_set = 1;
  return outcome();
}

int __wrap_qmi_client_get_service_list(qmi_idl_service_object_type, qmi_service_info* list, uint32_t*,
                                       uint32_t* num_services) {
  if (list == nullptr) *num_services = 1 + input.byte() % 4;
  return outcome();
}

int __wrap_qmi_client_init(const qmi_service_info*, qmi_idl_service_object_type, qmi_client_ind_cb ind_cb,
                           void*, qmi_client_os_params*, qmi_client_type* user_handle) {
  if (const int error = outcome(); error != 0) return error;
  *user_handle = client;
  if (ind_cb == nullptr || indications.left == 0) return 0;
  // The first may come before this returns.
  if (FUZZ_REQUESTS == 0) return playIndications(nullptr) != nullptr;
  return pthread_create(&threads[thread_count++], nullptr, playIndications, nullptr);
}

int __wrap_qmi_client_send_msg_sync(qmi_client_type, uint32_t, const void* sent, uint32_t sent_size,
                                    void* response, uint32_t response_size, uint32_t) {
  __real_write(1002, sent, sent_size);
  if (const int error = outcome(); error != 0) return error;
  const uint8_t form = input.byte();
  // What most results are, and kinds.
  const uint32_t first_word = form % 2;
  std::memset(response, form % 4 < 2 ? 0 : input.byte(), response_size);
  input.take(response, std::min<size_t>(response_size, form % 8 < 4 ? 0 : input.byte() % 128));
  if (form < 0xC0) std::memcpy(response, &first_word, std::min<size_t>(response_size, sizeof first_word));
  return 0;
}

int __wrap_poll(pollfd* waits, nfds_t, int) {
  // What writes too much to an element has no answer where there was no memory for the carrier's.
  const bool may_be_silent = request_size == 0 || (without_memory && loadLe32(request) == HOOK_RDE_WRITE);
  assert(answers == 1 || (answers == 0 && may_be_silent));
  answers = request_size = 0;
  if (requests.left > 0) input = std::exchange(requests, {});
  const uint8_t form = input.byte();
  without_memory = form % 16 == 15;
  waits->revents = form == 0xFE ? 0 : POLLIN;
  errno = EINTR;
  return form == 0xFD ? -1 : 1;
}

ssize_t __real_read(int file, void* bytes, size_t size);
ssize_t __wrap_read(int file, void* bytes, size_t size) {
  if (file != process_state.request_pipe) return __real_read(file, bytes, size);
  if (outcome() != 0) return -1;
  if (input.left == 0) return 0;
  uint8_t record[kRequestBufferSize] = {};
  request_size = takeRecord(record);
  std::memcpy(bytes, record, request_size);
  std::memcpy(request, bytes, sizeof request);
  return static_cast<ssize_t>(request_size);
}

ssize_t __wrap_write(int file, const void* bytes, size_t size) {
  const auto* message = static_cast<const uint8_t*>(bytes);
  if (file == STDERR_FILENO) return static_cast<ssize_t>(size);
  if (file == process_state.response_pipe) takeAnswer(message, size);
  if (file == process_state.unsolicited_pipe)
    assert(size >= kUnsolOverhead && size == kUnsolOverhead + loadLe32(message + sizeof(UnsolMessage) + 4));
  return outcome() != 0 ? -1 : __real_write(file, bytes, size);
}

void* __real_calloc(size_t count, size_t size);
void* __wrap_calloc(size_t count, size_t size) {
  return without_memory ? nullptr : __real_calloc(count, size);
}

using Run = void*(void*);
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, Run* run, void* argument);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, Run* run, void* argument) {
  // The process's are detached ones.
  const int error = __real_pthread_create(thread, nullptr, run, argument);
  if (error == 0 && attributes != nullptr) threads[thread_count++] = *thread;
  return error;
}

time_t __real_time(time_t* stored);
time_t __wrap_time(time_t*) {
  return __real_time(nullptr) + clock_ahead;
}

void __wrap_sync() {}

}  // extern "C"
