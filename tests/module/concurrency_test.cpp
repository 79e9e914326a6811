// Host threads on all entry points at once while the module is opened and closed: no deadlock, no
// race, and every answer belongs to its request.
#include <malloc.h>

#include <atomic>
#include <functional>
#include <thread>

#include "commands/exchange.h"
#include "link/frame_codec.h"
#include "link/upcalls.h"
#include "report/field_test.h"
#include "report/rendering.h"
#include "tests/module/host_event.h"
#include "tests/module/module_world.h"
#include "tests/support/holdings.h"

using namespace std::chrono_literals;
using namespace test;

class HostThreads : public ModuleTest {
 protected:
  void SetUp() override {
    std::string screen = " 03 02";  // GSM, full service
    for (int i = 2; i < 345; ++i) screen += i == 90 ? " ba" : i == 91 ? " ff" : " 00";
    for (auto& [subcommand, payload] : std::map<std::string, std::string>{
             {"20", "b5 ff"},
             {"21", "01"},
             {"1f", "05"},
             {"54", "01 00 00 00"},
             {"3b", "02"},
             {"66", "00 00 00 00"},
             {"26", "00"},
             {"57", "00 00 00 00"},
             {"3c", "01"},
             {"34", screen},
             {"30", "33 31 30"},
             {"67", "31 32 33"},
             {"68", "34 35 36"},
             {"23", "37 38 39"},
             {"07", "2b 31"},
             {"14", "da 07 07 00 18 00 0d 00 02 00 3b 00 06 00 04 00 00 00 00"}}) {
      std::string request = "cf " + subcommand + " 00";
      answers[request] = request + " 00 00 " + payload;
    }
    world.missing["/var/local/wan/mcc"] = EACCES;
    world.runs_free = true;
    world.keeps_log = false;
    modem.keeps_requests = false;
  }
  // Expected while the module is opened and closed and its port may be busy.
  static bool may_be_closed(int result) {
    return result == VURN_ERR_NOT_OPEN || result == VURN_ERR_FAILED || result == VURN_ERR_REOPENED;
  }
};

using Idle = ModuleTest;

TEST_F(Idle, without_field_testing_no_thread_wakes_up) {
  ASSERT_EQ(vurn_open(), VURN_OK);
  world.advance(1min);  // the snapshot of an open
  int before = world.conductor.wake_ups;
  EXPECT_GT(before, 0);
  world.advance(1h);
  EXPECT_EQ(world.conductor.wake_ups, before);
}

// Closes and reopens the module now and then while other threads use it.
static void keep_open(const std::atomic<size_t>& at_work) {
  for (int round = 0; at_work > 0; ++round) {
    int rssi;
    bool lost = vurn_get_rssi(&rssi) == VURN_ERR_FAILED;  // a port that stayed busy is closed
    if (lost || round % 40 == 0) vurn_close(0);
    if (vurn_update_prl() != VURN_OK) vurn_open();
    std::this_thread::yield();
  }
}

// Calls once; right is false if a good result comes with a wrong value.
using Check = std::function<int(bool& right)>;

static Check text(int (*get)(char*, unsigned), const char* expected) {
  return [=](bool& right) {
    char buffer[64] = "";
    int result = get(buffer, sizeof buffer);
    right = strcmp(buffer, expected) == 0;
    return result;
  };
}

static Check number(int (*get)(int*), int expected) {
  return [=](bool& right) {
    int value = 4711;
    int result = get(&value);
    right = value == expected;
    return result;
  };
}

// One call to each entry point.
static const std::vector<Check>& every_call() {
  static const std::vector<Check> checks = {
      number(vurn_get_rssi, -75),
      number(vurn_get_roaming_status, 1),
      number(vurn_get_data_service_mode, VURN_DATA_WCDMA),
      number(vurn_get_bars, 4),
      number(vurn_get_mcc, 310),
      text(vurn_get_realm, "123"),
      text(vurn_get_imsi, "456"),
      text(vurn_get_radio_cert_param1, "789"),
      text(vurn_get_radio_phone_number, "+1"),
      [](bool& right) {
        time_t when;
        int offset = 0;
        int result = vurn_get_module_time(&when, &offset);
        right = offset == 3600;
        return result;
      },
      [](bool& right) {
        char report[8192];
        int result = vurn_get_log_string(report, sizeof report);
        right = strstr(report, "HPLMN") != nullptr || strstr(report, "Sorry") != nullptr;
        return result;
      },
      [](bool& right) {
        const char* names[] = {"no carrier"};
        right = true;
        return vurn_log_message(0, names);
      },
      [](bool& right) {
        NubiEvent ring{"com.orvane.hal", "wanRing", 2};
        right = true;
        return vurn_report_event(&ring);
      },
  };
  return checks;
}

namespace {
// One answer in a hundred is missing, cut or damaged so that the module can detect it.
class BadLineModem : public AnsweringModem {
 public:
  using AnsweringModem::AnsweringModem;

 protected:
  Answer answer_to(const Bytes& request) override {
    Answer answer = AnsweringModem::answer_to(request);
    if (answer.empty() || ++answers_ % 100 != 0) return answer;
    Bytes& wire = answer[0].bytes;
    switch (answers_ / 100 % 3) {
      case 0:
        return {};
      case 1:
        wire.resize(wire.size() / 2);
        return answer;
      default:
        wire[1] ^= 0x01;
        return answer;
    }
  }

 private:
  size_t answers_ = 0;
};
}  // namespace

// Fewer where each one takes longer.
#if defined(__arm__)
enum { CALLS_OF_A_THREAD = 1'000, OPENS = 500 };
#else
enum { CALLS_OF_A_THREAD = 4'000, OPENS = 1'000 };
#endif

// Allocated by each listener start and never freed: two buffers, with the allocator's overhead.
enum { KEPT_BY_A_START = 2 * (360 + 16), ALLOCATOR_SLACK = 128 * 1024 };

static void expect_constant_memory(size_t before, int threads_made) {
  size_t allowed = before + static_cast<size_t>(threads_made) * KEPT_BY_A_START + ALLOCATOR_SLACK;
  EXPECT_LE(mallinfo2().uordblks, allowed) << threads_made << " threads";
}

TEST_F(HostThreads, ten_of_them_on_a_bad_line) {
  BadLineModem bad_line{[this](const Bytes& request) { return answer_to(request); }};
  bad_line.keeps_requests = false;
  world.far_end = &bad_line;
  world.keeps_history = false;
  const std::vector<Check>& checks = every_call();
  while (vurn_open() != VURN_OK) {
  }
  size_t memory = mallinfo2().uordblks;
  int threads_before = world.threads_made;
  std::atomic<size_t> at_work = 10;
  std::atomic<int> good = 0;
  std::vector<std::jthread> threads;
  for (size_t i = 0; i < 10; ++i) {
    threads.emplace_back([&, i] {
      world.join();
      for (size_t call = 0; call < CALLS_OF_A_THREAD; ++call) {
        bool right = false;
        size_t check = (i + call) % checks.size();
        int result = checks[check](right);
        if (result == VURN_OK) ++good;
        EXPECT_TRUE(result == VURN_OK ? right : may_be_closed(result)) << check << ": " << result;
        if (call % 8 == 0) std::this_thread::yield();
      }
      --at_work;
    });
  }
  threads.emplace_back([&] {
    world.join();
    keep_open(at_work);
  });
  threads.clear();
  EXPECT_GT(good, 10 * CALLS_OF_A_THREAD / 4);
  while (vurn_open() != VURN_OK) {
  }
  vurn_close(1);
  EXPECT_FALSE(world.port_is_open());
  expect_constant_memory(memory, world.threads_made - threads_before);
  world.runs_free = false;  // or another thread's sleep could be longer than an answer's limit
  gDeferredThreadCreated = false;
  world.far_end = &modem;
  ASSERT_EQ(vurn_open(), VURN_OK);
  for (const Check& check : checks) {  // each works again
    bool right = false;
    EXPECT_EQ(check(right), VURN_OK) << &check - checks.data();
    EXPECT_TRUE(right) << &check - checks.data();
  }
}

// A joined thread is never started again; clearing the flag stands for reloading the module.
TEST_F(ModuleTest, opened_and_closed_again_and_again) {
  world.keeps_history = false;
  world.keeps_log = false;
  modem.keeps_requests = false;
  auto open_and_close = [&](int join) {
    EXPECT_EQ(vurn_open(), VURN_OK);
    if (join == 0) world.advance(std::chrono::milliseconds(700));  // a listener is running
    EXPECT_EQ(vurn_close(join), VURN_OK);
    if (join != 0) gDeferredThreadCreated = false;
  };
  open_and_close(1);
  Holdings before = holdings();
  size_t memory = mallinfo2().uordblks;
  int threads_before = world.threads_made;
  for (int i = 0; i < OPENS; ++i) open_and_close(i % 2);
  open_and_close(1);
  EXPECT_EQ(holdings_like(before), before);
  expect_constant_memory(memory, world.threads_made - threads_before);
}

TEST_F(ModuleTest, a_close_stops_both_threads_whatever_they_do) {
  modem.delay = 90ms;
  for (int ms = 0; ms < 3000; ms += 130) {
    gDeferredThreadCreated = false;
    ASSERT_EQ(vurn_open(), VURN_OK);
    if (ms > 0) {  // at 0 the deferred-action thread waits for the lock to start the listener
      char text[64];
      vurn_get_log_string(text, sizeof text);
      world.advance(std::chrono::milliseconds(ms));
    }
    int threads = world.threads_made;
    EXPECT_EQ(vurn_close(1), VURN_OK);
    EXPECT_EQ(world.threads_made, threads) << ms;  // the close starts no listener
    EXPECT_FALSE(world.conductor.has_others()) << ms;
    EXPECT_EQ(THREAD_STATUS, 0u);
    EXPECT_FALSE(world.port_is_open());
  }
}

// Screens arrive while reports are rendered: no report mixes two of them.
TEST_F(ModuleTest, no_report_shows_a_torn_screen) {
  world.runs_free = true;
  world.keeps_log = false;
  prv_zop_init_logging();
  std::atomic<bool> done = false;
  std::jthread listener([&] {
    world.join();
    uint8_t screen[360] = {};
    for (char letter = 'A'; !done; letter = letter == 'Z' ? 'A' : static_cast<char>(letter + 1)) {
      memset(screen + 3, letter, 32 + 16);  // name and IMEI
      field_information_callback(screen);
    }
  });
  for (int i = 0; i < 2000; ++i) {
    char text[8192];
    {
      ScopedLock lock(gFtdMutex);
      prv_zop_output_to_log_string(text, sizeof text, 1);
    }
    const char* name = strstr(text, "Network Name: ");
    const char* imei = strstr(text, "IMEI: ");
    if (name[14] == '\n') continue;  // no screen yet
    std::string letter(1, name[14]);
    size_t whole_name = strspn(name + 14, letter.c_str());
    size_t whole_imei = strspn(imei + 6, letter.c_str());
    EXPECT_EQ(whole_name, sizeof gDiagInfo.screen.network_name) << i;
    EXPECT_EQ(whole_imei, sizeof gDiagInfo.screen.imei) << i;
  }
  done = true;
}

// A command in progress on another thread may be using them.
TEST_F(ModuleTest, the_country_code_leaves_the_command_buffers_alone) {
  diag_open(DEVICE);
  for (uint8_t* buffer : {ft_buff, fr_buff, m_pTxBuf}) memset(buffer, 0x11, 8);
  int mcc;
  EXPECT_EQ(vurn_get_mcc(&mcc), VURN_ERR_FAILED);  // zeros are no code
  for (uint8_t* buffer : {ft_buff, fr_buff, m_pTxBuf})
    EXPECT_EQ(to_hex({buffer, 8}), to_hex(Bytes(8, 0x11)));
  diag_close();
}
