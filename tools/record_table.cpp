#include "tools/record_table.h"

#include "core/ground/hook_message.h"

namespace tools {

namespace {

using enum FieldKind;

constexpr FieldSpec kData[] = {{"data", bytes, kRest}};
constexpr FieldSpec kElementWord[] = {{"value", number, 4}};
constexpr FieldSpec kElementAddress[] = {
    {"rde_index", element, 4}, {"record_num", number, 4}, {"offset", number, 4}, {"length", number, 4}};
constexpr FieldSpec kElementWrite[] = {{"rde_index", element, 4},
                                       {"record_num", number, 4},
                                       {"offset", number, 4},
                                       {"length", number, 4},
                                       {"data", bytes, kRest}};
constexpr FieldSpec kElementAnswer[] = {{"rde_index", element, 4}, {"record_num", number, 4},
                                        {"offset", number, 4},     {"length", number, 4},
                                        {"data", bytes, kRest},    {"end", zeros, 4}};
constexpr FieldSpec kNamInfo[] = {
    {"mdn", text, 16},        {"min", text, 16},        {"homeSid", number, 4},
    {"homeNid", number, 4},   {"scm", hexNumber, 4},    {"imsi11_12", text, 4},
    {"mcc", text, 4},         {"pChannelA", number, 4}, {"pChannelB", number, 4},
    {"sChannelA", number, 4}, {"sChannelB", number, 4}, {"vocoder", signedNumber, 4},
    {"mccT", text, 4},        {"imsiT", text, 16},      {"overload", number, 4},
    {"newSpc", code, 6},      {"reserved", zeros, 2}};
constexpr FieldSpec kSidNidPairs[] = {{"SID 1", number, 4},
                                      {"NID 1", number, 4},
                                      {"SID 2", number, 4},
                                      {"NID 2", number, 4},
                                      {"18 more pairs", bytes, kRest}};
constexpr FieldSpec kRevision[] = {{"revision", number, 1}, {"zero", zeros, 3}};
constexpr FieldSpec kReport[] = {{"report", bytes, kRest}};
constexpr FieldSpec kBandStatus[] = {{"band status", number, 4}};
constexpr FieldSpec kRoamingList[] = {{"size", number, 4}, {"data", bytes, kRest}};
constexpr FieldSpec kProfile[] = {{"profile", number, 4}};
constexpr FieldSpec kResetFlag[] = {{"reset flag", hexNumber, 1}};
constexpr FieldSpec kDdtmRead[] = {{"preference", number, 4}};
constexpr FieldSpec kDdtmWrite[] = {{"preference", number, 1}};
constexpr FieldSpec kNoCode[] = {{"code", zeros, 6}};
constexpr FieldSpec kTimer[] = {{"timer", number, 4}};
constexpr FieldSpec kTotOrder[] = {{"entries", number, 2}, {"entry words", bytes, kRest}};
constexpr FieldSpec kAkey[] = {{"A-key", text, kRest}};
constexpr FieldSpec kLteData[] = {
    {"service", number, 4},      {"serving 1", number, 2},   {"serving 2", number, 2},
    {"serving 3", hexNumber, 4}, {"channel 1", number, 1},   {"channel 2", number, 1},
    {"1st channel", number, 4},  {"2nd channel", number, 4}, {"RSSI", signedNumber, 1},
    {"RSRP", signedNumber, 2},   {"RSRQ", signedNumber, 1},  {"TX power", signedNumber, 4}};
constexpr FieldSpec kApnList[] = {{"APNs", number, 1},          {"APN 1", text, 103},
                                  {"first word", hexNumber, 4}, {"second word", hexNumber, 4},
                                  {"block", bytes, 16},         {"APN 2 to 8", bytes, kRest}};
constexpr FieldSpec kValue[] = {{"value", number, 4}};
constexpr FieldSpec kLteError[] = {
    {"first word", hexNumber, 4}, {"value", number, 1}, {"second word", hexNumber, 4}, {"block", bytes, 103}};
constexpr FieldSpec kUtility[] = {{"type", number, 4}, {"len", number, 4}, {"req_data", bytes, kRest}};
constexpr FieldSpec kPfpRecord[] = {
    {"unread", bytes, 2}, {"rat", number, 2}, {"tbl_idx", number, 4}, {"more", bytes, kRest}};
constexpr FieldSpec kStatusByte[] = {{"status", status, 1}};
constexpr FieldSpec kFilter[] = {{"filter", number, 1}};
constexpr FieldSpec kCoverageText[] = {{"text", text, kRest}};
constexpr FieldSpec kCoverageSelector[] = {{"selector", number, 1}, {"text", text, kRest}};
constexpr FieldSpec kNetwork[] = {{"MCC", number, 2}, {"MNC", number, 2}};
constexpr FieldSpec kName[] = {{"name", utf8, kRest}};
constexpr FieldSpec kCommand[] = {{"command", bytes, kRest}};
constexpr FieldSpec kEvent[] = {{"event", bytes, kRest}};
constexpr FieldSpec kRecord[] = {{"record", bytes, kRest}};
constexpr FieldSpec kUtilityData[] = {{"prefix", hexNumber, 1}, {"data", bytes, kRest}};
constexpr FieldSpec kPerformance[] = {{"header", hexNumber, 4}, {"data", bytes, kRest}};
constexpr FieldSpec kNotification[] = {{"text", text, 22}};

constexpr RequestRow kRequests[] = {
    {Family::cdma, 0x02000001, "read the NAM", {}, kNamInfo},
    {Family::cdma, 0x02000002, "program the NAM", kNamInfo, {}},
    {Family::cdma, 0x02000003, "read the SID/NID pairs", {}, kSidNidPairs},
    {Family::cdma, 0x02000004, "write the SID/NID pairs", kSidNidPairs, {}},
    {Family::cdma, 0x02000007, "read the mobile protocol revision", {}, kRevision},
    {Family::cdma, 0x02000008, "write element 0x1C", kData, {}},
    {Family::cdma, 0x0200000A, "validate the service programming code", {}, kNoCode},
    {Family::cdma, 0x0200000D, "read element 0x2713", {}, kElementWord},
    {Family::cdma, 0x0200000E, "write element 0x2713", kData, {}},
    {Family::cdma, 0x0200000F, "read element 0x25", {}, kElementWord},
    {Family::cdma, 0x02000010, "write element 0x25", kData, {}},
    {Family::cdma, 0x02000011, "call-processing engineering data", {}, kReport},
    {Family::cdma, 0x02000012, "EVDO engineering data", {}, kReport},
    {Family::cdma, 0x02000013, "write the A-key", kAkey, {}},
    {Family::cdma, 0x02000015, "write any element", kElementWrite, {}},
    {Family::cdma, 0x02000016, "read any element", kElementAddress, kElementAnswer},
    {Family::cdma, 0x02000017, "read element 0x26", {}, kElementWord},
    {Family::cdma, 0x02000018, "write element 0x26", kData, {}},
    {Family::cdma, 0x02000019, "read element 0x27", {}, kElementWord},
    {Family::cdma, 0x0200001A, "write element 0x27", kData, {}},
    {Family::cdma, 0x0200001C, "PFP", {}, {}},
    {Family::cdma, 0x0200001E, "utility", kUtility, kData},
    {Family::cdma, 0x020000B0, "read the band class 10 status", {}, kBandStatus},
    {Family::cdma, 0x020000B1, "write the band class 10 status", kBandStatus, {}},
    {Family::cdma, 0x020000B2, "read the band class 14 status", {}, kBandStatus},
    {Family::cdma, 0x020000B3, "write the band class 14 status", kBandStatus, {}},
    {Family::cdma, 0x020000B4, "send a roaming list (PRL) segment", kRoamingList, {}},
    {Family::cdma, 0x020000B5, "switch the active profile", kProfile, {}},
    {Family::cdma, 0x020000B6, "factory reset", kResetFlag, {}},
    {Family::cdma, 0x020000B7, "read the DDTM preference", {}, kDdtmRead},
    {Family::cdma, 0x020000B8, "write the DDTM preference", kDdtmWrite, {}},
    {Family::cdma, 0x020000B9, "read the DDTM preference", {}, kDdtmRead},
    {Family::cdma, 0x020000BA, "write the DDTM preference", kDdtmWrite, {}},
    {Family::cdma, 0x020000BB, "obsolete", {}, {}},
    {Family::cdma, 0x020000BC, "read the BSR timer", {}, kTimer},
    {Family::cdma, 0x020000BD, "write the BSR timer", kTimer, {}},
    {Family::cdma, 0x020000BE, "read the LTE option", {}, kData},
    {Family::cdma, 0x020000BF, "write the LTE option", kData, {}},
    {Family::cdma, 0x020000C0, "LTE data", {}, kLteData},
    {Family::cdma, 0x020000C1, "active eHRPD APN list", {}, kApnList},
    {Family::cdma, 0x020000C2, "obsolete", {}, {}},
    {Family::cdma, 0x020000C3, "obsolete", {}, {}},
    {Family::cdma, 0x020000C4, "read the TOT order", {}, kTotOrder},
    {Family::cdma, 0x020000C5, "update the TOT order", kTotOrder, {}},
    {Family::cdma, 0x020000C6, "obsolete", {}, {}},
    {Family::cdma, 0x020000C7, "obsolete", {}, {}},
    {Family::cdma, 0x020000C8, "obsolete", {}, {}},
    {Family::cdma, 0x020000C9, "obsolete", {}, {}},
    {Family::cdma, 0x020000CA, "obsolete", {}, {}},
    {Family::cdma, 0x020000CB, "obsolete", {}, {}},
    {Family::generic, 0x050019, "silent reboot", {}, kData},
    {Family::generic, 0x05001E, "system-information filter", kFilter, kStatusByte},
    {Family::generic, 0x060001, "data PLMN", {}, kRecord, true},
    {Family::generic, 0x050020, "signal coverage", kCoverageText, kStatusByte},
    {Family::generic, 0x050029, "signal coverage with a selector", kCoverageSelector, kStatusByte},
    {Family::generic, 0x0A0006, "PLMN name", kNetwork, kName},
    {Family::generic, 0x05002A, "antenna tuning", kCommand, kData},
};

constexpr UnsolicitedRow kUnsolicited[] = {
    {Family::cdma, 1111, "test notification", kNotification},
    {Family::cdma, 0x0200001D, "PFP", kPfpRecord},
    {Family::cdma, 0x020001B0, "carrier value", kValue},
    {Family::cdma, 0x020001B1, "LTE error", kLteError},
    {Family::generic, 0x03000B, "utility data, type 0", kUtilityData},
    {Family::generic, 0x040003, "signal coverage", kRecord},
    {Family::generic, 0x040004, "performance indicators", kPerformance},
    {Family::generic, 0x04000C, "utility data, type 2", kData},
    {Family::generic, 0x04000E, "utility data, type 3", kData},
    {Family::generic, 0x04000F, "tuner event", kEvent},
    {Family::generic, 0x060002, "data PLMN changed", {}},
};

template <typename Row, size_t N>
const Row* find(const Row (&table)[N], Family family, uint32_t id) {
  for (const Row& row : table)
    if (row.family == family && row.id == id) return &row;
  return nullptr;
}

}  // namespace

const RequestRow* findRequest(Family family, uint32_t id) {
  return find(kRequests, family, id);
}

const UnsolicitedRow* findUnsolicited(Family family, uint32_t id) {
  return find(kUnsolicited, family, id);
}

std::string_view statusName(uint32_t status) {
  switch (status) {
    case kesext::HOOK_STATUS_SUCCESS:
      return "success";
    case kesext::HOOK_STATUS_SPC_INVALID:
      return "code refused";
    case kesext::HOOK_STATUS_FAILURE:
      return "failure";
    case kesext::HOOK_STATUS_NOT_SUPPORTED:
      return "not supported";
    default:
      return "unknown";
  }
}

}  // namespace tools
