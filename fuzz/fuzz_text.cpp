// Documents as text: any text either makes a document, whose own text says the same, or is refused
// with a reason.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/platform/system/Log.h"
#include "tarnkit/text/HXTextFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tarnkit;
  static const bool quiet = (Log::setSink([](std::string_view) {}), true);
  static_cast<void>(quiet);
  const auto opened = HXTextFile::document({reinterpret_cast<const char*>(data), size});
  if (!opened) {
    if (opened.status().sentence().empty()) std::abort();
    return 0;
  }
  const auto text = HXTextFile::textWithDocument(**opened);
  if (!text) std::abort();
  const auto again = HXTextFile::document(*text);
  if (!again) std::abort();
  const auto file = HXDocumentFile::dataWithDocument(**opened, HXCodingTypeEditorWithKeys);
  if (!file) std::abort();
  // What opening a document mends, it mends of either form alike.
  const auto reopened = HXDocumentFile::document(*file, HXCodingTypeEditorWithKeys);
  if (!reopened) std::abort();
  const auto fromText = HXDocumentFile::dataWithDocument(**again, HXCodingTypeEditorWithKeys);
  const auto fromFile = HXDocumentFile::dataWithDocument(**reopened, HXCodingTypeEditorWithKeys);
  if (!fromText || !fromFile || *fromText != *fromFile) std::abort();
  return 0;
}
