// zopctl parse-log compared with `wc -l` and `grep` over the same log: whole runs, with the memory
// each took. The log has the interleaved reports of many devices.
#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "bench/run_program.h"

constexpr int DEVICES = 1000;
constexpr size_t MEGABYTE = 1'000'000;

// A report of one line, as long as a real one.
static std::string log_line(int device, int report) {
  char start[128];
  snprintf(start, sizeof start, "Jul 24 13:02:59 device-%d hostd[814]: I zop:diag: t=%x", device,
           0x4C4AE3F3 + report);
  std::string line = start;
  for (int item = 0; item < 50; ++item) {
    line += ",Some Item ";
    line += std::to_string(item);
    line += "=Attach accept";
  }
  return line + ",n=1:\n";
}

namespace {
// A log file of this many megabytes, deleted when the program ends.
class LogFile {
 public:
  explicit LogFile(size_t megabytes) {
    std::string name = std::filesystem::temp_directory_path() / "zop-bench-XXXXXX";
    close(mkstemp(name.data()));
    path = name;
    std::ofstream file(path);
    size_t size = 0;
    for (int line = 0; size < megabytes * MEGABYTE; ++line) {
      std::string text = log_line(line % DEVICES, line / DEVICES);
      file << text;
      size += text.size();
    }
  }
  ~LogFile() { std::filesystem::remove(path); }
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;
  std::string path;
};
}  // namespace

static const std::string& log_of(int64_t megabytes) {
  static std::map<int64_t, LogFile> files;
  return files.try_emplace(megabytes, static_cast<size_t>(megabytes)).first->second.path;
}

static void measure(benchmark::State& state, std::vector<std::string> words) {
  words.push_back(log_of(state.range(0)));
  long memory = 0;
  for (auto _ : state) {
    long taken = run_program(words);
    if (taken < 0) state.SkipWithError("the program failed");
    memory = std::max(memory, taken);
  }
  state.counters["memory_kb"] = static_cast<double>(memory);
  state.SetBytesProcessed(state.iterations() * state.range(0) * static_cast<int64_t>(MEGABYTE));
}

static void parse_log(benchmark::State& state) { measure(state, {ZOPCTL, "parse-log"}); }
static void count_lines(benchmark::State& state) { measure(state, {"wc", "-l"}); }
static void grep(benchmark::State& state) { measure(state, {"grep", "-c", "zop:diag:"}); }

BENCHMARK(parse_log)->Arg(20)->Arg(100)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(count_lines)->Arg(20)->Arg(100)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(grep)->Arg(20)->Arg(100)->Unit(benchmark::kMillisecond)->UseRealTime();
