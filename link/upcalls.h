// The few calls that run from the link up to the rooms above it. Nothing else points upward.
#pragma once

#include <stdint.h>

// commands/exchange.cpp: the command library's request and response buffer, and their clearing.
enum { COMMAND_BUFFER_SIZE = 360 };
extern uint8_t ft_buff[COMMAND_BUFFER_SIZE];
extern uint8_t fr_buff[COMMAND_BUFFER_SIZE];
void clear_memory();

// commands/test_calls.cpp: ends a test call unless another exchange is under way; false then. Safe
// in a signal handler and beside a host's command.
bool end_call_if_port_is_free();
