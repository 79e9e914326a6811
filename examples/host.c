/* The smallest useful host: opens the modem on /dev/tts/USB1, prints its identity and signal, and
 * closes it.
 *
 *   cc host.c $(pkg-config --cflags --libs zop_module) -o host
 *
 * The module's log lines go to syslog; the mask selects them. */
#include <stdio.h>
#include <vurn.h>
#include <zop_diag_info.h>

static void show(const char* label, int (*get)(char* text, unsigned size)) {
  char text[64] = ""; /* a text that fills its field has no terminator: leave room for one */
  int result = get(text, sizeof text);
  if (result == VURN_OK) {
    printf("%-10s %s\n", label, text);
  } else {
    printf("%-10s not known (result %d)\n", label, result);
  }
}

int main(void) {
  vurn_set_log_mask(VURN_LOG_ERROR | VURN_LOG_WARNING);

  /* Waits up to 20 seconds for a SIM that is not ready yet. */
  int result = vurn_open();
  if (result != VURN_OK) {
    fprintf(stderr, "no modem: vurn_open gives %d\n", result);
    return 1;
  }
  show("IMEI", vurn_get_realm);
  show("IMSI", vurn_get_imsi);
  show("Firmware", vurn_get_firmware_version);

  int rssi, bars;
  if (vurn_get_rssi(&rssi) == VURN_OK) printf("%-10s %d dBm\n", "RSSI", rssi);
  if (vurn_get_bars(&bars) == VURN_OK) printf("%-10s %d\n", "Bars", bars);

  /* The record that the diagnostic report is made of; valid while the module is loaded. */
  printf("%-10s %u\n", "Rings", gDiagInfo.ring_counts[0]);

  vurn_close(1); /* also ends the module's threads */
  return 0;
}
