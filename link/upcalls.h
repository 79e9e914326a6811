// The few calls that run from the link up to the rooms above it. Nothing else points upward.
#pragma once

#include <stdint.h>

// commands/exchange.cpp: the command library's request and response buffer, and their clearing.
enum { COMMAND_BUFFER_SIZE = 360 };
extern uint8_t ft_buff[COMMAND_BUFFER_SIZE];
extern uint8_t fr_buff[COMMAND_BUFFER_SIZE];
void clear_memory();
