// Reserves a modem's port by a lock file, as serial programs have done since UUCP: /var/lock/LCK..
// and the device's name. Unlike flock it holds while the device is away, as during an update.
#pragma once

#include <optional>
#include <string>

namespace zopctl {

class PortLock {
 public:
  // Throws Failure when a living process has reserved the device. doing is shown to others. Where
  // no lock file can be made the port is used without one.
  PortLock(const std::string& device, const std::string& doing);
  ~PortLock();
  PortLock(const PortLock&) = delete;
  PortLock& operator=(const PortLock&) = delete;

 private:
  std::string path_;  // empty if there is none
};

// Who else has reserved the device, as the reason why it can't be used; nothing if nobody.
std::optional<std::string> reservation_of(const std::string& device);

}  // namespace zopctl
