// The entry point of a fuzzer. In other builds main runs the target once on each file of some
// folders, as a regression test.
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "fuzz/fuzz.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  stdout = fopencookie(nullptr, "w", {});  // discards what zop_get_bars and a download print
  return stdout == nullptr;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz({data, size});
  return 0;
}

#ifndef ZOP_FUZZ
int main(int argc, char** argv) {
  int count = 0;
  LLVMFuzzerInitialize(&argc, &argv);
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      std::ifstream file(entry.path(), std::ios::binary);
      std::string bytes(std::istreambuf_iterator<char>(file), {});
      fuzz(std::vector<uint8_t>(bytes.begin(), bytes.end()));  // an exact size, for the sanitizer
      ++count;
    }
  }
  fprintf(stderr, "replayed %d inputs\n", count);
  return count > 0 ? 0 : 1;  // an empty corpus would test nothing
}
#endif
