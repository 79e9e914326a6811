// The module's system calls, as zopctl answers them.
//
// The module opens one fixed device and logs to syslog. zopctl defines open, syslog and others
// itself, and the unchanged library binds to them: its device can be any node, and its log can be
// shown.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace zopctl {

// The path that the module opens.
inline constexpr char MODULE_DEVICE[] = "/dev/tts/USB1";

// From now on MODULE_DEVICE means this path.
void map_device(const std::string& path);
const std::string& mapped_device();

// The module's sleeps end at once when this returns true: the user wants the program to end.
void hurry_when(bool (*condition)());

// Divides the module's sleeps: a simulated modem's clock runs faster.
void speed_up_sleeps(double factor);

// Called ten times a second while the module sleeps, with the seconds that are left.
void watch_sleeps(std::function<void(unsigned seconds)> watch);

// Sees every piece before it goes to the device and after it has come from it. When it returns
// false the module gets an I/O error.
enum class Direction { TO_MODEM, FROM_MODEM };
using LineWatch = std::function<bool(Direction, std::span<const uint8_t>)>;
void watch_line(LineWatch watch);

// Gets every piece that went over the line, and an empty one when the device is gone; on any
// thread.
using LineSink = std::function<void(Direction, std::span<const uint8_t>)>;
void capture_line(LineSink sink);
void follow_line(LineSink sink);  // a second one

// What the module waits for now. A sleep is one between two attempts: until the port opens, or with
// an answer heard until the SIM is ready.
struct WaitState {
  enum What { NOTHING, ANSWER, SLEEP } what;
  std::chrono::steady_clock::time_point since;
  bool has_heard;  // the modem has sent something
};
WaitState wait_state();

// From now on the module reads the files of its device (/proc, /etc/resolv.conf, /var/local/wan) in
// this folder, and gets these addresses for ppp0.
void map_root(const std::string& root, const std::string& local, const std::string& peer);

bool is_simulated();  // map_root is in force
const std::string& simulated_root();

// Called before a file of that folder is opened, to bring it up to date.
void refresh_root(std::function<void()> refresh);

// From now on log lines go here instead of to syslog.
using LogSink = std::function<void(int priority, const std::string& line)>;
void catch_log(LogSink sink);

// Where log lines go now.
LogSink current_log();

}  // namespace zopctl
