#include "tools/records/link_table.h"

#include <fmt/format.h>

#include <algorithm>

#include "carrier/indications.h"
#include "carrier/modem_messages.h"
#include "generic/utility_messages.h"
#include "nv/rde_messages.h"
#include "qmi/vendor_indications.h"

namespace tools {

namespace {

using namespace kesext;
using handset::Service;
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
constexpr FieldSpec kNetworkQuery[] = {{"mcc", 2, number}, {"mnc", 2, number},   {"flags_4", 2, bytes},
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

constexpr LinkRow kLink[] = {
    {Service::dms, 0x003B, kCode, kResultAndError},
    {Service::dms, 0x0052, kCodeChange, kResultAndError},
    {Service::nas, 0x0024, {}, kServingSystem},
    {Service::nas, 0x0044, kNetworkQuery, kNetworkName},
    {Service::nas, 0x004F, {}, kSignal},
    {Service::nas, 0x005A, kInterface, kTransmit},
    {Service::nas, 0x005B, kAkeyWrite, kResultAndError},
    {Service::vendor, kRdeRead.id, kRdeReadRequest, kRdeReadResponse},
    {Service::vendor, kRdeWrite.id, kRdeWriteRequest, kResultAndError},
    {Service::vendor, 0x000A, kValueWord, kPfpResponse},
    {Service::vendor, kUtility.id, kUtilityRequest, kUtilityResponse},
    {Service::vendor, 0x0010, kEngineeringRequest, kEngineeringResponse},
    {Service::vendor, kFactoryReset.id, kResetRequest, kResultByte},
    {Service::vendor, 0x0013, kSaveRequest, kSaveResponse},
    {Service::vendor, 0x0016, kZeroWord, kDataPlmn},
    {Service::vendor, kSetRoamingList.id, kRoamingSegment, kResultWord},
    {Service::vendor, kReadBand.id, kBandRead, kBandReadResponse},
    {Service::vendor, kWriteBand.id, kBandWrite, kResultWord},
    {Service::vendor, kSwitchProfile.id, kProfileSwitch, kResultWord},
    {Service::vendor, kReadTotOrder.id, {}, kTotRead},
    {Service::vendor, kUpdateTotOrder.id, kTotUpdate, kResultAndError},
    {Service::vendor, kReadEhrpdApns.id, {}, kApns},
    {Service::vendor, kReadLteServiceState.id, {}, kLteState},
    {Service::vendor, kReadBsrTimer.id, {}, kTimerRead},
    {Service::vendor, kSetBsrTimer.id, kTimerWrite, kResultAndError},
    {Service::vendor, kReadLteChannels.id, {}, kLteChannels},
    {Service::vendor, 0x0110, kTuning, kTuning},
};

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
    {IND_TUNER, "tuner", "a tuner event; 0x81 first is forwarded", kTunerEvent, 132},
};

}  // namespace

std::span<const LinkRow> linkTable() {
  return kLink;
}

const LinkRow* findLink(Service service, uint32_t id) {
  const auto* row = std::find_if(std::begin(kLink), std::end(kLink), [&](const LinkRow& candidate) {
    return candidate.service == service && candidate.id == id;
  });
  return row == std::end(kLink) ? nullptr : row;
}

std::string messageName(Service service, uint32_t id) {
  const handset::MessageRow* row = handset::findMessage(service, static_cast<uint16_t>(id));
  if (row == nullptr) return fmt::format("{} 0x{:04X}", handset::serviceName(service), id);
  std::string name(row->name);
  std::replace(name.begin(), name.end(), ' ', '-');
  return name;
}

std::optional<handset::Bytes> refusal(const handset::MessageRow& message, uint32_t error) {
  const LinkRow* row = findLink(message.service, message.id);
  if (row == nullptr || row->response.front().name != "result") return std::nullopt;
  handset::Bytes response(message.response_size);
  response[0] = message.done == 0 ? 1 : 0;
  if (row->response.size() > 1 && row->response[1].name == "error")
    handset::putLe(response, row->response[0].size, error);
  return response;
}

std::span<const IndicationRow> indicationTable() {
  return kIndications;
}

}  // namespace tools
