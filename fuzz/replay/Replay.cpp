// Runs a fuzz target once over every file of the given folders, with any compiler. A folder without
// a single seed is a failure: it would look like a passed test.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool runSeed(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(stream)),
                          std::istreambuf_iterator<char>());
  if (!stream.is_open() || stream.bad()) {
    std::fprintf(stderr, "replay: %s: cannot be read\n", path.c_str());
    return false;
  }
  // An exact copy on the heap, so that AddressSanitizer sees a read past the end.
  const std::vector<std::uint8_t> exact(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(exact.data(), exact.size());
  return true;
}

bool runFolder(const std::filesystem::path& folder) {
  std::error_code error;
  std::size_t seeds = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    if (!entry.is_regular_file()) continue;
    if (!runSeed(entry.path())) return false;
    ++seeds;
  }
  if (error || seeds == 0) {
    std::fprintf(stderr, "replay: %s: no seeds there\n", folder.c_str());
    return false;
  }
  std::printf("%s: %zu seeds\n", folder.c_str(), seeds);
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 2) {
    std::fprintf(stderr, "usage: %s FOLDER...\n", arguments[0]);
    return 2;
  }
  bool good = true;
  for (int index = 1; index < count; ++index) good = runFolder(arguments[index]) && good;
  return good ? 0 : 1;
}
