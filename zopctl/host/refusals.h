// What the modem refuses. Some of the module's calls take an error answer for the answer: their
// result is good, and what they return means nothing.
#pragma once

#include <string>

namespace zopctl {

// Follows the line from now on. Only the requests of the calling thread count: the module polls the
// modem on another one, and what is refused there concerns no verb.
void watch_refusals();

// "the modem refused pin_verify: bad command", the first since the last call. Empty: none.
std::string take_refusal();

// Whether the last answer was a boot ROM's: the modem has crashed, or is in its download mode.
bool answers_as_boot_rom();

// Its memory would be lost by a restart.
inline constexpr char CRASHED[] = "the modem has crashed, or is in its download mode";
inline constexpr char SAVE_MEMORY[] =
    "save its memory with zopctl dump before you restart it; if it offers none, it needs its "
    "firmware: zopctl firmware update";

// Why a call of the command library or of the host interface has brought nothing; empty if it has.
std::string problem(unsigned zop_result);
std::string host_problem(int vurn_result);

// What to do next.
inline constexpr char ASK_DOCTOR[] = "zopctl doctor finds out what is wrong";
inline constexpr char AFTER_REFUSAL[] =
    "zopctl status shows whether the modem's state allows it; its firmware may not know the "
    "request";

// Throw Failure with the refusal, or with what and the result, and the advice if one is given.
void require(unsigned zop_result, const char* what, const char* advice = nullptr);
void require_host(int vurn_result, const char* what);

}  // namespace zopctl
