#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tarnkit/platform/objects/Data.h"

namespace tarnkit::test {

/// A binary property list put together from raw objects, so that tests can lie in every place.
struct BinaryList {
  std::vector<std::string> objects;
  std::string header = "bplist00";
  unsigned offsetWidth = 2;
  unsigned referenceWidth = 1;
  std::uint64_t root = 0;
  std::vector<std::uint64_t> offsets{};  // instead of the true ones
  std::int64_t countError = 0;           // added to the count in the trailer
  std::int64_t tableError = 0;           // added to the table's place in the trailer
  std::string afterTable{};              // between table and trailer
  unsigned writtenOffsetWidth = 0;       // in the trailer, when not the true one
  unsigned writtenReferenceWidth = 0;

  static std::string number(std::uint64_t value, unsigned width) {
    std::string text;
    for (unsigned i = 0; i < width; ++i) {
      const unsigned shift = 8 * (width - 1 - i);
      text += static_cast<char>(shift < 64 ? value >> shift : 0);
    }
    return text;
  }

  std::string bytes() const {
    std::string file = header;
    std::vector<std::uint64_t> places;
    for (const auto& object : objects) {
      places.push_back(file.size());
      file += object;
    }
    const std::uint64_t table = file.size();
    for (const auto place : offsets.empty() ? places : offsets) file += number(place, offsetWidth);
    file += afterTable;
    file += std::string(6, '\0');
    file += static_cast<char>(writtenOffsetWidth ? writtenOffsetWidth : offsetWidth);
    file += static_cast<char>(writtenReferenceWidth ? writtenReferenceWidth : referenceWidth);
    const std::uint64_t count =
        (offsets.empty() ? objects : std::vector<std::string>(offsets.size())).size();
    file += number(count + static_cast<std::uint64_t>(countError), 8);
    file += number(root, 8);
    file += number(table + static_cast<std::uint64_t>(tableError), 8);
    return file;
  }
};

}  // namespace tarnkit::test
