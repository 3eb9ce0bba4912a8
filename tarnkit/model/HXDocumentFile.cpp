#include "tarnkit/model/HXDocumentFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <system_error>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/archive/HXKeyedArchiver.h"
#include "tarnkit/model/HXModel.h"
#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tarnkit/platform/coding/StandardKeyedUnarchiver.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tarnkit/platform/system/File.h"

namespace tarnkit {

namespace {

bool checkCodingType(std::int32_t codingType, std::string& error) {
  if (isEditorCodingType(codingType)) return true;
  error = fmt::format("coding type {} is not an editor's (0, 1 or 3)", codingType);
  return false;
}

// The keys of a document that was read are what the document says.
bool canNameFile(const String& key) {
  return !key.view().empty() && key.view().find('/') == std::string_view::npos &&
         key.view().find('\0') == std::string_view::npos;
}

}  // namespace

Ref<HXDocument> HXDocumentFile::document(ByteSpan bytes, std::int32_t codingType,
                                         std::string& error) {
  PropertyList list;
  if (!checkCodingType(codingType, error) || !PropertyListReader::read(bytes, list, &error)) {
    return nullptr;
  }
  return document(list, codingType, error);
}

Ref<HXDocument> HXDocumentFile::document(const PropertyList& list, std::int32_t codingType,
                                         std::string& error) {
  if (!checkCodingType(codingType, error)) return nullptr;
  registerModelClasses();
  const auto root = StandardKeyedUnarchiver::unarchive(list, codingType, &error);
  if (!root) return nullptr;
  auto document = as<HXDocument>(root);
  if (!document) error = fmt::format("the root is a {}, not a document", root->isa().name());
  return document;
}

// Only a group of a document that keeps its unique keys has this key; every document has a group.
std::int32_t HXDocumentFile::codingTypeOf(const PropertyList& list) {
  return list.keyNamed("HXGroup.subnodesByUniqueKey") == PropertyList::kNoKey
             ? HXCodingTypeEditor
             : HXCodingTypeEditorWithKeys;
}

std::vector<std::uint8_t> HXDocumentFile::dataWithDocument(const HXDocument& document,
                                                           std::int32_t codingType,
                                                           std::string& error) {
  if (!checkCodingType(codingType, error)) return {};
  const auto data = StandardKeyedArchiver::archivedData(&document, codingType, &error);
  return data ? std::move(data->mutableBytes()) : std::vector<std::uint8_t>();
}

std::vector<std::uint8_t> HXDocumentFile::deviceGraph(const HXDocument& document) {
  const auto data = make<Data>();
  HXKeyedArchiver archiver(data);
  archiver.setCodingType(HXCodingTypeDevice);
  archiver.encodeRootObject(&document);
  archiver.finishEncoding();
  return std::move(data->mutableBytes());
}

Ref<HXDocument> HXDocumentFile::open(const std::string& path, std::int32_t codingType,
                                     std::string& error) {
  std::vector<std::uint8_t> bytes;
  if (!File::read(path, bytes, &error)) return nullptr;
  auto opened = document(bytes, codingType, error);
  if (!opened) error = fmt::format("{}: {}", path, error);
  return opened;
}

bool HXDocumentFile::save(const HXDocument& document, const std::string& path,
                          std::int32_t codingType, std::string& error) {
  const auto bytes = dataWithDocument(document, codingType, error);
  return !bytes.empty() && File::write(path, bytes, &error);
}

bool HXDocumentFile::send(const HXDocument& document, const std::string& path, std::string& error) {
  const auto bytes = deviceGraph(document);
  if (bytes.empty()) {
    error = fmt::format("{}: the device graph could not be written", path);
    return false;
  }
  return File::write(path, bytes, &error);
}

bool HXDocumentFile::sendImages(const HXDocument& document, const std::string& directory,
                                std::vector<String>& keys, std::string& error) {
  keys.clear();
  for (const auto& entry : document.imageStore()->imageEntriesInForce()) {
    keys.push_back(entry.key);
    if (canNameFile(entry.key)) continue;
    error = fmt::format("{}: the image key \"{}\" cannot name a file", directory, entry.key.view());
    return false;
  }
  std::error_code failure;
  std::filesystem::create_directories(directory, failure);
  if (failure) {
    error = fmt::format("{}: {}", directory, failure.message());
    return false;
  }
  std::sort(keys.begin(), keys.end());
  const auto archives = document.imageStore()->dataRepresentationsOfAllEntries();
  if (archives.size() != keys.size()) {
    error = fmt::format("{}: an image could not be encoded", directory);
    return false;
  }
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const auto path = fmt::format("{}/{}.plist", directory, keys[i].view());
    if (!File::write(path, archives[i]->bytes(), &error)) return false;
  }
  return true;
}

}  // namespace tarnkit
