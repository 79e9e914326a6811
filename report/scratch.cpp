// The scratch buffer; guarded by the renderer's lock.
#include "report/scratch.h"

#include "include/zop_diag_info.h"

static char gScratch[SCRATCH_SIZE];

BoundedWriter prv_scratch() { return {gScratch, sizeof gScratch}; }

int prv_give(const BoundedWriter& out, const char** text, int* length) {
  *text = out.text();
  *length = static_cast<int>(out.length());
  return 1;
}

int prv_give_list(BoundedWriter& out, const char** text, int* length) {
  out.drop_trailing_blank();
  return prv_give(out, text, length);
}

bool prv_is_wcdma_screen() { return gDiagInfo.screen.system_mode == ZOP_SCREEN_WCDMA; }
bool prv_is_gsm_screen() { return gDiagInfo.screen.system_mode == ZOP_SCREEN_GSM; }
