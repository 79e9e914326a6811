// Radio measurements.
#include <string.h>

#include "commands/exchange.h"

// The one query that compares the whole header of the answer with its request.
unsigned zop_get_rssi(int32_t* rssi) {
  if (unsigned error = begin_vendor(' ')) return error;
  if (unsigned error = exchange(PLAIN_REQUEST)) return error;
  if (memcmp(fr_buff, ft_buff, PLAIN_REQUEST) != 0) return ZOP_ERR_BAD_RESPONSE;
  copy_fields({s16(5, rssi)});
  return ZOP_SUCCESS;
}
