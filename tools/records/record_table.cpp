#include "tools/records/record_table.h"

#include "carrier/lte_data.h"
#include "carrier/modem_messages.h"
#include "core/ground/hook_ids.h"
#include "core/ground/hook_message.h"
#include "generic/utility_messages.h"
#include "nam/engineering_records.h"
#include "nam/nam_info.h"
#include "nv/rde_messages.h"

namespace tools {

namespace {

using namespace kesext;
using enum FieldKind;
using enum Family;

/// The name and the size of a record's member.
#define MEMBER(Record, member) #member, sizeof(Record::member)

constexpr auto kNeeded = WhenAbsent::refused;
constexpr auto kZeros = WhenAbsent::zeros;
constexpr auto kCount = WhenAbsent::lengthOfRest;

constexpr FieldSpec kData[] = {{"data", kRest, bytes}};
constexpr FieldSpec kElementWord[] = {{"value", 4, number}};
constexpr FieldSpec kElementAddress[] = {{MEMBER(RdeReadRequest, rde_index), element},
                                         {MEMBER(RdeReadRequest, record_num), number, kZeros},
                                         {MEMBER(RdeReadRequest, offset), number, kZeros},
                                         {MEMBER(RdeReadRequest, length), number, kZeros}};
constexpr FieldSpec kElementWrite[] = {{MEMBER(RdeWriteRequest, rde_index), element},
                                       {MEMBER(RdeWriteRequest, record_num), number, kZeros},
                                       {MEMBER(RdeWriteRequest, offset), number, kZeros},
                                       {MEMBER(RdeWriteRequest, length), number, kCount},
                                       {"data", kRest, bytes}};
constexpr FieldSpec kElementAnswer[] = {{MEMBER(RdeReadResponse, rde_index), element},
                                        {MEMBER(RdeReadResponse, record_num), number},
                                        {MEMBER(RdeReadResponse, offset), number},
                                        {MEMBER(RdeReadResponse, length), number, kCount},
                                        {"data", kRest, bytes},
                                        {"end", 4, zeros}};
constexpr FieldSpec kNamInfo[] = {{MEMBER(NamInfo, mdn), text, kZeros, {0, 15}},
                                  {MEMBER(NamInfo, min), text, kNeeded, {10, 10}},
                                  {MEMBER(NamInfo, homeSid), number, kZeros},
                                  {MEMBER(NamInfo, homeNid), number, kZeros},
                                  {MEMBER(NamInfo, scm), hexNumber, kZeros},
                                  {MEMBER(NamInfo, imsi11_12), text, kNeeded, {2, 2}},
                                  {MEMBER(NamInfo, mcc), text, kNeeded, {3, 3}},
                                  {MEMBER(NamInfo, pChannelA), number, kZeros},
                                  {MEMBER(NamInfo, pChannelB), number, kZeros},
                                  {MEMBER(NamInfo, sChannelA), number, kZeros},
                                  {MEMBER(NamInfo, sChannelB), number, kZeros},
                                  {MEMBER(NamInfo, vocoder), signedNumber, kZeros},
                                  {MEMBER(NamInfo, mccT), text, kZeros, {0, 3}},
                                  {MEMBER(NamInfo, imsiT), text, kNeeded, {15, 15}},
                                  {MEMBER(NamInfo, accessOverloadClass), number, kZeros},
                                  {MEMBER(NamInfo, newSpc), code, kZeros},
                                  {MEMBER(NamInfo, reserved), zeros, kZeros}};
constexpr FieldSpec kSidNidPairs[] = {{"pairs", 160, words}};
constexpr FieldSpec kRevision[] = {{"revision", 1, number}, {"zero", 3, zeros}};
constexpr FieldSpec kBandStatus[] = {{"status", 4, number}};
constexpr FieldSpec kRoamingList[] = {{MEMBER(RoamingListRequest, data_length), number, kCount},
                                      {"data", kRest, bytes}};
constexpr FieldSpec kProfile[] = {{"profile", 4, number}};
constexpr FieldSpec kResetFlag[] = {
    {MEMBER(FactoryResetRequest, reset_flag), hexNumber, WhenAbsent::leftOut}};
constexpr FieldSpec kDdtmRead[] = {{"preference", 4, number}};
constexpr FieldSpec kDdtmWrite[] = {{"preference", 1, number}};
constexpr FieldSpec kNoCode[] = {{"code", 6, zeros}};
constexpr FieldSpec kTimer[] = {{"timer", 4, number}};
constexpr FieldSpec kTotOrder[] = {{"count", 2, number, kCount}, {"entries", 60, words}};
constexpr FieldSpec kAkey[] = {{"akey", kRest, text, kNeeded, {26, 26}}};
constexpr FieldSpec kLteData[] = {
    {MEMBER(LteData, service_state), number},   {MEMBER(LteData, serving_value_1), number},
    {MEMBER(LteData, serving_value_2), number}, {MEMBER(LteData, serving_value_3), hexNumber},
    {MEMBER(LteData, channel_byte_1), number},  {MEMBER(LteData, channel_byte_2), number},
    {MEMBER(LteData, first_channel), number},   {MEMBER(LteData, second_channel), number},
    {MEMBER(LteData, rssi), signedNumber},      {MEMBER(LteData, rsrp), signedNumber},
    {MEMBER(LteData, rsrq), signedNumber},      {MEMBER(LteData, tx_power), signedNumber}};
constexpr FieldSpec kApnList[] = {
    {MEMBER(EhrpdApnResponse, count), number},      {MEMBER(EhrpdApnEntry, apn), text},
    {MEMBER(EhrpdApnEntry, first_word), hexNumber}, {MEMBER(EhrpdApnEntry, second_word), hexNumber},
    {MEMBER(EhrpdApnEntry, block), bytes},          {"more", kRest, bytes}};
constexpr FieldSpec kValue[] = {{"value", 4, number}};
constexpr FieldSpec kLteError[] = {
    {"first_word", 4, hexNumber}, {"value", 1, number}, {"second_word", 4, hexNumber}, {"block", 103, bytes}};
constexpr FieldSpec kUtility[] = {{MEMBER(utils_req_msg_v01, type), number},
                                  {MEMBER(utils_req_msg_v01, len), number, kCount},
                                  {MEMBER(utils_req_msg_v01, req_data), bytes}};
constexpr FieldSpec kPfpRecord[] = {
    {"unread", 2, bytes}, {"rat", 2, number}, {"tbl_idx", 4, number}, {"more", kRest, bytes}};
constexpr FieldSpec kStatusByte[] = {{"status", 1, status}};
constexpr FieldSpec kFilter[] = {{"filter", 1, number}};
constexpr FieldSpec kCoverageText[] = {{"text", kRest, zeroEndedText}};
constexpr FieldSpec kCoverageSelector[] = {{"selector", 1, number}, {"text", kRest, zeroEndedText}};
constexpr FieldSpec kNetwork[] = {{"mcc", 2, number}, {"mnc", 2, number}};
constexpr FieldSpec kName[] = {{"name", kRest, utf8}};
constexpr FieldSpec kCommand[] = {{"command", kRest, bytes}};
constexpr FieldSpec kEvent[] = {{"event", kRest, bytes}};
constexpr FieldSpec kRecord[] = {{"record", kRest, bytes}};
constexpr FieldSpec kUtilityData[] = {{"prefix", 1, hexNumber}, {"data", kRest, bytes}};
constexpr FieldSpec kPerformance[] = {{"header", 4, hexNumber}, {"data", kRest, bytes}};
constexpr FieldSpec kNotification[] = {{"text", 22, text}};
constexpr FieldSpec kCallProcessing[] = {{MEMBER(CpStatusReport, fer), number},
                                         {MEMBER(CpStatusReport, bestActivePilot), number},
                                         {MEMBER(CpStatusReport, bestActiveStrength), number},
                                         {MEMBER(CpStatusReport, bestNeighborPilot), number},
                                         {MEMBER(CpStatusReport, bestNeighborStrength), number},
                                         {MEMBER(CpStatusReport, sid), number},
                                         {MEMBER(CpStatusReport, nid), number},
                                         {MEMBER(CpStatusReport, channel), number},
                                         {MEMBER(CpStatusReport, serviceOption), number},
                                         {MEMBER(CpStatusReport, droppedCallCounter), number},
                                         {MEMBER(CpStatusReport, sCallCounter), number},
                                         {MEMBER(CpStatusReport, txPower), signedNumber},
                                         {MEMBER(CpStatusReport, band), number},
                                         {MEMBER(CpStatusReport, activePilotCount), number},
                                         {MEMBER(CpStatusReport, neighborPilotCount), number},
                                         {MEMBER(CpStatusReport, candPilotCount), number},
                                         {MEMBER(CpStatusReport, cpState), number},
                                         {MEMBER(CpStatusReport, lastCallIndicator), number},
                                         {MEMBER(CpStatusReport, lnaStatus), number},
                                         {MEMBER(CpStatusReport, rssi), number},
                                         {MEMBER(CpStatusReport, reserved), number},
                                         {MEMBER(CpStatusReport, pRevInUseAbove5), number},
                                         {MEMBER(CpStatusReport, PRevInUse), number},
                                         {MEMBER(CpStatusReport, bid), number},
                                         {MEMBER(CpStatusReport, activeSetPn), words},
                                         {MEMBER(CpStatusReport, activeSetStrength), words},
                                         {MEMBER(CpStatusReport, neighborSetPn), words},
                                         {MEMBER(CpStatusReport, bsLat), number},
                                         {MEMBER(CpStatusReport, bsLon), number}};
constexpr FieldSpec kEvdo[] = {
    {MEMBER(EvdoStatusReport, hdrChanNum), number},  {MEMBER(EvdoStatusReport, uatiColorCode), number},
    {MEMBER(EvdoStatusReport, txUati), hexNumber},   {MEMBER(EvdoStatusReport, pilotPn), number},
    {MEMBER(EvdoStatusReport, hdrRssi), number},     {MEMBER(EvdoStatusReport, rxPwrRx0Dbm), number},
    {MEMBER(EvdoStatusReport, rxPwrRx1Dbm), number}, {MEMBER(EvdoStatusReport, measPkts), number},
    {MEMBER(EvdoStatusReport, errPkts), number},     {MEMBER(EvdoStatusReport, sessionState), number},
    {MEMBER(EvdoStatusReport, atState), number},     {MEMBER(EvdoStatusReport, reserved), number},
    {MEMBER(EvdoStatusReport, userCount), number},   {MEMBER(EvdoStatusReport, hybridMode), number},
    {MEMBER(EvdoStatusReport, dropCount), number},   {MEMBER(EvdoStatusReport, macIndex), number},
    {MEMBER(EvdoStatusReport, sectorIds), words},    {MEMBER(EvdoStatusReport, pilotEnergy), signedNumber},
    {MEMBER(EvdoStatusReport, drcCover), number},    {MEMBER(EvdoStatusReport, sinr), number},
    {MEMBER(EvdoStatusReport, anAuthStatus), number}};

#undef MEMBER

constexpr Fields kNone;

constexpr RequestRow kRequests[] = {
    {cdma, HOOK_NAM_READ, "nam read", "reads the NAM", kNone, kNamInfo},
    {cdma, HOOK_NAM_WRITE, "nam write", "programs the NAM, all of it", kNamInfo},
    {cdma, HOOK_SID_NID_READ, "sid-nid read", "reads the SID/NID pairs", kNone, kSidNidPairs},
    {cdma, HOOK_SID_NID_WRITE, "sid-nid write", "writes the SID/NID pairs: SID, NID, SID, NID, ...",
     kSidNidPairs},
    {cdma, HOOK_PROTOCOL_REVISION, "protocol-revision", "reads the mobile protocol revision", kNone,
     kRevision},
    {cdma, HOOK_NV_1C_WRITE, "nv1c write", "writes element 0x1C", kData},
    {cdma, HOOK_SPC_VALIDATE, "spc validate", "validates the service programming code that is in spc", kNone,
     kNoCode},
    {cdma, HOOK_NV_2713_READ, "nv2713 read", "reads element 0x2713", kNone, kElementWord},
    {cdma, HOOK_NV_2713_WRITE, "nv2713 write", "writes element 0x2713", kData},
    {cdma, HOOK_NV_25_READ, "nv25 read", "reads element 0x25", kNone, kElementWord},
    {cdma, HOOK_NV_25_WRITE, "nv25 write", "writes element 0x25", kData},
    {cdma, HOOK_CALL_PROCESSING_DATA, "engineering cp", "reads the call-processing screen's data", kNone,
     kCallProcessing},
    {cdma, HOOK_EVDO_DATA, "engineering evdo", "reads the EVDO screen's data", kNone, kEvdo},
    {cdma, HOOK_AKEY_WRITE, "akey write", "writes the A-key", kAkey},
    {cdma, HOOK_RDE_WRITE, "rde write", "writes any element", kElementWrite},
    {cdma, HOOK_RDE_READ, "rde read", "reads any element", kElementAddress, kElementAnswer},
    {cdma, HOOK_NV_26_READ, "nv26 read", "reads element 0x26", kNone, kElementWord},
    {cdma, HOOK_NV_26_WRITE, "nv26 write", "writes element 0x26", kData},
    {cdma, HOOK_NV_27_READ, "nv27 read", "reads element 0x27", kNone, kElementWord},
    {cdma, HOOK_NV_27_WRITE, "nv27 write", "writes element 0x27", kData},
    {cdma, HOOK_PFP, "pfp", "asks for PFP"},
    {cdma, HOOK_UTILITY, "utility", "passes a utility request through", kUtility, kData},
    {cdma, HOOK_BAND_10_READ, "band10 get", "reads the band class 10 status", kNone, kBandStatus},
    {cdma, HOOK_BAND_10_WRITE, "band10 set", "writes the band class 10 status", kBandStatus},
    {cdma, HOOK_BAND_14_READ, "band14 get", "reads the band class 14 status", kNone, kBandStatus},
    {cdma, HOOK_BAND_14_WRITE, "band14 set", "writes the band class 14 status", kBandStatus},
    {cdma, HOOK_ROAMING_LIST_SEGMENT, "prl send", "sends a roaming list (PRL) segment", kRoamingList},
    {cdma, HOOK_ACTIVE_PROFILE, "profile set", "switches the active profile", kProfile},
    {cdma, HOOK_FACTORY_RESET, "factory-reset", "resets to what the factory set", kResetFlag},
    {cdma, HOOK_DDTM_READ, "ddtm get", "reads the DDTM preference", kNone, kDdtmRead},
    {cdma, HOOK_DDTM_WRITE, "ddtm set", "writes the DDTM preference", kDdtmWrite},
    {cdma, HOOK_DDTM_READ_B9, "ddtm-b9 get", "the same as ddtm get, by another id", kNone, kDdtmRead},
    {cdma, HOOK_DDTM_WRITE_BA, "ddtm-ba set", "the same as ddtm set, by another id", kDdtmWrite},
    {cdma, HOOK_OBSOLETE_BB, "obsolete bb", "is not supported any more"},
    {cdma, HOOK_BSR_TIMER_READ, "bsr-timer get", "reads the BSR timer", kNone, kTimer},
    {cdma, HOOK_BSR_TIMER_WRITE, "bsr-timer set", "writes the BSR timer", kTimer},
    {cdma, HOOK_LTE_OPTION_READ, "lte-option get", "reads the LTE option", kNone, kData},
    {cdma, HOOK_LTE_OPTION_WRITE, "lte-option set", "writes the LTE option", kData},
    {cdma, HOOK_LTE_DATA, "lte-data", "collects what there is of LTE", kNone, kLteData},
    {cdma, HOOK_EHRPD_APN_LIST, "apn-list", "reads the active eHRPD APN list", kNone, kApnList},
    {cdma, HOOK_OBSOLETE_C2, "obsolete c2", "is not supported any more"},
    {cdma, HOOK_OBSOLETE_C3, "obsolete c3", "is not supported any more"},
    {cdma, HOOK_TOT_ORDER_READ, "tot-order get", "reads the TOT order", kNone, kTotOrder},
    {cdma, HOOK_TOT_ORDER_UPDATE, "tot-order set", "updates the TOT order", kTotOrder},
    {cdma, HOOK_OBSOLETE_C6, "obsolete c6", "is not supported any more"},
    {cdma, HOOK_OBSOLETE_C7, "obsolete c7", "is not supported any more"},
    {cdma, HOOK_OBSOLETE_C8, "obsolete c8", "is not supported any more"},
    {cdma, HOOK_OBSOLETE_C9, "obsolete c9", "is not supported any more"},
    {cdma, HOOK_OBSOLETE_CA, "obsolete ca", "is not supported any more"},
    {cdma, HOOK_OBSOLETE_CB, "obsolete cb", "is not supported any more"},
    {generic, HOOK_SILENT_REBOOT, "silent-reboot", "lets the modem reboot silently", kNone, kData},
    {generic, HOOK_SYS_INFO_FILTER, "sysinfo-filter", "sets the system-information filter", kFilter,
     kStatusByte},
    {generic, HOOK_SIGNAL_COVERAGE, "coverage-text", "asks for signal coverage", kCoverageText, kStatusByte},
    {generic, HOOK_SIGNAL_COVERAGE_SELECTOR, "coverage", "asks for signal coverage with a selector",
     kCoverageSelector, kStatusByte},
    {generic, HOOK_ANTENNA_TUNING, "antenna", "passes an antenna tuning command on", kCommand, kData},
    {generic, HOOK_DATA_PLMN, "data-plmn", "reads the data PLMN's record", kNone, kRecord, true},
    {generic, HOOK_PLMN_NAME, "plmn", "reads the name of a network", kNetwork, kName},
};

constexpr UnsolicitedRow kUnsolicited[] = {
    {cdma, UNSOL_TEST_NOTIFICATION, "test notification", kNotification},
    {cdma, UNSOL_PFP, "PFP", kPfpRecord},
    {cdma, UNSOL_CARRIER_VALUE, "carrier value", kValue},
    {cdma, UNSOL_LTE_ERROR, "LTE error", kLteError},
    {generic, UNSOL_UTILITY_0.msgId, "utility data, type 0", kUtilityData},
    {generic, UNSOL_SIGNAL_COVERAGE.msgId, "signal coverage", kRecord},
    {generic, UNSOL_KPI.msgId, "performance indicators", kPerformance},
    {generic, UNSOL_UTILITY_2.msgId, "utility data, type 2", kData},
    {generic, UNSOL_UTILITY_3.msgId, "utility data, type 3", kData},
    {generic, UNSOL_TUNER_EVENT.msgId, "tuner event", kEvent},
    {generic, UNSOL_DATA_PLMN.msgId, "data PLMN changed", {}},
};

constexpr StatusRow kStatuses[] = {{kesext::HOOK_STATUS_SUCCESS, "success"},
                                   {kesext::HOOK_STATUS_SPC_INVALID, "code refused"},
                                   {kesext::HOOK_STATUS_FAILURE, "failure"},
                                   {kesext::HOOK_STATUS_NOT_SUPPORTED, "not supported"}};

template <typename Row, size_t N>
const Row* find(const Row (&table)[N], Family family, uint32_t id) {
  for (const Row& row : table)
    if (row.family == family && row.id == id) return &row;
  return nullptr;
}

}  // namespace

std::span<const RequestRow> requestTable() {
  return kRequests;
}

std::span<const UnsolicitedRow> unsolicitedTable() {
  return kUnsolicited;
}

const RequestRow* findRequest(Family family, uint32_t id) {
  return find(kRequests, family, id);
}

const UnsolicitedRow* findUnsolicited(Family family, uint32_t id) {
  return find(kUnsolicited, family, id);
}

std::span<const StatusRow> statusTable() {
  return kStatuses;
}

std::string_view statusName(uint32_t status) {
  for (const StatusRow& row : kStatuses)
    if (row.status == status) return row.name;
  return "unknown";
}

}  // namespace tools
