// The memory dump: reads the memory regions that a crashed modem offers into files, one by one.
#pragma once

#include <stdint.h>

#include "download/command_table.h"

// Used by the DMSS download's table: the list of regions, and a read of the current region.
bool accept_region_list(const Reply& reply);
uint32_t build_memory_read(uint8_t* packet);
bool save_memory(const Reply& reply);
