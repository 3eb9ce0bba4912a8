#include "tarnkit/platform/objects/HugePages.h"

#include <sys/mman.h>

#include <cstdint>

namespace tarnkit::detail {

void adviseHugePages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t size) noexcept {
#ifdef MADV_HUGEPAGE
  const auto start = reinterpret_cast<std::uintptr_t>(block);
  const std::size_t skipped = (kHugePageSize - start % kHugePageSize) % kHugePageSize;
  if (size < skipped) return;
  const std::size_t whole = (size - skipped) / kHugePageSize * kHugePageSize;
  if (whole != 0) ::madvise(static_cast<char*>(block) + skipped, whole, MADV_HUGEPAGE);
#endif
}

}  // namespace tarnkit::detail
