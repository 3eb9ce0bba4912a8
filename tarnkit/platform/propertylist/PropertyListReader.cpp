#include "tarnkit/platform/propertylist/PropertyListReader.h"

#include <cstring>
#include <exception>
#include <utility>

#include "tarnkit/platform/propertylist/PropertyListBuilder.h"
#include "tarnkit/platform/propertylist/PropertyListForms.h"

namespace tarnkit {

bool PropertyListReader::isBinary(ByteSpan bytes) noexcept {
  return bytes.size() >= 6 && std::memcmp(bytes.data(), "bplist", 6) == 0;
}

Result<PropertyList> PropertyListReader::read(ByteSpan bytes) {
  constexpr const char* kContext = "not a readable property list";
  try {
    if (bytes.size() > kMaximumFileSize) {
      return Status::failure(StatusCode::tooLarge, "it is larger than 2 GiB").within(kContext);
    }
    PropertyList list;
    detail::PropertyListBuilder builder(list);
    builder.setFileSize(bytes.size());
    auto status = isBinary(bytes) ? detail::parseBinaryPropertyList(bytes, builder)
                                  : detail::parseXMLPropertyList(bytes, builder);
    if (status) status = builder.finish();
    if (!status) return std::move(status).within(kContext);
    return list;
  } catch (const std::exception&) {  // the memory ran out
    return Status::failure(StatusCode::outOfMemory, "there is not enough memory to read it")
        .within(kContext);
  }
}

}  // namespace tarnkit
