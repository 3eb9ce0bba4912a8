#include "tarnkit/math/TreeMemory.h"

#include <sys/mman.h>

#include "tarnkit/math/MXFunctionExpression.h"

namespace tarnkit::detail {

namespace {
// Most of the time that a very long tree takes to build would be the system's, which hands memory
// out page by page.
constexpr std::size_t kManyBytes = std::size_t{8} << 20;
[[gnu::noinline]] void askForLargePages([[maybe_unused]] void* memory,
                                        [[maybe_unused]] std::size_t bytes) noexcept {
#ifdef MADV_HUGEPAGE
  constexpr std::size_t kLargePage = std::size_t{2} << 20;
  const auto begin = reinterpret_cast<std::uintptr_t>(memory);
  const auto first = (begin + kLargePage - 1) / kLargePage * kLargePage;
  const auto last = (begin + bytes) / kLargePage * kLargePage;
  ::madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#endif
}
}  // namespace

static_assert(sizeof(MXFunctionExpression) % alignof(ExpressionTree) == 0);

TreeMemory::TreeMemory(std::size_t nodes, std::size_t text)
    : object_(MXFunctionExpression::allocate(
          sizeof(MXFunctionExpression),
          sizeof(ExpressionTree) + nodes * sizeof(ExpressionNode) + text)),
      bytes_(nodes * sizeof(ExpressionNode) + text) {
  if (bytes_ >= kManyBytes) askForLargePages(object_, bytes_);
}

TreeMemory::~TreeMemory() {
  if (object_) MXFunctionExpression::deallocate(object_);
}

ExpressionNode* TreeMemory::nodes() const noexcept {
  if (!object_) return nullptr;
  auto* const tree = static_cast<char*>(object_) + sizeof(MXFunctionExpression);
  return reinterpret_cast<ExpressionNode*>(tree + sizeof(ExpressionTree));
}

}  // namespace tarnkit::detail
