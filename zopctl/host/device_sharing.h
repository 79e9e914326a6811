// Who else holds the modem's device. Two programs on one port take each other's answers.
#pragma once

#include <optional>
#include <string>

namespace zopctl {

// Another process that has the device open, as "NAME (process 814)". A process whose files we may
// not see is not found; one at the far end of a pseudo-terminal does not count.
std::optional<std::string> holder_of(const std::string& device);

// The name of a process, and the process as "NAME (process 814)".
std::string process_name(int process);
std::string process_text(int process);

// Locks an open device against other programs that ask (flock), until it is closed. False with
// EBUSY when another has locked it.
bool lock_device(int fd);

}  // namespace zopctl
