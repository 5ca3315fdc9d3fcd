#include "generic/plmn_name.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "core/ground/byte_access.h"
#include "core/ground/hex_text.h"
#include "core/ground/log.h"
#include "core/ground/parent_pipes.h"
#include "generic/gsm_alphabet.h"
#include "qmi/send.h"

namespace kesext {

namespace {

/// Characters of a short name that are converted, so that the longest UTF-8 text fits its buffer.
constexpr uint16_t kShortNameMax = 255;
constexpr size_t kShortNameUtf8Size = 512;
static_assert(2 * kShortNameMax + 1 <= kShortNameUtf8Size);

constexpr uint8_t kNameValid = 1;
constexpr uint32_t kEncodingGsm7BitUnpacked = 0;

/// The fields that are not named are the record's optional ones, left out by their zero.
struct PlmnNameRequest {
  uint16_t mcc;
  uint16_t mnc;
  uint8_t flag_4;
  uint8_t flag_5;
  uint8_t zero_6[4];
  uint8_t flag_10;
  uint8_t flag_11;
  uint8_t zero_12[20];
};
static_assert(sizeof(PlmnNameRequest) == 32);
static_assert(offsetof(PlmnNameRequest, mnc) == 2);
static_assert(offsetof(PlmnNameRequest, flag_4) == 4);
static_assert(offsetof(PlmnNameRequest, flag_5) == 5);
static_assert(offsetof(PlmnNameRequest, flag_10) == 10);
static_assert(offsetof(PlmnNameRequest, flag_11) == 11);

struct PlmnNameResponse {
  uint32_t result;
  uint32_t error;
  uint8_t eons_name_valid;
  uint8_t unread_9[27];
  uint32_t short_name_encoding;
  uint8_t unread_40[8];
  uint16_t short_name_length;  // characters
  uint8_t unread_50[2];
  uint8_t short_name[3892];  // one character per byte; not all of it is the name's
};
static_assert(sizeof(PlmnNameResponse) == 3944);
static_assert(offsetof(PlmnNameResponse, error) == 4);
static_assert(offsetof(PlmnNameResponse, eons_name_valid) == 8);
static_assert(offsetof(PlmnNameResponse, short_name_encoding) == 36);
static_assert(offsetof(PlmnNameResponse, short_name_length) == 48);
static_assert(offsetof(PlmnNameResponse, short_name) == 52);

constexpr NasMessage<PlmnNameRequest, PlmnNameResponse> kPlmnName{0x0044};

/// The short name in UTF-8. 0 when there is none, else its length.
size_t shortNameOf(int32_t sent, const PlmnNameResponse& response, char (&name)[kShortNameUtf8Size]) {
  if (sent != 0) {
    LOGE("Sending GET_PLMN_NAME_REQ_MSG_V01 failed!");
    return 0;
  }
  LOGE("Dumping modem response for GET_PLMN_NAME_REQ_MSG_V01...");
  hexDump(reinterpret_cast<const uint8_t*>(&response), sizeof response);
  if (response.eons_name_valid != kNameValid || response.short_name_encoding != kEncodingGsm7BitUnpacked) {
    LOGE(" plmn_resp.eons_plmn_name_3gpp_valid is FALSE!");
    return 0;
  }
  const uint16_t length = std::min(response.short_name_length, kShortNameMax);
  if (gsm_alphabet_to_utf8(response.short_name, length, name) == 0) {
    LOGE("Invalid or Empty string received from modem");
    return 0;
  }
  LOGE("plmn short name is 7-bit Unpacked data %s", name);
  return std::strlen(name);
}

}  // namespace

int handlePlmnNameRequest(const HookRequest& request, uint32_t, uint32_t) {
  const uint16_t mcc = loadLe16(request.genericPayload());
  const uint16_t mnc = loadLe16(request.genericPayload() + 2);
  LOGE("Received request len = %d, mcc = %d, mnc = %d", request.genericMsgLen(), mcc, mnc);
  const PlmnNameRequest query{.mcc = mcc, .mnc = mnc, .flag_4 = 1, .flag_5 = 1, .flag_10 = 1, .flag_11 = 1};
  PlmnNameResponse response;
  const int32_t sent = sendNas(kPlmnName, query, response);
  LOGE("Response = %d, Error code = %d", response.result, response.error);
  LOGE("EONS plmn name valid = %d", response.eons_name_valid);
  char name[kShortNameUtf8Size] = "";
  const size_t length = shortNameOf(sent, response, name);
  LOGE("Sending OnRequest Complete");
  if (length == 0)
    sendGenericStatus(request, HOOK_STATUS_FAILURE);
  else
    sendGenericReply(request, reinterpret_cast<const uint8_t*>(name), static_cast<uint32_t>(length));
  return 0;
}

}  // namespace kesext
