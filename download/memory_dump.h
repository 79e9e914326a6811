// The memory dump: the regions that a crashed modem offers, read one after the other into files.
#pragma once

#include <stdint.h>

#include "download/command_table.h"

// Of the DMSS download's table: the list of regions, and a read of the current one.
bool accept_region_list(const Reply& reply);
uint32_t build_memory_read(uint8_t* packet);
bool save_memory(const Reply& reply);
