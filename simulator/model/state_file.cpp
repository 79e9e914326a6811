// The state as JSON, replaced atomically: a new file is written beside the old one, synced to disk
// and renamed over it.
#include "simulator/model/state_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "simulator/line/private_file.h"

namespace sim {

using Json = nlohmann::json;

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Plmn, mcc, mnc, technology_1, technology_2)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Message, number, text)

static Json state_of(const Model& m) {
  return {{"sim",
           {{"status", m.sim.status},
            {"lock", m.sim.lock},
            {"retries", m.sim.retries},
            {"pin", m.sim.pin},
            {"key_retries", m.sim.key_retries},
            {"virtual_state", m.sim.virtual_state},
            {"user", m.sim.user}}},
          {"firmware", {{"version", m.identity.firmware}, {"build", m.identity.build}}},
          {"partition", m.device.partition},
          {"half_written", m.device.half_written},
          {"nv", m.nv},
          {"profiles", m.device.profiles},
          {"errors", m.device.errors},
          {"outbox", m.outbox}};
}

static void apply_state(const Json& state, Model& m) {
  const Json& sim = state.at("sim");
  sim.at("status").get_to(m.sim.status);
  sim.at("lock").get_to(m.sim.lock);
  sim.at("retries").get_to(m.sim.retries);
  sim.at("pin").get_to(m.sim.pin);
  sim.at("key_retries").get_to(m.sim.key_retries);
  sim.at("virtual_state").get_to(m.sim.virtual_state);
  sim.at("user").get_to(m.sim.user);
  if (state.contains("firmware")) {  // a state of an older simulator has none
    state.at("firmware").at("version").get_to(m.identity.firmware);
    state.at("firmware").at("build").get_to(m.identity.build);
    state.at("partition").get_to(m.device.partition);
  }
  m.device.half_written = state.value("half_written", m.device.half_written);
  state.at("nv").get_to(m.nv);
  state.at("profiles").get_to(m.device.profiles);
  state.at("errors").get_to(m.device.errors);
  state.at("outbox").get_to(m.outbox);
}

// A verified PIN is needed again after power-on.
static void power_on(Sim& sim) {
  if (sim.lock == ZOP_PIN_VERIFIED) sim.lock = ZOP_PIN_ENABLED;
  if (sim.lock == ZOP_PIN_ENABLED) sim.status = ZOP_SIM_NOT_INITIALISED;
}

// "[json.exception.parse_error.101] parse error at line 1, column 3: ..."
static std::string reason_of(const Json::exception& error) {
  std::string_view text = error.what();
  return std::string(text.substr(text.find("] ") + 2));
}

void StateFile::load(Model& model) {
  if (path_.empty() || !std::filesystem::exists(path_)) return;
  if (int error = read_error(path_))
    throw std::runtime_error("can't read the state: " + path_ + ": " + strerror(error) +
                             "; name another file");
  try {
    std::ifstream file(path_);
    apply_state(Json::parse(file), model);
  } catch (const Json::exception& error) {
    throw std::runtime_error(path_ + " is not the state of a simulated modem: " + reason_of(error) +
                             "; remove it, or name another file");
  }
  power_on(model.sim);
}

[[noreturn]] static void fail(const std::string& path) {
  throw std::runtime_error("can't save the state to " + path + ": " + strerror(errno) +
                           "; name another file");
}

static void write_file(const std::string& path, const std::string& text) {
  int fd = make_private_file(path);
  if (fd < 0) fail(path);
  size_t done = 0;
  while (done < text.size()) {
    ssize_t n = write(fd, text.data() + done, text.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    done += static_cast<size_t>(n);
  }
  bool good = done == text.size() && fsync(fd) == 0;
  if (close(fd) != 0 || !good) fail(path);
}

void StateFile::save(const Model& model) {
  if (path_.empty()) return;
  std::string text = state_of(model).dump();
  if (text == saved_) return;
  write_file(path_ + ".new", text);
  if (rename((path_ + ".new").c_str(), path_.c_str()) != 0) fail(path_);
  saved_ = text;
}

}  // namespace sim
