// A firmware download and a memory dump over a pseudo-terminal, each compared with its floor: the
// same frames on the same terminal, prepared beforehand, with the protocol's pauses, a plain check
// of each answer and nothing else. A thread plays the modem and answers at once.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/select.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "bench/answering_terminal.h"
#include "bench/plain_crc.h"
#include "bench/samples.h"
#include "core/bytes.h"
#include "download/image_set.h"
#include "download/streaming_download.h"
#include "include/modem_download.h"
#include "link/serial_port.h"

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;

// So many MiB, or much less when it only has to be shown to work.
static size_t image_size(const benchmark::State& state) {
  return static_cast<size_t>(state.range(0)) << (std::getenv("BENCH_SMOKE") != nullptr ? 14 : 20);
}

static Bytes flagged(const Bytes& payload) { return framed(payload, true); }

namespace {
class Folder {
 public:
  explicit Folder(size_t image_size) {
    fs::current_path(path_);
    write("amss.mbn", sample_bytes(image_size));
    for (const char* name : {"QSC6270.ram", "partition.mbn", "dbl.mbn", "fsbl.mbn", "osbl.mbn"}) {
      write(name, Bytes(100, 'x'));
    }
  }
  ~Folder() {
    fs::current_path("/");
    fs::remove_all(path_);
  }
  const char* name() const { return path_.c_str(); }

 private:
  void write(const char* name, const Bytes& content) {
    std::ofstream(path_ / name, std::ios::binary)
        .write(static_cast<const char*>(static_cast<const void*>(content.data())),
               static_cast<std::streamsize>(content.size()));
  }
  fs::path path_ = [] {
    std::string path = fs::temp_directory_path() / "zop-bench-XXXXXX";
    return fs::path(mkdtemp(path.data()));
  }();
};

// Discards the module's progress lines.
class Silence {
 public:
  Silence() : saved_(dup(STDOUT_FILENO)) {
    fflush(stdout);
    int null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    close(null);
  }
  ~Silence() {
    fflush(stdout);
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
  }

 private:
  int saved_;
};
}  // namespace

static Bytes unstuffed_start(std::span<const uint8_t> frame, size_t size) {
  Bytes start;
  for (size_t i = 1; i < frame.size() && start.size() < size; ++i) {
    bool escape = frame[i] == 0x7D;
    start.push_back(escape ? frame[++i] ^ 0x20 : frame[i]);
  }
  return start;
}

// The programmer: good replies to everything.
static AnsweringTerminal::Answer programmer() {
  return [reply = Bytes()](std::span<const uint8_t> frame) mutable -> std::span<const uint8_t> {
    Bytes packet = unstuffed_start(frame, 5);
    if (packet[0] == STREAM_WRITE) {
      reply = flagged({0x08, packet[1], packet[2], packet[3], packet[4]});
    } else {
      reply = flagged({static_cast<uint8_t>(packet[0] + 1), 0});
    }
    return reply;
  };
}

// Sends a frame, reads the answer and checks its check sequence. False when no answer comes.
static bool exchanged(int fd, const Bytes& frame) {
  for (size_t sent = 0; sent < frame.size();) {
    ssize_t n = write(fd, frame.data() + sent, frame.size() - sent);
    if (n <= 0) return false;
    sent += static_cast<size_t>(n);
  }
  uint8_t reply[2068];
  size_t held = 0;
  while (held < 2 || reply[held - 1] != 0x7E) {
    fd_set input;
    FD_ZERO(&input);
    FD_SET(fd, &input);
    timeval limit = {5, 0};
    if (select(fd + 1, &input, nullptr, nullptr, &limit) != 1) return false;
    ssize_t n = read(fd, reply + held, sizeof reply - held);
    if (n <= 0) return false;
    held += static_cast<size_t>(n);
  }
  benchmark::DoNotOptimize(plain_crc(reply, held));
  return true;
}

static void download(benchmark::State& state) {
  Folder folder(image_size(state));
  Silence silence;
  AnsweringTerminal terminal(programmer());
  for (auto _ : state) {
    modem_set_config(folder.name(), "", 1, 0);
    if (load_config() != 1) state.SkipWithError("no images");
    diag_open(terminal.path.c_str());
    if (hostdl_process() != 1) state.SkipWithError("no download");
    diag_close();
    free(dload_rbuf);  // a download leaves it to the host
    free_config();
  }
}

static void download_floor(benchmark::State& state) {
  constexpr useconds_t AFTER_REPLY_US = 500, AROUND_IMAGE_US = 2000;
  constexpr size_t CHUNK = 2048;
  std::vector<Bytes> frames;
  Bytes bytes = sample_bytes(image_size(state));
  for (size_t at = 0; at < bytes.size(); at += CHUNK) {
    Bytes packet(5 + std::min(CHUNK, bytes.size() - at));
    packet[0] = STREAM_WRITE;
    put_le32(packet.data() + 1, static_cast<uint32_t>(at));
    memcpy(packet.data() + 5, bytes.data() + at, packet.size() - 5);
    frames.push_back(flagged(packet));
  }
  const Bytes others[] = {flagged({STREAM_HELLO}),    flagged({STREAM_HELLO}),
                          flagged({STREAM_SECURITY}), flagged({STREAM_PARTITION}),
                          flagged({STREAM_OPEN}),     flagged({STREAM_CLOSE})};
  AnsweringTerminal terminal(programmer());
  for (auto _ : state) {
    diag_open(terminal.path.c_str());
    for (const Bytes& frame : others) {
      if (!exchanged(SER_SIG, frame)) state.SkipWithError("no reply");
      usleep(AFTER_REPLY_US);
    }
    usleep(2 * AROUND_IMAGE_US);
    for (const Bytes& frame : frames) {
      if (!exchanged(SER_SIG, frame)) state.SkipWithError("no reply");
      usleep(AFTER_REPLY_US);
    }
    diag_close();
  }
}

// ---- dump ----

enum : uint32_t { BASE = 0x00800000, MOST_READ = 1024 };

static Bytes memory_read(uint32_t offset) {
  Bytes packet(7);
  packet[0] = 0x12;
  put_be32(packet.data() + 1, BASE + offset);
  put_be16(packet.data() + 5, MOST_READ);
  return packet;
}

static Bytes region_list(size_t size) {
  Bytes packet = {0x11, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 'R', 'A', 'M', 0, 'r', 'a', 'm', 0};
  put_be16(packet.data() + 1, static_cast<uint32_t>(packet.size() - 3));
  put_be32(packet.data() + 4, BASE);
  put_be32(packet.data() + 8, static_cast<uint32_t>(size));
  return packet;
}

// The boot ROM of a crashed modem. Its replies are prepared beforehand.
static AnsweringTerminal::Answer crashed_modem(size_t size) {
  std::vector<Bytes> replies;
  Bytes bytes = sample_bytes(size);
  for (size_t at = 0; at < bytes.size(); at += MOST_READ) {
    Bytes packet = memory_read(static_cast<uint32_t>(at));
    packet[0] = 0x13;
    packet.insert(packet.end(), bytes.begin() + static_cast<ptrdiff_t>(at),
                  bytes.begin() + static_cast<ptrdiff_t>(at + MOST_READ));
    replies.push_back(flagged(packet));
  }
  return [replies = std::move(replies), list = flagged(region_list(size))](
             std::span<const uint8_t> frame) -> std::span<const uint8_t> {
    Bytes packet = unstuffed_start(frame, 5);
    if (packet[0] != 0x12) return list;
    return replies[(get_be32(packet.data() + 1) - BASE) / MOST_READ];
  };
}

static void dump(benchmark::State& state) {
  Folder folder(image_size(state));
  Silence silence;
  AnsweringTerminal terminal(crashed_modem(image_size(state)));
  for (auto _ : state) {
    diag_open(terminal.path.c_str());
    mem_dump_process();
    if (FW_DL_STATUS != 100) state.SkipWithError("no dump");
    diag_close();
  }
}

// Also writes the same number of bytes to a file.
static void dump_floor(benchmark::State& state) {
  std::vector<Bytes> frames = {flagged({0x10})};
  for (uint32_t at = 0; at < image_size(state); at += MOST_READ)
    frames.push_back(flagged(memory_read(at)));
  AnsweringTerminal terminal(crashed_modem(image_size(state)));
  Folder folder(image_size(state));
  Bytes block(MOST_READ);
  for (auto _ : state) {
    diag_open(terminal.path.c_str());
    int file = open("raw-copy", O_WRONLY | O_CREAT | O_TRUNC, 0666);
    for (const Bytes& frame : frames) {
      if (!exchanged(SER_SIG, frame)) state.SkipWithError("no reply");
      if (write(file, block.data(), block.size()) < 0) state.SkipWithError("no copy");
    }
    close(file);
    diag_close();
  }
}

static void image_sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(1)->Arg(4)->Arg(16)->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(1);
}

BENCHMARK(download)->Apply(image_sizes);
BENCHMARK(download_floor)->Apply(image_sizes);
BENCHMARK(dump)->Apply(image_sizes);
BENCHMARK(dump_floor)->Apply(image_sizes);
