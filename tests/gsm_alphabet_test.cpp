// The GSM default alphabet, character by character.
#include "generic/gsm_alphabet.h"

#include <gmock/gmock.h>

#include "support/unit_test.h"

namespace kesext_test {
namespace {

using handset::Bytes;
using ::testing::ElementsAre;

/// The character of each code of 3GPP TS 23.038, with a blank for the escape.
constexpr std::u16string_view kCharacters =
    u"@£$¥èéùìòÇ\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞ ÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
    u"¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§¿abcdefghijklmnopqrstuvwxyzäöñüà";
static_assert(kCharacters.size() == 128);

std::string utf8(char16_t unicode) {
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
    EXPECT_EQ(Convert({code}), utf8(kCharacters[code])) << int{code};
  }
  for (int byte = 128; byte < 256; ++byte)
    EXPECT_EQ(Convert({static_cast<uint8_t>(byte)}), std::string(1, static_cast<char>(byte)));
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
