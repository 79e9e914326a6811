/* Firmware download, NV backup and restore, and memory dump of the modem.
 *
 * These calls take no lock and need the serial port to themselves: close the module (vurn_close)
 * before the first of them. They print their progress to standard output, one line at a time. They
 * return 1 for success and 0 for failure unless they say otherwise. An update takes these steps:
 *
 *   zop_open, modem_diag_process            read the version, switch to download mode
 *   modem_set_config, modem_dload_process   download the images
 *   modem_dload_end_process                 wait for the new firmware, restore the NV items */
#ifndef MODEM_DOWNLOAD_H
#define MODEM_DOWNLOAD_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Sets the directory of the image set and the options of the download: modem_only does not write
 * the boot loaders; clear erases the modem's file system and overrides modem_only. second_path is
 * only stored. Both paths have at most 127 characters, including the directory's trailing slash,
 * which is added if missing. A longer one is refused with a message, and the next download finds no
 * images. Returns the stored second path. */
const char* modem_set_config(const char* directory, const char* second_path, int modem_only,
                             int clear);

/* Downloads the image set to a modem in download mode: RAM programmer, partition table, images.
 * Uses the open port, or opens "/dev/tts/USB1". Sleeps 10 s while the programmer starts. Messages:
 * "STAGE1: Loading Success", "STAGE2: Erasing Start", "STAGE3: Writing Start", "STAGE3: Write 5%
 * Done", and on failure "STAGE1: Err-Load Config", "STAGE1: Err-Load RAM", "STAGE1: Err-RAM Entry",
 * "STAGE2: Err-Erasing", "STAGE3: Err-Writing". */
int modem_dload_process(void);

/* Reads the modem's build version and switches it to download mode. Needs an open link (zop_open).
 */
int modem_diag_process(void);

/* Ends an update. If the image set had a "version_info" file, waits for the new firmware on the
 * device path and, if the modem asks for it, backs up, rebuilds and restores its NV items, which
 * takes up to two minutes. Without that file it does nothing and returns 1.
 * Messages: "DLOAD: NV Backup", "DLOAD: NV Rebuild", "DLOAD: NV Restore". */
int modem_dload_end_process(const char* path);

/* What the modem has done with its NV items in an update, in this order. */
enum {
  MODEM_NV_UNTOUCHED,
  MODEM_NV_BACKED_UP, /* "DLOAD: NV Backup" was printed */
  MODEM_NV_REBUILT,   /* "DLOAD: NV Rebuild" was printed */
  MODEM_NV_RESTORED   /* "DLOAD: NV Restore" was printed, nothing is left to do */
};

/* Prepares modem_dload_end_process for an update that another process has begun: the version that
 * the modem ran before, the version of the set (NULL for a set without "version_info"), and the
 * last step of its NV items, from which the work goes on: a second backup would overwrite the
 * first. A later modem_diag_process or modem_dload_process replaces the version that it reads. */
void modem_resume_update(const char* old_version, const char* new_version, int nv_step);

/* Saves the memory regions of a crashed modem to "dump_MMDDYYYY_HHMM/" in the working directory.
 * Always returns 1; only the message "DUMP_MODE: PERCENT=100" confirms that all regions were saved.
 * No file is overwritten: if a name is taken, the new file is called NAME.2, NAME.3 and so on.
 * Other messages: "DUMP_MODE: FILE=" with the file of a region, "DUMP_MODE: left out, " with the
 * reason why a region is not saved, and the reason why a dump ended early. An existing directory or
 * file of that name must belong to the current user. */
int mem_dump_process(void);

/* A memory region that a crashed modem offers. */
typedef struct mem_dump_region {
  uint32_t base;    /* its first address */
  uint32_t length;  /* bytes */
  const char* name; /* of its file, from the modem: any bytes, any length */
} mem_dump_region;

/* Replaces the files of the dumps that follow by the host's own; then no directory is made. open is
 * called for each region of the modem's list, in order, before any is read. It returns a descriptor
 * that is open for writing, which the dump closes, or -1 for a region that is not wanted; *done,
 * which is 0, may be set to the bytes that the file holds already, at most the length. A dump saves
 * at most 20 regions: further descriptors are closed. NULL restores the usual files. */
void mem_dump_set_files(int (*open)(const mem_dump_region* region, uint32_t* done, void* context),
                        void* context);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
