#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/text/Symbol.h"

namespace tarnkit::bench {

/// The least that a graph of this shape can cost: plain shared objects with names, an index, weak
/// back references and connection lists in both directions; nothing announced, checked or archived.
class FloorGraph {
 public:
  explicit FloorGraph(std::int64_t nodeCount);
  ~FloorGraph();

 private:
  struct Document;
  std::unique_ptr<Document> document_;
};

/// A device graph as prepared values, and the loop that writes them with the library's
/// property-list writer: the least that writing those bytes can cost.
class FloorDeviceGraph {
 public:
  explicit FloorDeviceGraph(ByteSpan deviceGraph);
  std::vector<std::uint8_t> write() const;

 private:
  struct Value {
    enum class Kind { string, integer, real32, real64, boolean, data, reference } kind;
    std::string text;
    std::int64_t integer = 0;
    double real = 0;
    std::uint32_t target = 0;
  };
  struct Record {
    std::uint32_t id;
    bool isList;
    std::vector<std::uint32_t> keys;
    std::vector<Value> values;
  };
  std::string version_;
  std::uint32_t root_ = 0;
  std::vector<std::string> ids_;
  std::vector<std::string> keyTexts_;
  std::vector<std::unique_ptr<Symbol>> keys_;
  std::vector<Record> records_;
};

}  // namespace tarnkit::bench
