#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/platform/system/Result.h"

namespace tarnkit {

/// A JSON text as read: all of it checked, each value known by its index. Immutable.
///
/// For files that people write and that need not be trusted: a value knows where it stands, so that
/// whoever finds it wrong can say in which line. Strict (RFC 8259, UTF-8, one value and nothing
/// after it); a key that an object has twice is refused, since of two values one would be lost.
/// Texts without escapes and the digits of numbers stay in what was read, which must outlive the
/// tree. Linear in the text in time and memory, but for the keys of an object, which are sorted.
/// Nesting costs no stack; it may go `kMaximumDepth` deep. May be read from any thread.
///
/// It is the library's own, and not the host's JSON library, because that one tells neither lines
/// nor keys that stand twice, reads every number as a double, and would be the only one that
/// everybody who links the model had to have.
class JSONTree {
 public:
  using Index = std::uint32_t;
  static constexpr Index kNone = 0xFFFFFFFFU;
  static constexpr std::size_t kMaximumDepth = 512;
  /// In bytes.
  static constexpr std::size_t kMaximumSize = std::size_t{1} << 31;

  enum class Kind : std::uint8_t { null, boolean, number, string, array, object };
  /// What the kind is called in messages ("a number").
  static const char* nameOf(Kind kind) noexcept;

  /// A failure says in which line.
  static Result<JSONTree> read(std::string_view text);

  Index root() const noexcept { return 0; }
  Kind kind(Index value) const noexcept { return values_[value].kind; }
  bool boolean(Index value) const noexcept { return text(value).size() == 4; }
  /// The characters of a string, the digits of a number.
  std::string_view text(Index value) const noexcept { return values_[value].text; }
  /// The key under which the value stands; empty where it stands in no object.
  std::string_view key(Index value) const noexcept { return values_[value].key; }
  /// How many elements or members there are.
  std::uint32_t count(Index container) const noexcept { return values_[container].count; }

  /// The line in which the value begins, from 1. Costs the text before it.
  std::size_t line(Index value) const noexcept;

  /// The elements of an array or the members of an object, in the order of the text.
  class Children {
   public:
    class Iterator {
     public:
      Iterator(const JSONTree& tree, Index at) noexcept : tree_(&tree), at_(at) {}
      Index operator*() const noexcept { return at_; }
      Iterator& operator++() noexcept {
        at_ = tree_->values_[at_].end;
        return *this;
      }
      bool operator==(const Iterator& other) const noexcept { return at_ == other.at_; }

     private:
      const JSONTree* tree_;
      Index at_;
    };
    Children(const JSONTree& tree, Index container) noexcept : tree_(tree), container_(container) {}
    Iterator begin() const noexcept { return {tree_, container_ + 1}; }
    Iterator end() const noexcept { return {tree_, tree_.values_[container_].end}; }

   private:
    const JSONTree& tree_;
    Index container_;
  };
  Children children(Index container) const noexcept { return {*this, container}; }

 private:
  class Parser;
  struct Value {
    std::string_view key;
    std::string_view text;
    std::uint32_t position;  // in the text
    Index end;               // of what belongs to the value: the next one beside it
    std::uint32_t count;
    Kind kind;
  };

  JSONTree() = default;

  std::string_view source_;
  std::vector<Value> values_;
  // The texts that had escapes. Pieces never move.
  std::vector<std::unique_ptr<char[]>> unescaped_;
};

}  // namespace tarnkit
