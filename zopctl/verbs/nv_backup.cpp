// The file of zopctl nv backup is a JSON object:
//
//   {"format": "zopctl nv backup 1", "time": "2026-11-22T16:00:00Z",
//    "modem": {"imei": "..." or null, "hardware": ..., "firmware": ...},
//    "items": [{"item": 10, "name": "preferred-mode" or null, "length": 128, "data": "0004..."}],
//    "sha256": of the object without this member, written without spaces and line ends}
#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "zopctl/host/refusals.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/bytes_text.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/printable.h"
#include "zopctl/text/replace_file.h"
#include "zopctl/text/sha256.h"
#include "zopctl/verbs/nv.h"

namespace zopctl {

using Json = nlohmann::ordered_json;

static constexpr char FORMAT[] = "zopctl nv backup 1";

// ---- the modem's identity ----

template <typename Character>
static Json text_of(unsigned (*get)(Character*, uint32_t*)) {
  std::array<Character, 256> buffer{};
  uint32_t size = buffer.size() - 1;
  if (!problem(get(buffer.data(), &size)).empty()) return nullptr;
  std::string text = printable(std::string(buffer.begin(), std::ranges::find(buffer, 0)));
  return text.empty() ? Json() : Json(text);
}

static Json identity_of(const ModuleLibrary& m) {
  return {{"imei", text_of(m.zop_get_imei)},
          {"hardware", text_of(m.zop_get_hardware_version)},
          {"firmware", text_of(m.zop_get_firmware_version)}};
}

// Empty if the backup is known to be of this modem.
static std::string difference(const Json& saved, const Json& present) {
  const Json& imei = saved.at("imei");
  if (imei.is_null()) return "the backup does not say of which modem it is";
  if (present.at("imei").is_null()) return "the modem does not say its IMEI";
  if (imei != present.at("imei"))
    return fmt::format("the backup is of the modem {}, this one is {}", imei.get<std::string>(),
                       present.at("imei").get<std::string>());
  return "";
}

// ---- saving ----

static void add_items(const std::string& words, std::set<uint16_t>& items) {
  std::istringstream parts(words + ",");  // so that an empty text has an empty part
  for (std::string word; std::getline(parts, word, ',');) {
    size_t dash = word.find('-');
    auto first = nv_item_of(word), last = first;
    if (!first && dash != std::string::npos) {
      first = nv_item_of(word.substr(0, dash));
      last = nv_item_of(word.substr(dash + 1));
    }
    if (!first || !last || *first > *last) {
      throw UsageError(
          "--items must be numbers up to 65535, ranges or names of nv list, as "
          "10,850-900,sim-pin, not \"" +
          words + "\"");
    }
    for (uint32_t item = *first; item <= *last; ++item) items.insert(static_cast<uint16_t>(item));
  }
}

static std::set<uint16_t> wanted_items(const Arguments& arguments) {
  std::set<uint16_t> items;
  if (arguments.has("--items")) {
    add_items(arguments.text("--items"), items);
  } else {
    for (const KnownNvItem& known : KNOWN_NV_ITEMS) items.insert(known.number);
  }
  return items;
}

// A backup that is there may be the only good one.
void check_backup_arguments(const Arguments& arguments) {
  wanted_items(arguments);
  const std::string& file = arguments.text("FILE");
  if (std::filesystem::exists(std::filesystem::symlink_status(file)))
    throw Failure(file + " exists; name another file");
}

static std::string checksum_of(Json root) {
  root.erase("sha256");
  return sha256_of_text(root.dump());
}

static Json contents(const Json& identity, const Json& items) {
  auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  Json root = {{"format", FORMAT},
               {"time", fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", now)},
               {"modem", identity},
               {"items", items}};
  root["sha256"] = checksum_of(root);
  return root;
}

Findings backup_nv(const ModuleLibrary& m, const Arguments& arguments) {
  Json items = Json::array(), absent = Json::array();
  std::string not_saved;
  for (uint16_t number : wanted_items(arguments)) {
    check_signals();
    NvItem item = read_nv_item(m, number);
    std::string status = nv_status_text(item.nv_status);
    if (item.nv_status == 0) {
      items.push_back({{"item", number},
                       {"name", name_of_nv_item(number)},
                       {"length", item.data.size()},
                       {"data", fmt::format("{:02x}", fmt::join(item.data, ""))}});
    } else {
      absent.push_back(
          {{"item", number}, {"status", {{"code", item.nv_status}, {"text", status}}}});
      not_saved += fmt::format("{}{} ({})", not_saved.empty() ? "" : ", ", number, status);
    }
  }
  if (items.empty())
    throw Failure("the modem has none of these items, no file was written", 1,
                  "zopctl nv list shows the items that are known");
  const std::string& file = arguments.text("FILE");
  replace_file(file, contents(identity_of(m), items).dump(2) + "\n", 0600);
  return one_section("nv_backup", "NV backup",
                     {shown("file", "File", file, file),
                      shown("saved", "Items", items.size(), std::to_string(items.size())),
                      shown("absent", "Not saved", absent, absent.empty() ? "none" : not_saved)});
}

// ---- restoring ----

namespace {
struct Backup {
  Json modem;
  std::vector<NvItem> items;
};
}  // namespace

[[noreturn]] static void refuse(const std::string& file, const std::string& why) {
  throw Failure(file + ": " + why, 1,
                "nothing was changed; name a file that nv backup has written");
}

static NvItem item_of(const Json& saved) {
  NvItem item = {saved.at("item").get<uint32_t>(), 0, {}};
  item.data = bytes_of_hex("data", saved.at("data").get<std::string>(), ZOP_NV_DATA_SIZE);
  bool good = item.number <= 0xFFFF && item.data.size() == saved.at("length").get<size_t>();
  if (!good) throw UsageError("an item has a bad number or length");
  return item;
}

static Backup read_backup(const std::string& path) {
  require_readable(path);
  std::ifstream file(path);
  Json root = Json::parse(file, nullptr, false);
  if (!root.is_object() || root.value("format", Json()) != FORMAT)
    refuse(path, "this is no file of nv backup, or of a later version");
  if (root.value("sha256", Json()) != checksum_of(root))
    refuse(path, "the file was changed or damaged: its checksum does not fit");
  try {
    Backup backup = {root.at("modem"), {}};
    backup.modem.at("imei");
    for (const Json& saved : root.at("items")) backup.items.push_back(item_of(saved));
    return backup;
  } catch (const std::exception&) {  // of the JSON, or of an item's bytes
    refuse(path, "its items or its modem are not as nv backup writes them");
  }
}

void check_restore_arguments(const Arguments& arguments) { read_backup(arguments.text("FILE")); }

namespace {
struct Outcome {
  const char* result;  // "restored", "unchanged", "would-change", "failed" or "not-tried"
  std::string words;
  bool failed = false;
};
}  // namespace

static Outcome failure(const std::string& why) { return {"failed", "failed: " + why, true}; }

// The bytes of a secret are not shown.
static std::string change_of(const NvItem& now, const NvItem& saved) {
  if (now.nv_status != 0) return nv_status_text(now.nv_status) + " so far";
  const KnownNvItem* known = known_nv_item(saved.number);
  if (known != nullptr && known->secret) return "another value";
  std::string words;
  int count = 0;
  for (size_t i = 0; i < saved.data.size(); ++i) {
    if (now.data[i] == saved.data[i]) continue;
    if (++count == 1)
      words = fmt::format("byte {}: {:02x} to {:02x}", i, now.data[i], saved.data[i]);
  }
  return count == 1 ? words : fmt::format("{}, {} bytes in all", words, count);
}

static bool same(const NvItem& now, const NvItem& saved) {
  return now.nv_status == 0 &&
         std::ranges::equal(saved.data, std::span(now.data).first(saved.data.size()));
}

static Outcome restored(const ModuleLibrary& m, const NvItem& saved, bool dry_run) {
  NvItem now = read_nv_item(m, saved.number);
  if (same(now, saved)) return {"unchanged", "unchanged"};
  std::string change = change_of(now, saved);
  if (dry_run) return {"would-change", "would change, " + change};
  if (uint32_t status = write_nv_item(m, saved.number, saved.data))
    return failure(fmt::format("NV status {} ({})", status, nv_status_text(status)));
  if (!same(read_nv_item(m, saved.number), saved)) return failure("it reads back otherwise");
  return {"restored", "restored, " + change};
}

// The modem refuses a single item by its NV status. One that has stopped answering gets no more.
static std::vector<Outcome> restore_all(const ModuleLibrary& m, const Backup& backup,
                                        bool dry_run) {
  std::vector<Outcome> outcomes;
  const char* stopped = nullptr;
  for (const NvItem& saved : backup.items) {
    if (stopped == nullptr && has_caught_signal()) stopped = "not tried, stopped before";
    if (stopped != nullptr) {
      outcomes.push_back({"not-tried", stopped, true});
      continue;
    }
    try {
      outcomes.push_back(restored(m, saved, dry_run));
    } catch (const Failure& error) {
      outcomes.push_back(failure(error.what()));
      stopped = "not tried, as the one before failed";
    }
  }
  return outcomes;
}

static Findings report(const Backup& backup, const std::vector<Outcome>& outcomes,
                       const std::string& other, bool json) {
  Json list = Json::array();
  std::vector<Item> rows = {other.empty()
                                ? yes_or_no("same_modem", "Same modem", true)
                                : shown("same_modem", "Same modem", false, "no: " + other)};
  bool any_failed = false;
  for (size_t i = 0; i < outcomes.size(); ++i) {
    uint32_t number = backup.items[i].number;
    const Outcome& outcome = outcomes[i];
    list.push_back({{"item", number},
                    {"name", name_of_nv_item(number)},
                    {"result", outcome.result},
                    {"text", outcome.words}});
    any_failed = any_failed || outcome.failed;
    if (!json) rows.push_back({"", label_of_nv_item(number), true, outcome.words, outcome.failed});
  }
  if (json) rows.push_back({"items", "Items", list, "", any_failed});
  return one_section("nv_restore", "NV restore", rows);
}

Findings restore_nv(const ModuleLibrary& m, const Arguments& arguments) {
  Backup backup = read_backup(arguments.text("FILE"));
  bool dry_run = arguments.has("--dry-run");
  std::string other = difference(backup.modem, identity_of(m));
  if (!other.empty() && !dry_run && !arguments.has("--other-modem"))
    throw Failure(other, 1, "nothing was changed; --other-modem restores it all the same");
  return report(backup, restore_all(m, backup, dry_run), other, arguments.json);
}

}  // namespace zopctl
