// The coding of digit strings in NAM items, after TIA/EIA-95: MIN1 (24 bits), MIN2 (10 bits), MCC (10 bits)
// and IMSI_11_12 (7 bits). Plain arithmetic on characters as unsigned bytes: what is no digit is not
// rejected.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace kesext {

inline constexpr size_t kMccDigits = 3;
inline constexpr size_t kImsi11_12Digits = 2;
inline constexpr size_t kMinDigits = 10;
inline constexpr size_t kImsiTDigits = kMccDigits + kImsi11_12Digits + kMinDigits;

struct MinCode {
  uint32_t min1;
  uint16_t min2;
};

struct ImsiTCode {
  uint16_t mcc_t;
  uint8_t imsi_t_11_12;
  uint32_t imsi_t_s1;
  uint16_t imsi_t_s2;
};

/// One digit of a group of two or three: '1' to '9' give 0 to 8, '0' gives 9.
constexpr uint8_t digitCode(uint8_t character) {
  return character == '0' ? 9 : static_cast<uint8_t>(character - '1');
}

/// The single digit inside MIN1: '0' gives 10. Not masked, so what is no digit touches the bits around it.
constexpr uint32_t thousandsCode(uint8_t character) {
  return character == '0' ? 10 : uint32_t{character} - '0';
}

constexpr uint32_t groupOfThree(const uint8_t* digits) {
  return 100U * digitCode(digits[0]) + 10U * digitCode(digits[1]) + digitCode(digits[2]);
}

/// Reads 3 characters.
constexpr uint16_t encode_mcc_digits(const uint8_t* digits) {
  return static_cast<uint16_t>(groupOfThree(digits));
}

/// Reads 2 characters.
constexpr uint8_t encode_imsi_11_12_digits(const uint8_t* digits) {
  return static_cast<uint8_t>(10U * digitCode(digits[0]) + digitCode(digits[1]));
}

/// Reads 10 characters, area code first.
constexpr MinCode encode_min_digits(const uint8_t* digits) {
  return {.min1 = groupOfThree(digits + 3) << 14 | thousandsCode(digits[6]) << 10 | groupOfThree(digits + 7),
          .min2 = static_cast<uint16_t>(groupOfThree(digits))};
}

/// Reads 15 characters: MCC, IMSI_11_12, and an MSIN that codes like a MIN.
constexpr ImsiTCode encode_imsi_t_digits(const uint8_t* digits) {
  const MinCode msin = encode_min_digits(digits + kMccDigits + kImsi11_12Digits);
  return {.mcc_t = encode_mcc_digits(digits),
          .imsi_t_11_12 = encode_imsi_11_12_digits(digits + kMccDigits),
          .imsi_t_s1 = msin.min1,
          .imsi_t_s2 = msin.min2};
}

/// The character of a code inside a group, of which the low 8 bits count; 10 and above give characters beyond
/// '9'.
constexpr uint8_t digitCharacter(uint32_t code) {
  const auto low = static_cast<uint8_t>(code);
  return low == 9 ? uint8_t{'0'} : static_cast<uint8_t>(low + '1');
}

/// The character of a thousands code, 0 to 15.
constexpr uint8_t thousandsCharacter(uint32_t code) {
  return code == 10 ? uint8_t{'0'} : static_cast<uint8_t>(code + '0');
}

/// 3 characters and a terminator.
constexpr std::array<uint8_t, kMccDigits + 1> decode_mcc_digits(uint16_t code) {
  return {digitCharacter(code / 100U), digitCharacter(code % 100U / 10U), digitCharacter(code % 10U), 0};
}

/// 2 characters and a terminator.
constexpr std::array<uint8_t, kImsi11_12Digits + 1> decode_imsi_11_12_digits(uint16_t code) {
  return {digitCharacter(code / 10U), digitCharacter(code % 10U), 0};
}

/// 10 characters and a terminator.
constexpr std::array<uint8_t, kMinDigits + 1> decode_min_digits(uint32_t min1, uint16_t min2) {
  const auto area = decode_mcc_digits(min2);
  const auto exchange = decode_mcc_digits(static_cast<uint16_t>(min1 >> 14 & 0x3FF));
  const auto last = decode_mcc_digits(static_cast<uint16_t>(min1 & 0x3FF));
  return {area[0],
          area[1],
          area[2],
          exchange[0],
          exchange[1],
          exchange[2],
          thousandsCharacter(min1 >> 10 & 0xF),
          last[0],
          last[1],
          last[2],
          0};
}

/// 15 characters and a terminator.
constexpr std::array<uint8_t, kImsiTDigits + 1> decode_imsi_t_digits(const ImsiTCode& code) {
  std::array<uint8_t, kImsiTDigits + 1> digits{};
  size_t at = 0;
  const auto append = [&](const auto& part) {
    for (size_t i = 0; i + 1 < part.size(); ++i)
      digits[at++] = part[i];
  };
  append(decode_mcc_digits(code.mcc_t));
  append(decode_imsi_11_12_digits(code.imsi_t_11_12));
  append(decode_min_digits(code.imsi_t_s1, code.imsi_t_s2));
  return digits;
}

}  // namespace kesext
