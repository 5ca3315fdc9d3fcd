// The codings of NAM digits and vocoders.
#include "nam/digit_coding.h"

#include <gtest/gtest.h>

#include <string>

#include "nam/vocoder_coding.h"

namespace kesext_test {
namespace {

const uint8_t* bytes(const std::string& text) {
  return reinterpret_cast<const uint8_t*>(text.data());
}

template <typename Digits>
std::string text(const Digits& digits) {
  EXPECT_EQ(digits.back(), 0);
  return {digits.begin(), digits.end() - 1};
}

TEST(DigitCodingTest, KnownNumbersHaveTheirCodes) {
  struct Case {
    const char* digits;
    uint32_t min1;
    uint16_t min2;
  };
  for (const Case& c : {Case{"6195551234", 0x6F047B, 508}, Case{"0000000000", 0xF9EBE7, 999},
                        Case{"1111111111", 1024, 0}, Case{"9999999999", 14559096, 888}}) {
    const kesext::MinCode code = kesext::encode_min_digits(bytes(c.digits));
    EXPECT_EQ(code.min1, c.min1);
    EXPECT_EQ(code.min2, c.min2);
    EXPECT_EQ(text(kesext::decode_min_digits(c.min1, c.min2)), c.digits);
  }
  const kesext::ImsiTCode imsi = kesext::encode_imsi_t_digits(bytes("310120123456789"));
  EXPECT_EQ(imsi.mcc_t, 209);
  EXPECT_EQ(imsi.imsi_t_11_12, 1);
  EXPECT_EQ(imsi.imsi_t_s1, 3840678U);
  EXPECT_EQ(imsi.imsi_t_s2, 901);
  EXPECT_EQ(kesext::encode_mcc_digits(bytes("000")), 999);
  EXPECT_EQ(kesext::encode_imsi_11_12_digits(bytes("00")), 99);
}

TEST(DigitCodingTest, EveryGroupDecodesToItsDigits) {
  for (int number = 0; number < 1000; ++number) {
    std::string digits = std::to_string(1000 + number).substr(1);
    EXPECT_EQ(text(kesext::decode_mcc_digits(kesext::encode_mcc_digits(bytes(digits)))), digits);
    digits = digits.substr(1);
    EXPECT_EQ(text(kesext::decode_imsi_11_12_digits(kesext::encode_imsi_11_12_digits(bytes(digits)))),
              digits);
  }
}

TEST(DigitCodingTest, WhatIsNoDigitIsPlainArithmeticOnUnsignedBytes) {
  const std::string high(15, '\xFF');  // 0xFF - 0x31 = 206
  EXPECT_EQ(kesext::encode_mcc_digits(bytes(high)), 206 * 111);
  EXPECT_EQ(kesext::encode_imsi_11_12_digits(bytes(high)), (206 * 11) % 256);
  const kesext::MinCode code = kesext::encode_min_digits(bytes(high));
  EXPECT_EQ(code.min2, 206 * 111);
  EXPECT_EQ(code.min1, (206U * 111U) << 14 | (0xFFU - 0x30U) << 10 | 206U * 111U);
}

TEST(DigitCodingTest, CodesBeyondTheirRangeDecodeToCharactersBeyond9) {
  EXPECT_EQ(text(kesext::decode_mcc_digits(1000)), ";11");
  EXPECT_EQ(text(kesext::decode_mcc_digits(65535)),
            std::string({static_cast<char>((655 + '1') & 0xFF), '4', '6'}));
  EXPECT_EQ(text(kesext::decode_imsi_11_12_digits(255)), std::string({static_cast<char>(25 + '1'), '6'}));
  EXPECT_EQ(text(kesext::decode_min_digits(0, 0)), "1111110111") << "a thousands code of 0 is '0' like 10";
  EXPECT_EQ(text(kesext::decode_min_digits(15U << 10, 0))[6], '?');
  EXPECT_EQ(text(kesext::decode_mcc_digits(26500)), "011") << "a first code of 265 is 9 on 8 bits";
  EXPECT_EQ(kesext::decode_min_digits(0xFF000000, 0), kesext::decode_min_digits(0, 0)) << "24 bits count";
}

TEST(VocoderCodingTest, SelectionsAndServiceOptionsMapBothWays) {
  const std::pair<int32_t, uint16_t> rows[] = {{0, 0x8000}, {1, 0x8002}, {2, 0x801C}, {3, 0x0002},
                                               {4, 0x0009}, {5, 0x0003}, {6, 0x0044}};
  for (const auto& [vocoder, service_option] : rows) {
    EXPECT_EQ(kesext::vocoder_to_service_option(vocoder), service_option);
    EXPECT_EQ(kesext::service_option_to_vocoder(service_option), vocoder);
  }
  for (const int32_t vocoder : {7, -1, INT32_MIN})
    EXPECT_EQ(kesext::vocoder_to_service_option(vocoder), 0x8000);
  for (const uint16_t option : {uint16_t{0x8008}, uint16_t{1}, uint16_t{0}})
    EXPECT_EQ(kesext::service_option_to_vocoder(option), -1);
}

}  // namespace
}  // namespace kesext_test
