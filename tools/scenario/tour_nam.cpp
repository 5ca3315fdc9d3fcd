#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "core/ground/hook_ids.h"
#include "core/ground/hook_message.h"
#include "handset/example_nam.h"
#include "handset/hook_records.h"
#include "tools/scenario/tour_sections.h"

namespace tools {

using namespace handset;  // the vocabulary of records
using namespace kesext;   // the ids and the result codes

namespace {

/// handset::exampleNam() as a person types it, up to the code to change to.
constexpr std::string_view kNamWrite =
    "nam write mdn=5551234560 min=6195551234 homeSid=4183 homeNid=65535 scm=0xAA imsi11_12=12 mcc=310 "
    "pChannelA=283 pChannelB=384 sChannelA=691 sChannelB=777 vocoder=3 imsiT=310120123456789 "
    "accessOverloadClass=4 spc=000000";

}  // namespace

void tourCodes(TourStage& stage) {
  stage.section("The service programming code and the A-key");
  stage.ask("A code that the modem accepts", "spc validate spc=000000",
            cdmaResponse(HOOK_SPC_VALIDATE, HOOK_STATUS_SUCCESS, Bytes(6)));
  stage.ask("An A-key of 26 digits", "akey write 12345678901234567890123456 spc=000000",
            codedResponse(HOOK_AKEY_WRITE, HOOK_STATUS_SUCCESS));
  stage.ask("An A-key of 25 digits", "akey write 1234567890123456789012345 spc=000000",
            codedResponse(HOOK_AKEY_WRITE, HOOK_STATUS_FAILURE));
  stage.tell("answer validate-programming-code '01000000 0C000000'");
  stage.ask("A code that the modem refuses", "spc validate spc=000000",
            cdmaResponse(HOOK_SPC_VALIDATE, HOOK_STATUS_SPC_INVALID, Bytes(6)));
  stage.tell("restore validate-programming-code");
}

void tourNam(TourStage& stage) {
  stage.section("Provisioning: the NAM");
  stage.ask("Program the NAM", fmt::format("{} newSpc=000000", kNamWrite),
            codedResponse(HOOK_NAM_WRITE, HOOK_STATUS_SUCCESS));
  NamInfo read_back = exampleNam();
  std::copy_n(read_back.imsiT, 3, read_back.mccT);
  std::fill(std::begin(read_back.newSpc), std::end(read_back.newSpc), uint8_t{0});
  stage.ask("Read it back", "nam read spc=000000",
            cdmaResponse(HOOK_NAM_READ, HOOK_STATUS_SUCCESS, recordBytes(read_back)));
  const std::string with_new_code = fmt::format("{} newSpc=123456", kNamWrite);
  stage.ask("Program it with another service programming code", with_new_code,
            codedResponse(HOOK_NAM_WRITE, HOOK_STATUS_SUCCESS));
  stage.tell("answer change-programming-code '01000000 0C000000'");
  stage.ask("The same, and the modem refuses the code", with_new_code,
            codedResponse(HOOK_NAM_WRITE, HOOK_STATUS_FAILURE));
  stage.tell("restore change-programming-code");

  const Bytes pairs = concat(le32(4183), le32(65535), le32(4384), le32(1), Bytes(144));
  stage.ask("Write the SID/NID pairs", "sid-nid write 4183,65535,4384,1 spc=000000",
            codedResponse(HOOK_SID_NID_WRITE, HOOK_STATUS_SUCCESS));
  stage.ask("Read them back", "sid-nid read spc=000000",
            cdmaResponse(HOOK_SID_NID_READ, HOOK_STATUS_SUCCESS, pairs));
  stage.tell("set rde 28 06");
  stage.ask("The mobile protocol revision", "protocol-revision spc=000000",
            cdmaResponse(HOOK_PROTOCOL_REVISION, HOOK_STATUS_SUCCESS, hex("06 00 00 00")));
}

}  // namespace tools
