// Events of the modem, delivered by the listener on its thread: each is only logged. They take no
// lock.
#define LOG_SOURCE "zop_module"

#include <stdio.h>
#include <string.h>

#include "core/log.h"
#include "link/upcalls.h"

// Offsets in the records, and the limits of the lengths in them.
enum { END_CALL_TYPE = 1, END_CALL_STATUS = 2 };
enum { NUMBER = 2, MAX_NUMBER = 81, NUMBER_LENGTH = 83 };
enum {
  PEAK_THROUGHPUT = 4,
  MEAN_THROUGHPUT = 6,
  ADDRESS_LENGTH = 26,
  ADDRESS = 27,
  MAX_ADDRESS = 20
};
enum { PEAK_UNIT = 1000, MEAN_UNIT = 100 };  // octets per second

static int prv_at_most(int value, int most) { return value < most ? value : most; }

void call_end_callback(const uint8_t* record) {
  LOG_D(VURN_LOG_EVENTS, "D zop:Call end callback called");
  LOG_D(VURN_LOG_EVENTS, "D zop:call type = %d", record[END_CALL_TYPE]);
  LOG_D(VURN_LOG_EVENTS, "D zop:call status = %d", record[END_CALL_STATUS]);
}

void call_orginate_callback(const uint8_t* record) {
  char number[86];
  int length = prv_at_most(record[NUMBER_LENGTH], MAX_NUMBER);
  memcpy(number, record + NUMBER, static_cast<size_t>(length));
  number[length] = '\0';
  LOG_D(VURN_LOG_EVENTS, "D zop:Call originate callback called");
  LOG_D(VURN_LOG_EVENTS, "D zop:Call number = %s", number);
}

void pdp_activation_callback(const uint8_t* record) {
  char address[100] = "";
  int used = 0;
  int length = prv_at_most(record[ADDRESS_LENGTH], MAX_ADDRESS);
  for (int i = 0; i < length; ++i) {
    used += snprintf(address + used, sizeof address - static_cast<size_t>(used),
                     i == 0 ? "%d" : ".%d", record[ADDRESS + i]);
  }
  LOG_D(VURN_LOG_EVENTS, "D zop:PDP Activate callback called");
  LOG_D(VURN_LOG_EVENTS, "D zop:QOS_peak_throughput=%d oct/sec",
        record[PEAK_THROUGHPUT] * PEAK_UNIT);
  LOG_D(VURN_LOG_EVENTS, "D zop:QOS_mean_throughput=%d oct/sec",
        record[MEAN_THROUGHPUT] * MEAN_UNIT);
  LOG_D(VURN_LOG_EVENTS, "D zop:PDP Address=%s", address);
}

void pdp_deactivation_callback() { LOG_D(VURN_LOG_EVENTS, "D zop:PDP Deactivate callback called"); }
