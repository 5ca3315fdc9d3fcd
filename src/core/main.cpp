#include <sys/types.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "carrier/baseband_properties.h"
#include "core/dispatch_loop.h"
#include "core/ground/log.h"
#include "core/ground/process_state.h"
#include "core/indication_routing.h"
#include "generic/rf_save.h"
#include "generic/sim_pin_notice.h"
#include "qmi/carrier_clients.h"
#include "qmi/vendor_client.h"

namespace {

/// The platform's radio user.
constexpr uid_t kRadioUid = 1001;
/// Request, response and unsolicited pipe, instance id.
constexpr int kArgumentsNeeded = 4;

/// Takes over the command line. False, after a log line, when it cannot be used.
bool readArguments(int argc, char** argv) {
  if (argc <= kArgumentsNeeded) {
    LOGE("Need %d args %d", kArgumentsNeeded, argc);
    return false;
  }
  auto& state = kesext::process_state;
  state.request_pipe = std::atoi(argv[1]);
  state.response_pipe = std::atoi(argv[2]);
  state.unsolicited_pipe = std::atoi(argv[3]);
  kes_ext_instance_id = std::atoi(argv[4]);
  LOGE("readfd=%d, writefd=%d, writeunsolfd=%d kes_ext_instance_id=%d", state.request_pipe,
       state.response_pipe, state.unsolicited_pipe, kes_ext_instance_id);
  if (state.request_pipe == -1 || state.response_pipe == -1 || state.unsolicited_pipe == -1) {
    LOGE("Invalid fds");
    return false;
  }
  return true;
}

/// Connects to the modem's services. False, after a log line, when one of them cannot be reached.
bool connectToModem() {
  if (const int result = kesext::qmi_kesext_sprint_client_init(); result != 0) {
    LOGE("main:qmi_kesext_sprint_client_init failed = %d", result);
    return false;
  }
  if (const int result = kesext::qmi_kesext_hook_client_init(kesext::handleUnsolIndication); result != 0) {
    LOGE("main:qmi_kesext_hook_client_t failed = %d", result);
    return false;
  }
  return true;
}

/// What is done once, before the first request. What belongs to the handset as a whole is the first
/// instance's to do.
void startUp() {
  const bool first_instance = kes_ext_instance_id == 0;
  if (kesext::notify_auto_verify_sim_pin() != 0)
    LOGE("[Warning] Failed notify the auto verify SIM PIN to BP");
  if (first_instance) kesext::kes_qmi_read_baseband_config_version();
  kesext::kes_qmi_read_lte_bc_config();
  if (first_instance) kesext::dhob_send_ready();
}

}  // namespace

int main(int argc, char** argv) {
  // A parent that has closed a pipe is a failed write, not the end; so is a file at its size limit.
  (void)std::signal(SIGPIPE, SIG_IGN);
  (void)std::signal(SIGXFSZ, SIG_IGN);
  LOGE("Starting kesext_client");
  (void)!setuid(kRadioUid);
  if (!readArguments(argc, argv) || !connectToModem()) return 0;
  startUp();
  kesext::serveRequests();
  return 0;
}
