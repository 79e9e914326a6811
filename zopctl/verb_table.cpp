// In the order of --help and the manual page.
#include "zopctl/verb_table.h"

#include "zopctl/firmware/firmware.h"
#include "zopctl/live/monitor.h"
#include "zopctl/verbs/verbs.h"

namespace zopctl {

const std::vector<Noun>& nouns() {
  static const std::vector<Noun> list = {
      {"sim", "the SIM card and its PIN"},
      {"plmn", "the PLMN lists of the SIM"},
      {"nv", "NV items, the modem's non-volatile settings"},
      {"config", "band, modes, reset, factory test"},
      {"firmware", "check image sets and write them to the modem"},
      {"profile", "packet data (PDP) profiles"},
      {"errlog", "the modem's error log"},
      {"call", "test calls"},
      {"call-test", "the factory call test"},
      {"event", "events of the host platform"},
      {"sms", "text messages"},
      {"time", "the modem's clock"},
#ifdef ZOP_FLEET
      {"fleet", "the reports of many devices"},
#endif
  };
  return list;
}

static Verbs all_verbs() {
  Verbs all = {STATUS,
               SIGNAL,
               BARS,
               MONITOR,
               MCC,
               DOCTOR,
               DEVICES,
               SUPPORT,
               REPORT,
               EXCEPTION,
               CELLS,
               DUMP,
               PARSE_LOG,
               HTML,
               FIRMWARE_INFO,
               FIRMWARE_SEAL,
               FIRMWARE_UPDATE,
               FIRMWARE_FINISH};
  for (const Verbs* rows :
       {&SIM_VERBS, &PLMN_VERBS, &NV_VERBS, &CONFIG_VERBS, &PROFILE_VERBS, &ERRLOG_VERBS,
        &CALL_VERBS, &CALL_TEST_VERBS, &EVENT_VERBS, &SMS_VERBS, &TIME_VERBS}) {
    all.insert(all.end(), rows->begin(), rows->end());
  }
#ifdef ZOP_FLEET
  all.insert(all.end(), FLEET_VERBS.begin(), FLEET_VERBS.end());
#endif
  return all;
}

const Verbs& verbs() {
  static const Verbs all = all_verbs();
  return all;
}

}  // namespace zopctl
