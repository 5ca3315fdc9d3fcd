// What the process does with requests and indications that are one exchange each, as sessions.
#include <ostream>

#include "support/session_test.h"

namespace kesext_test {
namespace {

struct Fact {
  const char* name;
  const char* session;
  std::vector<std::string> only = {};
};

std::ostream& operator<<(std::ostream& out, const Fact& fact) {
  return out << fact.session << ".log";
}

class Sessions : public SessionTest, public ::testing::WithParamInterface<Fact> {};

TEST_P(Sessions, Go) {
  Play(GetParam().session, GetParam().only);
}

/// What every line has.
const std::vector<std::string> kAllLines = {"> ", "RIL-KESEXT: "};

const Fact kFacts[] = {
    {"WhatNothingServesIsAnsweredWithStatus6OrTheErrorReply", "dispatch_unserved", kAllLines},
    {"IndicationsAreForwardedOrOnlyLogged", "indications"},
    {"EveryCarrierOperationAnswersSuccessRefusalAndFailedSend", "carrier_operations"},
    {"CarrierRequestsLogDispatcherAndBuilderInOrder", "carrier_served", kAllLines},
    {"CarrierWriteGroupsNeedAPayload", "carrier_write_groups", {"EVENT VALUE", "> vendor 0102"}},
    {"ObsoleteIdsAreAnsweredWithStatus6", "carrier_obsolete"},
    {"ElementsAreWrittenWithBothLengthsAndFreshHeaders", "carrier_element_writes"},
    {"ElementsAreReadWithTheModemsLengthAndFreshHeaders", "carrier_element_reads"},
    {"TheDdtmPreferenceIsOneByteOfElement10018", "carrier_ddtm"},
    {"TheLteOptionIsElement10017", "carrier_lte_option"},
    {"TotOrdersAreBoundedTo15Entries", "carrier_tot_orders"},
    {"TheApnListIsRepackedAndBoundedTo8", "carrier_apns"},
    {"AnAkeyOfAnotherLengthIsRefusedUnsent", "carrier_akey_lengths"},
    {"EverySourceOfLteDataHasItsFieldAndAbsentFieldsAreZero", "lte_data"},
    {"LteDataOfAFailedNasRequestAreAnsweredWithStatus5", "lte_data_failures"},
    {"EveryGenericServiceAnswersSuccessAndFailedSend", "generic_services", kAllLines},
    {"LengthsOfGenericServicesAreBounded", "generic_bounds"},
    {"AShortNameIsAnsweredInUtf8AndWithoutANameTheFailureByte",
     "plmn_names",
     {"charecter", "FALSE", "Invalid"}},
    {"EveryFixedElementIsReadAndWritten", "nv_fixed_elements"},
    {"AFixedReadIgnoresTheModemsResultAndAWriteDoesNot", "nv_failures"},
    {"AFixedWriteIsBoundedTo512Bytes", "nv_write_bounds"},
    {"NamProgrammingKeepsBytesThatAreNotItsOwn", "nam_kept_bytes", {"> ", "MIN1"}},
    {"NamItemsThatWereWrittenAreReadBackAndEveryAccessAndValueLogged", "nam_written_and_read"},
    {"NamValuesAreCutAndOddOnesConverted", "nam_odd_values", {"SET NAM ", "GET NAM VALUE", "HexDump", "mdn"}},
    {"AnotherCodeOfSixDigitsIsChangedAfterTheNamItems",
     "nam_code",
     {"> dms", "Spc", "SPC", "write_spc", "Write success", "COMPLETE", "ERROR FOUND"}},
    {"EveryNamWriteThatFailsIsNamedAndStopsNothing",
     "nam_write_steps",
     {"ERROR FOUND", "> vendor 0009: 532 bytes 02"}},
    {"EveryNamReadThatFailsLeavesTheRecordZero", "nam_read_steps", {"ERROR FOUND", "COMPLETE", "VALUE M"}},
    {"OddNamItemsReadWithoutError", "nam_odd_items", {"mdn_number", "MDN", "VALUE M", "VALUE I", "VOCODER"}},
    {"SidNidPairsAreWordsToTheParent", "sid_nid_pairs"},
    {"TheProtocolRevisionIsTheFirstByteOfItem28", "protocol_revision"},
    {"AnswersWithAFreshHeaderHaveAPayloadAndCarryNoCode", "fresh_headers", {"BYTE ARRAY"}},
    {"EveryFieldOfAnEngineeringScreenHasItsWordAndItsLine", "engineering_fields"},
    {"EngineeringTextDecodesAsFarAsItGoes",
     "engineering_texts",
     {"_engineering_info", "datalen", "HexDump", "invalid char", "CP status1", "CP status2"}},
};

INSTANTIATE_TEST_SUITE_P(Requests, Sessions, ::testing::ValuesIn(kFacts),
                         [](const auto& fact) { return std::string(fact.param.name); });

}  // namespace
}  // namespace kesext_test
