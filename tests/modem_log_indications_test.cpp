// Utility indications: what is forwarded, and how packets become packages.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>

#include "support/modem_log_test.h"

namespace kesext_test {
namespace {

using handset::ByteView;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

using Files = std::map<std::string, Bytes>;

constexpr size_t kPayloadMax = handset::kLogPacketPayloadMax;
constexpr uint32_t kOtherHeader = 0xA1B2C3D4;
const std::string kKpiSent = "adam_handle_kpi_data: send data out";

std::string headerText(uint32_t header) {
  std::ostringstream text;
  text << "header 0x" << std::hex << header;
  return text.str();
}

class ModemLogIndicationsTest : public ModemLogTest {
 protected:
  void SetUp() override { Start(); }

  /// Lets the modem send packets, and gives what adamIndHndlr logged of them, without its name, and what of
  /// packages for the parent.
  Lines Packets(const std::vector<LogPacket>& packets) {
    std::vector<Bytes> indications(packets.size());
    std::transform(packets.begin(), packets.end(), indications.begin(), logPacketIndication);
    Lines lines;
    for (const std::string& line : Indicate(indications)) {
      if (line.starts_with("adamIndHndlr: ")) lines.push_back(line.substr(14));
      if (line == kKpiSent) lines.push_back(line);
    }
    return lines;
  }
  /// The packages that are not complete.
  Files Packages() const {
    Files files;
    for (const handset::LogEntry& entry : handset::logEntries(folder_))
      if (entry.name.front() == '~') files[entry.name] = folder_.readFile("/data/adam/" + entry.name).value();
    return files;
  }
};

TEST_F(ModemLogIndicationsTest, ThreeTypesAreForwarded) {
  struct Case {
    uint32_t type;
    Bytes id;
    Bytes prefix;
  };
  const Bytes data = pattern(512);
  for (const Case& c : {Case{0, hex("0B0003"), hex("02")}, {2, hex("0C0004"), {}}, {3, hex("0E0004"), {}}}) {
    for (const uint32_t len : {0U, 10U, 512U, 513U, 0xFFFFFFFFU}) {
      SCOPED_TRACE(testing::Message() << "type " << c.type << ", len " << len);
      const Bytes valid = sized(data, std::min(len, 512U));
      const Bytes length = le32(static_cast<uint32_t>(c.prefix.size() + valid.size()));
      const Bytes message = concat(hex("01000000 08000000 00"), c.id, length, c.prefix, valid, Bytes(12));
      EXPECT_THAT(Indicate({utilityIndication(c.type, data, len)}),
                  ElementsAre("utils_ind_msg_v01: respsize=" + std::to_string(message.size()) +
                              ", msgLen=" + std::to_string(valid.size())));
      EXPECT_THAT(forwarded_, ElementsAre(message));
    }
  }
}

TEST_F(ModemLogIndicationsTest, WhatIsNoUtilityIndicationIsOnlyLogged) {
  const std::string undecoded = "uploadbplogs:failed to decode idl data";
  EXPECT_THAT(Indicate({utilityIndication(4, {}), {}, Bytes(519), Bytes(521)}),
              ElementsAre("utilsIndHndlr: unknown indication type [4]", undecoded, undecoded, undecoded));
  EXPECT_THAT(forwarded_, IsEmpty());
}

TEST_F(ModemLogIndicationsTest, PerformanceIndicatorsAreForwardedAndNotStored) {
  // Each is of another package, which would be refused if the one before were not over.
  uint8_t id = 0;
  for (const uint32_t header : handset::kKpiHeaders) {
    for (const uint16_t size : std::initializer_list<uint16_t>{5, 255, 256, 300, 506, 507, 65535}) {
      SCOPED_TRACE(testing::Message() << headerText(header) << ", size " << size);
      const Bytes payload = concat(le32(header), pattern(kPayloadMax - 4));
      const uint8_t last = ++id % 2;
      EXPECT_THAT(Packets({{id, 1, last, payload, size}}), ElementsAre(headerText(header), kKpiSent));
      EXPECT_THAT(forwarded_, ElementsAre(concat(hex("01000000 08000000 01 040004"), le32(size % 256U),
                                                 ByteView(payload).first(size % 256), Bytes(12))));
    }
  }
  EXPECT_FALSE(std::filesystem::exists(folder_.path("/data/adam")));
}

TEST_F(ModemLogIndicationsTest, PacketsHaveToFollowEachOther) {
  struct Step {
    LogPacket packet;
    Lines lines;
  };
  const Bytes log = concat(le32(kLogHeader), handset::bytesOf("log"));
  const std::string header = "header 0x1c0ffee";
  const Step steps[] = {
      {{3, 1, 0, log}, {header}},
      {{4, 5, 0, hex("11")}, {"wrong pckage id [4] received, cur [3]"}},
      {{4, 9, 0, hex("12")}, {}},
      {{4, 10, 2, hex("13")}, {}},
      {{4, 10, 0, {}}, {"wrong seq id [10] received, cur [11]"}},
      {{4, 11, 1, {}}, {"zero pckage size"}},
      {{4, 11, 1, hex("15"), 507}, {"bad pckage size [507]"}},
      // Sequence id 1 begins the package anew, but its count goes on.
      {{5, 0, 0, hex("21")}, {}},
      {{5, 1, 0, log}, {header}},
      {{5, 2, 0, hex("22")}, {}},
      {{5, 1, 0, log}, {header}},
      {{5, 2, 1, hex("23")}, {"wrong seq id [2] received, cur [4]"}},
      {{6, 254, 0, hex("24")}, {}},
      {{6, 255, 0, hex("25")}, {}},
      {{6, 0, 0, hex("26")}, {"wrong seq id [0] received, cur [256]"}},
      {{7, 1, 1, {}}, {"zero pckage size"}},
      {{8, 1, 1, le32(kLogHeader)}, {"bad header"}},
      {{9, 1, 1, log, 507}, {header, "bad pckage size [507]"}},
      {{10, 1, 0, le32(kOtherHeader), 5}, {"header 0xa1b2c3d4", "unknown header 0xa1b2c3d4"}},
      {{10, 2, 1, hex("31")}, {"received the last pkg of 10"}},
      {{11, 1, 1, hex("FFFFFFFF 41")}, {"header 0xffffffff", "received the last pkg of 11"}},
      {{12, 1, 1, log}, {header, "received the last pkg of 12"}},
  };
  for (const Step& step : steps) {
    SCOPED_TRACE(&step - steps);
    EXPECT_THAT(Packets({step.packet}), ElementsAreArray(step.lines));
  }
  EXPECT_EQ(Packages(), (Files{{"~adam0003.log", handset::bytesOf("log")},
                               {"~adam0004.log", hex("12 13")},
                               {"~adam0005.log", handset::bytesOf("log")},
                               {"~adam0006.log", hex("24 25")}}));
  EXPECT_EQ(CurrentLog(), concat(hex("D4C3B2A1 00 31 FFFFFFFF 41"), handset::bytesOf("log")));
}

TEST_F(ModemLogIndicationsTest, APackageMayHave255Packets) {
  const Bytes content = pattern(255 * kPayloadMax - 4);
  Indicate(logPackage(255, kLogHeader, content));
  EXPECT_EQ(CurrentLog(), content);
}

}  // namespace
}  // namespace kesext_test
