#pragma once

#include <cstddef>

namespace tarnkit {

/// Memory for the many small blocks of which a graph consists: its objects, and the entries of
/// their collections; and for the segments of long runs of values, which an archive is written
/// from.
///
/// A graph is made and taken down node by node. A general allocator hands the memory of one that is
/// gone out again in an order of its own, so the next graph lies scattered and every visit to a
/// node misses the caches. Here the blocks of one size share a page, each page keeps its own free
/// list, and a page that ran empty starts anew: neighbours in time are neighbours in memory,
/// whatever was made and dropped before. A block has no header and is rounded up to eight bytes.
///
/// Safe from any thread: each thread has its pages, and a block that another one releases goes back
/// to its page without a lock. Both operations take constant time. Pages are taken from the system
/// and given back two mebibytes at a time; all but the first ones of a thread are huge pages where
/// the system has them. Under AddressSanitizer everything comes from the system's allocator, so
/// that no error hides in a page.
class BlockPool {
 public:
  /// Larger blocks come from the system's allocator.
  static constexpr std::size_t kLargestBlock = 512;

  /// At least `size` bytes, aligned to eight; throws std::bad_alloc.
  static void* allocate(std::size_t size);
  /// Gives back what `allocate` returned for the same size; null does nothing.
  static void release(void* block, std::size_t size) noexcept;

  /// A segment, aligned to eight; throws std::bad_alloc. What long runs of values are made of comes
  /// from the pages that graphs leave, and goes back to them.
  static constexpr std::size_t kSegment = std::size_t{32} << 10;
  static void* allocateSegment();
  static void releaseSegment(void* segment) noexcept;

  /// Whether a block of `size` bytes stands in a page; `releaseFromPage` is for those only, and
  /// needs no size.
  static bool usesPage(std::size_t size) noexcept;
  static void releaseFromPage(void* block) noexcept;

  /// For measuring: the bytes of the calling thread's pages, and those of them in blocks that are
  /// in use. Costs time linear in the pages.
  struct Usage {
    std::size_t held = 0;
    std::size_t used = 0;
  };
  static Usage usageOfThread() noexcept;
};

}  // namespace tarnkit
