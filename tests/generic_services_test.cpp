// Names, antenna, utilities, coverage, reboot, data PLMN and PFP, from the parent to the modem and back.
#include <gmock/gmock.h>

#include "support/hook_process_test.h"

namespace kesext_test {
namespace {

constexpr uint16_t kUtility = 0x000F;
constexpr uint16_t kTuner = 0x0110;
constexpr uint16_t kDataPlmn = 0x0016;
constexpr uint16_t kPfp = 0x000A;
constexpr uint16_t kPlmnName = 0x0044;
constexpr uint16_t kCoverage = 0x010C;

/// The modem's utility records.
Bytes utilityRequest(uint32_t type, uint32_t len, const Bytes& data) {
  return sized(concat(le32(type), le32(len), data), 264);
}
Bytes utilityResponse(uint32_t len, const Bytes& data) {
  return sized(concat(le32(9), le32(len), data), 520);
}
/// The modem's record of a name.
Bytes plmnName(uint8_t valid, uint32_t encoding, uint16_t length, const Bytes& name) {
  Bytes response(3944);
  response[0] = 3;
  response[4] = 7;
  response[8] = valid;
  handset::putLe(response, 36, encoding);
  handset::putLe(response, 48, length);
  std::copy(name.begin(), name.end(), response.begin() + 52);
  return response;
}

class GenericServicesTest : public ServingTest {
 protected:
  Bytes LastSent() { return modem_.requests().back().body; }
};

/// Each service's answer and log, when the modem answers and when it is not reached.
TEST_F(GenericServicesTest, EveryServiceAnswersSuccessAndFailedSend) {
  struct Case {
    const char* name;
    Bytes request;
    uint16_t message;
    Bytes response;
  };
  Bytes record = utilityRequest(77, 3, hex("F1 02 03"));
  record[263] = 0xF2;
  const Case cases[] = {
      {"name", genericRequest(0x0A0006, hex("36 01 E7 03")), kPlmnName,
       plmnName(1, 0, 4, handset::bytesOf("Test"))},
      {"antenna tuning", genericRequest(0x05002A, hex("01 02")), kTuner,
       sized(concat(le32(3), hex("0A FF 0C EE")), 32)},
      {"utility record", cdmaRequest(0x0200001E, record), kUtility, utilityResponse(10, pattern(12))},
      {"utility record of no data", cdmaRequest(0x0200001E, utilityRequest(1, 0, hex("01"))), kUtility, {}},
      {"filter", genericRequest(0x0205001E, hex("F1 02")), kUtility, utilityResponse(0, {})},
      {"PFP", cdmaRequest(0x0200001C, hex("FF")), kPfp, sized(hex("02 81"), 12)},
      {"coverage", genericRequest(0x050020, hex("61 62 63 00")), kUtility, utilityResponse(0, {})},
      {"coverage that does not end", genericRequest(0x050020, hex("61 62 63 64")), kUtility,
       utilityResponse(0, {})},
      {"coverage of no text", genericRequest(0x050020), kUtility, utilityResponse(0, {})},
      {"coverage with a selector", genericRequest(0x050029, hex("F7 41 00")), kUtility,
       utilityResponse(0, {})},
      {"silent reboot", genericRequest(0x050019, hex("01")), kUtility, utilityResponse(2, hex("00 F1 EE"))},
      {"silent reboot without data", genericRequest(0x050019), kUtility, utilityResponse(0, hex("07"))},
      {"data PLMN", genericRequest(0x060001), kDataPlmn, pattern(568)},
  };
  for (const Case& c : cases) {
    const Service service = c.message == kPlmnName ? Service::nas : Service::vendor;
    modem_.answer(service, c.message, c.response);
    Record(std::string(c.name) + ", success", c.request, kAllLines);
    modem_.fail(service, c.message, 77);
    Record(std::string(c.name) + ", failed send", c.request, kAllLines);
  }
  ExpectGolden(record_, "generic_services");
}

class PlmnNameTest : public GenericServicesTest {
 protected:
  static constexpr uint32_t kId = 0x0A0006;
  void ModemNames(uint8_t valid, uint32_t encoding, uint16_t length, const Bytes& name) {
    modem_.answer(Service::nas, kPlmnName, plmnName(valid, encoding, length, name));
  }
  const Bytes request_ = genericRequest(kId, hex("36 01 E7 03"));
};

TEST_F(PlmnNameTest, ALongNameIsCutTo255Characters) {
  for (const uint16_t length : {uint16_t{256}, uint16_t{0xFFFF}}) {
    ModemNames(1, 0, length, Bytes(3000, 0x10));
    Bytes text;
    for (int i = 0; i < 255; ++i)
      text = concat(text, hex("CE 94"));
    EXPECT_EQ(Ask(request_), genericReply(kId, text));
  }
}

TEST_F(PlmnNameTest, AShortNameIsAnsweredInUtf8AndWithoutANameTheFailureByte) {
  struct Case {
    const char* title;
    uint8_t valid;
    uint32_t encoding;
    const char* name;
  };
  for (const Case& c : {Case{"short name", 1, 0, "10 1B 0D 80"}, Case{"no valid name", 0, 0, "41"},
                        Case{"another sign of validity", 2, 0, "41"}, Case{"another encoding", 1, 1, "41"},
                        Case{"an encoding of four bytes", 1, 0x100, "41"}, Case{"an empty name", 1, 0, ""},
                        Case{"a name of nothing that is shown", 1, 0, "0D"}}) {
    const Bytes name = hex(c.name);
    ModemNames(c.valid, c.encoding, static_cast<uint16_t>(name.size()), name);
    Record(c.title, request_, {"charecter", "FALSE", "Invalid"});
  }
  ExpectGolden(record_, "plmn_names");
}

class AntennaTuningTest : public GenericServicesTest {
 protected:
  static constexpr uint32_t kId = 0x05002A;
};

TEST_F(AntennaTuningTest, LengthsAreBounded) {
  const Bytes command = pattern(30);
  for (const char* length : {"00 00 00 18", "00 00 00 1E", "FF FF FF FF", "80 00 00 00"}) {
    Ask(concat(hex("00 05 00 2A"), hex(length), command));
    EXPECT_EQ(LastSent(), sized(concat(le32(24), handset::ByteView(command).first(24)), 32));
  }
  Ask(genericRequest(kId));
  EXPECT_EQ(LastSent(), Bytes(32));
  for (const uint32_t length : {28U, 29U, 0xFFFFFFFFU}) {
    modem_.answer(Service::vendor, kTuner, concat(le32(length), pattern(28)));
    EXPECT_EQ(Ask(genericRequest(kId)), genericReply(kId, pattern(28)));
    EXPECT_EQ(HandlerLogs().back(), E("kesext_hook_set_antenna_tuning sending response, msgLen 0x1c."));
  }
  modem_.answer(Service::vendor, kTuner, Bytes(32));
  EXPECT_EQ(Ask(genericRequest(kId)), genericReply(kId, {}));
}

TEST_F(AntennaTuningTest, EventsOfOneKindAreForwarded) {
  modem_.indicate(kTuner, sized(concat(le32(6), hex("01 81 03 04 05 06")), 132));
  ExpectLine("tunerIndHndlr: tuner indication is: 1 129");
  modem_.indicate(kTuner, sized(concat(le32(6), hex("81 01 03 04 05 06 EE")), 132));
  EXPECT_EQ(NextUnsolicited(), genericUnsolicited(0, 0x04000F, hex("81 01 03 04 05 06")));
  const Bytes data = concat(hex("81 01"), pattern(126));
  for (const uint32_t length : {128U, 129U, 0xFFFFFFFFU}) {
    modem_.indicate(kTuner, concat(le32(length), data));
    EXPECT_EQ(NextUnsolicited(), genericUnsolicited(0, 0x04000F, data));
  }
  modem_.indicate(kTuner, sized(concat(le32(0), hex("81 01")), 132));
  EXPECT_EQ(NextUnsolicited(), hex("01000000 08000000 00 0F0004 00000000 000000000000000000000000"));
}

TEST_F(AntennaTuningTest, AnEventOfAnotherSizeIsDumpedByteByByte) {
  const size_t mark = parent_->logMark();
  modem_.indicate(kTuner, hex("81 01 0A"));
  EXPECT_TRUE(Logs("tunerIndHndlr: dumping ind data[2] 0x0a"));
  ExpectGolden(parent_->logsSince(mark), "antenna_event_of_another_size");
  modem_.indicate(kTuner, Bytes(133, 0x81));
  EXPECT_TRUE(Logs("tunerIndHndlr: dumping ind data[132] 0x81"));
  ExpectNothingForwarded();
}

TEST_F(GenericServicesTest, AUtilityResponseIsBoundedTo512) {
  for (const uint32_t length : {512U, 513U, 0xFFFFFFFFU}) {
    modem_.answer(Service::vendor, kUtility, utilityResponse(length, pattern(512)));
    EXPECT_EQ(Ask(cdmaRequest(0x0200001E, utilityRequest(1, 1, {}))),
              cdmaResponse(0x0200001E, 0, pattern(512)));
    EXPECT_EQ(HandlerLogs().back(), E("handleUtilsResponse for id 200001e, dataSize-512, respSize-512"));
    EXPECT_EQ(Ask(genericRequest(0x050019)), genericReply(0x050019, pattern(512)));
  }
}

TEST_F(GenericServicesTest, ACoverageTextIsBoundedTo255Bytes) {
  Bytes text = pattern(300);
  text[254] = 0x55;
  for (const char* length : {"00 00 00 FF", "00 00 03 E8", "FF FF FF FF"}) {
    Ask(concat(hex("00 05 00 20"), hex(length), text));
    EXPECT_EQ(LastSent(),
              utilityRequest(6, 256, concat(hex("00"), handset::ByteView(text).first(254), hex("00"))));
  }
}

TEST_F(GenericServicesTest, IndicationsOfTheirSizeAreForwardedWhole) {
  const Bytes record = concat(hex("EE EE 02 81 03 00 00 80"), pattern(224));
  modem_.indicate(kPfp, record);
  EXPECT_EQ(NextUnsolicited(), cdmaUnsolicited(0x0200001D, record));
  ExpectLine("mypfp_ind_msg_v01: rat = 33026 , tbl_idx = -2147483645 data_size = 232 ");
  modem_.indicate(kPfp, Bytes(231));
  ExpectLine("failed to decode pfp idl data");
  modem_.indicate(kCoverage, pattern(32));
  EXPECT_EQ(NextUnsolicited(), concat(hex("01000000 08000000 01 030004 20000000"), pattern(32), Bytes(12)));
  modem_.indicate(kCoverage, pattern(33));
  ExpectLine("sigcovIndHndlr: failed to decode ind data");
  modem_.indicate(kDataPlmn, hex("01 02 03"));
  EXPECT_EQ(NextUnsolicited(), hex("01000000 08000000 00 020006 00000000 000000000000000000000000"));
  ExpectNothingForwarded();
}

}  // namespace
}  // namespace kesext_test
