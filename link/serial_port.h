// The modem's serial port: one descriptor, its line settings, and the reads and writes of one
// exchange at a time.
//
// A claim on the port is taken by diag_write and released by the read that sees the end of the
// answer. Every fatal error closes the port, asks the event listener to stop and releases the
// claim: a silent modem thus closes the link, and diag_status tells.
#pragma once

#include <stdint.h>

#include <atomic>

enum {
  RESPONSE_SIZE = 360,  // bytes of one answer, its closing flag included
  DLOAD_SIZE = 2068,    // bytes of one answer of the download protocols
  PORT_ERROR = -1,      // I/O error, or the port stayed busy
  PORT_TIMEOUT = -2,    // no byte within the limit
};

// Descriptor of the open port, and the link-open flag: 0 is closed. A failed open leaves its
// negative result here, so that the link reads as open until the first write closes it.
extern std::atomic<int32_t> SER_SIG;

// 1 from the claim of a write to the end of its answer.
extern std::atomic<uint32_t> SIO_USED_LOCK;

// Set while a download erases the modem's file system, which takes long: dload_read waits longer.
extern uint8_t efs_clear;

// Closes the port, and waits for the exchanges under way on other threads: up to 6 s. Their answers
// would otherwise be taken for those of the next requests. Nobody has a claim afterwards.
void diag_settle();

// Settles, opens the device read-write and sets it to 115200 baud 8N1, raw. 1, or PORT_ERROR.
int32_t diag_open(const char* path);

// Restores the line settings found at open and closes the port. Always leaves SER_SIG at 0.
void diag_close();

// 1 while the link reads as open.
int32_t diag_status();

// The port as it is open now, for the length of one exchange. Another thread may close it and open
// it anew meanwhile: the descriptor then stays allocated until its last use ends, so that the
// exchange can't read from a file that came under its number, and the exchange ends in an error.
class PortUse {
 public:
  PortUse();
  ~PortUse();
  PortUse(const PortUse&) = delete;
  PortUse& operator=(const PortUse&) = delete;

  bool is_current() const { return SER_SIG == fd; }

  int32_t fd;  // SER_SIG at the start
};

// Claims the port, waiting up to 0.2 s for another exchange to end. True when claimed; otherwise
// the port has been closed, or is another one by now.
bool claim_port(const PortUse& port);

// Claims the port if it is free and still the same, without waiting and without closing anything.
bool try_claim_port(const PortUse& port);

// Writes to the claimed port: length, PORT_ERROR, or 0 when 15 writes did not suffice.
int32_t write_claimed(const PortUse& port, const uint8_t* buffer, uint32_t length);

// Claims the port and writes; keeps the claim on success. Results of write_claimed.
int32_t diag_write(const uint8_t* buffer, uint32_t length);

// Reads one frame of up to RESPONSE_SIZE bytes, until a read ends in the closing flag. Its length
// with the flag, PORT_TIMEOUT after 5 s (1 s for the last) without a byte, or PORT_ERROR.
int32_t read_answer(const PortUse& port, uint8_t* buffer);
int32_t diag_read(uint8_t* buffer);
int32_t diag_read_wait_1sec(uint8_t* buffer);

// One answer of a download protocol, up to DLOAD_SIZE bytes, waiting 4 s (30 s while efs_clear).
// Its length; 0 when nothing came. Leaves the port open whatever happens.
int32_t dload_read(uint8_t* buffer);
