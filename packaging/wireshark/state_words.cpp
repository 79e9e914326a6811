// Prints the words of the modem's states and causes as Lua tables, by the names of the requests and
// of the screen's fields that hold them. The dissector can't include the tables of zopctl.
#include <cstdio>
#include <span>

#include "records/state_words.h"

using namespace records;

namespace {
struct Table {
  const char* name;
  std::span<const StateWord> words;
};
}  // namespace

static constexpr Table TABLES[] = {
    {"system_mode", SYSTEM_MODES},
    {"data_service_mode", DATA_SERVICES},
    {"service", SERVICES},
    {"registration", REGISTRATIONS},
    {"call", CALLS},
    {"band", BANDS},
    {"mm_attach", MM_RESULTS},
    {"mm_attach", GMM_RESULTS},  // some modems give these codes for both networks
    {"mm_attach_error", REJECT_CAUSES},
    {"mm_lu", MM_RESULTS},
    {"mm_lu", GMM_RESULTS},
    {"mm_lu_error", REJECT_CAUSES},
    {"gmm_attach", GMM_RESULTS},
    {"gmm_attach_error", REJECT_CAUSES},
    {"gmm_rau", GMM_RESULTS},
    {"gmm_rau_error", REJECT_CAUSES},
    {"gmm", GMM_STATES},
    {"pdp", PDP_STATES},
    {"pdp_error", PDP_CAUSES},
    {"network_mode", NETWORK_MODES},
    {"pmm", PMM_MODES},
    {"hsdpa", HSDPA_STATES},
    {"egprs", EGPRS_SUPPORT},
    {"sim_status", SIM_STATES},
    {"sim_lock", PIN_STATES},
};

int main() {
  for (const Table& table : TABLES) {
    printf("WORDS.%s = WORDS.%s or {}\n", table.name, table.name);
    for (const auto& [code, name, word] : table.words)
      printf("WORDS.%s[%d] = \"%.*s\"\n", table.name, code, static_cast<int>(word.size()),
             word.data());
  }
  return fflush(stdout) == 0 ? 0 : 1;
}
