// A module in its World with a modem that answers what a test tells it.
#pragma once

#include <cstring>
#include <regex>

#include "core/module_state.h"
#include "include/vurn.h"
#include "include/zop_diag_info.h"
#include "link/event_listener.h"
#include "module/lifecycle.h"
#include "report/deferred_action.h"
#include "tests/support/link_test.h"

namespace test {

enum : unsigned { LOG_EVERYTHING = 0xFFFFFFFF };

class ModuleTest : public testing::Test {
 protected:
  void SetUp() override {
    setenv("TZ", "UTC", 1);
    tzset();
    gDiagInfo = {};
    gModuleOpen = false;
    fresh_link();
    world.far_end = &modem;
    world.missing["/proc/uptime"] = ENOENT;
    THREAD_STATUS = 0;
    zop_debug_end_callback_status = 0;
    gDeferredThreadCreated = false;
    for (const char* path : {"/proc/net/dev", "/etc/resolv.conf", "/proc"}) {
      world.missing[path] = ENOENT;
    }
    vurn_set_log_mask(0);
    take_leftover_event();
  }
  // The slot of the deferred-action thread keeps what a test before has posted.
  void take_leftover_event() {
    prv_start_deferred_action_thread();
    world.advance(std::chrono::milliseconds(1));
    prv_stop_deferred_action_thread();
    prv_join_deferred_action_thread();
    world.advance(-world.now());
    world.threads_made = 0;
  }
  void TearDown() override {
    vurn_close(1);
    prv_stop_deferred_action_thread();  // one whose module is closed
    prv_join_deferred_action_thread();
    zop_debug_stop();
  }

  // Answer to each request, by the request's payload as hex: payload, or "" for one that can't be
  // unframed. Others are answered with zeros.
  std::map<std::string, std::string> answers = {
      {"d2 00 00", "d2 00 00 00 00 00 02 01 03"},
      {"cf 5d 00", "cf 5d 00 00 00 46 57 2d 31"},  // FW-1
      {"cf 48 00", "cf 48 00 00 00 48 57 2d 31"},  // HW-1
  };

  // Fails the request with a status that every command refuses, or an undecodable answer.
  void refuse(const std::string& request) { answers[request] = request + " 01 00"; }
  void garble(const std::string& request) { answers[request] = ""; }

  // The log, with the place in the source cut off "D" lines.
  std::string log_lines() const {
    static const std::regex place(" \\(\\w+:zop_module:\\d+\\)\n");
    return std::regex_replace(world.log_text(), place, "\n");
  }
  std::string asked() const {
    std::string all;
    for (const Bytes& payload : modem.payloads) all += to_hex(payload) + "\n";
    return all;
  }

  std::optional<Bytes> answer_to(const Bytes& request) const {
    auto it = answers.find(to_hex(request));
    if (it != answers.end()) return hex(it->second);
    Bytes zeros(350);  // a good status and nothing else
    std::copy_n(request.begin(), std::min<size_t>(3, request.size()), zeros.begin());
    return zeros;
  }

  World world;
  AnsweringModem modem{[this](const Bytes& request) { return answer_to(request); }};
};

}  // namespace test
