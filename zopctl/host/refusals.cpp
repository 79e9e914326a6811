// An error answer is a code and the request's bytes. One to an older request may come late; it is
// no refusal of the present one.
#include "zopctl/host/refusals.h"

#include <fmt/format.h>

#include <algorithm>
#include <mutex>
#include <thread>
#include <utility>

#include "include/vurn.h"
#include "include/zop.h"
#include "simulator/line/frame.h"
#include "simulator/requests/requests.h"
#include "zopctl/host/host_calls.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/words.h"

namespace zopctl {

namespace {
struct Watch {
  std::mutex mutex;  // the module's threads take turns on the line
  std::thread::id caller;
  sim::Deframer requests, answers;
  sim::Bytes request;    // the last whole one
  bool is_ours = false;  // it was sent by the caller
  std::string refusal;
  bool boot_rom = false;  // its refusals begin with another code
};
}  // namespace
static Watch watch;

static std::string name_of(const sim::Bytes& request) {
  if (const sim::Request* row = sim::find_request(request)) return row->name;
  return fmt::format("request {:02x}",
                     fmt::join(request.begin(),
                               request.begin() + std::min<ptrdiff_t>(std::ssize(request), 2), " "));
}

static void take_answer(const sim::Bytes& answer) {
  constexpr uint8_t NAK = 3;
  if (answer.empty() || watch.request.empty()) return;
  watch.boot_rom = answer[0] == NAK && watch.request[0] != NAK;
  const char* error = sim::error_text(answer[0]);
  if (error == nullptr || !watch.is_ours || !watch.refusal.empty()) return;
  size_t echoed = std::min(answer.size() - 1, watch.request.size());
  bool is_of_this =
      std::equal(answer.begin() + 1, answer.begin() + 1 + static_cast<ptrdiff_t>(echoed),
                 watch.request.begin());
  if (is_of_this) watch.refusal = "the modem refused " + name_of(watch.request) + ": " + error;
}

static void take(Direction direction, std::span<const uint8_t> piece) {
  std::lock_guard lock(watch.mutex);
  bool is_request = direction == Direction::TO_MODEM;
  sim::Deframer& deframer = is_request ? watch.requests : watch.answers;
  for (uint8_t byte : piece) {
    if (deframer.take(byte) != sim::Deframer::GOOD) continue;
    if (!is_request) {
      take_answer(deframer.payload());
    } else {
      watch.request = deframer.payload();
      watch.is_ours = std::this_thread::get_id() == watch.caller;
    }
  }
}

void watch_refusals() {
  watch.caller = std::this_thread::get_id();
  follow_line(take);
}

std::string take_refusal() {
  std::lock_guard lock(watch.mutex);
  return std::exchange(watch.refusal, "");
}

bool answers_as_boot_rom() {
  std::lock_guard lock(watch.mutex);
  return watch.boot_rom;
}

std::string problem(unsigned result) {
  std::string refusal = take_refusal();
  if (!refusal.empty()) return refusal;
  return result == ZOP_SUCCESS ? "" : zop_result(result);
}

std::string host_problem(int result) {
  std::string refusal = take_refusal();
  if (!refusal.empty()) return refusal;
  return result == VURN_OK ? "" : vurn_result(result);
}

static void require(bool good, const char* what, const std::string& result, const char* advice) {
  std::string refusal = take_refusal();
  if (!refusal.empty()) throw Failure(refusal, 1, AFTER_REFUSAL);
  if (!good) throw Failure(fmt::format("{}: {}", what, result), 1, advice);
}

// A request without an answer may have been carried out: no advice to repeat it.
static const char* advice_after(unsigned result) {
  if (result == ZOP_ERR_INVALID_ARGUMENT) return "the module does not take these values";
  return result == ZOP_ERR_MODEM_FAILURE ? AFTER_REFUSAL : ASK_DOCTOR;
}

void require(unsigned result, const char* what, const char* advice) {
  require(result == ZOP_SUCCESS, what, zop_result(result),
          advice == nullptr ? advice_after(result) : advice);
}
void require_host(int result, const char* what) {
  require(result == VURN_OK, what, vurn_result(result), ASK_DOCTOR);
}

}  // namespace zopctl
