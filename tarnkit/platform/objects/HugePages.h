#pragma once

#include <cstddef>

namespace tarnkit::detail {

/// How much memory a huge page is; a block that is aligned to it can be one.
constexpr std::size_t kHugePageSize = std::size_t{2} << 20;

/// Asks the system to give the block's memory in huge pages: where all of a large block is going to
/// be written, one fault then stands for 512. To be asked before the memory is touched. Does
/// nothing to a block too small for one; the system may refuse, or have none. From any thread.
void adviseHugePages(void* block, std::size_t size) noexcept;

}  // namespace tarnkit::detail
