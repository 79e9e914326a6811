// The verbs of zopctl: what each is called, what it takes, what it does. One table serves the
// command line, --help, the completion and the man page.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "zopctl/module_library.h"
#include "zopctl/output.h"

namespace zopctl {

// Arguments of a verb by name, as the user gave them.
class Arguments {
 public:
  std::map<std::string, std::string> texts;
  std::map<std::string, std::vector<std::string>> lists;
  bool yes = false;   // --yes: what can break a device is meant
  bool json = false;  // for verbs that print as they go

  bool has(const std::string& name) const { return texts.count(name) != 0; }
  const std::string& text(const std::string& name) const { return texts.at(name); }

  // A number from min to max, decimal or 0x. Throws UsageError.
  uint32_t number(const std::string& name, uint32_t min, uint32_t max) const;
};

struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Argument {
  const char* name;  // "ITEM", or "--pin" for an option
  const char* help;
  bool required = true;
  std::vector<const char*> choices = {};
  bool flag = false;  // an option without a value
  const char* short_name = nullptr;
  bool list = false;  // several words
};

struct Verb {
  const char* noun;  // null for a verb of its own
  const char* name;
  const char* help;
  // vurn_open with its ready SIM, the serial link alone, or neither: the verb opens what it wants.
  enum Need { MODULE, LINK, LIBRARY } need;
  const char* danger;  // what it can break; null when harmless
  std::vector<Argument> arguments;
  Findings (*run)(const ModuleLibrary&, const Arguments&);  // nothing: it has printed by itself
};

struct Noun {
  const char* name;
  const char* help;
};

const std::vector<Noun>& nouns();
const std::vector<Verb>& verbs();

// ---- one source a noun ----
Findings sim_status_verb(const ModuleLibrary&, const Arguments&);
Findings sim_verify(const ModuleLibrary&, const Arguments&);
Findings sim_enable(const ModuleLibrary&, const Arguments&);
Findings sim_disable(const ModuleLibrary&, const Arguments&);
Findings sim_change(const ModuleLibrary&, const Arguments&);
Findings sim_unblock(const ModuleLibrary&, const Arguments&);
Findings plmn_list(const ModuleLibrary&, const Arguments&);
Findings plmn_set_user(const ModuleLibrary&, const Arguments&);
Findings nv_read(const ModuleLibrary&, const Arguments&);
Findings nv_write(const ModuleLibrary&, const Arguments&);
Findings config_show(const ModuleLibrary&, const Arguments&);
Findings config_set_band(const ModuleLibrary&, const Arguments&);
Findings config_set_mode(const ModuleLibrary&, const Arguments&);
Findings config_set_search_order(const ModuleLibrary&, const Arguments&);
Findings config_diag_port(const ModuleLibrary&, const Arguments&);
Findings config_factory_test(const ModuleLibrary&, const Arguments&);
Findings config_reset(const ModuleLibrary&, const Arguments&);
Findings config_error_fatal(const ModuleLibrary&, const Arguments&);
Findings profile_list(const ModuleLibrary&, const Arguments&);
Findings profile_write(const ModuleLibrary&, const Arguments&);
Findings monitor(const ModuleLibrary&, const Arguments&);
Findings bars_show(const ModuleLibrary&, const Arguments&);
Findings mcc_show(const ModuleLibrary&, const Arguments&);
Findings event_ring(const ModuleLibrary&, const Arguments&);
Findings event_downloaded(const ModuleLibrary&, const Arguments&);
Findings call_test_start(const ModuleLibrary&, const Arguments&);
Findings call_test_stop(const ModuleLibrary&, const Arguments&);
Findings report_show(const ModuleLibrary&, const Arguments&);
Findings exception_report(const ModuleLibrary&, const Arguments&);
Findings firmware_info(const ModuleLibrary&, const Arguments&);
Findings firmware_update(const ModuleLibrary&, const Arguments&);
Findings dump(const ModuleLibrary&, const Arguments&);
Findings parse_log(const ModuleLibrary&, const Arguments&);
Findings html(const ModuleLibrary&, const Arguments&);
Findings doctor(const ModuleLibrary&, const Arguments&);
Findings signal_show(const ModuleLibrary&, const Arguments&);
Findings cells_show(const ModuleLibrary&, const Arguments&);
Findings errlog_read(const ModuleLibrary&, const Arguments&);
Findings errlog_clear(const ModuleLibrary&, const Arguments&);
Findings call_start(const ModuleLibrary&, const Arguments&);
Findings call_end(const ModuleLibrary&, const Arguments&);
Findings sms_send(const ModuleLibrary&, const Arguments&);
Findings time_set(const ModuleLibrary&, const Arguments&);

// Throws Failure, with the call's name and result in words, unless result is ZOP_SUCCESS.
void require(unsigned result, const char* what);

// Findings of one section.
Findings one_section(const char* key, const char* title, std::vector<Item> items);
Item shown(const char* key, const char* label, nlohmann::ordered_json value, std::string text);

}  // namespace zopctl
