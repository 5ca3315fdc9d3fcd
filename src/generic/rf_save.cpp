#include "generic/rf_save.h"

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <memory>

#include "core/ground/device_file.h"
#include "core/ground/log.h"
#include "core/ground/process_state.h"
#include "qmi/send.h"

namespace kesext {

namespace {

constexpr const char* kSharedRamPath = "/dev/kes_hob_ram";
constexpr const char* kPartitionPath = "/dev/block/bootdevice/by-name/dhob";

/// The region within the device, in bytes.
constexpr off_t kRegionOffset = 0xF540000;
constexpr size_t kRegionSize = 0x8000;

enum DhobMessage : uint8_t { kDhobFailed = 0, kDhobSaved = 1, kDhobReady = 0xFF };

struct DhobRequest {
  uint8_t message;
};
struct DhobResponse {
  uint8_t unread;
};
static_assert(sizeof(DhobRequest) == 1 && sizeof(DhobResponse) == 1);

constexpr VendorMessage<DhobRequest, DhobResponse> kDhob{0x0013};

/// Locked while a save runs; every save thread tries to lock it.
pthread_mutex_t save_in_progress = PTHREAD_MUTEX_INITIALIZER;

void sendToModem(DhobMessage message) {
  DhobResponse response;
  sendVendor(kDhob, DhobRequest{message}, response);
}

/// Writes the region to the partition in one write.
bool writePartition(const void* region) {
  const DeviceFile partition(kPartitionPath, O_RDWR | O_SYNC);
  if (!partition) {
    LOGE("dhob_write: Open hob block failed");
    return false;
  }
  const bool saved = write(partition.descriptor(), region, kRegionSize) == static_cast<ssize_t>(kRegionSize);
  if (saved)
    LOGE("dhob_write: Save RF to HOB successful");
  else
    LOGE("dhob_write: Write to hob block failed");
  return saved;
}

struct Unmap {
  void operator()(void* region) const { munmap(region, kRegionSize); }
};

bool saveRegion() {
  std::unique_ptr<void, Unmap> region;  // before the device, which is closed first
  const DeviceFile device(kSharedRamPath, O_RDWR);
  if (!device) {
    LOGE("dhob_write: Unable to open %s", kSharedRamPath);
    return false;
  }
  LOGE("dhob_write: kes_shared_ram open success");
  void* mapped =
      mmap(nullptr, kRegionSize, PROT_READ | PROT_WRITE, MAP_SHARED, device.descriptor(), kRegionOffset);
  if (mapped == MAP_FAILED) {
    LOGE("dhob_write: mmap failed");
    LOGE("dhob_write: base %#x", static_cast<unsigned>(kRegionOffset));
    LOGE("dhob_write: size %#x", static_cast<unsigned>(kRegionSize));
    return false;
  }
  region.reset(mapped);
  return writePartition(mapped);
}

void* runSave(void*) {
  dhob_write();
  return nullptr;
}

}  // namespace

void dhob_send_ready() {
  LOGE("dhob_write: Sending ready to received indications message to BP");
  sendToModem(kDhobReady);
}

int dhob_ind_handler(qmi_client_type, uint32_t, const uint8_t*, uint32_t, void*) {
  if (kes_ext_instance_id != 0) return 0;
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  pthread_t thread;
  if (const int error = pthread_create(&thread, &attributes, runSave, nullptr); error != 0)
    LOGE("dhob_ind_handler: no thread for the save, errno %d", error);
  pthread_attr_destroy(&attributes);
  return 0;
}

void dhob_write() {
  if (pthread_mutex_trylock(&save_in_progress) != 0) {
    LOGE("dhob_write: Duplicate request: Save to HOB already in progress");
    sendToModem(kDhobFailed);
    return;
  }
  const bool saved = saveRegion();
  sync();
  LOGE("dhob_write: Sending DYNHOB request to BP");
  sendToModem(saved ? kDhobSaved : kDhobFailed);
  pthread_mutex_unlock(&save_in_progress);
}

}  // namespace kesext
