// The image set of a download: its directory, the files in it, the options, and the buffers of the
// download protocols.
#pragma once

#include <stdint.h>

enum { PROTOCOL_BUFFER_SIZE = 2068, VERSION_TEXT_SIZE = 128 };

// Rows of the image table, in the order in which they are sent.
enum ImageRow : uint8_t {
  IMAGE_RAM,        // "QSC6270.ram": the programmer that runs in the modem's RAM
  IMAGE_PARTITION,  // "partition.mbn": the partition table
  IMAGE_DBL,
  IMAGE_FSBL,
  IMAGE_OSBL,
  IMAGE_AMSS,  // the modem's firmware
  IMAGE_COUNT,
};

struct Image {
  int32_t descriptor;  // -1 when not open
  uint32_t sent;       // bytes, less than size while the image is being sent
  uint32_t size;
  uint32_t type;  // what the streaming download calls it
};
extern Image gImages[IMAGE_COUNT];
extern uint8_t gCurrentImage;

extern uint8_t gModemOnly;                    // leave the boot loaders alone
extern int32_t FW_DL_STATUS;                  // percent
extern uint8_t gHasVersionInfo;               // the set has a "version_info"
extern char gVersionInfo[VERSION_TEXT_SIZE];  // what it says; not terminated when it is full

// Packets of the download protocols; null until load_config or the memory dump takes them.
extern uint8_t* dload_tbuf;
extern uint8_t* dload_rbuf;

// Opens all images and takes the buffers. 1, or 0 when one is missing: free_config then closes what
// is open.
int load_config();
int free_config();

// Takes the buffers that are not there. False without memory.
bool take_protocol_buffers();

// Up to size bytes of the current image, from what has been sent on. 0 at its end or on an error.
uint32_t read_image(uint8_t* data, uint32_t size);

// A line on standard output, where hosts read the progress.
void print_line(const char* line);

// Prints "STAGE3: Write ...% Done" when the percentage has changed.
void modem_status_update(int32_t percent);
