#include "tools/tarnkit/DocumentInput.h"

#include <algorithm>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/platform/PropertyListReader.h"
#include "tools/tarnkit/Output.h"

namespace tarnkit::tool {

namespace {

// Only a document that keeps its unique keys has this key. Looking for its characters first saves
// reading most documents twice.
bool keepsUniqueKeys(ByteSpan bytes) {
  constexpr std::string_view kKey = "HXGroup.subnodesByUniqueKey";
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if (text.find(kKey) == std::string_view::npos) return false;
  PropertyList list;
  return PropertyListReader::read(bytes, list) && list.keyNamed(kKey) != PropertyList::kNoKey;
}

}  // namespace

DocumentInput openDocument(std::string_view what, const std::string& path, ByteSpan bytes,
                           std::optional<std::int32_t> codingType) {
  DocumentInput input;
  input.codingType = codingType               ? *codingType
                     : keepsUniqueKeys(bytes) ? HXCodingTypeEditorWithKeys
                                              : HXCodingTypeEditor;
  std::string error;
  input.document = HXDocumentFile::document(bytes, input.codingType, error);
  if (!input.document) failWithFile(what, path, error);
  return input;
}

DocumentInput openDocument(std::string_view what, const std::string& path,
                           std::optional<std::int32_t> codingType) {
  return openDocument(what, path, readFile(what, path), codingType);
}

}  // namespace tarnkit::tool
