// The call test for factory and certification: a mobile-originated loop-back call on a fixed band.
#define LOG_SOURCE "zop_module"

#include "core/log.h"
#include "core/module_state.h"
#include "include/zop.h"

constinit int32_t sTestNum = VURN_TEST_NONE;

namespace {
struct TestBand {
  int test;
  uint32_t band;
};
}  // namespace

// Other tests do not change the band. Stopping a test does not restore it.
static constexpr TestBand TEST_BANDS[] = {
    {VURN_TEST_WCDMA_850, ZOP_BAND_WCDMA_850},
    {VURN_TEST_GSM_1900, ZOP_BAND_GSM_1900},
};

static bool prv_set_factory_test(bool on) {
  unsigned error = zop_enable_factory_test(on ? 1 : 0);
  if (error == ZOP_SUCCESS) return true;
  LOG_E("E zop:enabletest:state=%s,error=%d:can't set factory test enable", on ? "on" : "off",
        static_cast<int>(error));
  return false;
}

static bool prv_set_test_band(int test) {
  LOG_D(VURN_LOG_GENERAL, "D zop:setting band testNum = %d", test);
  for (const TestBand& row : TEST_BANDS) {
    if (row.test != test) continue;
    if (unsigned error = zop_set_band(row.band)) {
      LOG_E("E zop:setband:status=%d:can't set band", static_cast<int>(error));
      return false;
    }
  }
  return true;
}

// A call to the number "0" without a time limit. "succeeded" is logged even if the call failed.
static bool prv_start_test_call() {
  LOG_D(VURN_LOG_GENERAL, "D zop:starting call test");
  unsigned error = zop_originate_call_test(0, "0");
  if (error != ZOP_SUCCESS) {
    LOG_E("E zop:initmolb:status=%d:can't initiate MOLB test", static_cast<int>(error));
  }
  LOG_D(VURN_LOG_GENERAL, "D zop:call test succeeded");
  return error == ZOP_SUCCESS;
}

// A failed step does not end the test: the later steps are still tried.
int vurn_originate_call_test(int testNum) {
  ScopedLock lock(gModuleMutex);
  if (!gModuleOpen) return VURN_ERR_NOT_OPEN;
  sTestNum = testNum;
  bool good = prv_set_factory_test(true);
  if (!prv_set_test_band(testNum)) good = false;
  if (testNum > VURN_TEST_FACTORY_MODE && !prv_start_test_call()) good = false;
  if (good) return VURN_OK;
  (void)prv_set_factory_test(false);  // the test has failed anyway
  return VURN_ERR_FAILED;
}

// If factory test mode can't be left, the test counts as running, so that a later stop tries again.
int vurn_stop_call_test() {
  ScopedLock lock(gModuleMutex);
  if (!gModuleOpen) return VURN_ERR_NOT_OPEN;
  if (sTestNum < VURN_TEST_FACTORY_MODE) {
    sTestNum = VURN_TEST_NONE;
    return VURN_OK;
  }
  int result = VURN_OK;
  if (sTestNum > VURN_TEST_FACTORY_MODE) {
    LOG_D(VURN_LOG_GENERAL, "D zop:stopping call test");
    if (unsigned error = zop_end_call_test()) {
      LOG_E("E zop:stopmolb:status=%d:can't stop MOLB test", static_cast<int>(error));
      result = VURN_ERR_FAILED;
    }
  }
  if (!prv_set_factory_test(false)) return VURN_ERR_FAILED;
  sTestNum = VURN_TEST_NONE;
  return result;
}
