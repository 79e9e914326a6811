// NV items as zopctl nv reads and shows them.
#pragma once

#include <string>
#include <vector>

#include "zopctl/host/module_library.h"
#include "zopctl/text/arguments.h"
#include "zopctl/text/nv_items.h"
#include "zopctl/text/output.h"

namespace zopctl {

struct NvItem {
  uint32_t number;
  uint32_t nv_status;         // 0: the data is good
  std::vector<uint8_t> data;  // all of the item, also what it does not use
};

// Throws Failure when the modem does not answer, or refuses the request itself.
NvItem read_nv_item(const ModuleLibrary& module, uint32_t number);
uint32_t write_nv_item(const ModuleLibrary& module, uint32_t number,
                       const std::vector<uint8_t>& data);  // the NV status

std::string label_of_nv_item(uint32_t number);  // "10 preferred-mode"
nlohmann::ordered_json name_of_nv_item(uint32_t number);

Findings backup_nv(const ModuleLibrary& module, const Arguments& arguments);
Findings restore_nv(const ModuleLibrary& module, const Arguments& arguments);
void check_backup_arguments(const Arguments& arguments);
void check_restore_arguments(const Arguments& arguments);

}  // namespace zopctl
