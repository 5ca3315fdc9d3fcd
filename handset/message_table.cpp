#include "handset/message_table.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <tuple>

#include "carrier/indications.h"
#include "carrier/modem_messages.h"
#include "generic/utility_messages.h"
#include "nv/rde_messages.h"
#include "qmi/vendor_indications.h"

namespace handset {
namespace {

using namespace kesext;
using enum FieldKind;

/// The name and the size of a record's member.
#define MEMBER(Record, member) #member, sizeof(Record::member)

constexpr auto kZeros = WhenAbsent::zeros;
constexpr auto kCount = WhenAbsent::lengthOfRest;

constexpr FieldSpec kResultByte[] = {{MEMBER(FactoryResetResponse, result), number}};
constexpr FieldSpec kResultWord[] = {{MEMBER(ResultOnly, result), number}};
constexpr FieldSpec kResultAndError[] = {{MEMBER(ResultAndError, result), number},
                                         {MEMBER(ResultAndError, error), number}};

constexpr FieldSpec kCode[] = {{"code", 6, code}};
constexpr FieldSpec kCodeChange[] = {{"current", 6, code}, {"changed", 6, code}};
constexpr FieldSpec kServingSystem[] = {
    {"result", 4, number},           {"error", 4, number},      {"unread", 1096, bytes},
    {"values_1_2_valid", 1, number}, {"padding", 1, bytes},     {"value_1", 2, number},
    {"value_2", 2, number},          {"unread", 324, bytes},    {"value_3_valid", 1, number},
    {"padding", 1, bytes},           {"value_3", 4, hexNumber}, {"unread", 68, bytes}};
constexpr FieldSpec kNetworkQuery[] = {{"mcc", 2, number}, {"mnc", 2, number},     {"flags_4", 2, bytes},
                                       {"zero", 4, zeros}, {"flags_10", 2, bytes}, {"zero", 20, zeros}};
constexpr FieldSpec kNetworkName[] = {{"result", 4, number},
                                      {"error", 4, number},
                                      {"eons_name_valid", 1, number},
                                      {"unread", 27, bytes},
                                      {"short_name_encoding", 4, number},
                                      {"unread", 8, bytes},
                                      {"short_name_length", 2, number},
                                      {"unread", 2, bytes},
                                      {"short_name", 3892, bytes}};
constexpr FieldSpec kSignal[] = {{"result", 4, number},         {"error", 4, number},
                                 {"lte_valid", 1, number},      {"unread", 1, bytes},
                                 {"lte_rssi", 1, signedNumber}, {"lte_rsrq", 1, signedNumber},
                                 {"lte_rsrp", 2, signedNumber}, {"padding", 2, bytes}};
constexpr FieldSpec kInterface[] = {{"radio_interface", 4, number}};
constexpr FieldSpec kTransmit[] = {{"result", 4, number},
                                   {"error", 4, number},
                                   {"tx_valid", 1, number},
                                   {"padding", 3, bytes},
                                   {"tx_power", 4, signedNumber}};
constexpr FieldSpec kAkeyWrite[] = {{"code", 6, code}, {"akey", 26, text}};
constexpr FieldSpec kRdeReadRequest[] = {
    {MEMBER(RdeReadRequest, rde_index), element}, {MEMBER(RdeReadRequest, record_num), number},
    {MEMBER(RdeReadRequest, offset), number},     {MEMBER(RdeReadRequest, length), number},
    {MEMBER(RdeReadRequest, data_len), number},   {MEMBER(RdeReadRequest, data), bytes}};
constexpr FieldSpec kRdeReadResponse[] = {
    {MEMBER(RdeReadResponse, result), number},           {MEMBER(RdeReadResponse, error), number},
    {MEMBER(RdeReadResponse, rde_index), element},       {MEMBER(RdeReadResponse, record_num), number},
    {MEMBER(RdeReadResponse, offset), number},           {MEMBER(RdeReadResponse, length), number, kCount},
    {MEMBER(RdeReadResponse, data_len), number, kCount}, {MEMBER(RdeReadResponse, data), bytes}};
constexpr FieldSpec kRdeWriteRequest[] = {
    {MEMBER(RdeWriteRequest, rde_index), element},       {MEMBER(RdeWriteRequest, record_num), number},
    {MEMBER(RdeWriteRequest, offset), number},           {MEMBER(RdeWriteRequest, length), number, kCount},
    {MEMBER(RdeWriteRequest, data_len), number, kCount}, {MEMBER(RdeWriteRequest, data), bytes}};
constexpr FieldSpec kValueWord[] = {{"value", 4, number}};
constexpr FieldSpec kPfpResponse[] = {{"result", 2, number}, {"unread", 10, bytes}};
constexpr FieldSpec kUtilityRequest[] = {{MEMBER(utils_req_msg_v01, type), number},
                                         {MEMBER(utils_req_msg_v01, len), number, kCount},
                                         {MEMBER(utils_req_msg_v01, req_data), bytes}};
constexpr FieldSpec kUtilityResponse[] = {{"unread", sizeof(utils_resp_msg_v01::unread_0), bytes},
                                          {MEMBER(utils_resp_msg_v01, len), number, kCount},
                                          {MEMBER(utils_resp_msg_v01, data), bytes}};
constexpr FieldSpec kEngineeringRequest[] = {{"type", 4, number}};
constexpr FieldSpec kEngineeringResponse[] = {
    {"result", 4, number}, {"error", 4, number}, {"data_length", 4, number}, {"data", 1000, text}};
constexpr FieldSpec kResetRequest[] = {{MEMBER(FactoryResetRequest, reset_flag), hexNumber}};
constexpr FieldSpec kSaveRequest[] = {{"message", 1, hexNumber}};
constexpr FieldSpec kSaveResponse[] = {{"unread", 1, bytes}};
constexpr FieldSpec kZeroWord[] = {{"zero", 4, zeros}};
constexpr FieldSpec kDataPlmn[] = {{"record", 568, bytes}};
constexpr FieldSpec kRoamingSegment[] = {{MEMBER(RoamingListRequest, data_length), number, kCount},
                                         {MEMBER(RoamingListRequest, data), bytes}};
constexpr FieldSpec kBandRead[] = {{MEMBER(ReadBandRequest, band_index), number}};
constexpr FieldSpec kBandReadResponse[] = {{MEMBER(ReadBandResponse, result), number},
                                           {MEMBER(ReadBandResponse, band_status), number}};
constexpr FieldSpec kBandWrite[] = {{MEMBER(WriteBandRequest, band_index), number},
                                    {MEMBER(WriteBandRequest, band_status), number}};
constexpr FieldSpec kProfileSwitch[] = {{MEMBER(SwitchProfileRequest, profile), number}};
constexpr FieldSpec kTotRead[] = {{"unread", sizeof(TotOrderReadResponse::unread_0), bytes},
                                  {MEMBER(TotOrderReadResponse, count), number},
                                  {"unread", sizeof(TotOrderReadResponse::unread_12), bytes},
                                  {MEMBER(TotOrderReadResponse, entries), words}};
constexpr FieldSpec kTotUpdate[] = {{MEMBER(TotOrderUpdateRequest, count), number},
                                    {MEMBER(TotOrderUpdateRequest, zero), zeros},
                                    {MEMBER(TotOrderUpdateRequest, entries), words}};
constexpr FieldSpec kApns[] = {{"unread", sizeof(EhrpdApnResponse::unread_0), bytes},
                               {MEMBER(EhrpdApnResponse, count), number},
                               {MEMBER(EhrpdApnResponse, list_valid), number},
                               {"unread", sizeof(EhrpdApnResponse::unread_10), bytes},
                               {MEMBER(EhrpdApnEntry, apn), text},
                               {"unread", sizeof(EhrpdApnEntry::unread_103), bytes},
                               {MEMBER(EhrpdApnEntry, first_word), hexNumber},
                               {MEMBER(EhrpdApnEntry, second_word), hexNumber},
                               {"unread", sizeof(EhrpdApnEntry::unread_116), bytes},
                               {MEMBER(EhrpdApnEntry, block), bytes},
                               {"more", sizeof(EhrpdApnResponse::entries) - sizeof(EhrpdApnEntry), bytes}};
constexpr FieldSpec kLteState[] = {{MEMBER(LteServiceStateResponse, result), number},
                                   {MEMBER(LteServiceStateResponse, error), number},
                                   {MEMBER(LteServiceStateResponse, state), number},
                                   {"padding", 3, bytes}};
constexpr FieldSpec kTimerRead[] = {{MEMBER(BsrTimerResponse, result), number},
                                    {MEMBER(BsrTimerResponse, error), number},
                                    {MEMBER(BsrTimerResponse, timer), number}};
constexpr FieldSpec kTimerWrite[] = {{MEMBER(BsrTimerRequest, timer), number}};
constexpr FieldSpec kLteChannels[] = {{MEMBER(LteChannelResponse, result), number},
                                      {MEMBER(LteChannelResponse, error), number},
                                      {MEMBER(LteChannelResponse, first_channel_valid), number},
                                      {"padding", 1, bytes},
                                      {MEMBER(LteChannelResponse, first_channel), number},
                                      {MEMBER(LteChannelResponse, second_channel_valid), number},
                                      {"padding", 1, bytes},
                                      {MEMBER(LteChannelResponse, second_channel), number},
                                      {MEMBER(LteChannelResponse, first_value_valid), number},
                                      {MEMBER(LteChannelResponse, first_value), number},
                                      {MEMBER(LteChannelResponse, second_value_valid), number},
                                      {MEMBER(LteChannelResponse, second_value), number}};
constexpr FieldSpec kTuning[] = {{"length", 4, number, kCount}, {"data", 28, bytes}};

constexpr FieldSpec kCarrierValue[] = {{MEMBER(ValueIndication, value), number}};
constexpr FieldSpec kLteErrorReport[] = {{MEMBER(LteErrorIndication, first_word), hexNumber},
                                         {"value", 4, number},  // and its padding
                                         {MEMBER(LteErrorIndication, second_word), hexNumber},
                                         {MEMBER(LteErrorIndication, block), bytes, kZeros}};
constexpr FieldSpec kPfpReport[] = {{"unread", 2, bytes, kZeros}, {"rat", 2, number}, {"tbl_idx", 4, number}};
constexpr FieldSpec kTunerEvent[] = {{"length", 4, number, kCount}, {"event", 128, bytes}};
constexpr FieldSpec kCoverageRecord[] = {{"record", 32, bytes}};
constexpr FieldSpec kUtilityReport[] = {
    {"type", 4, number}, {"len", 4, number, kCount}, {"data", 512, bytes}};

#undef MEMBER

constexpr FieldValue kServingSystemSays[] = {
    {"values_1_2_valid", 1}, {"value_1", 310}, {"value_2", 120}, {"value_3_valid", 1}, {"value_3", 0x0A1B2C}};
constexpr std::string_view kShortName = "Testnet";  // its letters are the same in the GSM alphabet
constexpr FieldValue kNetworkNameSays[] = {
    {"eons_name_valid", 1}, {"short_name_length", kShortName.size()}, {"short_name", 0, kShortName}};
constexpr FieldValue kSignalSays[] = {
    {"lte_valid", 1}, {"lte_rssi", -62}, {"lte_rsrq", -9}, {"lte_rsrp", -95}};
constexpr FieldValue kTransmitSays[] = {{"tx_valid", 1}, {"tx_power", -35}};
constexpr FieldValue kApnsSay[] = {{"count", 1},
                                   {"list_valid", 1},
                                   {"apn", 0, "internet.example"},
                                   {"first_word", 1},
                                   {"second_word", 0x0100000A}};
constexpr FieldValue kLteStateSays[] = {{"state", 2}};
constexpr FieldValue kLteChannelsSay[] = {{"first_channel_valid", 1},  {"first_channel", 26665},
                                          {"second_channel_valid", 1}, {"second_channel", 8665},
                                          {"first_value_valid", 1},    {"first_value", 3},
                                          {"second_value_valid", 1},   {"second_value", 3}};

constexpr std::array kTable{
    MessageRow{Service::dms, 0x003B, "validate-programming-code", kCode, kResultAndError},
    MessageRow{Service::dms, 0x0052, "change-programming-code", kCodeChange, kResultAndError},

    MessageRow{Service::nas, 0x0024, "serving-system", {}, kServingSystem, 0, kServingSystemSays},
    MessageRow{Service::nas, 0x0044, "plmn-name", kNetworkQuery, kNetworkName, 0, kNetworkNameSays},
    MessageRow{Service::nas, 0x004F, "signal-information", {}, kSignal, 0, kSignalSays},
    MessageRow{Service::nas, 0x005A, "transmit-and-receive-information", kInterface, kTransmit, 0,
               kTransmitSays},
    MessageRow{Service::nas, 0x005B, "write-a-key", kAkeyWrite, kResultAndError},

    MessageRow{Service::vendor, kRdeRead.id, "rde-read", kRdeReadRequest, kRdeReadResponse},
    MessageRow{Service::vendor, kRdeWrite.id, "rde-write", kRdeWriteRequest, kResultAndError},
    MessageRow{Service::vendor, 0x000A, "pfp", kValueWord, kPfpResponse},
    MessageRow{Service::vendor, kUtility.id, "utility", kUtilityRequest, kUtilityResponse},
    MessageRow{Service::vendor, 0x0010, "engineering-information", kEngineeringRequest, kEngineeringResponse},
    MessageRow{Service::vendor, kFactoryReset.id, "factory-reset", kResetRequest, kResultByte,
               kFactoryReset.success},
    MessageRow{Service::vendor, 0x0013, "rf-data-save", kSaveRequest, kSaveResponse},
    MessageRow{Service::vendor, 0x0016, "data-plmn", kZeroWord, kDataPlmn},
    MessageRow{Service::vendor, kSetRoamingList.id, "roaming-list-segment", kRoamingSegment, kResultWord},
    MessageRow{Service::vendor, kReadBand.id, "band-read", kBandRead, kBandReadResponse},
    MessageRow{Service::vendor, kWriteBand.id, "band-write", kBandWrite, kResultWord},
    MessageRow{Service::vendor, kSwitchProfile.id, "profile-switch", kProfileSwitch, kResultWord},
    MessageRow{Service::vendor, kReadTotOrder.id, "tot-order-read", {}, kTotRead},
    MessageRow{Service::vendor, kUpdateTotOrder.id, "tot-order-update", kTotUpdate, kResultAndError,
               kUpdateTotOrder.success},
    MessageRow{Service::vendor, kReadEhrpdApns.id, "active-ehrpd-apn-list", {}, kApns, 0, kApnsSay},
    MessageRow{Service::vendor,
               kReadLteServiceState.id,
               "lte-service-state",
               {},
               kLteState,
               kReadLteServiceState.success,
               kLteStateSays},
    MessageRow{Service::vendor, kReadBsrTimer.id, "bsr-timer-read", {}, kTimerRead, kReadBsrTimer.success},
    MessageRow{Service::vendor, kSetBsrTimer.id, "bsr-timer-write", kTimerWrite, kResultAndError,
               kSetBsrTimer.success},
    MessageRow{Service::vendor,
               kReadLteChannels.id,
               "lte-channels",
               {},
               kLteChannels,
               kReadLteChannels.success,
               kLteChannelsSay},
    MessageRow{Service::vendor, 0x0110, "antenna-tuning", kTuning, kTuning},
};

// The others' fields are those of the process's own records.
static_assert(sizeOf(kServingSystem) == 1508 && sizeOf(kNetworkName) == 3944 && sizeOf(kSignal) == 16);
static_assert(sizeOf(kTransmit) == 16 && sizeOf(kEngineeringResponse) == 1012 && sizeOf(kPfpResponse) == 12);
static_assert(sizeOf(kLteState) == sizeof(LteServiceStateResponse) &&
              sizeOf(kApns) == sizeof(EhrpdApnResponse));
static_assert(sizeOf(kTotRead) == sizeof(TotOrderReadResponse) &&
              sizeOf(kLteChannels) == sizeof(LteChannelResponse));

constexpr bool before(const MessageRow& a, const MessageRow& b) {
  return std::tie(a.service, a.id) < std::tie(b.service, b.id);
}
static_assert(std::is_sorted(kTable.begin(), kTable.end(), before));

constexpr IndicationRow kIndications[] = {
    {IND_TEST, "test", "a test notification", {}, 0},
    {IND_PFP, "pfp", "PFP", kPfpReport, 232},
    {IND_UTILITY, "utility", "utility data: type 0, 2 or 3 goes to the parent, 1 is a packet of log",
     kUtilityReport, 520},
    {IND_CARRIER_VALUE, "carrier-value", "the carrier's value", kCarrierValue, sizeof(ValueIndication)},
    {IND_RF_SAVE, "rf-save", "asks for an RF data save", {}, 0},
    {IND_DATA_PLMN, "data-plmn", "the data PLMN changed", {}, 0},
    {IND_LTE_ERROR, "lte-error", "an LTE error", kLteErrorReport, sizeof(LteErrorIndication)},
    {IND_SIGNAL_COVERAGE, "coverage", "signal coverage", kCoverageRecord, 32},
    {IND_TUNER, "tuner", "a tuner event; one that begins with 8101 goes to the parent", kTunerEvent, 132},
};

}  // namespace

std::span<const MessageRow> messageTable() {
  return kTable;
}

const MessageRow* findMessage(Service service, uint32_t id) {
  const auto* row = std::find_if(kTable.begin(), kTable.end(), [&](const MessageRow& candidate) {
    return candidate.service == service && candidate.id == id;
  });
  return row != kTable.end() ? row : nullptr;
}

std::string messageName(Service service, uint32_t id) {
  if (const MessageRow* row = findMessage(service, id)) return std::string(row->name);
  std::array<char, 16> number{};
  std::snprintf(number.data(), number.size(), " 0x%04X", id);
  return std::string(serviceName(service)) + number.data();
}

std::optional<Bytes> refusal(const MessageRow& message, uint32_t error) {
  const Fields fields = message.response;
  if (fields.front().name != "result") return std::nullopt;
  Bytes response(message.response_size);
  response[0] = message.done == 0 ? 1 : 0;
  if (fields.size() > 1 && fields[1].name == "error") putLe(response, fields[0].size, error);
  return response;
}

std::span<const IndicationRow> indicationTable() {
  return kIndications;
}

const IndicationRow* findIndication(uint16_t id) {
  const auto* row = std::find_if(std::begin(kIndications), std::end(kIndications),
                                 [id](const IndicationRow& candidate) { return candidate.id == id; });
  return row != std::end(kIndications) ? row : nullptr;
}

std::string_view serviceName(Service service) {
  switch (service) {
    case Service::dms:
      return "dms";
    case Service::nas:
      return "nas";
    case Service::vendor:
      return "vendor";
  }
  return "unknown";
}

}  // namespace handset
