#include "generic/gsm_alphabet.h"

#include <cstddef>
#include <iterator>
#include <string_view>

#include "core/ground/log.h"

namespace kesext {

namespace {

constexpr uint8_t kCarriageReturn = 0x0D;
constexpr uint8_t kLastCode = 0x7F;
/// Most bytes of one character in UTF-8, which the caller's buffer has room for.
constexpr size_t kUtf8BytesMax = 2;

/// By code; the escape to the extension table, 0x1B, is a blank.
// clang-format off
constexpr const char* kGsmAlphabet[] = {
    "@", "£", "$", "¥", "è", "é", "ù", "ì", "ò", "Ç", "\n", "Ø", "ø", "\r", "Å", "å",  // 0x00
    "Δ", "_", "Φ", "Γ", "Λ", "Ω", "Π", "Ψ", "Σ", "Θ", "Ξ", " ", "Æ", "æ", "ß", "É",    // 0x10
    " ", "!", "\"", "#", "¤", "%", "&", "'", "(", ")", "*", "+", ",", "-", ".", "/",   // 0x20
    "0", "1", "2", "3", "4", "5", "6", "7", "8", "9", ":", ";", "<", "=", ">", "?",    // 0x30
    "¡", "A", "B", "C", "D", "E", "F", "G", "H", "I", "J", "K", "L", "M", "N", "O",    // 0x40
    "P", "Q", "R", "S", "T", "U", "V", "W", "X", "Y", "Z", "Ä", "Ö", "Ñ", "Ü", "§",    // 0x50
    "¿", "a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l", "m", "n", "o",    // 0x60
    "p", "q", "r", "s", "t", "u", "v", "w", "x", "y", "z", "ä", "ö", "ñ", "ü", "à",    // 0x70
};
// clang-format on
static_assert(std::size(kGsmAlphabet) == kLastCode + 1);

constexpr bool charactersFit() {
  for (const std::string_view character : kGsmAlphabet)
    if (character.size() > kUtf8BytesMax) return false;
  return true;
}
static_assert(charactersFit());

}  // namespace

uint16_t gsm_alphabet_to_utf8(const uint8_t* input, uint16_t length, char* output) {
  if (length == 0 || input == nullptr || output == nullptr) {
    LOGE("Invalid parameters for GSM alphabet to UTF8 conversion, input len = %d", length);
    return 0;
  }
  size_t written = 0;
  for (uint16_t i = 0; i < length; ++i) {
    if (input[i] == kCarriageReturn) {
      LOGD("ignored CR charecter at index = %d", i);
    } else if (input[i] > kLastCode) {
      output[written++] = static_cast<char>(input[i]);
    } else {
      for (const char* byte = kGsmAlphabet[input[i]]; *byte != '\0'; ++byte)
        output[written++] = *byte;
    }
  }
  output[written] = '\0';
  return static_cast<uint16_t>(written);
}

}  // namespace kesext
