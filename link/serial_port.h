// The modem's serial port: one descriptor, its line settings, who may use it, and reads and writes
// that end: with their limit, with the port, or when nobody wants them any more.
//
// A claim on the port lasts from the write of a request to the end of its answer. Every fatal error
// closes the port, asks the event listener to stop and releases the claim: a silent modem thus
// closes the link, and diag_status tells.
#pragma once

#include <stdint.h>

#include <atomic>

enum {
  RESPONSE_SIZE = 360,  // bytes of one answer after unstuffing, its closing flag included
  RAW_ANSWER_SIZE = 2 * RESPONSE_SIZE,  // the same on the wire, every byte stuffed
  DLOAD_SIZE = 2068,                    // bytes of one answer of the download protocols
};

// Results besides a number of bytes. A write that the modem did not take whole is 0.
enum : int32_t {
  PORT_ERROR = -1,      // I/O error, or the port stayed busy or was closed
  PORT_TIMEOUT = -2,    // no byte within the limit, or no end of the answer
  PORT_ABANDONED = -3,  // not wanted any more; the port stays open
  PORT_BUSY = -4,       // claimed by another exchange; nothing was sent
  PORT_UNSENT = -5,     // I/O error before the request was out
};

// Descriptor of the open port, and the link-open flag: 0 is closed. A failed open leaves its
// negative result here, so that the link reads as open until the first write closes it.
extern std::atomic<int32_t> SER_SIG;

// Not 0 from the claim of a write to the end of its answer: the number of the open whose port is
// claimed. A claim on a port that has been closed since is nobody's.
extern std::atomic<uint32_t> SIO_USED_LOCK;

// Set while a download erases the modem's file system, which takes long: dload_read waits longer.
extern uint8_t efs_clear;

// The port as it is open now, for the length of one exchange. Another thread may close it and open
// it again meanwhile: the descriptor then stays allocated until its last use ends, so that the
// exchange can't read from a file that came under its number, and the exchange ends within 0.1 s.
class PortUse {
 public:
  // wanted is asked every 50 ms while the use waits: false ends it. Null: always wanted.
  explicit PortUse(bool (*wanted)() = nullptr);
  ~PortUse();
  PortUse(const PortUse&) = delete;
  PortUse& operator=(const PortUse&) = delete;

  bool is_current() const;
  bool is_wanted() const { return wanted_ == nullptr || wanted_(); }

  int32_t fd;        // SER_SIG at the start
  uint32_t open_id;  // number of its open

 private:
  bool (*wanted_)();
};

// Closes the port if it is open, waits for the exchanges under way on other threads, opens the
// device read-write and sets it to 115200 baud 8N1, raw. 1, or PORT_ERROR.
int32_t diag_open(const char* path);

// Restores the line settings found at open and closes the port. Always leaves SER_SIG at 0.
void diag_close();

// 1 while the link reads as open.
int32_t diag_status();

// The way out of a fatal error: closes the port, stops the listener, releases the claim, and gives
// result back. A port that somebody else has closed already is left alone.
int32_t fail_port(const PortUse& port, int32_t result);

// Claims the port, waiting up to 0.2 s for another exchange to end. True when claimed; otherwise
// the port has been closed, or is another one by now.
bool claim_port(const PortUse& port);

// Claims the port if it is free and still the same, without waiting and without closing anything.
bool try_claim_port(const PortUse& port);

// Gives the claim back. One that another open has made void is not touched.
void release_port(const PortUse& port);

// Milliseconds of the monotonic clock; only differences mean anything.
uint32_t monotonic_ms();

// Writes to the claimed port, within 5 s. The length, PORT_ERROR, PORT_ABANDONED, or 0 when 15
// writes did not suffice. *sent counts the bytes that went out. Closes nothing.
int32_t write_port(const PortUse& port, const uint8_t* bytes, uint32_t length, uint32_t* sent);

// Takes back what the modem has not taken yet: a close of the port would wait for it, in a serial
// driver for half a minute.
void discard_unsent(const PortUse& port);

// Waits until the moment until for input and reads up to size bytes of it. Bytes read, 0 for an
// empty read, PORT_TIMEOUT, PORT_ABANDONED or PORT_ERROR. Closes nothing.
int32_t read_port(const PortUse& port, uint8_t* bytes, uint32_t size, uint32_t until_ms);

// As write_port, and closes the port when it fails.
int32_t write_claimed(const PortUse& port, const uint8_t* bytes, uint32_t length);

// Claims the port and writes; keeps the claim on success. length, PORT_ERROR, or 0.
int32_t diag_write(const uint8_t* buffer, uint32_t length);

// One answer of a download protocol, up to DLOAD_SIZE bytes: to its closing flag, or while its
// pieces come within 0.2 s of each other, for 4 s in all (30 s while efs_clear). Its length; 0 when
// nothing came. Leaves the port open whatever happens, and releases the claim.
int32_t dload_read(uint8_t* buffer);
