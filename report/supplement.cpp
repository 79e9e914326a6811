// Reads the modem's values for the report. A value that can't be read keeps its old content.
#define LOG_SOURCE "zop_module"

#include "report/supplement.h"

#include "core/log.h"
#include "core/module_state.h"
#include "include/zop.h"
#include "include/zop_diag_info.h"

enum { LOGGED_MAXIMUM = 128 };  // in the log line; there is room for 140

static_assert(sizeof gDiagInfo.oplmn / sizeof gDiagInfo.oplmn[0] == OPLMN_BLOCKS);

static bool prv_succeeded(unsigned error, const char* parameter) {
  if (error != ZOP_SUCCESS) LOG_GET_ERROR(parameter, error);
  return error == ZOP_SUCCESS;
}

// The operator list is read in blocks. An error ends it; the blocks read so far are kept.
void prv_get_supplement_data() {
  prv_succeeded(zop_get_data_service_mode(&gDiagInfo.data_service_mode), "data_service_mode");
  if (gRefetchPlmns) {
    gRefetchPlmns = false;
    LOG_D(VURN_LOG_STUCK, "D zop:re-fetching PLMNs");
    uint32_t total = 0;
    int blocks = 0;
    while (blocks < OPLMN_BLOCKS) {
      uint32_t first = static_cast<uint32_t>(blocks) * BLOCK_ENTRIES + 1;
      uint8_t* block = gDiagInfo.oplmn[blocks];
      if (!prv_succeeded(zop_get_uim_data_oplmn_partial(first, &total, block), "oplmn")) {
        total = first - 1;
        break;
      }
      LOG_D(VURN_LOG_STUCK, "D zop:fetched a block containing %d (of %d) oplmn entries", block[0],
            static_cast<int>(total));
      ++blocks;
      if (total < first + BLOCK_ENTRIES) break;
    }
    if (total > OPLMN_BLOCKS * BLOCK_ENTRIES) {
      LOG_E("E zop:toomanyoplmns:found=%d,max=%d:", static_cast<int>(total), LOGGED_MAXIMUM);
      total = OPLMN_BLOCKS * BLOCK_ENTRIES;
    }
    gDiagInfo.oplmn_count = total;
    LOG_D(VURN_LOG_STUCK, "D zop:fetched %d oplmn entries in %d blocks", static_cast<int>(total),
          blocks);
    prv_succeeded(zop_get_uim_data_hplmn(gDiagInfo.hplmn), "hplmn");
    prv_succeeded(zop_get_uim_data_fplmn(gDiagInfo.fplmn), "fplmn");
  }
  prv_succeeded(zop_get_uim_data_rplmn(gDiagInfo.rplmn), "rplmn");
}
