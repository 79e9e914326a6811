// Counts heap allocations of the measured code: the module promises none.
#pragma once

#include <atomic>

extern std::atomic<long> allocation_count;
