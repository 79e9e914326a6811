// A page of what stands out in a fleet, in the manner of a device's page: one file without scripts,
// which fetches nothing.
#pragma once

#include <string>

#include "fleet/store.h"

namespace fleet {

std::string page_of(Store& store, Ask values);

}  // namespace fleet
