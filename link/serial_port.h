// The modem's serial port: one descriptor, its line settings, the claim on it, and reads and writes
// that end at their time limit, when the port is closed, or when they are abandoned.
//
// A claim lasts from the write of a request to the end of its answer. Every fatal error closes the
// port, asks the event listener to stop and releases the claim: a silent modem thus closes the
// link.
#pragma once

#include <stdint.h>

#include <atomic>

enum {
  RESPONSE_SIZE = 360,  // bytes of one answer after unstuffing, including its closing flag
  RAW_ANSWER_SIZE = 2 * RESPONSE_SIZE,  // the same on the wire if every byte is stuffed
  DLOAD_SIZE = 2068,                    // bytes of one answer of the download protocols
};

inline constexpr char MODEM_DEVICE[] = "/dev/tts/USB1";

// Results besides a number of bytes. 0 means that a request was written only in part.
enum : int32_t {
  PORT_ERROR = -1,      // I/O error, or the port was closed or stayed busy
  PORT_TIMEOUT = -2,    // no byte, or no complete answer, within the limit
  PORT_ABANDONED = -3,  // no longer wanted; the port stays open
  PORT_BUSY = -4,       // claimed by another exchange; nothing was sent
  PORT_UNSENT = -5,     // I/O error before the request was sent
};

// Descriptor of the open port; 0 if the link is closed. A failed open stores its negative result,
// so that the link counts as open until the first write closes it.
extern std::atomic<int32_t> SER_SIG;

// The open_id of the claimed port, or 0. A claim on a port that has since been closed is void.
extern std::atomic<uint32_t> SIO_USED_LOCK;

// Set while a download erases the modem's file system: dload_read then waits longer.
extern uint8_t efs_clear;

// Holds the open port during one exchange. If another thread closes the port meanwhile, the
// exchange ends within 0.1 s. Until then the descriptor stays allocated, so that the exchange can't
// read from another file that was given its number.
class PortUse {
 public:
  // wanted is called every 50 ms during a wait; false abandons the exchange. Null: never abandoned.
  explicit PortUse(bool (*wanted)() = nullptr);
  ~PortUse();
  PortUse(const PortUse&) = delete;
  PortUse& operator=(const PortUse&) = delete;

  bool is_current() const;
  bool is_wanted() const { return wanted_ == nullptr || wanted_(); }

  int32_t fd;        // SER_SIG at the start
  uint32_t open_id;  // different for each diag_open

 private:
  bool (*wanted_)();
};

// Closes the port if it is open, waits for exchanges on other threads to end, opens the device
// read-write and sets it to 115200 baud 8N1, raw. 1, or PORT_ERROR.
int32_t diag_open(const char* path);

// Restores the line settings found at open and closes the port. Always leaves SER_SIG at 0.
void diag_close();

// 1 while the link counts as open, otherwise 0.
int32_t diag_status();

// Handles a fatal error: closes the port, stops the listener, releases the claim and returns
// result. Does not touch a port that another thread has opened since.
int32_t fail_port(const PortUse& port, int32_t result);

// Claims the port, waiting up to 0.2 s for another exchange to end; if it does not, closes the
// port. False if the port is closed or has been replaced.
bool claim_port(const PortUse& port);

// Claims the port if it is free and has not been replaced. Never waits, never closes it.
bool try_claim_port(const PortUse& port);

// Releases this use's claim, if it still has one.
void release_port(const PortUse& port);

// Milliseconds of the monotonic clock; they overflow, so use differences only.
uint32_t monotonic_ms();

// Writes to the claimed port, within 5 s. Returns length, PORT_ERROR, PORT_ABANDONED, or 0 if 15
// writes were not enough. *sent is the number of bytes written. Does not close the port.
int32_t write_port(const PortUse& port, const uint8_t* bytes, uint32_t length, uint32_t* sent);

// Discards bytes that the modem has not received. Otherwise closing the port waits for them, in a
// serial driver up to half a minute.
void discard_unsent(const PortUse& port);

// Waits for input until the time until_ms and reads up to size bytes. Returns the bytes read, 0 for
// an empty read, PORT_TIMEOUT, PORT_ABANDONED or PORT_ERROR. Does not close the port.
int32_t read_port(const PortUse& port, uint8_t* bytes, uint32_t size, uint32_t until_ms);

// Like write_port, but closes the port on failure.
int32_t write_claimed(const PortUse& port, const uint8_t* bytes, uint32_t length);

// Claims the port and writes; keeps the claim on success. Returns length, PORT_ERROR, or 0.
int32_t diag_write(const uint8_t* buffer, uint32_t length);

// Reads one answer of a download protocol, up to DLOAD_SIZE bytes. It ends with its closing flag,
// with a pause of 0.2 s between two pieces, or after 4 s in all (30 s while efs_clear). Returns its
// length, or 0 if nothing came. Releases the claim and never closes the port.
int32_t dload_read(uint8_t* buffer);
