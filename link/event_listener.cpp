// Listener state. No thread polls the modem in this release: the state stays 0, and a link failure
// finds nothing to stop.
#include "link/event_listener.h"

#include <errno.h>
#include <unistd.h>

#include "link/upcalls.h"

constinit std::atomic<uint32_t> THREAD_STATUS = 0;
constinit std::atomic<uint32_t> call_end_timeout = 0;
constinit std::atomic<uint8_t> zop_debug_end_callback_status = 0;

void zop_debug_end_callback() {}

void callback_function(int) {
  int saved_errno = errno;
  alarm(end_call_if_port_is_free() ? 0 : 1);
  errno = saved_errno;
}
