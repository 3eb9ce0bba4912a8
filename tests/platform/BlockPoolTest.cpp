#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "tarnkit/platform/collections/IdentityTable.h"
#include "tarnkit/platform/objects/BlockPool.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit::test {

namespace {

struct Block {
  unsigned char* bytes;
  std::size_t size;
  unsigned char mark;

  static Block make(std::size_t size, unsigned char mark) {
    void* const memory =
        size == BlockPool::kSegment ? BlockPool::allocateSegment() : BlockPool::allocate(size);
    auto* const bytes = static_cast<unsigned char*>(memory);
    std::memset(bytes, mark, size);
    return {bytes, size, mark};
  }
  // Whether nobody else wrote to it, and gives it back.
  bool release() const {
    bool isIntact = reinterpret_cast<std::uintptr_t>(bytes) % 8 == 0;
    for (std::size_t i = 0; i < size; ++i) isIntact = isIntact && bytes[i] == mark;
    if (size == BlockPool::kSegment) {
      BlockPool::releaseSegment(bytes);
    } else {
      BlockPool::release(bytes, size);
    }
    return isIntact;
  }
};

std::size_t usedNow() { return BlockPool::usageOfThread().used; }

}  // namespace

TEST(BlockPoolTest, BlocksOfAllSizesLiveSideBySideInAnyOrder) {
  const auto before = usedNow();
  std::mt19937 random(7);
  std::vector<Block> blocks;
  for (int step = 0; step < 200000; ++step) {
    // Waves of growth and decline, so that pages fill, run empty and are given back.
    const bool grows = random() % 100 < (step / 20000 % 2 == 0 ? 70U : 30U);
    if (grows || blocks.empty()) {
      const std::size_t size = random() % 200 == 0 ? BlockPool::kSegment : random() % 600;
      blocks.push_back(Block::make(size, static_cast<unsigned char>(step)));
    } else {
      std::swap(blocks[random() % blocks.size()], blocks.back());
      ASSERT_TRUE(blocks.back().release());
      blocks.pop_back();
    }
  }
  for (const Block& block : blocks) ASSERT_TRUE(block.release());
  EXPECT_LE(usedNow(), before);
}

TEST(BlockPoolTest, WhatRanEmptyIsGivenBack) {
  std::vector<Block> blocks;
  for (std::size_t i = 0; i < 200000; ++i) {
    // Sizes that come one after the other, so that their last pages stand in many chunks.
    blocks.push_back(Block::make(8 + i / 4000 * 8, 1));
  }
  const auto full = BlockPool::usageOfThread().held;
  for (const Block& block : blocks) ASSERT_TRUE(block.release());
  const auto empty = BlockPool::usageOfThread().held;
  if (BlockPool::usesPage(64)) {
    EXPECT_GT(full, 40'000'000U);
    EXPECT_LT(empty, 16'000'000U);
  } else {
    EXPECT_EQ(full, 0U) << "a sanitizer watches every block";
  }
}

TEST(BlockPoolTest, BlocksMayBeReleasedByAnotherThread) {
  const auto before = usedNow();
  for (int round = 0; round < 20; ++round) {
    std::vector<Block> blocks;
    for (int i = 0; i < 4000; ++i) {
      blocks.push_back(Block::make(16 + static_cast<std::size_t>(i % 20) * 8, 3));
    }
    for (int i = 0; i < 40; ++i) blocks.push_back(Block::make(BlockPool::kSegment, 5));
    std::vector<std::thread> threads;
    std::vector<int> broken(4);
    for (std::size_t t = 0; t < broken.size(); ++t) {
      threads.emplace_back([&blocks, &broken, t] {
        for (std::size_t i = t; i < blocks.size(); i += broken.size()) {
          if (i % 3 == 0) continue;
          if (!blocks[i].release()) ++broken[t];
          const auto own = Block::make(40, static_cast<unsigned char>(t));
          if (!own.release()) ++broken[t];
        }
      });
    }
    for (auto& thread : threads) thread.join();
    for (std::size_t i = 0; i < blocks.size(); i += 3) ASSERT_TRUE(blocks[i].release());
    EXPECT_EQ(broken, std::vector<int>(4));
  }
  // What the others released comes back when room is looked for.
  std::vector<Block> more;
  for (int i = 0; i < 5000; ++i)
    more.push_back(Block::make(16 + static_cast<std::size_t>(i % 20) * 8, 4));
  for (const Block& block : more) ASSERT_TRUE(block.release());
  EXPECT_LT(usedNow(), before + 4000 * 200 + 40 * BlockPool::kSegment)
      << "twenty rounds would have left twenty times that";
}

TEST(BlockPoolTest, ABlockOutlivesTheThreadThatMadeIt) {
  for (int round = 0; round < 50; ++round) {
    std::vector<String> texts;
    std::thread([&texts] {
      for (int i = 0; i < 1000; ++i) texts.emplace_back(std::to_string(i));
    }).join();
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(texts[static_cast<std::size_t>(i)], std::to_string(i));
  }
}

TEST(IdentityTableTest, EveryAddressKeepsItsNumber) {
  detail::IdentityTable table;
  std::mt19937_64 random(3);
  std::vector<const void*> addresses;
  for (std::uintptr_t i = 0; i < 20000; ++i) {
    // Runs of neighbours, far apart.
    const auto region = i / 500 * 0x7F3AB1C9000ULL;
    addresses.push_back(reinterpret_cast<const void*>(region + 0x10000 + i % 500 * 16));
  }
  std::shuffle(addresses.begin(), addresses.end(), random);
  EXPECT_EQ(table.find(addresses[0]), detail::IdentityTable::kNone);
  for (std::uint32_t i = 0; i < addresses.size(); ++i) table.set(addresses[i], i);
  table.set(addresses[5], 77777);
  for (std::uint32_t i = 0; i < addresses.size(); ++i) {
    ASSERT_EQ(table.find(addresses[i]), i == 5 ? 77777 : i);
  }
  EXPECT_EQ(table.find(static_cast<const char*>(addresses[0]) + 0x100000),
            detail::IdentityTable::kNone);
  table.clear();
  EXPECT_EQ(table.find(addresses[0]), detail::IdentityTable::kNone);
}

}  // namespace tarnkit::test
