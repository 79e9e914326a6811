// Which port a verb uses, and waiting for it.
#pragma once

#include <optional>
#include <string>

namespace zopctl {

// What the user said of it.
struct DeviceWish {
  std::string device;            // --device; empty: not given
  std::optional<unsigned> wait;  // seconds to wait for it, 0 without an end; nothing: don't
};

// The path of --device, of $ZOPCTL_DEVICE, the module's own if it is there, or the only port that
// answers, which is named on standard error. The module's own too when there is none. Throws
// Failure when several ports answer, and when the wait was in vain.
std::string choose_device(const DeviceWish& wish);

}  // namespace zopctl
