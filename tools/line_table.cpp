#include "tools/line_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <utility>
#include <vector>

#include "platform/host/link_results.h"

namespace tools {

namespace {

using enum LineKind;

constexpr LineRow kLines[] = {
    // start and end
    {"Starting kesext_client", started},
    {"readfd=%d, writefd=%d, writeunsolfd=%d kes_ext_instance_id=%d", arguments, "instance {3}"},
    {"Need %d args %d", notStarted, "it was started with too few arguments"},
    {"Invalid fds", notStarted, "it was started without pipes"},
    {"sprint_client_init: qmi_client_notifier_init"},
    {"sprint_client_init: qmi_client_notifier_init failed. rc = %d", trouble,
     "the modem's services cannot be watched for: {0c}"},
    {"sprint_client_init: qmi_client_get_service_list() returned %d num_services = %d"},
    {"sprint_client_init: wait for server to come up.", waits},
    {"sprint_client_init: qmi_client_get_service_list() returned 0 num_entries = %d num_services = %d"},
    {"sprint_client_init: qmi_client_get_service_list() returned %d num_entries = %d num_services = %d",
     trouble, "a service of the modem is not there: {0c}"},
    {"sprint_client_init: NAS"},
    {"sprint_client_init: DMS"},
    {"sprint_client_init: Unknown", trouble, "a service that is not known was asked for"},
    {"sprint_client_init: kesext_hook_get_serivce_object failed.", trouble,
     "there is no description of a service"},
    {"sprint_client_init: qmi_client_init failed. rc = %d", trouble,
     "a service of the modem refuses the connection: {0c}"},
    {"sprint_client_init Succeeded"},
    {"qmi_kesext_sprint_client_init_with_type: Try (%d): Client init fail. rc = %d", trouble,
     "attempt {0} to connect failed: {1c}"},
    {"qmi_kesext_sprint_client_init: NAS Client Init rc: %d"},
    {"qmi_kesext_sprint_client_init: DMS Client Init rc: %d"},
    {"main:qmi_kesext_sprint_client_init failed = %d", notStarted,
     "the network or the device service of the modem cannot be reached: {0c}"},
    {"qmi_kesext_hook_client_init: kesext_hook_get_serivce_object"},
    {"qmi_kesext_hook_client_init: kesext_hook_get_serivce_object failed.", trouble,
     "there is no description of the vendor service"},
    {"qmi_kesext_hook_client_init: qmi_client_notifier_init"},
    {"qmi_kesext_hook_client_init: qmi_client_notifier_init failed. rc = %d", trouble,
     "the vendor service cannot be watched for: {0c}"},
    {"qmi_kesext_hook_client_init: qmi_client_get_service_list() returned %d num_services = %d"},
    {"qmi_kesext_hook_client_init: wait for server to come up.", waits},
    {"qmi_kesext_hook_client_init: Giving up- Retries exceede %d", trouble,
     "the vendor service did not come in {0} waits"},
    {"qmi_kesext_hook_client_init: qmi_client_get_service_list() returned %d num_entries = %d num_services = "
     "%d"},
    {"qmi_kesext_hook_client_init: qmi_client_init failed. rc = %d", trouble,
     "the vendor service refuses the connection: {0c}"},
    {"qmi_kesext_hook_client_init Succeeded", connected},
    {"main:qmi_kesext_hook_client_t failed = %d", notStarted,
     "the vendor service of the modem cannot be reached: {0c}"},
    {"is_kernel_panic looking for POWERUPREASON"},
    {"is_kernel_panic POWERUPREASON=%s", detail, "power-up reason {0}"},
    {"is_modem_panic looking for BP Panic"},
    {"*** failed open the sys file : restart_count ***"},
    {"modem_panic: %d", detail, "the kernel has restarted the modem {0} times"},
    {"*** Try open the sys file bp panic_reason : %s"},
    {"*** failed open the sys file : panic_reason ***"},
    {"notify_auto_verify_sim_pin from AP NOT called"},
    {"notify_auto_verify_sim_pin from AP called", detail, "the modem is told to verify the SIM's PIN again"},
    {"[Warning] Failed notify the auto verify SIM PIN to BP", trouble,
     "the modem was not told to verify the SIM's PIN"},
    {"kes_qmi_read_baseband_config_version: fsg version NV read status(%d)"},
    {"kes_qmi_read_baseband_config_version: flex nv status(%d)"},
    {"kes_qmi_read_baseband_config_version: no valid delimiter in %s", trouble,
     "the configuration's version has no '-' in it: {0}"},
    {"Child process waiting for data", ready},
    {"Buffer length is zero..Exiting KESEXT", ended, "its parent has closed the pipe"},
    {"Got EINTR, ignoring", trouble, "a signal interrupted the wait for requests"},
    {"Select failed with errno = %d.", trouble, "it cannot wait for requests: {0e}"},
    {"select returned zero", trouble, "it cannot wait for requests"},
    {"select succeed, fd failed, should not happen", trouble, "it cannot wait for requests"},
    {"Dispatcher: read failed with errno %d", trouble, "it cannot read a request: {0e}"},
    {"Read failed"},
    {"Write to parent failed %d", trouble, "the parent does not take what is sent: {0e}"},

    // every request
    {"Read 0 bytes from pipe"},
    {"Read %d bytes from pipe", received},
    {"msg Id is 0x%x, type is %d.", identified},
    {"Wrong msg Id", unserved, "it is too short to have an id"},
    {"getOemHook: NULL DATA or check size"},
    {"getOemHook: UNABLE TO IDENTIFY OEM_HOOK REQUEST!"},
    {"Oem gen header null", trouble, "there is no header"},
    {"ParOemGen INVALID DATA LEN OR NULL POINTER", trouble, "its header is cut"},
    {"Received CDMA Hook request 0x%x"},
    {"Received Generic Hook request 0x%x"},
    {"handle generic request, msgID 0x%x. msgLen %d, msgType %d"},
    {"0x%x is handled by Sprint handler."},
    {"0x%x not supported by Sprint handler."},
    {"0x%x not supported", unserved, "nothing serves it"},
    {"kesext_hook_sprint_handler: ENTER"},
    {"kesext_hook_sprint_handler: p_hdr == NULL", trouble, "there is no request"},
    {"kesext_hook_sprint_handler: Unexpected MSG ID: %d"},
    {"kesext_hook_sprint_handler: Obsolete MSG ID: %d", unserved, "it is not supported any more"},
    {"kesext_hook_sprint_handle_obsolete_request: ENTER FUNCTION %d"},
    {"kesext_hook_sprint_get_nv_data_to_oem: ENTER EVENT VALUE %d"},
    {"kesext_hook_sprint_get_nv_data_to_oem: EVENT VALUE %d"},
    {"kesext_hook_sprint_set_nv_data_from_oem: ENTER EVENT VALUE %d"},
    {"kesext_hook_sprint_set_nv_spc_protected_data_from_oem: EVENT VALUE %d"},
    {"kesext_hook_sprint_send_response: ENTER FUNCTION %d"},
    {"kesext_hook_sprint_send_response: SEND RESPONSE TO APP LAYER Message ID %d"},
    {"kesext_hook_sprint_send_response: SEND RESPONSE TO APP LAYER Length %d"},
    {"kesext_hook_sprint_send_response: BYTE ARRAY NOT NULL"},
    {"kesext_hook_sprint_send_response: HEADER ID %d"},
    {"HexDump: Data %s", dump},
    {"HexDump=buffer overflow"},
    {"sendGenericReply: out of memory!", failed, "no memory for the answer"},
    {"qmi_kesext_sprint_nas_send_msg_sync: Handler not initialized!", trouble,
     "the network service is not connected"},
    {"qmi_kesext_sprint_dms_send_msg_sync: Handler not initialized!", trouble,
     "the device service is not connected"},

    // elements
    {"NV Read with RDE index (%d), recordNum(%d), offset(%d).", element, "{0n}"},
    {"NV Read fail - 0, result - %d, error - %d", failed, "the modem does not give element {*}: error {1}"},
    {"NV Read fail - %d, result - %d, error - %d", failed, "element {*} could not be read: {0c}"},
    {"NV Read %u, length %u, data length %u, grde - %s", transfer, "read element {0n}: {3b}"},
    {"Input buffer is NULL or too small! max_len(%d).", trouble,
     "the element has more than the {0} bytes that there is room for"},
    {"NV Write with RDE index %d, record number %d, offset %d.", element, "{0n}"},
    {"kes_qmi_sprint_rde_write: hexdump len %d..."},
    {"NV Write fail - 0, result - %d, error - %d", failed, "the modem does not take element {*}: error {1}"},
    {"NV Write fail - %d, result - %d, error - %d", failed, "element {*} could not be written: {0c}"},
    {"NV Write success for element %u", transfer, "wrote element {0n}: {#}"},
    {"Data more than buffer size %d", failed, "{0} bytes are more than an element has"},
    {"kesext_hook_sprint_rde_write: FUNCTION enter."},
    {"RDE Write success for element %u", succeeded},
    {"RDE write error", failed},
    {"kesext_hook_sprint_rde_read: Function Enter."},
    {"RDE Read error", failed},
    {"NV Read RdeId %d", asks, "the modem did not give element {0n}"},
    {"handleNvResponse for id %x, dataSize-%d, respSize-%d", answers},
    {"handleNvResponse: out of memory!", failed, "no memory for the answer"},
    {"handleNvRsp: data is %d for msgId 0x%x"},
    {"This should not happen", failed, "the answer's layout is not known"},
    {"handleNvRsp: response hexdump for p_respHdr->msgId 0x%x...", dumpAhead},
    {"handleSpcResponse for id %x, respSize-%d", answers},
    {"NV write RdeId: %d length %d", detail, "wrote element {0n}: {1} bytes"},
    {"NV write Err RdeId=%d, Err=0, resp_type=%d", failed, "the modem does not take element {0n}: error {1}"},
    {"NV write Err RdeId=%d, Err=%d, resp_type=%d", failed, "element {0n} could not be written: {1c}"},
    {"Gen NV Read error 0 or %d", failed, "the modem does not give the element: error {0}"},
    {"Gen NV Read error %d or %d", failed, "the element could not be read: {0c}"},
    {"Gen NV Read %u length %u", transfer, "read element {0n}: {1} bytes"},
    {"handleGenNvReadRequest: out of memory!", failed, "no memory for the answer"},
    {"Gen NV Write RdeId %u, rec num %d, offset %d, len %d. hexdump...", element, "{0n}"},
    {"Gen NV write error 0 result %d, for element %u", failed,
     "the modem does not take element {1n}: result {0}"},
    {"Gen NV write error %d result %d, for element %u", failed, "element {2n} could not be written: {0c}"},
    {"Gen NV Write success for element %u", transfer, "wrote element {0n}: {#}"},

    // NAM
    {"kesext_hook_sprint_get_nam_item: READ NV VALUE %d"},
    {"kesext_hook_sprint_set_nam_item: WRITE NV VALUE %d"},
    {"kesext_hook_sprint_get_nam_info:  GET NAM INFO  %d"},
    {"kesext_hook_sprint_get_nam_block_request_info:  GET NAM BLOCK  %d"},
    {"kesext_hook_sprint_read_mdn_from_nv:  READ NV_DIR_NUMBER_PCS_I %d"},
    {"kesext_hook_sprint_read_mdn_from_nv:  READ NV_DIR_NUMBER_PCS_I COMPLETE %s"},
    {"kesext_hook_sprint_read_mdn_from_nv:  mdn_number %d"},
    {"kesext_hook_sprint_read_mdn_from_nv:  mdn_number incremented by 0 %d"},
    {"kesext_hook_sprint_read_mdn_from_nv:  nv output %d"},
    {"kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE MDN  %s", detail, "MDN {0}"},
    {"kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE MIN1  %u"},
    {"kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE MIN2  %d"},
    {"kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_T_S1  %u"},
    {"kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_T_S2  %d"},
    {"kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE SID NID  %d"},
    {"kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE SCM  %d"},
    {"kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_11_12  %d"},
    {"kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_MCC %d"},
    {"kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE P_CHANNEL_A %d P_CHANNEL_B %d"},
    {"kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE S_CHANNEL_A %d S_CHANNEL_B %d"},
    {"kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE VOCODER %d"},
    {"kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_MCC_T %d"},
    {"kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_T_11_12 %d"},
    {"kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE OVERLOAD CLASS %d"},
    {"kesext_hook_sprint_get_nam_block_request_info:  ERROR FOUND %d", failed,
     "the item of step {0} is missing"},
    {"kesext_hook_sprint_get_nam_info:  NO REQUEST ERRORS  %d", succeeded},
    {"kesext_hook_sprint_get_nam_info: NAM INFO imsiT => %s", detail, "IMSI_T {0}"},
    {"kesext_hook_sprint_get_nam_info: NAM INFO MIN => %s", detail, "MIN {0}"},
    {"kesext_hook_sprint_get_nam_info: NAM INFO IMSI_11_12 => %s"},
    {"kesext_hook_sprint_get_nam_info: NAM INFO Mcc => %s MccT => %s", detail, "MCC {0}"},
    {"kesext_hook_sprint_get_nam_info: NAM INFO hSid => %d hNid => %d scm => %d", detail, "SID {0}, NID {1}"},
    {"kesext_hook_sprint_get_nam_info: NAM INFO pCdmaA => %d pCdmaB => %d"},
    {"kesext_hook_sprint_get_nam_info: NAM INFO  sCdmaA => %d sCdmaB => %d"},
    {"kesext_hook_sprint_get_nam_info: NAM INFO Vocoder => %d Access_Overload => %d"},
    {"kesext_hook_sprint_set_nam_info:  SET NAM INFO  %d"},
    {"kesext_hook_sprint_set_nam_info:  SET NAM IMSI_MCC  %d"},
    {"kesext_hook_sprint_set_nam_info:  SET NAM IMSI_11_12  %d"},
    {"kesext_hook_sprint_set_nam_info:  SET NAM MIN1 %u MIN2 %d"},
    {"kesext_hook_sprint_set_nam_info:  SET NAM MccT %d imsiT11_12 %d imsiT_s1 %u imsiT_s2 %d"},
    {"kesext_hook_sprint_set_nam_info:  SET NAM SID %d NID %d", detail, "SID {0}, NID {1}"},
    {"kesext_hook_sprint_set_nam_info:  SET NAM pChannelA %d pChannelB %d sChannelA sChannelB"},
    {"kesext_hook_sprint_set_nam_info:  SET NAM sChannelA %d sChannelB %d sChannelA sChannelB"},
    {"kesext_hook_sprint_set_nam_info:  SET NAM SCM %d"},
    {"kesext_hook_sprint_set_nam_info:  SET NAM Vocoder %d"},
    {"kesext_hook_sprint_set_nam_info:  SET NAM AccessOverload %d"},
    {"kesext_hook_sprint_set_mdn_to_nv:  WRITE NV_DIR_NUMBER_PCS_I %d"},
    {"kesext_hook_sprint_set_mdn_to_nv:  mdn_number %d"},
    {"kesext_hook_sprint_set_mdn_to_nv:  NV PCS WRITE COMPLETE %d"},
    {"kesext_hook_sprint_set_nam_block_request_info:  SET NAM BLOCK MDN  %d"},
    {"kesext_hook_sprint_set_nam_block_request_info:  SET NAM BLOCK  %d"},
    {"kesext_hook_sprint_set_nam_block_request_info:  SET NAM BLOCK NV ENTRY COMPLETE  %d"},
    {"kesext_hook_sprint_set_nam_block_request_info:  ERROR FOUND %d", failed,
     "step {0} of the programming failed"},
    {"isSpcChanged = 1, (%s ~ %s)", detail, "the code is to change"},
    {"isSpcChanged = %d, (%s ~ %s)"},
    {"Byte (%d) of SPC is not digit.", trouble, "byte {0} of the new code is no digit; it is not changed"},
    {"kes_qmi_sprint_write_spc entered"},
    {"kes_qmi_sprint_write_spc: qmi_client_send_msg_sync (%d).", failed,
     "the code could not be changed: {0c}"},
    {"kes_qmi_sprint_write_spc Error = %d", failed, "the modem does not change the code: error {0}"},
    {"kesext_hook_sprint_get_sid_nid_pairs:  GET SID/NID PAIRS  %d"},
    {"kesext_hook_sprint_set_sid_nid_pairs:  SET SID/NID PAIRS  %d"},
    {"Enter kesext_hook_sprint_get_mob_p_pre()"},
    {"get mob_cai_rev %u", detail, "revision {0}"},

    // engineering screens
    {"kesext_hook_sprint_get_call_processing_data:  ENTER FUNCTION  %d"},
    {"kesext_hook_sprint_get_call_processing_data() hexDump..."},
    {"kesext_hook_sprint_get_evdo_data:  ENTER FUNCTION  %d"},
    {"kesext_hook_sprint_get_evdo_data() hexDump..."},
    {"In Engineering info request %d"},
    {"kes_qmi_sprint_get_engineering_info: qmi_client_send_msg_sync failed (%d).", zeros,
     "the modem's data could not be read: {0c}"},
    {"kes_qmi_sprint_get_engineering_info: Get Engineer info failed (%d).", zeros,
     "the modem does not give its data: result {0}"},
    {"Successfully retrieved datalen %d", detail, "{0} characters of the modem"},
    {"kesext_hook_sprint_hexstr_to_bin invalid char %d %d", trouble,
     "character {1} of the modem's text is no hexadecimal digit"},
    {"CP status1: fer=%d,   activePilotCount=%d,   neighborPilotCount=%d,   candPilotCount=%d,   "
     "bestActivePilot=%d,   bestActiveStrength=%d,   bestNeighborPilot=%d,   bestNeighborStrength=%d,"},
    {"CP status2: sid=%d,   nid=%d,   channel=%d,   serviceOption=%d,   droppedCallCounter=%d,   "
     "lastCallIndicator=%d,   sCallCounter=%d,   PRevInUse=%d,",
     detail, "SID {0}, NID {1}, channel {2}"},
    {"CP status3: band=%d,   lnaStatus=%d,   cpState=%d,   txPower=%d,   rssi=%d   bid=%d   bsLat=%d   "
     "bsLat=%d",
     detail, "RSSI {4}"},
    {"CP status4: activeSetPn %d = %d"},
    {"CP status4: activeSetStrength %d = %d"},
    {"CP status5: neighborSetPn %d = %d"},
    {"EVDO status1: hdrChanNum=%d,  uatiColorCode=%d,  txUati=0x%X,  pilotPn=%d,  hdrRssi=%d,  "
     "rxPwrRx0Dbm=%d  rxPwrRx1Dbm=%d,  measPkts=%d,  errPkts=%d,  sessionState=%d,",
     detail, "channel {0}, pilot PN {3}, RSSI {4}"},
    {"EVDO status2: atState=%d,  userCount=%d   dropCount=%d,  hybridMode=%d   macIndex=%d,  pilotEnergy=%d, "
     " drcCover=%d   sinr=%d,  anAuthStatus=%d"},
    {"EVDO status3: sectorIds %d = %d"},

    // codes, settings and LTE
    {"Enter kesext_hook_sprint_check_subsidy_lock_passwd()"},
    {"kesext_hook_sprint_verify_subsidy_lock: ENTER VERIFY SUBSIDY LOCK %d", asks,
     "the modem did not say whether the code is right"},
    {"kesext_hook_sprint_verify_subsidy_lock Error = %d", failed, "the modem refuses the code: error {0}"},
    {"kesext_hook_sprint_verify_subsidy_lock Success", succeeded},
    {"kesext_hook_sprint_write_akey:  ENTER"},
    {"qcril_qmi_nas_kes_cdma_validate_and_write_akey entered"},
    {"akey_len != sizeof(akey_req_msg.akey)", failed, "the key has not 26 digits"},
    {"validate_and_write_akey: qmi_client_send_msg_sync failed (%d).", failed,
     "the key could not be written: {0c}"},
    {"validate_and_write_akey Error = %d", failed, "the modem does not take the key: error {0}"},
    {"kesext_hook_sprint_get_ddtm_preference:   ddtm = %d", detail, "preference {0}"},
    {"kesext_hook_sprint_set_ddtm_preference:   ddtm = %d", detail, "preference {0}"},
    {"kesext_hook_sprint_set_ddtm_preference: Fail to write.", failed},
    {"handle_get_lte_option: EVENT VALUE %d"},
    {"kesext_hook_sprint_get_BC10_BC14_status:  status = %d", detail, "band status {0}"},
    {"kesext_hook_sprint_set_BC10_BC14_status:  status = %d", detail, "band status {0}"},
    {"kes_qmi_sprint_read_band: Read Band failed.", zeros, "the modem does not give the band's status"},
    {"kes_qmi_sprint_read_band: qmi_client_send_msg_sync failed (%d).", zeros,
     "the band's status could not be read: {0c}"},
    {"kes_qmi_sprint_write_band: qmi_client_send_msg_sync failed (%d).", failed,
     "the band's status could not be written: {0c}"},
    {"kesext_hook_sprint_set_roaming_list_segment:  p_prl->size (%d)", detail, "{0} bytes of roaming list"},
    {"kes_qmi_sprint_set_roaming_list_segment: data_length (%d)."},
    {"kes_qmi_sprint_set_roaming_list_segment: qmi_client_send_msg_sync failed (%d).", failed,
     "the roaming list could not be written: {0c}"},
    {"kesext_hook_sprint_set_Active_profile:   profile = %d", detail, "profile {0}"},
    {"kes_qmi_sprint_switch_proflie: failed.", failed, "the modem does not switch the profile"},
    {"kes_qmi_sprint_switch_proflie: qmi_client_send_msg_sync failed (%d).", failed,
     "the profile could not be switched: {0c}"},
    {"factory_reset: EVENT VALUE %d, msg_len (%d), reset_flag (%d)", detail, "reset flag {2}"},
    {"kes_qmi_sprint_fatory_reset: qmi_client_send_msg_sync failed (0), result (%d).", failed,
     "the modem does not reset: result {0}"},
    {"kes_qmi_sprint_fatory_reset: qmi_client_send_msg_sync failed (%d), result (%d).", failed,
     "the modem could not be reset: {0c}"},
    {"Received factory reset result - 1", succeeded},
    {"Received factory reset result - %d", failed},
    {"Get BSR timer result - %d", detail, "timer {0}"},
    {"kes_qmi_sprint_get_bsr_timer: Get BSR timer failed (%d).", zeros,
     "the modem does not give the timer: error {0}"},
    {"kes_qmi_sprint_get_bsr_timer: qmi_client_send_msg_sync failed (%d).", zeros,
     "the timer could not be read: {0c}"},
    {"handle_set_bsr_timer: EVENT VALUE %d"},
    {"kes_qmi_sprint_set_bsr_timer: Set BSR timer failed (%d).", failed,
     "the modem does not set the timer: error {0}"},
    {"kes_qmi_sprint_set_bsr_timer: qmi_client_send_msg_sync failed (%d).", failed,
     "the timer could not be set: {0c}"},
    {"Set BSR timer result - 1", succeeded},
    {"Set BSR timer result - %d", failed},
    {"kes_qmi_sprint_get_tot_order: qmi_client_send_msg_sync failed (%d).", zeros,
     "the TOT order could not be read: {0c}"},
    {"handle_update_tot_order: EVENT VALUE %d"},
    {"kes_qmi_sprint_update_tot_order: Update TOT order failed (%d).", failed,
     "the modem does not update the TOT order: error {0}"},
    {"kes_qmi_sprint_update_tot_order: qmi_client_send_msg_sync failed (%d).", failed,
     "the TOT order could not be updated: {0c}"},
    {"Update TOT order result - 1", succeeded},
    {"Update TOT order result - %d", failed},
    {"kes_qmi_sprint_get_active_ehrpd_apn: NULL point", trouble, "there is no room for the APN list"},
    {"kes_qmi_sprint_get_active_ehrpd_apn: qmi_client_send_msg_sync failed (%d).", zeros,
     "the APN list could not be read: {0c}"},
    {"convert_active_ehrpd_apn_from_qmi_to_ril: p_qmi_resp = NULL", trouble, "there is no APN list"},
    {"convert_active_ehrpd_apn_from_qmi_to_ril: p_ril_active_ehrpd_apn = NULL", trouble,
     "there is no room for the APN list"},
    {"handle_get_lte_data: EVENT VALUE %d"},
    {"kes_qmi_sprint_get_lte_data entered"},
    {"kes_qmi_sprint_get_lte_data: p_lte_data == NULL", failed, "there is no room for the LTE data"},
    {"kes_qmi_sprint_get_lte_option: Get LTE service state failed (%d).", zeros,
     "the modem does not give the service state: error {0}"},
    {"kes_qmi_sprint_get_lte_service_state: qmi_client_send_msg_sync failed (%d).", zeros,
     "the service state could not be read: {0c}"},
    {"kes_qmi_sprint_get_lte_ul_dl_channel: failed (%d).", zeros,
     "the modem does not give the channels: error {0}"},
    {"kes_qmi_sprint_get_lte_ul_dl_channel: qmi_client_send_msg_sync failed (%d).", zeros,
     "the channels could not be read: {0c}"},
    {"get_lte_data: QMI_NAS_GET_SERVING_SYSTEM failed (0), error (%d).", failed,
     "the modem does not give the serving system: error {0}"},
    {"get_lte_data: QMI_NAS_GET_SERVING_SYSTEM failed (%d), error (%d).", failed,
     "the serving system could not be read: {0c}"},
    {"get_lte_data: QMI_NAS_GET_SIG_INFO failed (0), error (%d).", failed,
     "the modem does not give the signal: error {0}"},
    {"get_lte_data: QMI_NAS_GET_SIG_INFO failed (%d), error (%d).", failed,
     "the signal could not be read: {0c}"},
    {"get_lte_data: QMI_NAS_GET_TX_RX_INFO failed (0), error (93).", detail, "the radio is off"},
    {"get_lte_data: QMI_NAS_GET_TX_RX_INFO failed (%d), error (93).", detail, "the radio is off"},
    {"get_lte_data: QMI_NAS_GET_TX_RX_INFO failed (0), error (%d).", failed,
     "the modem does not give the transmit power: error {0}"},
    {"get_lte_data: QMI_NAS_GET_TX_RX_INFO failed (%d), error (%d).", failed,
     "the transmit power could not be read: {0c}"},

    // services of the generic form, PFP and utility
    {"receive request len  %d", detail, "command of {0} bytes"},
    {"Sending QMI_TUNER_REQ_V01 failed! with error %d", failed,
     "the antenna command could not be sent: {0c}"},
    {"Dumping modem response for QMI_TUNER_REQ_V01...", dumpAhead},
    {"kesext_hook_set_antenna_tuning sending response, msgLen 0x%x."},
    {"Dumping modem response for QMI_DATA_PLMN_REQ_V01...", dumpAhead},
    {"Sending QMI_DATA_PLMN_REQ_V01 failed!", zeros, "the data PLMN's record could not be read"},
    {"Received request len = %d, mcc = %d, mnc = %d", detail, "network {1} {2}"},
    {"Response = %d, Error code = %d"},
    {"EONS plmn name valid = %d"},
    {"Sending GET_PLMN_NAME_REQ_MSG_V01 failed!", failed, "the name could not be asked for"},
    {"Dumping modem response for GET_PLMN_NAME_REQ_MSG_V01..."},
    {"plmn_resp.eons_plmn_name_3gpp_valid is FALSE!", failed, "the modem has no name for the network"},
    {"Invalid or Empty string received from modem", failed, "the modem's name for the network is empty"},
    {"Invalid parameters for GSM alphabet to UTF8 conversion, input len = %d"},
    {"ignored CR charecter at index = %d"},
    {"plmn short name is 7-bit Unpacked data %s", detail, "name {0}"},
    {"Sending OnRequest Complete"},
    {"sig_cov: receive request %d len %d", detail, "selector {0}, text of {1} bytes"},
    {"sig_cov warning: no NULL found at the end of string", trouble,
     "its text has no end; the last byte is taken for it"},
    {"kesext_handle_sig_cov_request sending response, msgLen 0x%x."},
    {"Silent reboot: Sending kesext util request"},
    {"Silent reboot: Sending request result is %d"},
    {"Silent reboot send msg error, send back generic failure.", failed,
     "the modem could not be told to reboot"},
    {"handleSilentRebootResponse >>"},
    {"handleSilentRebootResponse for id %x, resp len %d."},
    {"handleSilentRebootResponse resp size %d."},
    {"handleSilentRebootResponse , msgLen 0x%x, resp value %d.", detail, "last byte of the answer {1}"},
    {"UTILS: req.req_data[0]%d, req.req_data[UTILS_REQ_DATA_SIZE_V01-1] %d"},
    {"UTILS: Sending request result is 0"},
    {"UTILS: Sending request result is %d", zeros, "the utility request was not sent: {0c}"},
    {"handleUtilsResponse"},
    {"handleUtilsResponse for id %x, dataSize-%d, respSize-%d", detail, "answer of {1} bytes"},
    {"handleUtilsResponse: out of memory!", failed, "no memory for the answer"},
    {"sys_info filter: sending kesext util request"},
    {"sys_info filter: sending request result is 0"},
    {"sys_info filter: sending request result is %d", failed, "the filter could not be set: {0c}"},
    {"sys_info filter: sending response, msgLen 0x%x, resp value 0.", succeeded},
    {"sys_info filter: sending response, msgLen 0x%x, resp value %d.", failed},
    {"MyPfp: Sending request"},
    {"MyPfp: returned rc=0 result =%d", succeeded, "result {0}"},
    {"MyPfp: returned rc=%d result =%d", failed, "the modem could not be asked for PFP: {0c}"},

    // what the modem reports by itself
    {"qmi_kesext_hook_ind_cb: msg_id=0x%x buf_len=%d cb_data=%s", indication},
    {"Handling unsol msg %d", report},
    {"Unsol resp 0x%x is handled by Sprint handler.", report},
    {"Unsol resp 0x%x not supported by Sprint handler.", report},
    {"Unsupported Indicator message %u", report, "it is not known and goes nowhere"},
    {"kes_qmi_sprint_hook_ind_cb: qmi_client_message_decode Failed(%d).", trouble,
     "an indication does not decode: {0c}"},
    {"kes_qmi_sprint_hook_ind_cb: Unknown Indication from Modem.", report},
    {"convert_lte_error_to_ril_format: parameter is null!", trouble, "there is no LTE error to report"},
    {"send_unsol_response: out of memory!", trouble, "no memory for a message to the parent"},
    {"sendUnsolNotify: out of memory!", trouble, "no memory for the test notification"},
    {"tunerIndHndlr: failed to decode 0x%x ind data for %d", trouble,
     "the tuner event does not decode: {1c}"},
    {"tunerIndHndlr: dumping ind data[%d] 0x%x", report},
    {"tunerIndHndlr: tuner indication is: %d %d", report, "bytes {0} {1}"},
    {"tunerIndHndlr: out of memory!", trouble, "no memory for the tuner event"},
    {"failed to decode pfp idl data", trouble, "the PFP indication does not decode"},
    {"mypfp_ind_msg_v01: rat = %d , tbl_idx = %d data_size = %d", report, "rat {0}, table {1}"},
    {"sigcovIndHndlr: failed to decode ind data", trouble, "the coverage report does not decode"},
    {"sigcovIndHndlr: out of memory!", trouble, "no memory for the coverage report"},
    {"dataPlmnIndHndlr: out of memory!", trouble, "no memory for the data PLMN's message"},
    {"utils_ind_msg_v01: respsize=%d, msgLen=%d", report, "passed on"},
    {"utilsIndHndlr: out of memory!", trouble, "no memory for the utility data"},
    {"uploadbplogs:failed to decode idl data", trouble, "the utility indication does not decode"},
    {"utilsIndHndlr: unknown indication type [%d]", report, "utility type {0} is not known; it goes nowhere"},
    {"dhob_write: Sending ready to received indications message to BP"},
    {"dhob_write: kes_shared_ram open success", report},
    {"dhob_write: Save RF to HOB successful", report, "the RF data are saved"},
    {"dhob_write: Sending DYNHOB request to BP", report},
    {"dhob_write: Duplicate request: Save to HOB already in progress", report,
     "the RF data are being saved already"},
    {"dhob_write: Unable to open %s", trouble, "the RF data are not saved: {0} does not open"},
    {"dhob_write: mmap failed", trouble, "the RF data are not saved: they cannot be mapped"},
    {"dhob_write: base 0x%x", report},
    {"dhob_write: size 0x%x", report},
    {"dhob_write: Open hob block failed", trouble,
     "the RF data are not saved: their partition does not open"},
    {"dhob_write: Write to hob block failed", trouble,
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
    {"adam_handle_kpi_data: out of memory!", trouble, "no memory for the performance indicators"},
    {"adam_get_index_filename: index name %s", report},
    {"adam_get_filename: get real name of %s failed, rc %d", report},
    {"adam_update_current_log: send %s to dropbox.", modemLog, "{0} handed to the drop-box"},
    {"adam: send to dropbox failed!.", logTrouble, "the drop-box does not take it"},
    {"adam_update_current_log: can't create new log.", logTrouble, "there is no new log"},
    {"adam_update_current_log: Unable to stat temp files, errno %d", logTrouble, "the package is gone: {0e}"},
    {"adam_update_current_log: Unable to get cur log file", modemLog, "there is no log yet"},
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

constexpr bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

/// Whether the words name no place that the pattern does not have, and a line has room for all.
constexpr bool isSound(const LineRow& row) {
  size_t places = 0;
  for (size_t at = 0; at < row.pattern.size(); ++at)
    if (row.pattern[at] == '%') {
      if (at + 1 == row.pattern.size() || std::string_view("duxXs").find(row.pattern[at + 1]) > 4)
        return false;
      ++places;
    }
  for (size_t at = 0; at + 1 < row.words.size(); ++at)
    if (row.words[at] == '{' && isDigit(row.words[at + 1]) &&
        static_cast<size_t>(row.words[at + 1] - '0') >= places)
      return false;
  const bool indexed = row.pattern.size() >= 2 && row.pattern[0] != '%' && row.pattern[1] != '%';
  return places <= kPlacesMax && indexed && row.pattern.front() != ' ' && row.pattern.back() != ' ';
}
static_assert(std::all_of(std::begin(kLines), std::end(kLines), isSound));

using Key = std::pair<char, char>;

/// The rows by their first two characters, each in the table's order.
const std::map<Key, std::vector<const LineRow*>>& index() {
  static const auto kIndex = [] {
    std::map<Key, std::vector<const LineRow*>> rows;
    for (const LineRow& row : kLines)
      rows[{row.pattern[0], row.pattern[1]}].push_back(&row);
    return rows;
  }();
  return kIndex;
}

/// How many characters at the text's beginning a place of this kind takes.
size_t placeSize(char kind, std::string_view text) {
  size_t size = 0;
  const auto belongs = [kind](char character) {
    if (isDigit(character)) return true;
    if (kind == 'x') return character >= 'a' && character <= 'f';
    return kind == 'X' && character >= 'A' && character <= 'F';
  };
  if (kind == 'd' && text.starts_with('-')) ++size;
  const size_t digits = size;
  while (size < text.size() && belongs(text[size]))
    ++size;
  return size == digits ? 0 : size;
}

/// How many characters a text of any kind takes that is followed by this literal part, the line's last one or
/// not; npos when that does not follow.
size_t textSize(std::string_view text, std::string_view literal, bool last) {
  if (!last) return text.find(literal);
  text = text.substr(0, text.find_last_not_of(' ') + 1);
  return text.ends_with(literal) ? text.size() - literal.size() : std::string_view::npos;
}

bool matches(std::string_view pattern, std::string_view text, Places& places) {
  size_t place = 0;
  while (true) {
    const size_t literal = std::min(pattern.find('%'), pattern.size());
    if (!text.starts_with(pattern.substr(0, literal))) {
      // Where blanks at the end are lost, an empty text in the last place takes the one before it along.
      const size_t words = pattern.find_last_not_of(' ', literal - 1) + 1;
      return pattern.substr(literal) == "%s" && text == pattern.substr(0, words);
    }
    text.remove_prefix(literal);
    if (literal == pattern.size()) return text.find_first_not_of(' ') == std::string_view::npos;
    const char kind = pattern[literal + 1];
    pattern.remove_prefix(literal + 2);
    const std::string_view next = pattern.substr(0, pattern.find('%'));
    const size_t size =
        kind == 's' ? textSize(text, next, next.size() == pattern.size()) : placeSize(kind, text);
    if (size == std::string_view::npos || (kind != 's' && size == 0)) return false;
    places[place++] = text.substr(0, size);
    text.remove_prefix(size);
  }
}

/// The number in a place; 0 for one that is too large.
int64_t numberOf(std::string_view place) {
  return std::strtoll(std::string(place).c_str(), nullptr, 10);
}

/// What a result of sending means where that is known.
std::string sendResult(std::string_view place, bool bench) {
  const auto code = static_cast<int>(numberOf(place));
  const std::string number = fmt::format("code {}", code);
  if (!bench) return number;
  switch (code) {
    case host::kLocalError:
      return number + ", a bad argument or an error of this machine";
    case host::kNoService:
      return number + ", no such service or no link";
    case host::kTimedOut:
      return number + ", no answer in time";
    case host::kNotDecoded:
      return number + ", it does not decode";
    default:
      return number;
  }
}

std::string placeInWords(std::string_view place, char what, const LineContext& context) {
  if (what == 'e')
    return fmt::format("{} (errno {})", std::strerror(static_cast<int>(numberOf(place))), place);
  if (what == 'c') return sendResult(place, context.bench);
  if (what == 'n') return elementName(place);
  if (what == 'b') return shortened(place);
  return std::string(place);
}

}  // namespace

std::span<const LineRow> lineTable() {
  return kLines;
}

const LineRow* findLine(std::string_view text, Places& places) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  if (text.size() < 2) return nullptr;
  const auto rows = index().find({text[0], text[1]});
  if (rows == index().end()) return nullptr;
  for (const LineRow* row : rows->second)
    if (matches(row->pattern, text, places)) return row;
  return nullptr;
}

std::string inWords(std::string_view words, const Places& places, const LineContext& context) {
  std::string text;
  while (!words.empty()) {
    const size_t open = words.find('{');
    text += words.substr(0, open);
    if (open == std::string_view::npos) break;
    const size_t close = words.find('}', open);
    const std::string_view named = words.substr(open + 1, close - open - 1);
    if (named == "*")
      text += context.element;
    else if (named == "#")
      text += shortened(context.dump);
    else
      text += placeInWords(places[static_cast<size_t>(named[0] - '0')], named.size() > 1 ? named[1] : ' ',
                           context);
    words.remove_prefix(close + 1);
  }
  return text;
}

bool tellsTimeOut(std::string_view words, const Places& places) {
  const size_t named = words.find("c}");
  return named != std::string_view::npos && named > 0 &&
         numberOf(places[static_cast<size_t>(words[named - 1] - '0')]) == host::kTimedOut;
}

std::string elementName(std::string_view index) {
  const int64_t number = numberOf(index);
  return fmt::format("{} (0x{:X})", number, static_cast<uint32_t>(number));
}

std::string shortened(std::string_view digits) {
  constexpr size_t kShown = 32;
  if (digits.size() <= kShown) return std::string(digits);
  return fmt::format("{}... ({} bytes)", digits.substr(0, kShown), digits.size() / 2);
}

}  // namespace tools
