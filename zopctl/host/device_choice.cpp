// A path that is given is believed to be a modem's, ports are asked only without one.
#include "zopctl/host/device_choice.h"

#include <fmt/format.h>

#include <filesystem>

#include "zopctl/host/host_calls.h"
#include "zopctl/host/probe.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/printable.h"

namespace zopctl {

namespace fs = std::filesystem;

constexpr unsigned LOOK_EVERY_MS = 500;

static std::string given_device(const DeviceWish& wish) {
  if (!wish.device.empty()) return wish.device;
  const char* usual = getenv("ZOPCTL_DEVICE");
  return usual == nullptr ? "" : usual;
}

static std::string only_answering_port() {
  std::string found, all;
  int count = 0;
  for (const ProbedPort& probed : probe_ports()) {
    if (!probed.modem) continue;
    found = probed.port.device;
    all += (count++ == 0 ? "" : ", ") + found;
  }
  if (count > 1)
    throw Failure(fmt::format("{} modems answer: {}", count, all), 1, "choose one with --device");
  if (count == 1) fmt::print(stderr, "zopctl: the modem is at {}\n", printable(found));
  return found;
}

// Empty: not there yet.
static std::string look(const std::string& given) {
  std::error_code error;
  std::string path = given.empty() ? MODULE_DEVICE : given;
  if (fs::exists(path, error)) return path;
  return given.empty() ? only_answering_port() : "";
}

static std::string wait_for(const std::string& given, unsigned seconds) {
  std::string where = given.empty() ? "" : " at " + given;
  fmt::print(stderr, "zopctl: waiting for a modem{}; Ctrl-C ends it\n", printable(where));
  auto end = modem_now() + std::chrono::seconds(seconds);
  while (seconds == 0 || modem_now() < end) {
    wait_ms(LOOK_EVERY_MS);
    std::string found = look(given);
    if (!found.empty()) return found;
  }
  throw Failure(fmt::format("no modem came{} within {} s", where, seconds), 1,
                "is it plugged in and its driver loaded?");
}

std::string choose_device(const DeviceWish& wish) {
  std::string given = given_device(wish);
  std::string found = look(given);
  if (!found.empty()) return found;
  if (wish.wait) return wait_for(given, *wish.wait);
  return given.empty() ? MODULE_DEVICE : given;
}

}  // namespace zopctl
