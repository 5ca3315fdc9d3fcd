// The properties that start-up publishes.
#include <gmock/gmock.h>

#include <filesystem>
#include <optional>

#include "support/hook_process_test.h"

namespace kesext_test {
namespace {

constexpr const char* kBands = "ril.lte.bc.config";
constexpr const char* kNumber = "ril.baseband.config.ver_num";
constexpr const char* kVersion = "ril.baseband.config.version";

class BasebandPropertiesTest : public HookProcessTest {
 protected:
  /// Starts the process anew over these elements; an empty one does not exist.
  void Restart(const Bytes& bands, const std::string& fsg, const std::string& flex, int instance_id = 0) {
    parent_.reset();
    modem_.change([](handset::ModemState& state) { state.elements.clear(); });
    for (const char* name : {kBands, kNumber, kVersion})
      std::filesystem::remove(folder_.path("/properties/") + name);
    if (!bands.empty()) modem_.setElement(53, bands);
    if (!fsg.empty()) modem_.setElement(8029, handset::bytesOf(fsg));
    if (!flex.empty()) modem_.setElement(8028, handset::bytesOf(flex));
    Start(instance_id);
  }
};

TEST_F(BasebandPropertiesTest, TheBandConfigurationIsASigned64BitNumber) {
  const std::pair<const char*, const char*> cases[] = {
      {"01 00 00 00 00 01 00 00", "1099511627777"},
      {"FF FF FF FF FF FF FF FF", "-1"},
      {"00 00 00 00 00 00 00 80 01 02 03 04 05 06 07 08", "-9223372036854775808"},
      {"02", "2"},
      {"01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00", "0"},  // 17 bytes are more than are asked for
  };
  for (const auto& [bands, text] : cases) {
    Restart(hex(bands), "", "");
    EXPECT_EQ(folder_.property(kBands), text);
  }
}

TEST_F(BasebandPropertiesTest, TheVersionNumberIsWhatFollowsTheLastHyphen) {
  const std::pair<std::string, std::string> cases[] = {
      {"MPSS.AB.1.2-00123-M8974", "M8974"},
      {"ABC-", ""},
      {"-", ""},
      {"A-1234567890123", "1234567890123"},
      {"A-12345678901234", "1234567890123"},
      {std::string(512 - 4, 'x') + "-END", "END"},
      {std::string("A-B\0C-D", 7), "B"},
  };
  for (const auto& [version, number] : cases) {
    Restart({}, version, "flex");
    EXPECT_EQ(folder_.property(kNumber), number) << version;
  }
}

TEST_F(BasebandPropertiesTest, TheVersionTextIsCutTo63Characters) {
  for (const size_t length : {1U, 63U, 64U, 512U}) {
    Restart({}, "A-1", std::string(length, 'v'));
    EXPECT_EQ(folder_.property(kVersion), std::string(std::min<size_t>(length, 63), 'v'));
  }
}

TEST_F(BasebandPropertiesTest, WhatCannotBeReadOrHasNoHyphenFallsBack) {
  const std::pair<std::string, std::string> cases[] = {
      {"ABC", "flex"}, {std::string(1, '\0'), "flex"}, {"", "flex"}, {"", ""}};
  for (const auto& [fsg, flex] : cases) {
    Restart({}, fsg, flex);
    EXPECT_EQ(folder_.property(kBands), "0");
    EXPECT_EQ(folder_.property(kNumber), "Unknown");
    EXPECT_EQ(folder_.property(kVersion), flex.empty() ? std::nullopt : std::optional(flex));
    for (const std::string& line : parent_->logs())
      if (line.find("baseband") != std::string::npos) record_.push_back(line);
  }
  ExpectGolden(record_, "baseband_fallbacks");
}

TEST_F(BasebandPropertiesTest, AVersionThatIsGoneIsLeftAsItWas) {
  Restart({}, "A-1", "flex");
  parent_.reset();
  modem_.change([](handset::ModemState& state) { state.elements.clear(); });
  modem_.setElement(8029, handset::bytesOf("A-2"));
  Start();
  EXPECT_EQ(folder_.property(kNumber), "2");
  EXPECT_EQ(folder_.property(kVersion), "flex");
}

TEST_F(BasebandPropertiesTest, AnotherInstancePublishesTheBandsOnly) {
  Restart(hex("05"), "A-1", "flex", 1);
  EXPECT_EQ(folder_.property(kBands), "5");
  EXPECT_EQ(folder_.property(kNumber), std::nullopt);
  EXPECT_EQ(folder_.property(kVersion), std::nullopt);
}

}  // namespace
}  // namespace kesext_test
