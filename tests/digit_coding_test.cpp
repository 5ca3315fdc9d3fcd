// The codings of NAM digits and vocoders, proven when this is compiled.
#include "nam/digit_coding.h"

#include <algorithm>
#include <array>

#include "nam/vocoder_coding.h"

namespace kesext_test {
namespace {

using namespace kesext;

/// The characters of a literal and its terminator, as the codings take and give them.
template <size_t Size>
constexpr std::array<uint8_t, Size> text(const char (&literal)[Size]) {
  std::array<uint8_t, Size> characters{};
  std::copy_n(literal, Size, characters.begin());
  return characters;
}

constexpr bool isMin(const std::array<uint8_t, kMinDigits + 1>& digits, uint32_t min1, uint16_t min2) {
  const MinCode code = encode_min_digits(digits.data());
  return code.min1 == min1 && code.min2 == min2 && decode_min_digits(min1, min2) == digits;
}
static_assert(isMin(text("6195551234"), 0x6F047B, 508));
static_assert(isMin(text("0000000000"), 0xF9EBE7, 999));
static_assert(isMin(text("1111111111"), 1024, 0));
static_assert(isMin(text("9999999999"), 14559096, 888));

constexpr ImsiTCode kImsi = encode_imsi_t_digits(text("310120123456789").data());
static_assert(kImsi.mcc_t == 209 && kImsi.imsi_t_11_12 == 1);
static_assert(kImsi.imsi_t_s1 == 3840678 && kImsi.imsi_t_s2 == 901);
static_assert(decode_imsi_t_digits(kImsi) == text("310120123456789"));
static_assert(encode_mcc_digits(text("000").data()) == 999);
static_assert(encode_imsi_11_12_digits(text("00").data()) == 99);

constexpr bool everyGroupDecodesToItsDigits() {
  auto digits = text("000");
  for (digits[0] = '0'; digits[0] <= '9'; ++digits[0])
    for (digits[1] = '0'; digits[1] <= '9'; ++digits[1]) {
      if (decode_imsi_11_12_digits(encode_imsi_11_12_digits(digits.data())) !=
          std::array<uint8_t, 3>{digits[0], digits[1], 0})
        return false;
      for (digits[2] = '0'; digits[2] <= '9'; ++digits[2])
        if (decode_mcc_digits(encode_mcc_digits(digits.data())) != digits) return false;
    }
  return true;
}
static_assert(everyGroupDecodesToItsDigits());

// What is no digit is plain arithmetic on unsigned bytes: 0xFF - '1' is 206.
constexpr auto kHigh = text("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF");
static_assert(encode_mcc_digits(kHigh.data()) == 206 * 111);
static_assert(encode_imsi_11_12_digits(kHigh.data()) == 206 * 11 % 256);
static_assert(encode_min_digits(kHigh.data()).min2 == 206 * 111);
static_assert(encode_min_digits(kHigh.data()).min1 == (206U * 111 << 14 | (0xFFU - '0') << 10 | 206U * 111));

static_assert(decode_mcc_digits(1000) == text(";11"), "characters beyond 9");
static_assert(decode_mcc_digits(65535) == text("\30046"), "655 + '1' on 8 bits");
static_assert(decode_mcc_digits(26500) == text("011"), "a first code of 265 is 9 on 8 bits");
static_assert(decode_imsi_11_12_digits(255) == text("J6"));
static_assert(decode_min_digits(0, 0) == text("1111110111"), "a thousands code of 0 is '0' like 10");
static_assert(decode_min_digits(15 << 10, 0) == text("111111?111"));
static_assert(decode_min_digits(0xFF000000, 0) == decode_min_digits(0, 0), "24 bits count");

constexpr bool mapsBothWays(int32_t vocoder, uint16_t service_option) {
  return vocoder_to_service_option(vocoder) == service_option &&
         service_option_to_vocoder(service_option) == vocoder;
}
static_assert(mapsBothWays(0, 0x8000) && mapsBothWays(1, 0x8002) && mapsBothWays(2, 0x801C));
static_assert(mapsBothWays(3, 0x0002) && mapsBothWays(4, 0x0009) && mapsBothWays(5, 0x0003));
static_assert(mapsBothWays(6, 0x0044));
static_assert(vocoder_to_service_option(7) == 0x8000 && vocoder_to_service_option(-1) == 0x8000);
static_assert(vocoder_to_service_option(INT32_MIN) == 0x8000);
static_assert(service_option_to_vocoder(0x8008) == -1 && service_option_to_vocoder(1) == -1);
static_assert(service_option_to_vocoder(0) == -1);

}  // namespace
}  // namespace kesext_test
