// The verbs, by source.
#pragma once

#include "zopctl/host/verb.h"

namespace zopctl {

extern const Verb STATUS, SIGNAL, BARS, MCC, DOCTOR, REPORT, EXCEPTION, CELLS, PARSE_LOG, HTML;
extern const Verb DEVICES, SUPPORT;
extern const Verbs SIM_VERBS, PLMN_VERBS, NV_VERBS, CONFIG_VERBS, PROFILE_VERBS, ERRLOG_VERBS;
extern const Verbs CALL_VERBS, CALL_TEST_VERBS, EVENT_VERBS, SMS_VERBS, TIME_VERBS, FLEET_VERBS;

}  // namespace zopctl
