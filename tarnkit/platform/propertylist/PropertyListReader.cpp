#include "tarnkit/platform/propertylist/PropertyListReader.h"

#include <cstring>
#include <exception>

#include "tarnkit/platform/propertylist/PropertyListBuilder.h"
#include "tarnkit/platform/propertylist/PropertyListForms.h"

namespace tarnkit {

bool PropertyListReader::isBinary(ByteSpan bytes) noexcept {
  return bytes.size() >= 6 && std::memcmp(bytes.data(), "bplist", 6) == 0;
}

bool PropertyListReader::read(ByteSpan bytes, PropertyList& into, std::string* error) {
  std::string reason;
  bool done = false;
  try {
    detail::PropertyListBuilder builder(into);
    builder.setFileSize(bytes.size());
    if (bytes.size() > kMaximumFileSize) {
      reason = "it is larger than 2 GiB";
    } else if (isBinary(bytes)) {
      done = detail::parseBinaryPropertyList(bytes, builder, reason) && builder.finish(reason);
    } else {
      done = detail::parseXMLPropertyList(bytes, builder, reason) && builder.finish(reason);
    }
  } catch (const std::exception&) {  // the memory ran out
    reason = "there is not enough memory to read it";
  }
  if (done) return true;
  into = PropertyList();
  if (error) *error = "not a readable property list: " + reason;
  return false;
}

}  // namespace tarnkit
