// The bars that a host shows, and the reason from the module's log when there are none.
#pragma once

#include <string>

#include "zopctl/host/module_library.h"

namespace zopctl {

struct Bars {
  int result;          // of vurn_get_bars
  int bars;            // 1 to 5, or VURN_BARS_NONE
  std::string reason;  // empty when there are bars
  bool is_known() const { return result == VURN_OK; }
};

Bars read_bars(const ModuleLibrary& module);

// The modem was unplugged or has hung up: it must be opened again.
bool is_lost(const Bars& bars);

}  // namespace zopctl
