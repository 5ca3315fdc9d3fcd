#include "tools/log/line_table.h"

namespace tools {

namespace {

using enum LineKind;

constexpr LineRow kLines[] = {
    // what the modem reports by itself
    {"qmi_kesext_hook_ind_cb: msg_id=0x%x buf_len=%d cb_data=%s", indication},
    {"Handling unsol msg %d", report},
    {"Unsol resp 0x%x %s by Sprint handler.", report},
    {"Unsupported Indicator message %u", report, "it is not known and goes nowhere"},
    {"kes_qmi_sprint_hook_ind_cb: qmi_client_message_decode Failed(%d).", reportTrouble,
     "an indication does not decode: {0c}"},
    {"kes_qmi_sprint_hook_ind_cb: Unknown Indication from Modem.", report},
    {"convert_lte_error_to_ril_format: parameter is null!", reportTrouble, "there is no LTE error to report"},
    {"send_unsol_response: out of memory!", reportTrouble, "no memory for a message to the parent"},
    {"sendUnsolNotify: out of memory!", reportTrouble, "no memory for the test notification"},
    {"tunerIndHndlr: failed to decode 0x%x ind data for %d", reportTrouble,
     "the tuner event does not decode: {1c}"},
    {"tunerIndHndlr: dumping ind data[%d] 0x%x", report},
    {"tunerIndHndlr: tuner indication is: %d %d", report, "bytes {0} {1}"},
    {"tunerIndHndlr: out of memory!", reportTrouble, "no memory for the tuner event"},
    {"failed to decode pfp idl data", reportTrouble, "the PFP indication does not decode"},
    {"mypfp_ind_msg_v01: rat = %d , tbl_idx = %d data_size = %d", report, "rat {0}, table {1}"},
    {"sigcovIndHndlr: failed to decode ind data", reportTrouble, "the coverage report does not decode"},
    {"sigcovIndHndlr: out of memory!", reportTrouble, "no memory for the coverage report"},
    {"dataPlmnIndHndlr: out of memory!", reportTrouble, "no memory for the data PLMN's message"},
    {"utils_ind_msg_v01: respsize=%d, msgLen=%d", report, "passed on"},
    {"utilsIndHndlr: out of memory!", reportTrouble, "no memory for the utility data"},
    {"uploadbplogs:failed to decode idl data", reportTrouble, "the utility indication does not decode"},
    {"utilsIndHndlr: unknown indication type [%d]", report, "utility type {0} is not known; it goes nowhere"},
    {"dhob_write: Sending ready to received indications message to BP"},
    {"dhob_write: kes_shared_ram open success", report},
    {"dhob_write: Save RF to HOB successful", report, "the RF data are saved"},
    {"dhob_write: Sending DYNHOB request to BP", report},
    {"dhob_write: Duplicate request: Save to HOB already in progress", report,
     "the RF data are being saved already"},
    {"dhob_ind_handler: no thread for the save, errno %d", reportTrouble, "the RF data are not saved: {0e}"},
    {"dhob_write: Unable to open %s", reportTrouble, "the RF data are not saved: {0} does not open"},
    {"dhob_write: mmap failed", reportTrouble, "the RF data are not saved: they cannot be mapped"},
    {"dhob_write: %s 0x%x", report},
    {"dhob_write: Open hob block failed", reportTrouble,
     "the RF data are not saved: their partition does not open"},
    {"dhob_write: Write to hob block failed", reportTrouble,
     "the RF data are not saved: their partition does not take them"},

    // modem logs
    {"adamIndHndlr: header 0x%x", report, "a package begins"},
    {"adamIndHndlr: unknown header 0x%x", report, "its header 0x{0} is not known"},
    {"adamIndHndlr: received the last pkg of %d", report, "package {0} is complete"},
    {"adamIndHndlr: wrong pckage id [%d] received, cur [%d]", logTrouble,
     "package {1} is lost: a packet of {0} came in between"},
    {"adamIndHndlr: wrong seq id [%d] received, cur [%d]", logTrouble,
     "the package is lost: packet {0} came, not {1}"},
    {"adamIndHndlr: zero pckage size", logTrouble, "the package is lost: an empty packet"},
    {"adamIndHndlr: bad header", logTrouble, "the package is lost: too short for a header"},
    {"adamIndHndlr: bad pckage size [%d]", logTrouble, "the package is lost: a packet of {0} bytes"},
    {"adamIndHndlr: create parent dir %s failed, rc %d", logTrouble, "{0} cannot be made: {1e}"},
    {"adamIndHndlr: Unable to open %s, errno %d", logTrouble, "the packet is lost, {0} does not open: {1e}"},
    {"adamIndHndlr: Write to file %s failed, errno %d", logTrouble,
     "the packet is lost, {0} does not take it: {1e}"},
    {"adam_handle_kpi_data: send data out", report, "performance indicators passed on"},
    {"adam_handle_kpi_data: out of memory!", reportTrouble, "no memory for the performance indicators"},
    {"adam_get_index_filename: index name %s", report},
    {"adam_get_filename: get real name of %s failed, rc %d", report},
    {"adam_update_current_log: send %s to dropbox.", modemLog, "{0} handed to the drop-box"},
    {"adam: send to dropbox failed!.", logTrouble, "the drop-box does not take it"},
    {"adam_update_current_log: can't create new log.", logTrouble, "there is no new log"},
    {"adam_update_current_log: Unable to stat temp files, errno %d", logTrouble, "the package is gone: {0e}"},
    {"adam_update_current_log: Unable to get cur log file", modemLog, "there is no log"},
    {"adam_update_current_log: clean the whole dir!", report},
    {"adam_update_current_log: Unable to stat cur log file %d", logTrouble,
     "the log cannot be looked at: {0e}"},
    {"adam_update_current_log: Unable to open files, errno %d", logTrouble,
     "the package is not added, its file or the log does not open: {0e}"},
    {"adam_update_current_log: Unable to %s %s, errno %d", logTrouble, "cannot {0} {1}: {2e}"},
    {"adam_update_current_log: update %s succeed.", modemLog, "{0} grew by a package"},
    {"adam_create_new_log: create new log %s failed, errno %d", logTrouble, "{0} cannot be made: {1e}"},
    {"adam_create_new_log: create new %s.", modemLog, "{0} begun"},
    {"adam_create_new_log: remove old %s", modemLog, "{0} deleted, as there are two newer ones"},
    {"adam_reset_dir DONE!", modemLog, "the directory is emptied"},
    {"adam_reset_dir: can't open %s, errno %d", logTrouble, "{0} does not open: {1e}"},
    {"adam_reset_dir: can't read %s, errno %d", logTrouble, "{0} cannot be read: {1e}"},
    {"adam_clean_dir: can't open %s, errno %d", logTrouble, "{0} does not open: {1e}"},
    {"adam_clean_dir: can't read %s, errno %d", logTrouble, "{0} cannot be read: {1e}"},
    {"adam_clean_dir: unexpected %s", modemLog, "{0} deleted, which is neither log"},
};

}  // namespace

std::span<const LineRow> modemLines() {
  return kLines;
}

}  // namespace tools
