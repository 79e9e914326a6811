// One report in both forms, compared with one snprintf for each of its items.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>

#include "bench/allocations.h"
#include "include/zop_diag_info.h"
#include "report/rendering.h"

// The record of a healthy WCDMA modem, with full network lists.
static void fill_record() {
  static bool filled = false;
  if (filled) return;
  filled = true;
  prv_zop_init_logging();
  gDiagInfo.screen.system_mode = ZOP_SCREEN_WCDMA;
  strcpy(gDiagInfo.screen.network_name, "Testnet");
  memcpy(gDiagInfo.screen.mcc, "001", 3);
  for (auto& cell : gDiagInfo.screen.radio.wcdma.cells) cell.scrambling_code[0] = 100;
  gDiagInfo.oplmn_count = 140;
  for (auto& block : gDiagInfo.oplmn) {
    block[0] = 20;
    for (size_t i = 0; i < 20; ++i) memcpy(block + 1 + 8 * i, "310410\x80", 8);
  }
  gDiagInfo.screen_time = 1'280'000'000;
  char warm[8192];  // the first use of the time zone reads its file
  prv_zop_output_to_log_string(warm, sizeof warm, 1);
}

static void count_allocations(benchmark::State& state, long before) {
  state.counters["allocations"] = static_cast<double>(allocation_count - before);
}

static void snprintf_per_item(benchmark::State& state) {
  fill_record();
  char text[64];
  for (auto _ : state) {
    for (const zop_log_item* item = gLogItems; item->type != ZOP_ITEM_END; ++item) {
      benchmark::DoNotOptimize(snprintf(text, sizeof text, "%s: %d\n", item->label, item->size));
    }
  }
}
BENCHMARK(snprintf_per_item);

static void log_string(benchmark::State& state) {
  fill_record();
  char text[8192];
  long before = allocation_count;
  for (auto _ : state) {
    benchmark::DoNotOptimize(prv_zop_output_to_log_string(text, sizeof text, 1));
  }
  count_allocations(state, before);
}
BENCHMARK(log_string);

static void syslog_report(benchmark::State& state) {
  fill_record();
  long before = allocation_count;
  for (auto _ : state) prv_zop_output_to_syslog(1, "exception", 0);
  count_allocations(state, before);
}
BENCHMARK(syslog_report);
