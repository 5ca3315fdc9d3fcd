#include "core/indication_routing.h"

#include <iterator>

#include "adam/utility_indication.h"
#include "carrier/indications.h"
#include "core/ground/log.h"
#include "core/ground/table.h"
#include "core/test_notification.h"
#include "generic/antenna_tuning.h"
#include "generic/data_plmn.h"
#include "generic/pfp.h"
#include "generic/rf_save.h"
#include "generic/signal_coverage.h"
#include "qmi/vendor_indications.h"

namespace kesext {

namespace {

struct IndicationTableRow {
  uint32_t indication_id;
  IndicationHandler& handler;
};

constexpr IndicationTableRow unsolIndTable[] = {
    {IND_TEST, sendUnsolNotify},       {IND_PFP, myPfpIndHndlr},     {IND_RF_SAVE, dhob_ind_handler},
    {IND_DATA_PLMN, dataPlmnIndHndlr}, {IND_UTILITY, utilsIndHndlr}, {IND_SIGNAL_COVERAGE, sigcovIndHndlr},
    {IND_TUNER, tunerIndHndlr},
};
static_assert(std::size(unsolIndTable) == 7);
static_assert(keysAreUnique(unsolIndTable, &IndicationTableRow::indication_id));

}  // namespace

void handleUnsolIndication(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                           uint32_t buffer_length, void* callback_data) {
  LOGE("Handling unsol msg %d", indication_id);
  if (kes_qmi_sprint_hook_ind_cb(client, indication_id, buffer, buffer_length, callback_data) == 0) {
    LOGE("Unsol resp 0x%x is handled by Sprint handler.", indication_id);
    return;
  }
  LOGE("Unsol resp 0x%x not supported by Sprint handler.", indication_id);
  const auto* row = findRow(unsolIndTable, &IndicationTableRow::indication_id, indication_id);
  if (row == nullptr) {
    LOGE("Unsupported Indicator message %u", indication_id);
    return;
  }
  row->handler(client, indication_id, buffer, buffer_length, callback_data);
}

}  // namespace kesext
