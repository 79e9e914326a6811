// Reserves a modem's port by lock files, as serial programs have done since UUCP: /var/lock/LCK..
// and the device's name. Unlike flock they hold while the device is away, as during an update.
#pragma once

#include <list>
#include <optional>
#include <string>

namespace zopctl {

// One at a time in a program. The path that was given is reserved, which may be a link that comes
// and goes with the modem, and the node to which it leads.
class PortLock {
 public:
  // Throws Failure when another has reserved the device. doing is shown to others.
  PortLock(std::string device, std::string doing);
  ~PortLock();
  PortLock(const PortLock&) = delete;
  PortLock& operator=(const PortLock&) = delete;

  // Why a lock file could not be made, though nobody else has one; empty if all are.
  const std::string& problem() const { return problem_; }

  // Reserves what the path names now. Returns who else has it.
  std::optional<std::string> follow();
  const std::string& device() const { return device_; }

 private:
  std::optional<std::string> take(const std::string& path);
  void release(const std::string& path);

  std::string device_;
  std::string doing_;
  std::string problem_;
  std::list<std::string> files_;  // ours
};

// Who else has reserved the device, as the reason why it can't be used; nothing if nobody. A device
// that this program has reserved may have come back as another node: that is reserved too.
std::optional<std::string> reservation_of(const std::string& device);

}  // namespace zopctl
