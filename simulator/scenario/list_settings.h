// The settings of a scenario that are lists: cells, PLMNs of the SIM, memory regions, NV items.
//
//   radio.cells = [{ set = "active", code = 100, ecio = -5 }, { set = "monitored", code = 101,
//                  ecio = -11 }]
//   sim.operators = ["001-01", "310-410 gsm"]
//   nv.10 = "00 04"
//   device.partition = "0a 1b"
//   device.memory = [{ name = "ram.bin", base = 0x800000, length = 65536 }]
#pragma once

#include "simulator/scenario/settings.h"

namespace sim {

// A list of records of numbers. Fields in the order of a row.
struct RecordField {
  const char* name;
  int min, max;
  std::vector<Word> words = {};
};
using Rows = std::vector<std::vector<int>>;

struct RecordSetting {
  const char* key;
  size_t most;
  std::vector<RecordField> fields;
  void (*store)(Model&, const Rows&);
};

struct PlmnSetting {
  const char* key;
  size_t most;
  std::vector<Plmn>& (*place)(Model&);
};

const RecordSetting* find_record_setting(const std::string& key);
const PlmnSetting* find_plmn_setting(const std::string& key);

// As describe_settings, for the lists.
std::vector<std::string> describe_lists();

// An entry written "MCC-MNC", with " gsm" appended for GSM. Throws std::invalid_argument.
Plmn parse_plmn(const std::string& text);

// Limits of device.memory, all regions together, and of the partition table.
enum : int64_t { MAX_REGIONS = 40, MAX_MEMORY = 0x1000'0000, MAX_PARTITION = 2048 };
enum : int { NV_BYTES = 128 };

// The number of an NV item in a key "nv.NUMBER", or -1 for another key.
int nv_item_of_key(const std::string& key);

// Up to most bytes written as hexadecimal digits, blanks ignored. Throws std::invalid_argument.
Bytes parse_hex(const std::string& text, size_t most);

}  // namespace sim
