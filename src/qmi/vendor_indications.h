// The vendor service's indications.
#pragma once

#include <cstdint>

namespace kesext {

enum VendorIndicationId : uint32_t {
  IND_TEST = 0x0001,
  IND_PFP = 0x000A,
  IND_UTILITY = 0x000F,
  IND_CARRIER_VALUE = 0x0012,
  IND_RF_SAVE = 0x0013,
  IND_DATA_PLMN = 0x0016,
  IND_LTE_ERROR = 0x010B,
  IND_SIGNAL_COVERAGE = 0x010C,
  IND_TUNER = 0x0110,
};

}  // namespace kesext
