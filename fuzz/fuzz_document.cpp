// Editor documents: any bytes either open as a document that can be saved, sent, checked, repaired
// and taken apart, or are refused with a reason.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "tarnkit/compare/HXDocumentRepair.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/platform/system/Log.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tarnkit;
  static const bool quiet = (Log::setSink([](std::string_view) {}), true);
  static_cast<void>(quiet);
  for (const std::int32_t codingType : {0, 3}) {
    const auto opened = HXDocumentFile::document({data, size}, codingType);
    if (!opened && opened.status().sentence().empty()) std::abort();
    if (!opened) continue;
    const auto& document = *opened;
    const auto again = HXDocumentFile::dataWithDocument(*document, codingType);
    if (!again || !HXDocumentFile::document(*again, codingType)) std::abort();
    if (!HXDocumentFile::deviceGraph(*document)) std::abort();
    HXDocumentRepair::repair(*document);
    HXCheckOptions fixable;
    fixable.fixableOnly = true;
    fixable.ignored = {HXFindingCode::imageAbsent};  // an image may have no picture to be stored
    if (HXDocumentCheck::check(*document, fixable).total() != 0) std::abort();
    const auto repaired = HXDocumentFile::dataWithDocument(*document, codingType);
    if (!repaired || !HXDocumentFile::document(*repaired, codingType)) std::abort();
    document->pruneInvalidConnections();
    for (const auto& node : document->subnodeGroup()->subnodes()) {
      document->subnodeGroup()->removeNode(node.get());
    }
  }
  return 0;
}
