// Sessions of edits that are undone and redone: after every step the document must be byte for byte
// what it was at that point.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "fuzz/model/HistorySession.h"
#include "tarnkit/platform/system/Log.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const bool quiet = !std::getenv("TARNKIT_FUZZ_LOG");
  const auto earlier = quiet ? tarnkit::Log::setSink([](std::string_view) {}) : nullptr;
  const auto faults = tarnkit::fuzz::faultsOfHistorySession(data, size);
  if (quiet) tarnkit::Log::setSink(earlier);
  for (const auto& fault : faults) std::fprintf(stderr, "%s\n", fault.c_str());
  if (!faults.empty()) std::abort();
  return 0;
}
