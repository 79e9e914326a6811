// zopctl parse-log compared with `wc -l` and `grep` over the same log: whole runs, with the memory
// each took. The log has the interleaved reports of many devices; the sparse one has 59 other lines
// behind each line of a report, as a device's whole log.
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

// The items that the module reports of a modem with a data connection.
constexpr char ITEMS[] =
    ",Network Name=Testnet,MCC MNC=001 01,Channel=4357,Band=WCDMA V 850,C1=3430008"
    ",L1=6699,R1=7,Network Time=2026/11/22 18.22.17,Local Time Offset=+0h"
    ",Selection Mode=Automatic,Test Mode=0,Bars=5,Roaming=0,RSSI=-75,Tx Power=-12"
    ",System Mode=WCDMA,Data Service Mode=HSDPA,Service Status=Service,Reg Status=Success"
    ",Call Status=Idle,MM Attach State=Attach accept,MM LU State=LU update"
    ",GMM Attach State=Attach accept,GMM State=Registered,GMM RAU State=RA update accept"
    ",PDP State=Inactive,Network Mode=CS PS combined attach mode,PMM Mode=Idle"
    ",SIM Status=Valid; PIN perm disabled; R3,MM Attach Error=No error"
    ",MM LU Error=No error,GMM Attach Error=No error,GMM RAU Error=No error"
    ",PDP Rej Reason=No error,Active/Monitored Sets=0;100;-5 1;101;-11 2;245;-16,RSCP=-82"
    ",DRX=6,HSDPA Status=Active,HSDPA Indication=HSDPA supp,N1=,B1=,Pathloss=,MFRM="
    ",EGPRS Indication=,IP Address=xxx.xxx.64.64,Dest IP Address=xxx.xxx.112.112"
    ",Rx Bytes=4748515,Tx Bytes=917024,Rx Errors=1,Tx Errors=2,Res=24145930; 40923146"
    ",FTD Age=0s,HPLMN=UMTS;001;01,RPLMN=001;01,FPLMN="
    ",OPLMN=UMTS;001;01 UMTS;901;70 GSM;310;410";

constexpr char OTHER_LINE[] =
    "Jul 24 13:02:59 device-1 dhcpd[402]: lease of 192.168.11.20 renewed for 3600 s on eth0\n";

static std::string log_line(int device, int report) {
  char start[128];
  snprintf(start, sizeof start, "Jul 24 13:02:59 device-%d hostd[814]: I zop:diag: t=%x", device,
           0x4C4AE3F3 + report);
  return start + std::string(ITEMS) + ",n=1:\n";
}

namespace {
// A log file of this many megabytes, deleted when the program ends.
class LogFile {
 public:
  LogFile(size_t megabytes, int other_lines) {
    std::string others;
    for (int line = 0; line < other_lines; ++line) others += OTHER_LINE;
    std::string name = std::filesystem::temp_directory_path() / "zop-bench-XXXXXX";
    close(mkstemp(name.data()));
    path = name;
    std::ofstream file(path);
    size_t size = 0;
    for (int line = 0; size < megabytes * MEGABYTE; ++line) {
      std::string text = log_line(line % DEVICES, line / DEVICES) + others;
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

static const std::string& log_of(int64_t megabytes, int other_lines) {
  static std::map<std::pair<int64_t, int>, LogFile> files;
  auto name = std::pair(megabytes, other_lines);
  return files.try_emplace(name, static_cast<size_t>(megabytes), other_lines).first->second.path;
}

static void measure(benchmark::State& state, std::vector<std::string> words, int64_t megabytes,
                    int other_lines = 0) {
  words.push_back(log_of(megabytes, other_lines));
  long memory = 0;
  for (auto _ : state) {
    long taken = run_program(words);
    if (taken < 0) state.SkipWithError("the program failed");
    memory = std::max(memory, taken);
  }
  state.counters["memory_kb"] = static_cast<double>(memory);
  state.SetBytesProcessed(state.iterations() * megabytes * static_cast<int64_t>(MEGABYTE));
}

static void parse_log(benchmark::State& state) {
  measure(state, {ZOPCTL, "parse-log", "--jobs", "1"}, state.range(0));
}
static void parse_log_sparse(benchmark::State& state) {
  measure(state, {ZOPCTL, "parse-log", "--jobs", std::to_string(state.range(0))}, 200, 59);
}
static void count_lines(benchmark::State& state) { measure(state, {"wc", "-l"}, state.range(0)); }
static void grep(benchmark::State& state) {
  measure(state, {"grep", "-c", "zop:diag:"}, state.range(0));
}

BENCHMARK(parse_log)->Arg(4)->Arg(20)->Arg(100)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(parse_log_sparse)
    ->Arg(1)
    ->Arg(2)
    ->ArgName("jobs")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(count_lines)->Arg(20)->Arg(100)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(grep)->Arg(20)->Arg(100)->Unit(benchmark::kMillisecond)->UseRealTime();
