// What the report makes of the diagnostic record, as texts.
#pragma once

#include "report/state_machine.h"
#include "tests/support/words.h"
#include "tests/support/world.h"

namespace test {

// The plan of a state of the deferred-action thread for each event: actions as letters, and the
// next state. 0 and + for the count, N and F for field testing on and off, O output, D the "done"
// line, S and s for a snapshot or none, T notes the time. Each in four situations: three screens
// and a log string 10 or 11 s ago, four screens and one in the future or 11 s ago.
std::string plans(DeferredState state);

std::string code_names(const Words& labels);  // of some items

std::string render(unsigned size);  // the report in a buffer of this size

// Some items of the report as in a log string, or as in syslog.
std::string report_items(World& world, const Words& labels, bool syslog);

// Writes bytes into the record, at the value of an item or at a list: [name, "=", bytes].
void set_record(const Words& words);

}  // namespace test
