// The system calls of the module, as zopctl answers them.
//
// The module opens one fixed device and logs to syslog. zopctl defines open and syslog itself, to
// which the unchanged library binds: so its device can be any node, and its log can be shown.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace zopctl {

// The path that the module opens.
inline constexpr char MODULE_DEVICE[] = "/dev/tts/USB1";

// Opens of MODULE_DEVICE go to this path from now on.
void map_device(const std::string& path);
const std::string& mapped_device();

// The module's sleeps end at once while this holds: the user wants the program to end.
void hurry_when(bool (*condition)());

// The module's sleeps take so many times less: a simulated modem's clock runs faster.
void speed_up_sleeps(double factor);

// Called ten times a second while the module sleeps, with the seconds that are left.
void watch_sleeps(std::function<void(unsigned seconds)> watch);

// Sees every piece before it goes to the device and after it has come from it. When it answers
// false the line is cut: the module sees an I/O error.
enum class Direction { TO_MODEM, FROM_MODEM };
using LineWatch = std::function<bool(Direction, std::span<const uint8_t>)>;
void watch_line(LineWatch watch);

// Gets every piece that went over the line; an empty one when the device is gone. From any thread.
using LineSink = std::function<void(Direction, std::span<const uint8_t>)>;
void capture_line(LineSink sink);

// The module's looks at the device it runs on (/proc, /etc/resolv.conf, /var/local/wan) go to this
// folder from now on, and its questions for the addresses of ppp0 are answered with these.
void map_root(const std::string& root, const std::string& local, const std::string& peer);

bool is_simulated();  // the device around the modem is such a folder

// Called before a file of that folder is opened: what moves in it is brought up to date.
void refresh_root(std::function<void()> refresh);

// Log lines go here instead of to syslog from now on.
using LogSink = std::function<void(int priority, const std::string& line)>;
void catch_log(LogSink sink);

// The log sink of now.
LogSink current_log();

}  // namespace zopctl
