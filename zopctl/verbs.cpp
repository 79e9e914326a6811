// The table of verbs.
#include "zopctl/verbs.h"

#include <charconv>

#include "zopctl/status.h"
#include "zopctl/words.h"

namespace zopctl {

static Findings status(const ModuleLibrary& module, const Arguments&) {
  return read_status(module);
}

const std::vector<Noun>& nouns() {
  static const std::vector<Noun> list = {
      {"sim", "the SIM card and its PIN"},
      {"plmn", "the PLMN lists of the SIM"},
      {"nv", "NV items, the modem's own memory"},
      {"config", "band, modes, reset, factory test"},
      {"firmware", "image sets, and their way into the modem"},
      {"profile", "packet data (PDP) profiles"},
      {"errlog", "the modem's error log"},
      {"call", "test calls"},
      {"call-test", "the factory's call test"},
      {"event", "events of the host's platform"},
      {"sms", "messages"},
      {"time", "the modem's clock"},
  };
  return list;
}

static const Argument PIN = {"--pin", "the PIN; without it, it is asked for", false};
static const Argument OLD_PIN = {"--pin", "the old PIN; without it, it is asked for", false};
static const Argument NEW_PIN = {"--new-pin", "the new PIN; without it, it is asked for", false};
static const Argument KEY = {"--key", "the unblocking key; without it, it is asked for", false};
static const Argument ON_OFF = {"STATE", "on or off", true, {"on", "off"}};

const std::vector<Verb>& verbs() {
  constexpr auto LINK = Verb::LINK;
  static const std::vector<Verb> list = {
      {nullptr,
       "status",
       "identity, SIM, network, mode, signal and time",
       Verb::MODULE,
       nullptr,
       {},
       status},
      {nullptr,
       "signal",
       "RSSI, RSCP, transmit power, path loss and bars",
       LINK,
       nullptr,
       {},
       signal_show},
      {nullptr,
       "bars",
       "the bars that a host shows, with the reason when there are none",
       Verb::MODULE,
       nullptr,
       {{"--watch", "look again every so many SECONDS, a line each", false}},
       bars_show},
      {nullptr, "mcc", "the country, and whether it has changed", LINK, nullptr, {}, mcc_show},
      {nullptr,
       "doctor",
       "check every link of the chain and say what to try",
       Verb::LIBRARY,
       nullptr,
       {},
       doctor},
      {nullptr,
       "report",
       "the diagnostic report, as a host reads it",
       Verb::MODULE,
       nullptr,
       {{"--wait", "wait for fresh data of the modem", false, {}, true}},
       report_show},
      {nullptr,
       "exception",
       "report an exception, and show the five reports that follow",
       Verb::MODULE,
       nullptr,
       {{"CODE", "0 to 9; 3 to 7 are not reported by the module"}},
       exception_report},
      {nullptr, "cells", "the cells that the modem hears", LINK, nullptr, {}, cells_show},
      {nullptr,
       "dump",
       "save the memory of a modem that has crashed",
       Verb::LIBRARY,
       nullptr,
       {{"--output",
         "folder in which the dump gets its own; the current one without it",
         false,
         {},
         false,
         "-o"}},
       dump},
      {"firmware",
       "info",
       "check an image set, without a modem",
       Verb::LIBRARY,
       nullptr,
       {{"DIR", "folder of the image set"}},
       firmware_info},
      {"firmware",
       "update",
       "write an image set to the modem",
       Verb::LIBRARY,
       "a modem whose update breaks off has no firmware until an update succeeds",
       {{"DIR", "folder of the image set"},
        {"--modem-only", "the firmware alone, not the boot loaders", false, {}, true},
        {"--erase", "erase the modem's file system, and write all", false, {}, true}},
       firmware_update},
      {"sim", "status", "card, lock and tries left", LINK, nullptr, {}, sim_status_verb},
      {"sim", "verify", "give the PIN that the card wants", LINK, nullptr, {PIN}, sim_verify},
      {"sim", "enable", "switch the PIN on", LINK, nullptr, {PIN}, sim_enable},
      {"sim", "disable", "switch the PIN off", LINK, nullptr, {PIN}, sim_disable},
      {"sim", "change", "change the PIN", LINK, nullptr, {OLD_PIN, NEW_PIN}, sim_change},
      {"sim",
       "unblock",
       "restore a blocked PIN by the unblocking key",
       LINK,
       nullptr,
       {KEY, NEW_PIN},
       sim_unblock},
      {"plmn",
       "list",
       "show one list, or all",
       LINK,
       nullptr,
       {{"LIST", "which one", false, {"home", "user", "operator", "forbidden", "registered"}}},
       plmn_list},
      {"plmn",
       "set-user",
       "write the user's list, for example 310-410,262-01:gsm",
       LINK,
       nullptr,
       {{"PLMNS", "MCC-MNC with commas, :gsm or :umts behind each; \"\" empties the list"}},
       plmn_set_user},
      {"nv",
       "read",
       "read an item",
       LINK,
       nullptr,
       {{"ITEM", "number of the item"}, {"--length", "bytes to show, 1 to 128", false}},
       nv_read},
      {"nv",
       "write",
       "write an item",
       LINK,
       "a wrong NV item can make the modem unusable",
       {{"ITEM", "number of the item"}, {"DATA", "its bytes in hexadecimal"}},
       nv_write},
      {"config",
       "show",
       "modes, band, service domain, backup status",
       LINK,
       nullptr,
       {},
       config_show},
      {"config",
       "set-band",
       "fix the modem to a band",
       LINK,
       "a band that the network does not use takes the modem out of service",
       {{"BAND", "43, 44, 47, 48, 80, 81 or 84"}},
       config_set_band},
      {"config",
       "set-mode",
       "preferred mode, as the modem numbers it",
       LINK,
       "a mode that the network does not use takes the modem out of service",
       {{"MODE", "0 to 255"}},
       config_set_mode},
      {"config",
       "set-search-order",
       "where the modem searches first",
       LINK,
       nullptr,
       {{"KIND", "kind of network", true, {"gsm", "wcdma"}},
        {"BAND", "43, 44, 47, 48 for gsm; 80, 81, 84 for wcdma"}},
       config_set_search_order},
      {"config",
       "diag-port",
       "port of the diagnostic link",
       LINK,
       "the modem may not be heard on this port any more",
       {{"PORT", "0 or 1"}},
       config_diag_port},
      {"config", "factory-test", "factory test mode", LINK, nullptr, {ON_OFF}, config_factory_test},
      {"config",
       "reset",
       "restart the modem",
       LINK,
       "the modem goes away and its calls end",
       {},
       config_reset},
      {"config",
       "error-fatal",
       "crash the modem, for a memory dump",
       LINK,
       "the modem crashes and its calls end",
       {},
       config_error_fatal},
      {"profile", "list", "show the profiles", LINK, nullptr, {}, profile_list},
      {"profile",
       "write",
       "write a profile",
       LINK,
       nullptr,
       {{"RECORD", "its record in hexadecimal, up to 103 bytes; the first is its number"}},
       profile_write},
      {"errlog", "read", "show the log", LINK, nullptr, {}, errlog_read},
      {"errlog",
       "clear",
       "clear a record, or all",
       LINK,
       nullptr,
       {{"INDEX", "0 to 254; all without it", false}},
       errlog_clear},
      {"call",
       "start",
       "place a test call",
       LINK,
       nullptr,
       {{"NUMBER", "1 to 32 characters"}},
       call_start},
      {"call", "end", "end the test call", LINK, nullptr, {}, call_end},
      {"call-test",
       "start",
       "start the factory's call test",
       Verb::MODULE,
       "the modem changes its band and calls until it is stopped",
       {{"TEST",
         "0 factory test mode alone, 1 WCDMA 850, 2 GSM 1900, others on the band as it is"}},
       call_test_start},
      {"call-test", "stop", "end it", Verb::MODULE, nullptr, {}, call_test_stop},
      {"event",
       "wanRing",
       "report a ring wake-up to the module",
       Verb::LIBRARY,
       nullptr,
       {{"ORIGIN", "0 to 4 are known"}},
       event_ring},
      {"event",
       "fileDownloaded",
       "report a finished download, which logs the network",
       Verb::MODULE,
       nullptr,
       {},
       event_downloaded},
      {"sms",
       "send",
       "send a message",
       LINK,
       nullptr,
       {{"NUMBER", "up to 35 characters"}, {"TEXT", "up to 254 characters"}},
       sms_send},
      {"time",
       "set",
       "set the modem's clock",
       LINK,
       nullptr,
       {{"TIME", "local time as 2010-07-24T13:02:59; now without it", false}},
       time_set},
  };
  return list;
}

uint32_t Arguments::number(const std::string& name, uint32_t min, uint32_t max) const {
  const std::string& word = text(name);
  bool hex = word.starts_with("0x");
  const char* first = word.data() + (hex ? 2 : 0);
  const char* last = word.data() + word.size();
  uint32_t value = 0;
  auto [end, error] = std::from_chars(first, last, value, hex ? 16 : 10);
  if (error != std::errc{} || end != last || first == last || value < min || value > max) {
    throw UsageError(name + " is a number from " + std::to_string(min) + " to " +
                     std::to_string(max) + ", not \"" + word + "\"");
  }
  return value;
}

void require(unsigned result, const char* what) {
  if (result == ZOP_SUCCESS) return;
  throw Failure(std::string(what) + ": " + zop_result(result));
}

Findings one_section(const char* key, const char* title, std::vector<Item> items) {
  return {{key, title, std::move(items)}};
}

Item shown(const char* key, const char* label, nlohmann::ordered_json value, std::string text) {
  return {key, label, std::move(value), std::move(text), false};
}

}  // namespace zopctl
