// The image set of a download: its directory, its files, the options, and the buffers of the
// download protocols.
#pragma once

#include <stdint.h>

enum { VERSION_TEXT_SIZE = 128 };

// Rows of the image table, in the order of sending.
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
  uint32_t sent;       // bytes, up to size
  uint32_t size;
  uint32_t type;  // in the streaming download's "open"
};
extern Image gImages[IMAGE_COUNT];
extern uint8_t gCurrentImage;

extern uint8_t gModemOnly;                    // do not write the boot loaders
extern int32_t FW_DL_STATUS;                  // percent
extern uint8_t gHasVersionInfo;               // the set has a "version_info" file
extern char gVersionInfo[VERSION_TEXT_SIZE];  // its content; not terminated if full

// Packet buffers of the download protocols; null until load_config or the memory dump allocates
// them.
extern uint8_t* dload_tbuf;
extern uint8_t* dload_rbuf;

// Opens all images and allocates the buffers. 1, or 0 on failure: the caller then calls
// free_config.
int load_config();
int free_config();

// Allocates the buffers if they are null. False if there is not enough memory.
bool take_protocol_buffers();

// Reads up to size bytes of the current image, from the first that has not been sent. 0 at its end
// or on an error.
uint32_t read_image(uint8_t* data, uint32_t size);

// Prints a line to standard output, where hosts read the progress.
void print_line(const char* line);

// Prints "STAGE3: Write ...% Done" if the percentage has changed.
void modem_status_update(int32_t percent);
