// Runs a fuzz target once on each file of some folders, in builds without a fuzzer: faults found
// before stay fixed, and a corpus counts for the coverage.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);

static void replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<char> text(std::istreambuf_iterator<char>(file), {});
  std::vector<uint8_t> bytes(text.begin(), text.end());
  LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

int main(int argc, char** argv) {
  if (LLVMFuzzerInitialize != nullptr) LLVMFuzzerInitialize(&argc, &argv);
  int count = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      replay(entry.path());
      ++count;
    }
  }
  fprintf(stderr, "replayed %d inputs\n", count);
  return count > 0 ? 0 : 1;  // an empty corpus would test nothing
}
