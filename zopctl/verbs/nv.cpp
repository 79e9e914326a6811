// zopctl nv: the modem's NV items, by number or by name. Each has 128 bytes, of which most use a
// few.
#include "zopctl/verbs/nv.h"

#include <fmt/format.h>

#include "zopctl/host/refusals.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/bytes_text.h"
#include "zopctl/text/counted.h"
#include "zopctl/text/failure.h"
#include "zopctl/verbs/verbs.h"

namespace zopctl {

using Json = nlohmann::ordered_json;

NvItem read_nv_item(const ModuleLibrary& m, uint32_t number) {
  NvItem item = {number, 0, std::vector<uint8_t>(ZOP_NV_DATA_SIZE)};
  require(m.zop_nv_read(number, item.data.data(), ZOP_NV_DATA_SIZE, &item.nv_status), "NV read");
  return item;
}

uint32_t write_nv_item(const ModuleLibrary& m, uint32_t number, const std::vector<uint8_t>& data) {
  uint32_t nv_status = 0;
  require(m.zop_nv_write(number, data.data(), static_cast<uint32_t>(data.size()), &nv_status),
          "NV write");
  return nv_status;
}

std::string label_of_nv_item(uint32_t number) {
  const KnownNvItem* known = known_nv_item(number);
  return known == nullptr ? std::to_string(number) : fmt::format("{} {}", number, known->name);
}

Json name_of_nv_item(uint32_t number) {
  const KnownNvItem* known = known_nv_item(number);
  return known == nullptr ? Json() : Json(known->name);
}

static void require_nv(uint32_t nv_status) {
  if (nv_status == 0) return;
  throw Failure(fmt::format("NV status {} ({})", nv_status, nv_status_text(nv_status)), 1,
                "zopctl nv list shows the items that are known");
}

static std::vector<uint8_t> data_of(const Arguments& arguments) {
  return bytes_of_hex("DATA", arguments.text("DATA"), ZOP_NV_DATA_SIZE);
}

static void check_data(const Arguments& arguments) { data_of(arguments); }

// What the item says; null for one whose meaning is the modem's, or that is a secret.
static Json value_of(const NvItem& item) {
  const KnownNvItem* known = known_nv_item(item.number);
  bool is_shown = known != nullptr && !known->secret && item.nv_status == 0;
  return is_shown ? Json(item.data[known->value_at]) : Json();
}

static std::string words_of(const NvItem& item, const KnownNvItem& known) {
  if (item.nv_status != 0) return nv_status_text(item.nv_status);
  if (known.secret) return "written; zopctl nv read shows it";
  return value_of(item).dump();
}

static Json json_of(const NvItem& item, const KnownNvItem& known) {
  return {{"item", item.number},
          {"name", known.name},
          {"meaning", known.meaning},
          {"status", {{"code", item.nv_status}, {"text", nv_status_text(item.nv_status)}}},
          {"value", value_of(item)}};
}

static Findings list_nv(const ModuleLibrary& m, const Arguments& arguments) {
  Json list = Json::array();
  std::vector<Item> rows;
  for (const KnownNvItem& known : KNOWN_NV_ITEMS) {
    check_signals();
    NvItem item = read_nv_item(m, known.number);
    list.push_back(json_of(item, known));
    rows.push_back(shown("", label_of_nv_item(known.number), true,
                         fmt::format("{} ({})", words_of(item, known), known.meaning)));
  }
  if (arguments.json) rows = {shown("items", "Items", list, "")};
  return one_section("nv", "NV items that are known", rows);
}

static Findings read_nv(const ModuleLibrary& m, const Arguments& arguments) {
  NvItem item = read_nv_item(m, *nv_item_of(arguments.text("ITEM")));
  require_nv(item.nv_status);
  Json value = value_of(item);
  if (arguments.has("--length")) item.data.resize(arguments.number("--length"));
  const KnownNvItem* known = known_nv_item(item.number);
  std::vector<Item> items = {shown("item", "Item", item.number, std::to_string(item.number))};
  if (known != nullptr) {
    std::string words = fmt::format("{} ({})", known->name, known->meaning);
    items.push_back(shown("name", "Name", known->name, words));
  } else {
    items.push_back(unknown("name", "Name", "its meaning is the modem's"));
  }
  items.push_back(value.is_null() ? unknown("value", "Value", "see its bytes")
                                  : shown("value", "Value", value, value.dump()));
  items.push_back(shown("data", "Data", hex_of(item.data), hexdump(item.data)));
  return one_section("nv", "NV item", items);
}

static Findings write_nv(const ModuleLibrary& m, const Arguments& arguments) {
  uint32_t item = *nv_item_of(arguments.text("ITEM"));
  std::vector<uint8_t> data = data_of(arguments);
  require_nv(write_nv_item(m, item, data));
  return confirmation("nv", "NV item",
                      fmt::format("item {} written, {}", item, counted(data.size(), "byte")));
}

static constexpr char DANGER[] = "a wrong NV item can make the modem unusable";

static Argument item() {
  Argument argument = {
      .name = "ITEM", .help = "the item, by number or name", .range = Range{0, 65535}};
  for (const KnownNvItem& known : KNOWN_NV_ITEMS) argument.choices.emplace_back(known.name);
  return argument;
}

const Verbs NV_VERBS = {
    {.noun = "nv",
     .name = "list",
     .help = "the items that are known, with their values",
     .run = list_nv},
    {.noun = "nv",
     .name = "read",
     .help = "read an item",
     .arguments = {item(),
                   {.name = "--length",
                    .help = "bytes to show",
                    .range = Range{1, ZOP_NV_DATA_SIZE}}},
     .run = read_nv},
    {.noun = "nv",
     .name = "write",
     .help = "write an item",
     .danger = DANGER,
     .arguments = {item(),
                   {.name = "DATA", .help = "its bytes, in hexadecimal; the rest becomes zero"}},
     .check = check_data,
     .run = write_nv},
    {.noun = "nv",
     .name = "backup",
     .help = "save items in a new file, with their checksum and the modem's identity",
     .arguments = {{.name = "FILE", .help = "the file, for its owner only"},
                   {.name = "--items",
                    .help = "numbers, ranges or names, as 10,850-900,sim-pin; default the known "
                            "items"}},
     .check = check_backup_arguments,
     .run = backup_nv},
    {.noun = "nv",
     .name = "restore",
     .help = "write the items of a backup that differ, and read each back",
     .danger = DANGER,
     .arguments = {{.name = "FILE", .help = "a file of nv backup"},
                   {.name = "--dry-run", .help = "show what would change", .flag = true},
                   {.name = "--other-modem",
                    .help = "restore a backup of another modem, or one without an identity",
                    .flag = true}},
     .check = check_restore_arguments,
     .run = restore_nv},
};

}  // namespace zopctl
