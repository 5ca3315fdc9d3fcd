#include "handset/example_nam.h"

#include <algorithm>
#include <string_view>

namespace handset {

kesext::NamInfo exampleNam() {
  const auto put = [](auto& field, std::string_view text) { std::copy(text.begin(), text.end(), field); };
  kesext::NamInfo info{};
  put(info.mdn, "5551234560");
  put(info.min, "6195551234");
  info.homeSid = 4183;
  info.homeNid = 65535;
  info.scm = 0xAA;
  put(info.imsi11_12, "12");
  put(info.mcc, "310");
  info.pChannelA = 283;
  info.pChannelB = 384;
  info.sChannelA = 691;
  info.sChannelB = 777;
  info.vocoder = 3;
  put(info.imsiT, "310120123456789");
  info.accessOverloadClass = 4;
  put(info.newSpc, "000000");
  return info;
}

}  // namespace handset
