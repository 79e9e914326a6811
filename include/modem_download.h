/* Firmware download, NV backup and restore, and memory dump of the modem.
 *
 * These calls take no lock and use the serial port alone: the module is closed while they run. They
 * tell their progress on standard output, a line each. Results are 1 for success and 0 for failure
 * unless told. The road of an update:
 *
 *   zop_open, modem_diag_process        the version, and the switch to download mode
 *   modem_set_config, modem_dload_process   the images
 *   modem_dload_end_process             the new firmware, and the NV items */
#ifndef MODEM_DOWNLOAD_H
#define MODEM_DOWNLOAD_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Names the directory of an image set and the options of the download: modem_only leaves the boot
 * loaders alone, clear erases the modem's file system and overrules modem_only. second_path is kept
 * for the host. Both texts have at most 127 characters, the directory with its closing slash, which
 * is added when it is not there; longer ones are refused with a message, and the next download
 * finds no images. Returns the kept second path. */
const char* modem_set_config(const char* directory, const char* second_path, int modem_only,
                             int clear);

/* Downloads the image set: boot ROM, RAM programmer, partition table, images. The modem is in its
 * download mode. Takes the port as it is open, or opens "/dev/tts/USB1". Sleeps 10 s between the
 * stages. Messages: "STAGE1: Loading Success", "STAGE2: Erasing Start", "STAGE3: Writing Start",
 * "STAGE3: Write 5% Done", and on failure "STAGE1: Err-Load Config", "STAGE1: Err-Load RAM",
 * "STAGE1: Err-RAM Entry", "STAGE2: Err-Erasing", "STAGE3: Err-Writing". */
int modem_dload_process(void);

/* Reads the modem's build version and switches it to download mode. The link is open (zop_open). */
int modem_diag_process(void);

/* After a download with a "version_info": waits for the new firmware on the device path and, when
 * the modem asks for it, backs up, rebuilds and restores its NV items. Takes up to two minutes.
 * Messages: "DLOAD: NV Backup", "DLOAD: NV Rebuild", "DLOAD: NV Restore". */
int modem_dload_end_process(const char* path);

/* Saves the memory regions of a crashed modem to "dump_MMDDYYYY_HHMM/" in the working directory.
 * Always 1; "DUMP_MODE: PERCENT=100" tells that all regions are saved. A name that is taken gets a
 * number, NAME.2 and so on: nothing is written over. Other messages: "DUMP_MODE: FILE=" and the
 * file of a region, "DUMP_MODE: left out, " and why a region is not saved, and what ended the
 * dump. The directory and what lies in the way of a file must be this user's own. */
int mem_dump_process(void);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
