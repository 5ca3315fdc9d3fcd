// Names, antenna, utilities, coverage, reboot, data PLMN and PFP, from the parent to the modem and back.
#include <gmock/gmock.h>

#include "support/hook_process_test.h"

namespace kesext_test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

constexpr uint16_t kUtility = 0x000F;
constexpr uint16_t kTuner = 0x0110;
constexpr uint16_t kDataPlmn = 0x0016;
constexpr uint16_t kPfp = 0x000A;
constexpr uint16_t kPlmnName = 0x0044;

/// The modem's utility records.
Bytes utilityRequest(uint32_t type, uint32_t len, const Bytes& data) {
  return sized(concat(le32(type), le32(len), data), 264);
}
Bytes utilityResponse(uint32_t len, const Bytes& data) {
  return sized(concat(le32(9), le32(len), data), 520);
}

class GenericServicesTest : public HookProcessTest {
 protected:
  void SetUp() override { Start(); }

  /// The handler's lines of a generic request.
  std::vector<std::string> GenericLogs() {
    std::vector<std::string> lines = LogsOfLastRequest();
    EXPECT_GE(lines.size(), 4U);
    lines.erase(lines.begin(), lines.begin() + 4);
    return lines;
  }
  Bytes LastSent() { return modem_.requests().back().body; }
  /// The next unsolicited message is that of a test indication.
  void ExpectNothingForwarded() {
    modem_.indicate(0x0001, {});
    EXPECT_EQ(NextUnsolicited().size(), 50U);
  }
};

class PlmnNameTest : public GenericServicesTest {
 protected:
  static constexpr uint32_t kId = 0x0A0006;
  /// What the modem knows of the name.
  void ModemNames(uint8_t valid, uint32_t encoding, uint16_t length, const Bytes& name) {
    Bytes response(3944);
    response[0] = 3;
    response[4] = 7;
    response[8] = valid;
    handset::putLe(response, 36, encoding);
    handset::putLe(response, 48, length);
    std::copy(name.begin(), name.end(), response.begin() + 52);
    modem_.answer(Service::nas, kPlmnName, response);
  }
  void ModemNames(const Bytes& name) { ModemNames(1, 0, static_cast<uint16_t>(name.size()), name); }
  Bytes AskName() { return Ask(genericRequest(kId, hex("36 01 E7 03"))); }
  const Bytes failure_ = genericReply(kId, hex("05"));
};

TEST_F(PlmnNameTest, TheShortNameIsAnsweredInUtf8) {
  ModemNames(handset::bytesOf("Test"));
  EXPECT_EQ(AskName(), genericReply(kId, handset::bytesOf("Test")));
  EXPECT_EQ(LastSent(), sized(hex("36 01 E7 03 01 01 00 00 00 00 01 01"), 32));
  EXPECT_THAT(
      GenericLogs(),
      ElementsAre(E("Received request len = 4, mcc = 310, mnc = 999"), E("Response = 3, Error code = 7"),
                  E("EONS plmn name valid = 1"), E("Dumping modem response for GET_PLMN_NAME_REQ_MSG_V01..."),
                  E("HexDump=buffer overflow"), E("plmn short name is 7-bit Unpacked data Test"),
                  E("Sending OnRequest Complete")));
  ModemNames(hex("10 1B 0D 80"));
  EXPECT_EQ(AskName(), genericReply(kId, hex("CE 94 20 80")));
  EXPECT_THAT(GenericLogs(), Contains(D("ignored CR charecter at index = 2")));
}

TEST_F(PlmnNameTest, ALongNameIsCutTo255Characters) {
  for (const uint16_t length : {uint16_t{256}, uint16_t{0xFFFF}}) {
    ModemNames(1, 0, length, Bytes(3000, 0x10));
    Bytes text;
    for (int i = 0; i < 255; ++i)
      text = concat(text, hex("CE 94"));
    EXPECT_EQ(AskName(), genericReply(kId, text));
  }
}

TEST_F(PlmnNameTest, WithoutANameTheFailureByteIsAnswered) {
  struct Case {
    uint8_t valid;
    uint32_t encoding;
    Bytes name;
    const char* log;
  };
  const char* invalid = " plmn_resp.eons_plmn_name_3gpp_valid is FALSE!";
  const char* empty = "Invalid or Empty string received from modem";
  for (const Case& c :
       {Case{0, 0, hex("41"), invalid}, Case{2, 0, hex("41"), invalid}, Case{1, 1, hex("41"), invalid},
        Case{1, 0x100, hex("41"), invalid}, Case{1, 0, {}, empty}, Case{1, 0, hex("0D"), empty}}) {
    ModemNames(c.valid, c.encoding, static_cast<uint16_t>(c.name.size()), c.name);
    EXPECT_EQ(AskName(), failure_);
    EXPECT_THAT(GenericLogs(), Contains(E(c.log)));
  }
  modem_.fail(Service::nas, kPlmnName, 77);
  EXPECT_EQ(AskName(), failure_);
  EXPECT_THAT(GenericLogs(),
              ElementsAre(E("Received request len = 4, mcc = 310, mnc = 999"),
                          E("Response = 0, Error code = 0"), E("EONS plmn name valid = 0"),
                          E("Sending GET_PLMN_NAME_REQ_MSG_V01 failed!"), E("Sending OnRequest Complete")));
}

class AntennaTuningTest : public GenericServicesTest {
 protected:
  static constexpr uint32_t kId = 0x05002A;
};

TEST_F(AntennaTuningTest, ACommandIsPassedOnAndItsResponseBack) {
  modem_.answer(Service::vendor, kTuner, sized(concat(le32(3), hex("0A FF 0C EE")), 32));
  EXPECT_EQ(Ask(genericRequest(kId, hex("01 02"))), genericReply(kId, hex("0A FF 0C")));
  EXPECT_EQ(LastSent(), sized(concat(le32(2), hex("01 02")), 32));
  EXPECT_THAT(GenericLogs(),
              ElementsAre(E("receive request len  2"), E("Dumping modem response for QMI_TUNER_REQ_V01..."),
                          E("HexDump: Data 030000000AFF0CEE" + std::string(48, '0')),
                          E("kesext_hook_set_antenna_tuning sending response, msgLen 0x3.")));
}

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
    EXPECT_EQ(GenericLogs().back(), E("kesext_hook_set_antenna_tuning sending response, msgLen 0x1c."));
  }
  modem_.answer(Service::vendor, kTuner, Bytes(32));
  EXPECT_EQ(Ask(genericRequest(kId)), genericReply(kId, {}));
}

TEST_F(AntennaTuningTest, AFailedSendIsTheFailureByte) {
  modem_.fail(Service::vendor, kTuner, 77);
  EXPECT_EQ(Ask(genericRequest(kId, hex("01"))), genericReply(kId, hex("05")));
  EXPECT_THAT(GenericLogs(),
              ElementsAre(E("receive request len  1"), E("Sending QMI_TUNER_REQ_V01 failed! with error 77"),
                          E("kesext_hook_set_antenna_tuning sending response, msgLen 0x1.")));
}

TEST_F(AntennaTuningTest, EventsOfOneKindAreForwarded) {
  modem_.indicate(kTuner, sized(concat(le32(6), hex("01 81 03 04 05 06")), 132));
  EXPECT_TRUE(Logs("tunerIndHndlr: tuner indication is: 1 129"));
  EXPECT_THAT(parent_->logs(), Contains(E("tunerIndHndlr: tuner indication is: 1 129")));
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
  std::vector<std::string> lines = parent_->logsSince(mark);
  lines.erase(lines.begin(), lines.begin() + 4);
  EXPECT_THAT(lines, ElementsAre(E("tunerIndHndlr: failed to decode 0x110 ind data for -4"),
                                 E("tunerIndHndlr: dumping ind data[0] 0x81"),
                                 E("tunerIndHndlr: dumping ind data[1] 0x01"),
                                 E("tunerIndHndlr: dumping ind data[2] 0x0a")));
  modem_.indicate(kTuner, Bytes(133, 0x81));
  EXPECT_TRUE(Logs("tunerIndHndlr: dumping ind data[132] 0x81"));
  ExpectNothingForwarded();
}

class UtilityRequestsTest : public GenericServicesTest {
 protected:
  static constexpr uint32_t kUtils = 0x0200001E;
  static constexpr uint32_t kFilter = 0x05001E;
};

TEST_F(UtilityRequestsTest, AUtilityRecordPassesThroughUnchanged) {
  Bytes record = utilityRequest(77, 3, hex("F1 02 03"));
  record[263] = 0xF2;
  modem_.answer(Service::vendor, kUtility, utilityResponse(10, pattern(12)));
  EXPECT_EQ(Ask(cdmaRequest(kUtils, record)), cdmaResponse(kUtils, 0, pattern(10)));
  EXPECT_EQ(LastSent(), record);
  EXPECT_THAT(HandlerLogs(),
              ElementsAre(E("UTILS: req.req_data[0]241, req.req_data[UTILS_REQ_DATA_SIZE_V01-1] 242"),
                          E("UTILS: Sending request result is 0"), E("handleUtilsResponse"),
                          E("handleUtilsResponse for id 200001e, dataSize-10, respSize-10")));
}

TEST_F(UtilityRequestsTest, AnEmptyRecordIsNotSentAndAFailureShowsNoData) {
  EXPECT_EQ(Ask(cdmaRequest(kUtils, utilityRequest(1, 0, hex("01")))), cdmaResponse(kUtils, 0));
  EXPECT_EQ(modem_.requestCount(), 0U);
  EXPECT_EQ(HandlerLogs().front(), E("UTILS: Sending request result is -1"));
  modem_.fail(Service::vendor, kUtility, 77);
  EXPECT_EQ(Ask(cdmaRequest(kUtils, utilityRequest(1, 1, {}))), cdmaResponse(kUtils, 0));
  EXPECT_THAT(HandlerLogs(), Contains(E("UTILS: Sending request result is 77")));
}

TEST_F(UtilityRequestsTest, AResponseLengthIsBoundedTo512) {
  for (const uint32_t length : {512U, 513U, 0xFFFFFFFFU}) {
    modem_.answer(Service::vendor, kUtility, utilityResponse(length, pattern(512)));
    EXPECT_EQ(Ask(cdmaRequest(kUtils, utilityRequest(1, 1, {}))), cdmaResponse(kUtils, 0, pattern(512)));
    EXPECT_EQ(HandlerLogs().back(), E("handleUtilsResponse for id 200001e, dataSize-512, respSize-512"));
    EXPECT_EQ(Ask(genericRequest(0x050019)), genericReply(0x050019, pattern(512)));
  }
}

TEST_F(UtilityRequestsTest, TheFilterIsOneByte) {
  EXPECT_EQ(Ask(genericRequest(kFilter, hex("F1 02"))), genericReply(kFilter, hex("00")));
  EXPECT_EQ(LastSent(), utilityRequest(5, 1, hex("F1")));
  EXPECT_THAT(GenericLogs(), ElementsAre(E("sys_info filter: sending kesext util request"),
                                         E("sys_info filter: sending request result is 0"),
                                         E("sys_info filter: sending response, msgLen 0x1, resp value 0.")));
  modem_.fail(Service::vendor, kUtility, 77);
  EXPECT_EQ(Ask(concat(hex("02 05 00 1E"), hex("00 00 00 01 01"))), hex("02 05 00 1E 01 00 00 00 05"));
  EXPECT_EQ(GenericLogs().back(), E("sys_info filter: sending response, msgLen 0x1, resp value 5."));
}

class PfpTest : public GenericServicesTest {};

TEST_F(PfpTest, TheRequestIsAnsweredWithAStatus) {
  modem_.answer(Service::vendor, kPfp, sized(hex("02 81"), 12));
  EXPECT_EQ(Ask(cdmaRequest(0x0200001C, hex("FF"))), cdmaResponse(0x0200001C, 0));
  EXPECT_EQ(LastSent(), le32(0));
  EXPECT_THAT(HandlerLogs(),
              ElementsAre(E("MyPfp: Sending request "), E("MyPfp: returned rc=0 result =33026")));
  modem_.fail(Service::vendor, kPfp, 77);
  EXPECT_EQ(Ask(cdmaRequest(0x0200001C)), cdmaResponse(0x0200001C, 5));
  EXPECT_EQ(HandlerLogs().back(), E("MyPfp: returned rc=77 result =0"));
}

TEST_F(PfpTest, TheIndicationIsForwardedWhole) {
  const Bytes record = concat(hex("EE EE 02 81 03 00 00 80"), pattern(224));
  modem_.indicate(kPfp, record);
  EXPECT_EQ(NextUnsolicited(), handset::cdmaUnsolicited(0x0200001D, record));
  const std::string line = "mypfp_ind_msg_v01: rat = 33026 , tbl_idx = -2147483645 data_size = 232 ";
  EXPECT_TRUE(Logs(line));
  EXPECT_THAT(parent_->logs(), Contains(E(line)));
  modem_.indicate(kPfp, Bytes(231));
  EXPECT_TRUE(Logs("failed to decode pfp idl data"));
  EXPECT_THAT(parent_->logs(), Contains(E("failed to decode pfp idl data")));
  ExpectNothingForwarded();
}

class CoverageTest : public GenericServicesTest {
 protected:
  static constexpr uint32_t kZero = 0x050020;
  static constexpr uint32_t kSelector = 0x050029;
  static constexpr const char* kWarning = "sig_cov warning: no NULL found at the end of string";
};

TEST_F(CoverageTest, TheTextFollowsTheSelectorAndEndsInAZero) {
  EXPECT_EQ(Ask(genericRequest(kZero, hex("61 62 63 00"))), genericReply(kZero, hex("00")));
  EXPECT_EQ(LastSent(), utilityRequest(6, 5, hex("00 61 62 63 00")));
  EXPECT_THAT(GenericLogs(), ElementsAre(E("sig_cov: receive request 0 len 4"),
                                         E("kesext_handle_sig_cov_request sending response, msgLen 0x1.")));
  Ask(genericRequest(kZero, hex("61 62 63 64")));
  EXPECT_EQ(LastSent(), utilityRequest(6, 5, hex("00 61 62 63 00")));
  EXPECT_THAT(GenericLogs(), Contains(E(kWarning)));
  Ask(genericRequest(kSelector, hex("07 41 00")));
  EXPECT_EQ(LastSent(), utilityRequest(6, 4, hex("07 07 41 00")));
  EXPECT_THAT(GenericLogs(), Contains(E("sig_cov: receive request 7 len 3")));
  modem_.fail(Service::vendor, kUtility, 77);
  EXPECT_EQ(Ask(genericRequest(kSelector, hex("F7"))), genericReply(kSelector, hex("05")));
  EXPECT_EQ(GenericLogs().front(), E("sig_cov: receive request 247 len 1"));
}

TEST_F(CoverageTest, TheTextIsBoundedTo255Bytes) {
  Ask(genericRequest(kZero));
  EXPECT_EQ(LastSent(), utilityRequest(6, 1, {}));
  Bytes text = pattern(300);
  text[254] = 0x55;
  for (const char* length : {"00 00 00 FF", "00 00 03 E8", "FF FF FF FF"}) {
    Ask(concat(hex("00 05 00 20"), hex(length), text));
    EXPECT_EQ(LastSent(),
              utilityRequest(6, 256, concat(hex("00"), handset::ByteView(text).first(254), hex("00"))));
    EXPECT_THAT(GenericLogs(), Contains(E(kWarning)));
  }
}

TEST_F(CoverageTest, TheIndicationIsForwardedWhole) {
  modem_.indicate(0x010C, pattern(32));
  EXPECT_EQ(NextUnsolicited(), concat(hex("01000000 08000000 01 030004 20000000"), pattern(32), Bytes(12)));
  modem_.indicate(0x010C, pattern(33));
  EXPECT_TRUE(Logs("sigcovIndHndlr: failed to decode ind data"));
  EXPECT_THAT(parent_->logs(), Contains(E("sigcovIndHndlr: failed to decode ind data")));
  ExpectNothingForwarded();
}

class SilentRebootTest : public GenericServicesTest {
 protected:
  static constexpr uint32_t kId = 0x050019;
};

TEST_F(SilentRebootTest, TheModemsDataAreAnswered) {
  modem_.answer(Service::vendor, kUtility, utilityResponse(2, hex("00 F1 EE")));
  EXPECT_EQ(Ask(genericRequest(kId, hex("01"))), genericReply(kId, hex("00 F1")));
  EXPECT_EQ(LastSent(), utilityRequest(3, 0, {}));
  EXPECT_THAT(GenericLogs(),
              ElementsAre(E("Silent reboot: Sending kesext util request"),
                          E("Silent reboot: Sending request result is 0"), E("handleSilentRebootResponse >>"),
                          E("handleSilentRebootResponse for id 190005, resp len 2."),
                          E("handleSilentRebootResponse resp size 10."),
                          E("handleSilentRebootResponse , msgLen 0x2, resp value 241.")));
  modem_.answer(Service::vendor, kUtility, utilityResponse(0, hex("07")));
  EXPECT_EQ(Ask(genericRequest(kId)), genericReply(kId, {}));
  EXPECT_EQ(GenericLogs().back(), E("handleSilentRebootResponse , msgLen 0x0, resp value 0."));
}

TEST_F(SilentRebootTest, AFailedSendIsTheFailureByte) {
  modem_.fail(Service::vendor, kUtility, 77);
  EXPECT_EQ(Ask(genericRequest(kId)), genericReply(kId, hex("05")));
  EXPECT_THAT(GenericLogs(), Contains(E("Silent reboot: Sending request result is 77")));
  EXPECT_THAT(GenericLogs(), Contains(E(" Silent reboot send msg error, send back generic failure.")));
  EXPECT_EQ(GenericLogs().back(), E("handleSilentRebootResponse , msgLen 0x1, resp value 5."));
}

class DataPlmnTest : public GenericServicesTest {};

TEST_F(DataPlmnTest, TheBareRecordIsAnswered) {
  modem_.answer(Service::vendor, kDataPlmn, pattern(568));
  EXPECT_EQ(Ask(genericRequest(0x060001)), pattern(568));
  EXPECT_EQ(LastSent(), le32(0));
  EXPECT_THAT(GenericLogs(), ElementsAre(E("Dumping modem response for QMI_DATA_PLMN_REQ_V01..."),
                                         E("HexDump: Data " + handset::toHex(pattern(568), ""))));
  modem_.fail(Service::vendor, kDataPlmn, 77);
  EXPECT_EQ(Ask(genericRequest(0x060001)), Bytes(568));
  EXPECT_THAT(GenericLogs(), ElementsAre(E("Sending QMI_DATA_PLMN_REQ_V01 failed!")));
}

TEST_F(DataPlmnTest, TheIndicationIsAMessageWithoutPayload) {
  modem_.indicate(kDataPlmn, hex("01 02 03"));
  EXPECT_EQ(NextUnsolicited(), hex("01000000 08000000 00 020006 00000000 000000000000000000000000"));
}

}  // namespace
}  // namespace kesext_test
