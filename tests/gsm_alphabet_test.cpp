// The GSM default alphabet, character by character.
#include "generic/gsm_alphabet.h"

#include <gmock/gmock.h>

#include "support/unit_test.h"

namespace kesext_test {
namespace {

using handset::Bytes;
using ::testing::ElementsAre;

/// Unicode of each code of 3GPP TS 23.038, with a blank for the escape.
constexpr uint16_t kUnicode[128] = {
    0x0040, 0x00A3, 0x0024, 0x00A5, 0x00E8, 0x00E9, 0x00F9, 0x00EC, 0x00F2, 0x00C7, 0x000A, 0x00D8, 0x00F8,
    0x000D, 0x00C5, 0x00E5, 0x0394, 0x005F, 0x03A6, 0x0393, 0x039B, 0x03A9, 0x03A0, 0x03A8, 0x03A3, 0x0398,
    0x039E, 0x0020, 0x00C6, 0x00E6, 0x00DF, 0x00C9, 0x0020, 0x0021, 0x0022, 0x0023, 0x00A4, 0x0025, 0x0026,
    0x0027, 0x0028, 0x0029, 0x002A, 0x002B, 0x002C, 0x002D, 0x002E, 0x002F, 0x0030, 0x0031, 0x0032, 0x0033,
    0x0034, 0x0035, 0x0036, 0x0037, 0x0038, 0x0039, 0x003A, 0x003B, 0x003C, 0x003D, 0x003E, 0x003F, 0x00A1,
    0x0041, 0x0042, 0x0043, 0x0044, 0x0045, 0x0046, 0x0047, 0x0048, 0x0049, 0x004A, 0x004B, 0x004C, 0x004D,
    0x004E, 0x004F, 0x0050, 0x0051, 0x0052, 0x0053, 0x0054, 0x0055, 0x0056, 0x0057, 0x0058, 0x0059, 0x005A,
    0x00C4, 0x00D6, 0x00D1, 0x00DC, 0x00A7, 0x00BF, 0x0061, 0x0062, 0x0063, 0x0064, 0x0065, 0x0066, 0x0067,
    0x0068, 0x0069, 0x006A, 0x006B, 0x006C, 0x006D, 0x006E, 0x006F, 0x0070, 0x0071, 0x0072, 0x0073, 0x0074,
    0x0075, 0x0076, 0x0077, 0x0078, 0x0079, 0x007A, 0x00E4, 0x00F6, 0x00F1, 0x00FC, 0x00E0};

std::string utf8(uint16_t unicode) {
  if (unicode < 0x80) return {static_cast<char>(unicode)};
  return {static_cast<char>(0xC0 | unicode >> 6), static_cast<char>(0x80 | (unicode & 0x3F))};
}

class GsmAlphabetTest : public UnitTest {
 protected:
  static std::string Convert(const Bytes& input) {
    std::vector<char> output(2 * input.size() + 1, 'z');
    const uint16_t length =
        kesext::gsm_alphabet_to_utf8(input.data(), static_cast<uint16_t>(input.size()), output.data());
    EXPECT_EQ(output[length], '\0');
    return {output.data(), length};
  }
};

TEST_F(GsmAlphabetTest, EveryCodeIsItsCharacter) {
  for (uint8_t code = 0; code < 128; ++code) {
    if (code == 0x0D) continue;
    EXPECT_EQ(Convert({code}), utf8(kUnicode[code])) << int{code};
  }
  for (int byte = 128; byte < 256; ++byte)
    EXPECT_EQ(Convert({static_cast<uint8_t>(byte)}), std::string(1, static_cast<char>(byte)));
}

TEST_F(GsmAlphabetTest, CarriageReturnsAreLeftOutAndTheEscapeIsABlank) {
  EXPECT_EQ(Convert(handset::hex("41 0D 42 0D")), "AB");
  EXPECT_THAT(fake_log,
              ElementsAre("D ignored CR charecter at index = 1", "D ignored CR charecter at index = 3"));
  EXPECT_EQ(Convert(handset::hex("10 1B 65")), "\xCE\x94 e");
  EXPECT_EQ(Convert(handset::hex("0D")), "");
}

TEST_F(GsmAlphabetTest, BadArgumentsGiveNothing) {
  const uint8_t input = 0x41;
  char output[3] = "z";
  EXPECT_EQ(kesext::gsm_alphabet_to_utf8(&input, 0, output), 0);
  EXPECT_EQ(kesext::gsm_alphabet_to_utf8(nullptr, 1, output), 0);
  EXPECT_EQ(kesext::gsm_alphabet_to_utf8(&input, 1, nullptr), 0);
  EXPECT_STREQ(output, "z");
  const std::string text = "E Invalid parameters for GSM alphabet to UTF8 conversion, input len = ";
  EXPECT_THAT(fake_log, ElementsAre(text + "0", text + "1", text + "1"));
}

}  // namespace
}  // namespace kesext_test
