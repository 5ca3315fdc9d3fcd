// Drives a target without a fuzzer: plays the files that are named, each once.
#include <cstdio>

#include "fuzz/fuzz.h"

int main(int argc, char** argv) {
  assert(argc > 1);
  for (int i = 1; i < argc; ++i) {
    uint8_t bytes[0x1000];
    FILE* file = std::fopen(argv[i], "rb");
    assert(file != nullptr);
    LLVMFuzzerTestOneInput(bytes, std::fread(bytes, 1, sizeof bytes, file));
    std::fclose(file);
  }
}
