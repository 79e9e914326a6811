// Addresses, counters, name servers, the age of pppd, and uptime. The modem is not used.
#define LOG_SOURCE "zop_module"

#include "report/wan_data.h"

#include <arpa/inet.h>
#include <ctype.h>
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <net/if.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>

#include "core/log.h"
#include "include/zop_diag_info.h"

static constexpr char INTERFACE[] = "ppp0";
static constexpr char DAEMON[] = "(pppd)";
enum { LINE_SIZE = 256, START_TIME_FIELD = 22 };
enum : uint32_t { NOT_KNOWN = 0xFFFFFFFF };

using AddressText = char[16];

// ---- addresses ----

static const char* prv_reason_without_address(int error) {
  if (error == ENODEV) return "not connected";
  if (error == EADDRNOTAVAIL) return "connecting";
  return nullptr;
}

static void prv_get_if_address(ifreq* req, int sock, unsigned long request, AddressText& text) {
  errno = 0;
  if (ioctl(sock, request, req) == 0) {
    sockaddr_in address;
    memcpy(&address, &req->ifr_addr, sizeof address);
    inet_ntop(AF_INET, &address.sin_addr, text, sizeof text);
    return;
  }
  const char* reason = prv_reason_without_address(errno);
  if (reason != nullptr) {
    snprintf(text, sizeof text, "%s", reason);
  } else {
    snprintf(text, sizeof text, "%d", errno);
  }
}

static void prv_get_addresses() {
  errno = 0;
  int sock = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (sock < 0) {
    snprintf(gDiagInfo.local_address, sizeof gDiagInfo.local_address, "se=%d", errno);
    memcpy(gDiagInfo.peer_address, gDiagInfo.local_address, sizeof gDiagInfo.peer_address);
    return;
  }
  ifreq req = {};
  memcpy(req.ifr_name, INTERFACE, sizeof INTERFACE);
  req.ifr_addr.sa_family = AF_INET;
  prv_get_if_address(&req, sock, SIOCGIFADDR, gDiagInfo.local_address);
  prv_get_if_address(&req, sock, SIOCGIFDSTADDR, gDiagInfo.peer_address);
  close(sock);
}

// ---- counters ----

static const char* prv_skip_blanks(const char* p) {
  while (isspace(static_cast<unsigned char>(*p)) != 0) ++p;
  return p;
}

// The kernel's columns: receive bytes, packets, errs, drop, fifo, frame, compressed, multicast;
// then transmit bytes, packets, errs, drop, fifo, colls, carrier, compressed.
static void prv_read_counters(const char* columns) {
  unsigned c[16];
  int read = sscanf(columns, "%u %u %u %u %u %u %u %u %u %u %u %u %u %u %u %u", &c[0], &c[1], &c[2],
                    &c[3], &c[4], &c[5], &c[6], &c[7], &c[8], &c[9], &c[10], &c[11], &c[12], &c[13],
                    &c[14], &c[15]);
  if (read != 16) return;
  gDiagInfo.rx_bytes = c[0];
  gDiagInfo.tx_bytes = c[8];
  gDiagInfo.rx_errors = c[2] + c[3] + c[4] + c[5];
  gDiagInfo.tx_errors = c[10] + c[11] + c[12] + c[13] + c[14];
}

static void prv_get_counters() {
  gDiagInfo.rx_bytes = gDiagInfo.tx_bytes = gDiagInfo.rx_errors = gDiagInfo.tx_errors = NOT_KNOWN;
  FILE* file = fopen("/proc/net/dev", "re");
  if (file == nullptr) return;
  char line[LINE_SIZE];
  while (fgets(line, sizeof line, file) != nullptr) {
    const char* name = prv_skip_blanks(line);
    if (strncmp(name, INTERFACE, strlen(INTERFACE)) != 0) continue;
    const char* end = name + strlen(INTERFACE);
    if (*end == ':') prv_read_counters(end + 1);
    break;
  }
  fclose(file);
}

// ---- name servers ----

static void prv_get_name_servers() {
  static constexpr char KEYWORD[] = "nameserver";
  gDiagInfo.name_servers[0] = gDiagInfo.name_servers[1] = 0;
  FILE* file = fopen("/etc/resolv.conf", "re");
  if (file == nullptr) return;
  char line[LINE_SIZE];
  for (int found = 0; found < 2 && fgets(line, sizeof line, file) != nullptr;) {
    const char* word = prv_skip_blanks(line);
    if (strncmp(word, KEYWORD, strlen(KEYWORD)) != 0) continue;
    in_addr address;
    if (inet_aton(prv_skip_blanks(word + strlen(KEYWORD)), &address) == 0) continue;
    gDiagInfo.name_servers[found++] = address.s_addr;
  }
  fclose(file);
}

// ---- the PPP daemon ----

static const char* prv_skip_field(const char* p) {
  while (*p != '\0' && isspace(static_cast<unsigned char>(*p)) == 0) ++p;
  return prv_skip_blanks(p);
}

static unsigned long prv_ticks_per_second() {
  static constinit std::atomic<long> ticks = 0;  // read once
  if (ticks <= 0) ticks = sysconf(_SC_CLK_TCK);
  return ticks > 0 ? static_cast<unsigned long>(ticks) : 100;
}

static bool prv_read_stat(unsigned pid, char (&text)[LINE_SIZE + 1]) {
  char path[LINE_SIZE];
  snprintf(path, sizeof path, "/proc/%u/stat", pid);
  int fd = open(path, O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  ssize_t size;
  do size = read(fd, text, LINE_SIZE);
  while (size < 0 && errno == EINTR);
  close(fd);
  if (size <= 0) return false;
  text[size] = '\0';
  return true;
}

// Returns 1 if the process is called comm, with its start in seconds after boot.
static int prv_get_proc_start_time(const char* comm, unsigned* startSeconds, unsigned pid) {
  *startSeconds = 0;
  char text[LINE_SIZE + 1];
  if (!prv_read_stat(pid, text)) return 0;
  const char* field = prv_skip_field(text);
  size_t length = strcspn(field, " ");
  if (length != strlen(comm) || strncmp(field, comm, length) != 0) return 0;
  for (int number = 2; number < START_TIME_FIELD; ++number) field = prv_skip_field(field);
  *startSeconds = static_cast<unsigned>(strtoull(field, nullptr, 10) / prv_ticks_per_second());
  return 1;
}

static void prv_find_proc_start_time(const char* comm) {
  gDiagInfo.pppd_pid = 0;
  DIR* proc = opendir("/proc");
  if (proc == nullptr) {
    LOG_D(VURN_LOG_GENERAL, "D zop:can't opendir /proc: errno = %d", errno);
    return;
  }
  while (const dirent* entry = readdir(proc)) {
    if (isdigit(static_cast<unsigned char>(entry->d_name[0])) == 0) continue;
    unsigned pid = static_cast<unsigned>(strtoul(entry->d_name, nullptr, 10));
    if (prv_get_proc_start_time(comm, &gDiagInfo.pppd_start, pid) == 0) continue;
    gDiagInfo.pppd_pid = pid;
    LOG_D(VURN_LOG_GENERAL, "D zop:found %s at pid %u", comm, pid);
    break;
  }
  closedir(proc);
}

// Tries the process found last before it searches all.
static void prv_get_pppd() {
  gDiagInfo.pppd_start = 0;
  unsigned pid = gDiagInfo.pppd_pid;
  if (pid != 0 && prv_get_proc_start_time(DAEMON, &gDiagInfo.pppd_start, pid) == 1) return;
  prv_find_proc_start_time(DAEMON);
}

void prv_get_wan_data() {
  prv_get_addresses();
  prv_get_counters();
  prv_get_name_servers();
  prv_get_pppd();
}

// The device's kernel adds two numbers to the usual ones; the second is the seconds asleep.
void prv_get_uptime() {
  FILE* file = fopen("/proc/uptime", "re");
  if (file == nullptr) return;
  unsigned long seconds;
  unsigned long hundredths;
  unsigned long asleep;
  int read = fscanf(file, "%lu.%lu %*u.%*u %*u %lu", &seconds, &hundredths, &asleep);
  fclose(file);
  if (read >= 2) gDiagInfo.awake_seconds = static_cast<uint32_t>(seconds + (hundredths >= 50));
  if (read >= 3) gDiagInfo.asleep_seconds = static_cast<uint32_t>(asleep);
}
