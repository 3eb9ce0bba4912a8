// Property lists of both forms: whatever is read must hold together, and what the readers of
// archives make of it must end.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "tarnkit/archive/HXArchiveReader.h"
#include "tarnkit/archive/HXArchiveText.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tarnkit/platform/text/UTF8.h"

namespace {

using tarnkit::PropertyList;
using Kind = PropertyList::Kind;

void require(bool condition) {
  if (!condition) std::abort();
}

void checkText(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const auto point = tarnkit::detail::codePointAt(text, at);
    require(point.value != 0xFFFD || point.size == 3);
    at += point.size;
  }
}

// Reads every byte, for the sanitizer to see.
void checkScalar(const PropertyList& list, PropertyList::Index value) {
  switch (list.kind(value)) {
    case Kind::boolean:
      return require(list.boolean(value) == (list.integer(value) == 1));
    case Kind::integer:
    case Kind::unsignedInteger: {
      volatile std::int64_t seen = list.integer(value);
      return static_cast<void>(seen);
    }
    case Kind::wideInteger:
      return require(std::abs(list.real(value)) >= 0x1p63);
    case Kind::real32:
    case Kind::real64:
    case Kind::date: {
      volatile double seen = list.real(value);
      return static_cast<void>(seen);
    }
    case Kind::uid: {
      volatile std::uint64_t seen = list.uid(value);
      return static_cast<void>(seen);
    }
    case Kind::data: {
      const std::vector<std::uint8_t> copy(list.data(value).begin(), list.data(value).end());
      return require(copy.size() == list.count(value));
    }
    case Kind::string:
      return checkText(list.string(value));
    default:
      return;
  }
}

void check(const PropertyList& list) {
  require(list.root() < list.count());
  for (PropertyList::Index value = 0; value < list.count(); ++value) {
    checkScalar(list, value);
    if (list.kind(value) != Kind::array && list.kind(value) != Kind::map) continue;
    for (const auto child : list.elements(value)) require(child < list.count());
    if (list.kind(value) != Kind::map) continue;
    for (const auto child : list.values(value)) require(child < list.count());
    for (const auto key : list.keys(value)) {
      require(list.keyNamed(list.string(key)) == list.keyOf(key));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const tarnkit::ByteSpan bytes(data, size);
  const auto list = tarnkit::PropertyListReader::read(bytes);
  if (!list) {
    require(!list.status().sentence().empty());
    return 0;
  }
  check(*list);
  tarnkit::HXArchiveReader archive;
  if (archive.open(bytes)) {
    std::size_t length = 0;
    tarnkit::HXArchiveText::writeIndented(archive,
                                          [&](std::string_view text) { length += text.size(); });
    tarnkit::HXArchiveText::writeJSON(archive,
                                      [&](std::string_view text) { length += text.size(); });
    require(length > 0);
  }
  return 0;
}
