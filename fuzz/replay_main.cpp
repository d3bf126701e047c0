// Runs a fuzz target's entry point over files, so that every seed and every
// kept crash input is also an ordinary test in builds without libFuzzer.
// Arguments are files or folders (each file in a folder is one input).
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
// Targets that set something up once (a quiet report handler) define it.
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int *argc, char ***argv);

namespace {
int runFile(const std::filesystem::path &p) {
  std::ifstream in(p, std::ios::binary);
  std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), {});
  LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  return 1;
}
}  // namespace

int main(int argc, char **argv) {
  if (LLVMFuzzerInitialize != nullptr) LLVMFuzzerInitialize(&argc, &argv);
  int n = 0;
  for (int i = 1; i < argc; ++i) {
    std::filesystem::path p(argv[i]);
    std::error_code ec;
    if (std::filesystem::is_directory(p, ec)) {
      for (const auto &e : std::filesystem::directory_iterator(p))
        if (e.is_regular_file()) n += runFile(e.path());
    } else if (std::filesystem::exists(p, ec)) {
      n += runFile(p);
    }
  }
  std::printf("replayed %d inputs\n", n);
  return 0;
}
