// The module's result does not say why there are no bars; its log lines do.
#include "zopctl/host/bars.h"

#include "zopctl/host/log_capture.h"
#include "zopctl/host/refusals.h"
#include "zopctl/host/standard_output.h"
#include "zopctl/text/words.h"

namespace zopctl {

static const char LINK_LOST[] = "the link to the modem is lost";

namespace {
struct Reason {
  const char* line;  // part of the module's
  const char* text;
};
}  // namespace
static const Reason REASONS[] = {
    {"illegal network reject", "stuck: rejected by the network, and not attached since"},
    {"PDP active no PPP", "stuck: data connection active without a call"},
    {"all available PLMNs in FPLMN", "stuck: all networks are forbidden"},
    {"zop:gmmAttachState=", "not attached to the packet network"},
    {"zop:not registered", "not registered"},
    {"zop:serviceStatus=", "no full service"},
    {"zop:bars=-1", "limited service"},
    {"error=1:", LINK_LOST},
    {"error=2:", LINK_LOST},
};

Bars read_bars(const ModuleLibrary& m) {
  Bars found{VURN_OK, VURN_BARS_NONE, ""};
  LogCapture log(m, VURN_LOG_STUCK | VURN_LOG_EVENTS | VURN_LOG_ERROR);
  {
    QuietOutput quiet;
    found.result = m.vurn_get_bars(&found.bars);
  }
  if (std::string refusal = take_refusal(); !refusal.empty()) {
    return {VURN_ERR_FAILED, VURN_BARS_NONE, refusal};
  }
  if (found.result == VURN_OK && found.bars > 0) return found;
  for (const Reason& row : REASONS) {
    if (log.has(row.line)) return found.reason = row.text, found;
  }
  found.reason = vurn_result(found.result);
  return found;
}

bool is_lost(const Bars& found) {
  return found.result == VURN_ERR_NOT_OPEN || found.reason == LINK_LOST;
}

}  // namespace zopctl
