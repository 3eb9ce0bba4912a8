#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "tarnkit/platform/propertylist/PropertyList.h"
#include "tarnkit/platform/propertylist/PropertyListWriter.h"

namespace tarnkit::test {

/// A copy of a property list in which one map's value was exchanged or left out.
class Tampering {
 public:
  using Index = PropertyListWriter::Index;

  explicit Tampering(const PropertyList& list) : list_(list) {}

  std::vector<std::uint8_t> without(Index map, std::uint32_t entry) { return write(map, entry, 0); }
  static constexpr int kReplacements = 8;
  std::vector<std::uint8_t> replaced(Index map, std::uint32_t entry, int replacement) {
    return write(map, entry, replacement + 1);
  }
  /// The value becomes a reference to that object of the archive.
  std::vector<std::uint8_t> pointedAt(Index map, std::uint32_t entry, std::uint32_t object) {
    object_ = object;
    return write(map, entry, kReplacements + 1);
  }

 private:
  std::vector<std::uint8_t> write(Index map, std::uint32_t entry, int change) {
    PropertyListWriter writer;
    for (Index i = 0; i < list_.count(); ++i) addOrReserve(writer, i);
    const Index replacement = change == 0 ? 0 : replacementValue(writer, change);
    for (Index i = 0; i < list_.count(); ++i) {
      const auto kind = list_.kind(i);
      if (kind == PropertyList::Kind::array) {
        const auto elements = list_.elements(i);
        std::copy(elements.begin(), elements.end(), writer.fillArray(i, elements.size()).begin());
      } else if (kind == PropertyList::Kind::map) {
        std::vector<Index> keys(list_.keys(i).begin(), list_.keys(i).end());
        std::vector<Index> values(list_.values(i).begin(), list_.values(i).end());
        if (i == map && change != 0) values[entry] = replacement;
        if (i == map && change == 0) {
          keys.erase(keys.begin() + entry);
          values.erase(values.begin() + entry);
        }
        std::copy(values.begin(), values.end(), writer.fillMap(i, keys).begin());
      }
    }
    return writer.finish(list_.root());
  }

  void addOrReserve(PropertyListWriter& writer, Index i) {
    Index added = 0;
    switch (list_.kind(i)) {
      case PropertyList::Kind::boolean:
        added = writer.addBool(list_.boolean(i));
        break;
      case PropertyList::Kind::integer:
        added = writer.addInt(list_.integer(i));
        break;
      case PropertyList::Kind::real32:
        added = writer.addReal32(static_cast<float>(list_.real(i)));
        break;
      case PropertyList::Kind::real64:
        added = writer.addReal64(list_.real(i));
        break;
      case PropertyList::Kind::data:
        added = writer.addData(list_.data(i));
        break;
      case PropertyList::Kind::string:
        added = writer.addString(list_.string(i));
        break;
      case PropertyList::Kind::uid:
        added = writer.addUID(static_cast<std::uint32_t>(list_.uid(i)));
        break;
      default:
        added = writer.reserve();
    }
    ASSERT_EQ(added, i) << "the copy must number its objects as the list does";
  }

  Index replacementValue(PropertyListWriter& writer, int change) {
    switch (change) {
      case 1:
        return writer.addString("tampered");
      case 2:
        return writer.addInt(-7);
      case 3:
        return writer.addReal64(1e300);
      case 4:
        return writer.addBool(true);
      case 5:
        return writer.addArray({});
      case 6:
        return writer.addUID(0);
      case 7:
        return writer.addUID(1);  // the document itself
      case kReplacements + 1:
        return writer.addUID(object_);
      default: {
        const auto objects = list_.count(list_.valueForKey(list_.root(), "$objects"));
        return writer.addUID(static_cast<std::uint32_t>(random_() % (objects + 2)));
      }
    }
  }

  const PropertyList& list_;
  std::mt19937 random_{7};
  std::uint32_t object_ = 0;
};

}  // namespace tarnkit::test
