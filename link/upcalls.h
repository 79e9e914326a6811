// The few calls that run from the link up to the rooms above it. Nothing else points upward.
#pragma once

#include <stdint.h>

#include "link/serial_port.h"

// commands/exchange.cpp: the command library's request and response buffer, and their clearing.
extern uint8_t ft_buff[RESPONSE_SIZE];
extern uint8_t fr_buff[RESPONSE_SIZE];
void clear_memory();

// module/modem_events.cpp: what the listener has fetched. A record is valid during the call.
void call_end_callback(const uint8_t* record);
void call_orginate_callback(const uint8_t* record);  // spelled so
void pdp_activation_callback(const uint8_t* record);
void pdp_deactivation_callback();

// report/field_test.cpp: a field-test screen of 345 bytes.
void field_information_callback(const void* screen);

// commands/test_calls.cpp: ends a test call unless another exchange is under way; false then. Safe
// in a signal handler and beside a host's command. wanted as in ExchangePolicy.
bool end_call_if_port_is_free(bool (*wanted)());
