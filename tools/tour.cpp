#include "tools/tour.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <utility>

#include "core/ground/hook_message.h"
#include "handset/example_nam.h"
#include "handset/hook_records.h"
#include "nam/engineering_records.h"
#include "nam/nam_info.h"
#include "tools/engineering_screen.h"
#include "tools/tour_modem_logs.h"
#include "tools/tour_stage.h"

namespace tools {

namespace {

using namespace handset;  // the vocabulary of records
using namespace kesext;   // the result codes

void tourNvItems(TourStage& stage) {
  stage.section("Non-volatile items: fixed elements");
  stage.ask("Write the element 0x26", cdmaRequest(0x02000018, hex("2A 00 00 00")),
            cdmaResponse(0x02000018, HOOK_STATUS_SUCCESS));
  stage.ask("Read it back", cdmaRequest(0x02000017),
            cdmaResponse(0x02000017, HOOK_STATUS_SUCCESS, hex("2A 00 00 00")));
  stage.ask("Write more than an element holds", cdmaRequest(0x0200001A, Bytes(513, 0x11)),
            cdmaResponse(0x0200001A, HOOK_STATUS_FAILURE));

  stage.section("Non-volatile items: any element");
  const Bytes data = bytesOf("any twenty-one bytes.");
  const auto length = static_cast<uint32_t>(data.size());
  stage.ask("Write an element", cdmaRequest(0x02000015, nvPayload(10017, 0, 0, length, data)),
            cdmaResponse(0x02000015, HOOK_STATUS_SUCCESS));
  stage.ask(
      "Read it back", cdmaRequest(0x02000016, nvPayload(10017, 0, 0, 0)),
      cdmaResponse(0x02000016, HOOK_STATUS_SUCCESS, concat(nvPayload(10017, 0, 0, length, data), Bytes(4))));
  stage.ask("Read an element that the modem does not have", cdmaRequest(0x02000016, nvPayload(4711, 0, 0, 0)),
            cdmaResponse(0x02000016, HOOK_STATUS_FAILURE));
}

/// A request with a service programming code, and what an echo of its header answers.
const Bytes kSpc = bytesOf("000000");
Bytes withSpc(Bytes record) {
  std::copy(kSpc.begin(), kSpc.end(), record.begin() + offsetof(OemHookHeader, spc));
  return record;
}
Bytes echo(uint32_t id, uint32_t status, ByteView payload = {}) {
  return withSpc(cdmaResponse(id, status, payload));
}
Bytes ask(uint32_t id, ByteView payload = {}) {
  return withSpc(cdmaRequest(id, payload));
}

void tourCodes(TourStage& stage) {
  stage.section("The service programming code and the A-key");
  const Bytes akey = bytesOf("12345678901234567890123456");
  stage.ask("A code that the modem accepts", ask(0x0200000A),
            cdmaResponse(0x0200000A, HOOK_STATUS_SUCCESS, Bytes(6)));
  stage.ask("An A-key of 26 digits", ask(0x02000013, akey), echo(0x02000013, HOOK_STATUS_SUCCESS));
  stage.ask("An A-key of 25 digits", ask(0x02000013, ByteView(akey).first(25)),
            echo(0x02000013, HOOK_STATUS_FAILURE));
  stage.modem().answer(Service::dms, 0x003B, concat(le32(1), le32(12)));
  stage.ask("A code that the modem refuses", ask(0x0200000A),
            cdmaResponse(0x0200000A, HOOK_STATUS_SPC_INVALID, Bytes(6)));
  stage.modem().restore(Service::dms, 0x003B);
}

void tourNam(TourStage& stage) {
  stage.section("Provisioning: the NAM");
  NamInfo info = exampleNam();
  stage.ask("Program the NAM", ask(0x02000002, recordBytes(info)), echo(0x02000002, HOOK_STATUS_SUCCESS));
  NamInfo read_back = info;
  std::copy_n(info.imsiT, 3, read_back.mccT);
  std::fill(std::begin(read_back.newSpc), std::end(read_back.newSpc), uint8_t{0});
  stage.ask("Read it back", ask(0x02000001),
            cdmaResponse(0x02000001, HOOK_STATUS_SUCCESS, recordBytes(read_back)));
  std::copy_n("123456", sizeof info.newSpc, info.newSpc);
  stage.ask("Program it with another service programming code", ask(0x02000002, recordBytes(info)),
            echo(0x02000002, HOOK_STATUS_SUCCESS));
  stage.modem().answer(Service::dms, 0x0052, concat(le32(1), le32(12)));
  stage.ask("The same, and the modem refuses the code", ask(0x02000002, recordBytes(info)),
            echo(0x02000002, HOOK_STATUS_FAILURE));
  stage.modem().restore(Service::dms, 0x0052);

  Bytes pairs = concat(le32(4183), le32(65535), le32(4384), le32(1));
  pairs.resize(160);
  stage.ask("Write the SID/NID pairs", ask(0x02000004, pairs), echo(0x02000004, HOOK_STATUS_SUCCESS));
  stage.ask("Read them back", ask(0x02000003), cdmaResponse(0x02000003, HOOK_STATUS_SUCCESS, pairs));
  stage.modem().rde().set(28, hex("06"));
  stage.ask("The mobile protocol revision", ask(0x02000007),
            cdmaResponse(0x02000007, HOOK_STATUS_SUCCESS, hex("06 00 00 00")));
}

/// The modem's engineering text of a record.
template <typename Record>
Bytes engineeringText(const Record& record) {
  Bytes text = bytesOf(toHex(recordBytes(record), ""));
  const auto length = static_cast<uint32_t>(text.size());
  text.resize(1000);
  return concat(le32(0), le32(0), le32(length), text);
}

void tourEngineeringScreens(TourStage& stage) {
  stage.section("Field test: the engineering screens");
  CpStatusRecord cp{};
  cp.fer = 12;
  cp.activePilotCount = 2;
  cp.neighborPilotCount = 3;
  cp.bestActivePilot = 168;
  cp.bestActiveStrength = 14;
  cp.sid = 4183;
  cp.nid = 65535;
  cp.channel = 476;
  cp.serviceOption = 3;
  cp.PRevInUse = 6;
  cp.band = 1;
  cp.txPower = -17;
  cp.rssi = 83;
  cp.bid = 2201;
  cp.bsLat = 469'000;
  cp.bsLon = 1'687'000;
  const uint16_t active[] = {168, 172};
  const uint16_t neighbors[] = {12, 24, 36};
  for (size_t i = 0; i < std::size(active); ++i)
    cp.activeSetPn[i] = active[i];
  for (size_t i = 0; i < std::size(neighbors); ++i)
    cp.neighborSetPn[i] = neighbors[i];
  CpStatusReport cp_report{.fer = 12,
                           .bestActivePilot = 168,
                           .bestActiveStrength = 14,
                           .sid = 4183,
                           .nid = 65535,
                           .channel = 476,
                           .serviceOption = 3,
                           .txPower = -17,
                           .band = 1,
                           .activePilotCount = 2,
                           .neighborPilotCount = 3,
                           .rssi = 83,
                           .pRevInUseAbove5 = 1,
                           .PRevInUse = 6,
                           .bid = 2201,
                           .bsLat = 469'000,
                           .bsLon = 1'687'000};
  for (size_t i = 0; i < std::size(active); ++i)
    cp_report.activeSetPn[i] = active[i];
  for (size_t i = 0; i < std::size(neighbors); ++i)
    cp_report.neighborSetPn[i] = neighbors[i];
  stage.modem().answer(Service::vendor, 0x0010, engineeringText(cp));
  stage.ask("Call processing", ask(0x02000011),
            cdmaResponse(0x02000011, HOOK_STATUS_SUCCESS, recordBytes(cp_report)));
  stage.show(callProcessingScreen(stage.lastPayload()));

  EvdoStatusRecord evdo{};
  evdo.hdrChanNum = 100;
  evdo.uatiColorCode = 21;
  evdo.txUati = 0x00C0FFEE;
  evdo.pilotPn = 168;
  evdo.hdrRssi = 79;
  evdo.measPkts = 1000;
  evdo.errPkts = 3;
  evdo.sessionState = 2;
  evdo.atState = 1;
  evdo.macIndex = 64;
  evdo.pilotEnergy = -200;
  evdo.drcCover = 1;
  evdo.sinr = 11;
  evdo.sectorIds[0] = 0x20;
  evdo.sectorIds[1] = 0x01;
  EvdoStatusReport evdo_report{.hdrChanNum = 100,
                               .uatiColorCode = 21,
                               .txUati = 0x00C0FFEE,
                               .pilotPn = 168,
                               .hdrRssi = 79,
                               .measPkts = 1000,
                               .errPkts = 3,
                               .sessionState = 2,
                               .atState = 1,
                               .macIndex = 64,
                               .sectorIds = {0x20, 0x01},
                               .pilotEnergy = -200,
                               .drcCover = 1,
                               .sinr = 11};
  stage.modem().answer(Service::vendor, 0x0010, engineeringText(evdo));
  stage.ask("EVDO", ask(0x02000012), cdmaResponse(0x02000012, HOOK_STATUS_SUCCESS, recordBytes(evdo_report)));
  stage.show(evdoScreen(stage.lastPayload()));
  stage.modem().restore(Service::vendor, 0x0010);
}

void tourCarrierSettings(TourStage& stage) {
  stage.section("The carrier's settings");
  stage.ask("Write the band class 10 status", ask(0x020000B1, le32(1)),
            echo(0x020000B1, HOOK_STATUS_SUCCESS));
  stage.ask("Read it back", ask(0x020000B0), cdmaResponse(0x020000B0, HOOK_STATUS_SUCCESS, le32(1)));
  stage.ask("Read the band class 14 status", ask(0x020000B2),
            cdmaResponse(0x020000B2, HOOK_STATUS_SUCCESS, le32(0)));
  stage.ask("Write the BSR timer", ask(0x020000BD, le32(30)), echo(0x020000BD, HOOK_STATUS_SUCCESS));
  stage.ask("Read it back", ask(0x020000BC), echo(0x020000BC, HOOK_STATUS_SUCCESS, le32(30)));
  Bytes order = concat(le16(2), hex("01 02 03 04  05 06 07 08"));
  order.resize(62);
  stage.ask("Update the TOT order", ask(0x020000C5, order), echo(0x020000C5, HOOK_STATUS_SUCCESS));
  stage.ask("Read it back", ask(0x020000C4), echo(0x020000C4, HOOK_STATUS_SUCCESS, order));
  stage.ask("Write the DDTM preference", ask(0x020000B8, hex("01")), echo(0x020000B8, HOOK_STATUS_SUCCESS));
  stage.ask("Read it back", ask(0x020000B7), echo(0x020000B7, HOOK_STATUS_SUCCESS, le32(1)));
  stage.ask("Write the LTE option", ask(0x020000BF, hex("03 01 04")), echo(0x020000BF, HOOK_STATUS_SUCCESS));
  stage.ask("Read the LTE option", ask(0x020000BE),
            echo(0x020000BE, HOOK_STATUS_SUCCESS, stage.modem().rde().get(10017).value_or(Bytes{})));
  stage.ask("A roaming list segment of 16384 bytes", ask(0x020000B4, concat(le32(16384), Bytes(16384, 0xA5))),
            echo(0x020000B4, HOOK_STATUS_SUCCESS));
  stage.ask("Switch the active profile", ask(0x020000B5, le32(2)), echo(0x020000B5, HOOK_STATUS_SUCCESS));
  stage.ask("Factory reset", ask(0x020000B6), echo(0x020000B6, HOOK_STATUS_SUCCESS));
  stage.ask("An obsolete request", ask(0x020000C7), echo(0x020000C7, HOOK_STATUS_NOT_SUPPORTED));
}

void tourLte(TourStage& stage) {
  stage.section("LTE and eHRPD");
  Bytes apns = concat(hex("01"), bytesOf("internet.example"));
  apns.resize(1 + 103);
  apns = concat(apns, le32(1), hex("01 00 00 0A"), Bytes(16));
  apns.resize(1017);
  stage.ask("The active eHRPD APN list", ask(0x020000C1), echo(0x020000C1, HOOK_STATUS_SUCCESS, apns));

  Modem& modem = stage.modem();
  modem.answer(Service::vendor, 0x0107, concat(le32(1), le32(0), hex("02 00 00 00")));
  const Bytes data = hex("02000000 3601 7800 2C1B0A00 03 03 29680000 D9210000 C2 A1FF F7 DDFFFFFF");
  stage.ask("LTE data in service", ask(0x020000C0), echo(0x020000C0, HOOK_STATUS_SUCCESS, data));
  modem.answer(Service::nas, 0x005A, concat(le32(1), le32(93), Bytes(8)));
  stage.ask("LTE data without a radio", ask(0x020000C0),
            echo(0x020000C0, HOOK_STATUS_SUCCESS, concat(ByteView(data).first(26), Bytes(4))));
  modem.restore(Service::nas, 0x005A);
}

void tourGenericServices(TourStage& stage) {
  Modem& modem = stage.modem();
  stage.section("Generic services");
  Bytes name(3944);
  name[8] = 1;
  const Bytes gsm = hex("5A 7E 72 69 63 68 20 10");
  putLe(name, 48, static_cast<uint16_t>(gsm.size()));
  std::copy(gsm.begin(), gsm.end(), name.begin() + 52);
  modem.answer(Service::nas, 0x0044, name);
  stage.ask("The name of a network", genericRequest(0x0A0006, hex("E4 00 01 00")),
            genericReply(0x0A0006, bytesOf("Zürich Δ")));
  stage.ask("An antenna command", genericRequest(0x05002A, hex("01 02 03")),
            genericReply(0x05002A, hex("01 02 03")));
  Bytes utility = concat(le32(1), le32(4), bytesOf("ping"));
  utility.resize(264);
  stage.ask("A utility request", cdmaRequest(0x0200001E, utility),
            cdmaResponse(0x0200001E, HOOK_STATUS_SUCCESS, bytesOf("ping")));
  stage.ask("The system-information filter", genericRequest(0x05001E, hex("01")),
            genericReply(0x05001E, hex("00")));
  stage.ask("PFP", cdmaRequest(0x0200001C), cdmaResponse(0x0200001C, HOOK_STATUS_SUCCESS));
  modem.answer(Service::vendor, 0x000F, concat(le32(0), le32(2), hex("00 01"), Bytes(510)));
  stage.ask("Silent reboot", genericRequest(0x050019), genericReply(0x050019, hex("00 01")));
  modem.restore(Service::vendor, 0x000F);
  stage.ask("Signal coverage", genericRequest(0x050020, hex("61 62 63 00")),
            genericReply(0x050020, hex("00")));
  stage.ask("Signal coverage with a selector", genericRequest(0x050029, hex("07 41 00")),
            genericReply(0x050029, hex("00")));
  modem.answer(Service::vendor, 0x0016, Bytes(568, 0x42));
  stage.ask("The data PLMN", genericRequest(0x060001), Bytes(568, 0x42));
  modem.fail(Service::vendor, 0x000F, 90);
  stage.ask("The filter, and the modem fails", genericRequest(0x05001E, hex("01")),
            genericReply(0x05001E, hex("05")));
  modem.restore(Service::vendor, 0x000F);
}

void tourGenericIndications(TourStage& stage) {
  Bytes event = concat(le32(6), hex("81 01 03 04 05 06"));
  event.resize(132);
  stage.indicate("A tuner event", 0x0110, event, genericUnsolicited(0, 0x04000F, hex("81 01 03 04 05 06")));
  const Bytes coverage(32, 0x33);
  stage.indicate("Signal coverage", 0x010C, coverage, genericUnsolicited(1, 0x040003, coverage));
  stage.indicate("The data PLMN changed", 0x0016, {}, genericUnsolicited(0, 0x060002, {}));
  const Bytes pfp = concat(hex("00 00 05 00  09 00 00 00"), Bytes(224));
  stage.indicate("PFP", 0x000A, pfp, cdmaUnsolicited(0x0200001D, pfp));
}

void tourRfSave(TourStage& stage) {
  constexpr size_t kRegionOffset = 0xF540000;
  constexpr uint16_t kRfSave = 0x0013;
  constexpr const char* kDevice = "/dev/kes_hob_ram";
  constexpr const char* kPartition = "/dev/block/bootdevice/by-name/dhob";
  stage.section("RF data save");
  Bytes region(0x8000);
  for (size_t i = 0; i < region.size(); ++i)
    region[i] = static_cast<uint8_t>(i * 31);
  stage.folder().writeFileAt(kDevice, kRegionOffset, region);
  stage.folder().writeFile(kPartition, "");
  const size_t before = stage.modem().requestCount();
  stage.modem().indicate(kRfSave, {});
  const bool answered = stage.modem().waitForRequests(before + 1);
  const Bytes answer = answered ? stage.modem().requests().at(before).body : Bytes{};
  stage.check(answer == hex("01"),
              "the modem asked for a save and was answered " + toHex(answer) + " (saved)");
  stage.check(stage.folder().readFile(kPartition) == region,
              "the partition holds the 32768 bytes of the shared memory");
}

void tourCrash(TourStage& stage) {
  stage.section("Another start, after a kernel crash");
  stage.folder().writeFile("/proc/bootinfo", "POWERUPREASON : 0x00020000\n");
  stage.modem().clearRequests();
  stage.station().start();
  Bytes notice = concat(le32(4), le32(256), Bytes(256));
  bool noticed = false;
  for (const Received& request : stage.modem().requests())
    noticed = noticed || (request.id == 0x000F && request.body == notice);
  stage.check(noticed, "the modem was told to verify the SIM PIN by itself");
  stage.end();
}

void tourUnserved(TourStage& stage) {
  stage.section("What nothing serves");
  stage.ask("An unknown CDMA id", cdmaRequest(0x02000099),
            cdmaResponse(0x02000099, HOOK_STATUS_NOT_SUPPORTED));
  stage.ask("An unknown generic id", genericRequest(0x050077), genericErrorReply(0x050077));
  stage.ask("A request that cannot be used", hex("03 05 00 19 00"), genericErrorReply(0x03050019));
}

void tourNotifications(TourStage& stage) {
  stage.section("What the modem reports");
  Bytes text = bytesOf("UNSOLNOTIFY9876-12");
  text.resize(22);
  stage.indicate("A test notification", 0x0001, {}, cdmaUnsolicited(1111, text));
  stage.indicate("The carrier's value", 0x0012, hex("02 01"),
                 cdmaUnsolicited(0x020001B0, hex("02 01 00 00")));
  const Bytes block(103, 0x5A);
  stage.indicate("An LTE error", 0x010B,
                 concat(hex("01 00 00 00  07 00 00 00  02 00 00 00"), block, Bytes(1)),
                 cdmaUnsolicited(0x020001B1, concat(hex("01 00 00 00  07  02 00 00 00"), block)));
  tourGenericIndications(stage);
}

/// What the modem holds before the process starts.
void prepareConfiguration(TourStage& stage) {
  stage.modem().rde().set(53, hex("01 00 00 00 00 01 00 00"));
  stage.modem().rde().set(8029, bytesOf("MPSS.AB.1.2-00123-M8974"));
  stage.modem().rde().set(8028, bytesOf("flex 7"));
}

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

}  // namespace

bool runTour(Station& station, const Console& console) {
  TourStage stage(station, console);
  prepareConfiguration(stage);
  station.start();
  tourProperties(stage);
  tourNvItems(stage);
  tourCodes(stage);
  tourCarrierSettings(stage);
  tourLte(stage);
  tourNam(stage);
  tourEngineeringScreens(stage);
  tourGenericServices(stage);
  tourUnserved(stage);
  tourNotifications(stage);
  tourRfSave(stage);
  tourModemLogs(stage);
  stage.section("The end");
  stage.end();
  tourCrash(stage);
  console.section(fmt::format("{} of {} as expected", stage.steps() - stage.wrong(), stage.steps()));
  return stage.wrong() == 0;
}

}  // namespace tools
