// Editor documents: any bytes either open as a document that can be saved, sent and taken apart, or
// are refused with a reason.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/platform/system/Log.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tarnkit;
  static const bool quiet = (Log::setSink([](std::string_view) {}), true);
  static_cast<void>(quiet);
  for (const std::int32_t codingType : {0, 3}) {
    std::string error;
    const auto document = HXDocumentFile::document({data, size}, codingType, error);
    if (static_cast<bool>(document) == !error.empty()) std::abort();
    if (!document) continue;
    const auto again = HXDocumentFile::dataWithDocument(*document, codingType, error);
    if (!HXDocumentFile::document(again, codingType, error)) std::abort();
    HXDocumentFile::deviceGraph(*document);
    document->pruneInvalidConnections();
    for (const auto& node : document->subnodeGroup()->subnodes()) {
      document->subnodeGroup()->removeNode(node.get());
    }
  }
  return 0;
}
