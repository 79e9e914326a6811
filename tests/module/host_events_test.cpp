// Host events: what counts, what is ignored, what is logged.
#include "tests/module/host_event.h"
#include "tests/module/module_fixture.h"

using namespace test;

const char* NubiGetEventName(const NubiEvent* event) { return event->name; }
const char* NubiGetEventSource(const NubiEvent* event) { return event->source; }
int NubiGetIntParam(const NubiEvent* event, int* value) {
  if (event->error == 0) *value = event->origin;
  return event->error;
}

class HostEvents : public ModuleTest {};

TEST_F(HostEvents, rings_are_counted_by_origin) {
  struct {
    int origin, error, counted;
    const char* line;
  } rows[] = {
      {0, 0, 0, ""},
      {4, 0, 4, ""},
      {5, 0, 5, "W zop:unexp_ringorigin:origin=5:\n"},
      {7, 0, 5, "W zop:unexp_ringorigin:origin=7:\n"},
      {-1, 0, 5, "W zop:unexp_ringorigin:origin=-1:\n"},
      {3, 22, 0, "E zop:get:param=wanRing origin,error=22:can't get parameter\n"},
  };
  vurn_set_log_mask(VURN_LOG_WARNING | VURN_LOG_ERROR);
  uint32_t expected[6] = {};
  for (auto& row : rows) {
    NubiEvent ring{"com.orvane.hal", "wanRing", row.origin, row.error};
    world.log.clear();
    world.advance(std::chrono::seconds(10));
    EXPECT_EQ(vurn_report_event(&ring), VURN_OK);
    EXPECT_EQ(log_lines(), row.line);
    ++expected[row.counted];
    EXPECT_TRUE(std::equal(expected, expected + 6, gDiagInfo.ring_counts)) << row.origin;
    EXPECT_EQ(gDiagInfo.last_ring_origin, row.counted);
    EXPECT_EQ(gDiagInfo.last_ring_time, static_cast<uint32_t>(time(nullptr)));
  }
  EXPECT_TRUE(world.written.empty());
}

TEST_F(HostEvents, a_finished_download_reports_the_network_of_the_last_screen) {
  memcpy(gDiagInfo.screen.mcc, "310", 3);
  memcpy(gDiagInfo.screen.mnc, "41\0", 3);
  NubiEvent done{"com.orvane.framework", "fileDownloaded"};
  vurn_set_log_mask(VURN_LOG_INFO | VURN_LOG_EVENTS);
  EXPECT_EQ(vurn_report_event(&done), VURN_OK);
  EXPECT_EQ(log_lines(),
            "D zop:event com.orvane.framework fileDownloaded occurred\n"
            "I zop:mccmnc:mcc=310,mnc=41:mcc mnc report\n");
}

TEST_F(HostEvents, all_others_are_ignored) {
  NubiEvent events[] = {{"com.orvane.framework", "wanRing"},  {"com.orvane.hal", "WanRing"},
                        {"com.orvane.hal", "fileDownloaded"}, {nullptr, "wanRing"},
                        {"com.orvane.hal", nullptr},          {nullptr, nullptr}};
  vurn_set_log_mask(VURN_LOG_INFO);
  for (const NubiEvent& event : events) EXPECT_EQ(vurn_report_event(&event), VURN_OK);
  EXPECT_EQ(gDiagInfo.last_ring_time, 0u);
  EXPECT_EQ(log_lines(), "");
}
