// Counts heap allocations of the measured code: the module must make none.
#pragma once

#include <atomic>

extern std::atomic<long> allocation_count;
