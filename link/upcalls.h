// The only functions above the link that the link calls.
#pragma once

#include <stdint.h>

#include "link/serial_port.h"

// commands/exchange.cpp: the command library's request and response buffer; clear_memory zeroes
// both.
extern uint8_t ft_buff[RESPONSE_SIZE];
extern uint8_t fr_buff[RESPONSE_SIZE];
void clear_memory();

// module/modem_events.cpp: receive the listener's event records, which are valid during the call.
void call_end_callback(const uint8_t* record);
void call_orginate_callback(const uint8_t* record);  // sic
void pdp_activation_callback(const uint8_t* record);
void pdp_deactivation_callback();

// report/field_test.cpp: receives a field-test screen of 345 bytes.
void field_information_callback(const void* screen);

// commands/test_calls.cpp: ends a test call. False, with nothing sent, if another exchange is in
// progress. Safe in a signal handler and during a host's command. wanted as in ExchangePolicy.
bool end_call_if_port_is_free(bool (*wanted)());
