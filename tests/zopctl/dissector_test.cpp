// The dissector can't include the tables of state words; what it copies is held against them.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <span>
#include <string>

#include "records/state_words.h"

using Words = std::map<int, std::string>;

// The entries of "NAME = { [-1] = "none", [0] = "null", "one", ... }".
static Words table_of(const std::string& source, const std::string& name) {
  std::smatch table;
  if (!std::regex_search(source, table, std::regex("\\b" + name + " = \\{([^}]*)\\}"))) return {};
  std::string rows = table[1];
  Words words;
  int next = 1;
  std::regex row(R"re((?:\[(-?\d+)\] = )?"([^"]*)")re");
  for (std::sregex_iterator at(rows.begin(), rows.end(), row), end; at != end; ++at)
    words[(*at)[1].matched ? std::stoi((*at)[1]) : next++] = (*at)[2];
  return words;
}

TEST(Dissector, has_the_words_of_all_states) {
  using namespace records;
  const std::pair<const char*, std::span<const StateWord>> tables[] = {
      {"system_mode", SYSTEM_MODES},
      {"data_service_mode", DATA_SERVICES},
      {"service", SERVICES},
      {"registration", REGISTRATIONS},
      {"call", CALLS},
      {"band", BANDS},
      {"ATTACHES", MM_RESULTS},
      {"ATTACHES", GMM_RESULTS},
      {"gmm", GMM_STATES},
      {"pdp", PDP_STATES},
      {"network_mode", NETWORK_MODES},
      {"pmm", PMM_MODES},
      {"hsdpa", HSDPA_STATES},
      {"egprs", EGPRS_SUPPORT},
      {"sim_status", SIM_STATES},
      {"sim_lock", PIN_STATES}};
  std::ifstream file(PROGRAMS "/zop_diag.lua");
  std::string source(std::istreambuf_iterator<char>(file), {});
  for (auto& [name, states] : tables) {
    Words words = table_of(source, name);
    for (const StateWord& state : states) EXPECT_EQ(words[state.code], state.word) << name;
  }
}
