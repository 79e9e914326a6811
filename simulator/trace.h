// A readable line for every request and answer.
#pragma once

#include <string>

#include "simulator/requests/requests.h"

namespace sim {

// ">" is a request of the host, "<" an answer, "!" what happened to the line.
std::string trace_line(Time now, char direction, const std::string& name, View payload);
std::string trace_note(Time now, const std::string& note);

// Name of a request for traces and faults: its row's, or "unknown".
std::string name_of(View request);

}  // namespace sim
