// The vocoder selection of the parent and the CDMA service option that stands for it in the modem.
#pragma once

#include <cstdint>

namespace kesext {

inline constexpr int32_t kVocoderUnknown = -1;

struct VocoderRow {
  int32_t vocoder;
  uint16_t service_option;
};

/// The first row also stands for every selection that is not listed.
inline constexpr VocoderRow kVocoders[] = {
    {0, 0x8000}, {1, 0x8002}, {2, 0x801C}, {3, 0x0002}, {4, 0x0009}, {5, 0x0003}, {6, 0x0044},
};

constexpr uint16_t vocoder_to_service_option(int32_t vocoder) {
  for (const VocoderRow& row : kVocoders)
    if (row.vocoder == vocoder) return row.service_option;
  return kVocoders[0].service_option;
}

/// kVocoderUnknown for a service option that is not listed.
constexpr int32_t service_option_to_vocoder(uint16_t service_option) {
  for (const VocoderRow& row : kVocoders)
    if (row.service_option == service_option) return row.vocoder;
  return kVocoderUnknown;
}

}  // namespace kesext
