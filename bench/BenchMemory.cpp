#include "BenchMemory.h"

#include <malloc.h>

#include <cstddef>
#include <cstdlib>

#include "tarnkit/platform/objects/BlockPool.h"

// The allocator's own entry points are wrapped, so that every byte counts, whoever asks for it.
extern "C" {
void* __libc_malloc(std::size_t size);
void __libc_free(void* memory);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

std::int64_t live = 0;
std::int64_t peak = 0;

// What an allocation costs: its usable size and the allocator's header.
void count(void* memory, int direction) {
  if (!memory) return;
  live += direction * static_cast<std::int64_t>(malloc_usable_size(memory) + sizeof(std::size_t));
  if (live > peak) peak = live;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
  void* memory = __libc_malloc(size);
  count(memory, 1);
  return memory;
}
void free(void* memory) {
  count(memory, -1);
  __libc_free(memory);
}
void* calloc(std::size_t items, std::size_t size) {
  void* memory = __libc_calloc(items, size);
  count(memory, 1);
  return memory;
}
void* realloc(void* old, std::size_t size) {
  count(old, -1);
  void* memory = __libc_realloc(old, size);
  count(memory ? memory : old, 1);
  return memory;
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  void* memory = __libc_memalign(alignment, size);
  count(memory, 1);
  return memory;
}
int posix_memalign(void** result, std::size_t alignment, std::size_t size) {
  *result = __libc_memalign(alignment, size);
  count(*result, 1);
  return *result ? 0 : 12;
}

}  // extern "C"

namespace tarnkit::bench {

namespace {

// Of a page of small blocks, only the blocks in use count, as of the system's heap.
std::int64_t unusedInPages() {
  const auto usage = BlockPool::usageOfThread();
  return static_cast<std::int64_t>(usage.held - usage.used);
}

}  // namespace

std::int64_t liveBytes() { return live - unusedInPages(); }
std::int64_t peakBytes() { return peak - unusedInPages(); }
void resetPeak() { peak = live; }

}  // namespace tarnkit::bench
