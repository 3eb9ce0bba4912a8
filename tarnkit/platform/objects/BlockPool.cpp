#include "tarnkit/platform/objects/BlockPool.h"

#include <array>
#include <atomic>
#include <cassert>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>
#include <utility>

#include "tarnkit/platform/objects/HugePages.h"

namespace tarnkit {

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kPages = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)
constexpr bool kPages = false;
#else
constexpr bool kPages = true;
#endif
#else
constexpr bool kPages = true;
#endif

constexpr std::size_t kGranule = 8;
// One for each size of a block, and one for segments.
constexpr std::size_t kSegmentClass = BlockPool::kLargestBlock / kGranule + 1;
constexpr std::size_t kSizeClasses = kSegmentClass + 1;
constexpr std::size_t kPageSize = std::size_t{64} << 10;
// A fault of a usual page takes as long as making a node, and a graph touches all pages of a chunk.
constexpr std::size_t kChunkSize = detail::kHugePageSize;
constexpr std::size_t kPagesOfChunk = kChunkSize / kPageSize;

// A block that nobody uses.
struct FreeBlock {
  FreeBlock* next;
};

struct Heap;

// What is known of one page. Stands at the head of its chunk, not of the page: heads of pages would
// all fall into the same few sets of the cache. A line of its own each, since other threads write
// `remote`.
struct alignas(64) Page {
  FreeBlock* free = nullptr;
  char* fresh = nullptr;  // from here on no block was ever handed out
  char* end = nullptr;
  std::uint32_t used = 0;
  std::uint16_t blockSize = 0;
  bool isFull = false;  // and therefore in no list; noticed when the next block is asked for
  bool isKept = false;  // among those of the heap
  // Neighbours among the pages of the size that have room, or among the heap's empty pages.
  Page* next = nullptr;
  Page* previous = nullptr;
  // Blocks that other threads have released, and the next page that has such blocks.
  std::atomic<FreeBlock*> remote{nullptr};
  Page* nextRemote = nullptr;
};

struct Chunk {
  std::array<Page, kPagesOfChunk> pages;
  Heap* owner;
  Chunk* next = nullptr;
  Chunk* previous = nullptr;
  std::size_t emptyPages = kPagesOfChunk;

  explicit Chunk(Heap* heap) noexcept : owner(heap) {}
  char* memoryOf(const Page& page) noexcept {
    const auto index = static_cast<std::size_t>(&page - pages.data());
    return reinterpret_cast<char*>(this) + (index == 0 ? sizeof(Chunk) : index * kPageSize);
  }
  char* endOf(const Page& page) noexcept {
    const auto index = static_cast<std::size_t>(&page - pages.data());
    return reinterpret_cast<char*>(this) + (index + 1) * kPageSize;
  }
};
static_assert(BlockPool::kSegment <= UINT16_MAX && 2 * BlockPool::kSegment <= kPageSize);
static_assert(sizeof(Chunk) < kPageSize / 8 && sizeof(Chunk) % alignof(std::uint64_t) == 0);

Chunk& chunkOf(const void* address) noexcept {
  return *reinterpret_cast<Chunk*>(reinterpret_cast<std::uintptr_t>(address) & ~(kChunkSize - 1));
}

// A list through the elements themselves.
template <class Element>
struct List {
  Element* first = nullptr;

  void push(Element& element) noexcept {
    element.previous = nullptr;
    element.next = first;
    if (first) first->previous = &element;
    first = &element;
  }
  void remove(Element& element) noexcept {
    (element.previous ? element.previous->next : first) = element.next;
    if (element.next) element.next->previous = element.previous;
  }
};

// The pages of one thread; of a thread that has ended, they wait for the next one.
struct Heap {
  std::array<List<Page>, kSizeClasses> withRoom;
  List<Page> empty;
  List<Chunk> chunks;
  std::size_t emptyChunks = 0;
  // Pages that ran empty lately and wait for the next block of their size: whoever makes and drops
  // a few blocks again and again takes no page each time. One for each size would keep a chunk
  // each.
  std::array<Page*, 4> kept{};
  std::size_t oldestKept = 0;
  std::atomic<Page*> remotePages{nullptr};
  Heap* nextParked = nullptr;

  void* allocate(std::size_t sizeClass) {
    Page* const page = withRoom[sizeClass].first;
    void* const block = page ? take(*page) : nullptr;
    return block ? block : allocateFromNextPage(sizeClass);
  }

  void release(Page& page, void* block) noexcept {
    assert(page.used > 0 && page.fresh <= page.end);
    auto* const freed = ::new (block) FreeBlock{page.free};
    page.free = freed;
    if (page.isFull) {
      page.isFull = false;
      listOf(page).push(page);
    }
    if (--page.used == 0) pageRanEmpty(page);
  }

 private:
  List<Page>& listOf(const Page& page) noexcept {
    const bool isOfSegments = page.blockSize == BlockPool::kSegment;
    return withRoom[isOfSegments ? kSegmentClass : page.blockSize / kGranule];
  }
  // Null where the page has no room.
  static void* take(Page& page) noexcept {
    if (page.free) {
      ++page.used;
      return std::exchange(page.free, page.free->next);
    }
    if (page.fresh != page.end) {
      ++page.used;
      return std::exchange(page.fresh, page.fresh + page.blockSize);
    }
    return nullptr;
  }

  // Seldom needed, and out of line so that the common way saves no registers for it.
  [[gnu::noinline]] void* allocateFromNextPage(std::size_t sizeClass) {
    if (remotePages.load(std::memory_order_relaxed)) takeBackRemote();
    for (auto& list = withRoom[sizeClass];;) {
      Page* const page = list.first ? list.first : &takePage(sizeClass);
      if (void* const block = take(*page)) return block;
      list.remove(*page);
      page->isFull = true;
    }
  }

  void takeBackRemote() noexcept {
    Page* page = remotePages.exchange(nullptr, std::memory_order_acquire);
    while (page) {
      Page* const next = page->nextRemote;
      // Whoever releases the next one links the page anew: after its link was read here.
      FreeBlock* block = page->remote.exchange(nullptr, std::memory_order_acq_rel);
      // The last block may give the page back, so the page is not touched after it.
      while (block) release(*page, std::exchange(block, block->next));
      page = next;
    }
  }

  Page& takePage(std::size_t sizeClass) {
    if (!empty.first) addChunk();
    Page& page = *empty.first;
    empty.remove(page);
    Chunk& chunk = chunkOf(&page);
    assert(page.used == 0 && chunk.emptyPages > 0);
    if (chunk.emptyPages-- == kPagesOfChunk) --emptyChunks;
    page.blockSize = static_cast<std::uint16_t>(sizeClass == kSegmentClass ? BlockPool::kSegment
                                                                           : sizeClass * kGranule);
    startAnew(page);
    const auto room = static_cast<std::size_t>(chunk.endOf(page) - page.fresh);
    page.end = page.fresh + room / page.blockSize * page.blockSize;
    withRoom[sizeClass].push(page);
    return page;
  }

  static void startAnew(Page& page) noexcept {
    page.free = nullptr;
    page.fresh = chunkOf(&page).memoryOf(page);
  }

  [[gnu::noinline]] void pageRanEmpty(Page& page) noexcept {
    startAnew(page);
    if (page.isKept) return;
    page.isKept = true;
    Page* const oldest = std::exchange(kept[oldestKept], &page);
    oldestKept = (oldestKept + 1) % kept.size();
    if (oldest) letGo(*oldest);
  }

  void letGo(Page& page) noexcept {
    page.isKept = false;
    if (page.used != 0) return;
    listOf(page).remove(page);
    empty.push(page);
    Chunk& chunk = chunkOf(&page);
    assert(chunk.emptyPages < kPagesOfChunk);
    if (++chunk.emptyPages < kPagesOfChunk) return;
    // One chunk is kept, so that work at the edge of one does not take and give back all the time.
    if (emptyChunks == 0) {
      ++emptyChunks;
      return;
    }
    for (auto& gone : chunk.pages) empty.remove(gone);
    chunks.remove(chunk);
    chunk.~Chunk();
    ::operator delete (&chunk, std::align_val_t{kChunkSize});
  }

  void addChunk() {
    void* const memory = ::operator new (kChunkSize, std::align_val_t{kChunkSize});
    // Not the first one: many a program needs little of it.
    if (chunks.first) detail::adviseHugePages(memory, kChunkSize);
    auto& chunk = *::new (memory) Chunk(this);
    for (auto page = chunk.pages.rbegin(); page != chunk.pages.rend(); ++page) empty.push(*page);
    chunks.push(chunk);
    ++emptyChunks;
  }
};

constinit std::mutex parkedMutex;
constinit Heap* parkedHeaps = nullptr;

constinit thread_local Heap* heapOfThread = nullptr;

// Leaves the thread's heap to the next thread when the thread ends.
struct Parking {
  ~Parking() {
    Heap* const heap = std::exchange(heapOfThread, nullptr);
    if (!heap) return;
    const std::lock_guard lock(parkedMutex);
    heap->nextParked = std::exchange(parkedHeaps, heap);
  }
};

[[gnu::noinline]] Heap& takeHeap() {
  static thread_local Parking parking;
  static_cast<void>(parking);
  {
    const std::lock_guard lock(parkedMutex);
    heapOfThread = parkedHeaps;
    if (heapOfThread) parkedHeaps = heapOfThread->nextParked;
  }
  if (!heapOfThread) heapOfThread = new Heap;
  return *heapOfThread;
}

// The owner takes the blocks back when a page of its own has run full.
[[gnu::noinline]] void releaseRemotely(Heap& owner, Page& page, void* block) noexcept {
  FreeBlock* before = page.remote.load(std::memory_order_relaxed);
  auto* const freed = ::new (block) FreeBlock{before};
  while (!page.remote.compare_exchange_weak(before, freed, std::memory_order_acq_rel,
                                            std::memory_order_relaxed)) {
    freed->next = before;
  }
  if (before) return;  // whoever released the first one tells the owner
  Page* first = owner.remotePages.load(std::memory_order_relaxed);
  do {
    page.nextRemote = first;
  } while (!owner.remotePages.compare_exchange_weak(first, &page, std::memory_order_release,
                                                    std::memory_order_relaxed));
}

[[gnu::noinline]] void* allocateFromSystem(std::size_t size) {
  void* const block = std::malloc(size);
  if (!block) throw std::bad_alloc();
  return block;
}

Heap& threadHeap() { return heapOfThread ? *heapOfThread : takeHeap(); }

}  // namespace

bool BlockPool::usesPage(std::size_t size) noexcept { return kPages && size <= kLargestBlock; }

void* BlockPool::allocate(std::size_t size) {
  if (usesPage(size)) {
    return threadHeap().allocate(size == 0 ? 1 : (size + kGranule - 1) / kGranule);
  }
  return allocateFromSystem(size);
}

void BlockPool::release(void* block, std::size_t size) noexcept {
  if (!usesPage(size)) {
    std::free(block);
  } else if (block) {
    releaseFromPage(block);
  }
}

void* BlockPool::allocateSegment() {
  return kPages ? threadHeap().allocate(kSegmentClass) : allocateFromSystem(kSegment);
}

void BlockPool::releaseSegment(void* segment) noexcept {
  if (kPages && segment) {
    releaseFromPage(segment);
  } else {
    std::free(segment);
  }
}

BlockPool::Usage BlockPool::usageOfThread() noexcept {
  Usage usage;
  if (!heapOfThread) return usage;
  for (const Chunk* chunk = heapOfThread->chunks.first; chunk; chunk = chunk->next) {
    usage.held += kChunkSize;
    for (const Page& page : chunk->pages) usage.used += std::size_t{page.used} * page.blockSize;
  }
  return usage;
}

void BlockPool::releaseFromPage(void* block) noexcept {
  Chunk& chunk = chunkOf(block);
  const auto offset = reinterpret_cast<std::uintptr_t>(block) & (kChunkSize - 1);
  Page& page = chunk.pages[offset / kPageSize];
  if (chunk.owner == heapOfThread) {
    chunk.owner->release(page, block);
  } else {
    releaseRemotely(*chunk.owner, page, block);
  }
}

}  // namespace tarnkit
