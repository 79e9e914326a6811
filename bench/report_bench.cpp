// One report in both forms, compared with one snprintf for each of its items.
#include <benchmark/benchmark.h>

#include <cstdio>

#include "bench/allocations.h"
#include "bench/samples.h"

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
