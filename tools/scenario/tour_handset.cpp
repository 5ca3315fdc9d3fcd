// What the process does for the handset by itself, at its start, at its end, and when the modem asks.
#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>

#include "handset/message_table.h"
#include "tools/bench/modem_control.h"
#include "tools/scenario/tour_sections.h"

namespace tools {

using namespace handset;  // the vocabulary of records

void tourProperties(TourStage& stage) {
  stage.section("Published properties");
  const std::pair<const char*, const char*> expected[] = {{"ril.baseband.config.ver_num", "M8974"},
                                                          {"ril.baseband.config.version", "flex 7"},
                                                          {"ril.lte.bc.config", "1099511627777"}};
  for (const auto& [name, value] : expected) {
    const std::string found = stage.folder().property(name).value_or("(not set)");
    stage.check(found == value, fmt::format("{:<28} {}", name, found));
  }
}

void tourRfSave(TourStage& stage) {
  constexpr size_t kRegionOffset = 0xF540000;
  constexpr size_t kRegionSize = 0x8000;  // bytes
  constexpr const char* kDevice = "/dev/kes_hob_ram";
  constexpr const char* kPartition = "/dev/block/bootdevice/by-name/dhob";
  stage.section("RF data save");
  Bytes region(kRegionSize);
  for (size_t i = 0; i < region.size(); ++i)
    region[i] = static_cast<uint8_t>(i * 31);
  stage.folder().writeFileAt(kDevice, kRegionOffset, region);
  stage.folder().writeFile(kPartition, "");
  const size_t before = stage.modem().requests().size();
  stage.tell("indicate rf-save");
  const bool answered = stage.modem().waitForRequests(before + 1);
  const Bytes answer = answered ? stage.modem().requests().at(before).body : Bytes{};
  stage.check(answer == hex("01"),
              "the modem asked for a save and was answered " + toHex(answer) + " (saved)");
  stage.check(stage.folder().readFile(kPartition) == region,
              "the partition holds the 32768 bytes of the shared memory");
}

void tourEnd(TourStage& stage) {
  stage.section("The end");
  stage.end();
}

void tourCrash(TourStage& stage) {
  stage.section("Another start, after a kernel crash");
  stage.folder().writeFile("/proc/bootinfo", "POWERUPREASON : 0x00020000\n");
  stage.modem().takeRequests();
  stage.station().start();
  const MessageRow& utility = messageByName("utility");
  const Bytes notice = concat(le32(4), le32(256), Bytes(256));
  const std::vector<Received> requests = stage.modem().requests();
  const bool noticed = std::any_of(requests.begin(), requests.end(), [&](const Received& request) {
    return request.service == utility.service && request.id == utility.id && request.body == notice;
  });
  stage.check(noticed, "the modem was told to verify the SIM PIN by itself");
  stage.end();
}

}  // namespace tools
