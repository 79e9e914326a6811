// The frame codec compared with a plain table CRC over the same bytes, and memcpy. Payloads of a
// query, an NV item and a field-test screen, with their usual share of stuffed bytes.
#include <benchmark/benchmark.h>

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "bench/allocations.h"
#include "bench/plain_crc.h"
#include "bench/samples.h"
#include "link/frame_codec.h"

std::atomic<long> allocation_count = 0;

// The module has no operator new: its allocations would go through malloc.
extern "C" void* malloc(size_t size) {
  static void* (*const real)(size_t) =
      reinterpret_cast<void* (*)(size_t)>(dlsym(RTLD_NEXT, "malloc"));
  allocation_count.fetch_add(1, std::memory_order_relaxed);
  return real(size);
}

using Bytes = std::vector<uint8_t>;

// Without the closing flag, as the decoder gets it.
static Bytes wire_of(const Bytes& bytes) {
  Bytes wire = framed(bytes, false);
  wire.pop_back();
  return wire;
}

static void count_bytes(benchmark::State& state) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}

static void crc_floor(benchmark::State& state) {
  Bytes bytes = sample_bytes(static_cast<size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(plain_crc(bytes.data(), bytes.size()));
  count_bytes(state);
}

// The work that every decoder must do. Decoding rewrites the input, so both get a fresh copy each
// round; the check bytes go through the loop too.
static void fresh_copy_and_crc(benchmark::State& state) {
  Bytes bytes = sample_bytes(static_cast<size_t>(state.range(0)));
  Bytes wire = wire_of(bytes);
  Bytes buffer(wire.size());
  for (auto _ : state) {
    memcpy(buffer.data(), wire.data(), wire.size());
    benchmark::DoNotOptimize(plain_crc(buffer.data(), bytes.size() + 2));
    benchmark::ClobberMemory();
  }
  count_bytes(state);
}

static void memcpy_floor(benchmark::State& state) {
  Bytes bytes = sample_bytes(static_cast<size_t>(state.range(0)));
  Bytes copy(bytes.size());
  for (auto _ : state) {
    memcpy(copy.data(), bytes.data(), bytes.size());
    benchmark::ClobberMemory();
  }
  count_bytes(state);
}

static void encode(benchmark::State& state) {
  Bytes bytes = sample_bytes(static_cast<size_t>(state.range(0)));
  Bytes wire(2 * (bytes.size() + 2) + 2);
  long before = allocation_count;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        encode_frame(wire.data(), bytes.data(), static_cast<uint32_t>(bytes.size()), false));
    benchmark::ClobberMemory();
  }
  state.counters["allocations"] = static_cast<double>(allocation_count - before);
  count_bytes(state);
}

static void decode(benchmark::State& state) {
  Bytes wire = wire_of(sample_bytes(static_cast<size_t>(state.range(0))));
  Bytes buffer(wire.size());
  long before = allocation_count;
  for (auto _ : state) {
    memcpy(buffer.data(), wire.data(), wire.size());
    int32_t result = DiagPacketRXCRC(buffer.data(), static_cast<uint32_t>(buffer.size()));
    if (result != 0) state.SkipWithError("refused a good frame");
    benchmark::ClobberMemory();
  }
  state.counters["allocations"] = static_cast<double>(allocation_count - before);
  count_bytes(state);
}

// A plain request, a small answer, typical ones, a field-test screen.
static void sizes(benchmark::internal::Benchmark* benchmark) {
  for (int64_t size : {3, 16, 48, 133, 240, 350}) benchmark->Arg(size);
}

BENCHMARK(crc_floor)->Apply(sizes);
BENCHMARK(fresh_copy_and_crc)->Apply(sizes);
BENCHMARK(memcpy_floor)->Apply(sizes);
BENCHMARK(encode)->Apply(sizes);
BENCHMARK(decode)->Apply(sizes);
