#include "tarnkit/model/HXDocumentFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/archive/HXKeyedArchiver.h"
#include "tarnkit/model/HXDecodedLosses.h"
#include "tarnkit/model/HXModel.h"
#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tarnkit/platform/coding/StandardKeyedUnarchiver.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tarnkit/platform/system/File.h"

namespace tarnkit {

namespace {

constexpr std::string_view kNoDeviceGraph = "the device graph could not be made";

Status checkCodingType(std::int32_t codingType) {
  if (isEditorCodingType(codingType)) return {};
  return Status::failure(StatusCode::refused,
                         fmt::format("coding type {} is not an editor's (0, 1 or 3)", codingType));
}

// The images that `encode` makes a file of, in ascending order of their keys; null leaves one out.
// All are made before the first is written. The keys of a document that was read are what the
// document says.
template <class Encode>
Result<std::vector<String>> writeImages(const HXDocument& document, const std::string& directory,
                                        std::string_view ending, HXUnnamableImages unnamable,
                                        Encode encode) {
  const auto& entries = document.imageStore()->imageEntriesInForce();
  std::vector<String> keys;
  for (const auto& entry : entries) {
    if (!HXImageStoreEntry::canNameFile(entry.key)) {
      if (unnamable == HXUnnamableImages::leaveOut) continue;
      return Status::failure(
          StatusCode::refused,
          fmt::format("the image key \"{}\" cannot name a file", entry.key.view()), directory);
    }
    keys.push_back(entry.key);
  }
  if (auto status = File::makeDirectory(directory); !status) return status;
  std::sort(keys.begin(), keys.end());
  std::vector<std::pair<String, Ref<const Data>>> files;
  for (const auto& key : keys) {
    auto data = encode(**entries.find(key));
    if (!data) {
      return std::move(data)
          .status()
          .within(fmt::format("the image {} could not be encoded", key.view()))
          .at(directory);
    }
    if (*data) files.emplace_back(key, *std::move(data));
  }
  std::vector<String> written;
  for (const auto& file : files) {
    const auto path = fmt::format("{}/{}.{}", directory, file.first.view(), ending);
    if (auto status = File::write(path, file.second->bytes()); !status) return status;
    written.push_back(file.first);
  }
  return written;
}

}  // namespace

Result<Ref<HXDocument>> HXDocumentFile::document(ByteSpan bytes, std::int32_t codingType,
                                                 std::vector<HXNodeLosses>* losses) {
  if (auto status = checkCodingType(codingType); !status) return status;
  auto list = PropertyListReader::read(bytes);
  if (!list) return std::move(list).status();
  return document(*list, codingType, losses);
}

Result<Ref<HXDocument>> HXDocumentFile::document(const PropertyList& list, std::int32_t codingType,
                                                 std::vector<HXNodeLosses>* losses) {
  if (auto status = checkCodingType(codingType); !status) return status;
  registerModelClasses();
  detail::DecodedLosses gathered;
  auto root = StandardKeyedUnarchiver::unarchive(list, codingType);
  if (!root) return std::move(root).status();
  auto told = gathered.tell();
  if (losses) *losses = std::move(told);
  if (auto document = as<HXDocument>(*root)) return document;
  return Status::failure(StatusCode::unsupported,
                         fmt::format("the root is a {}, not a document", (*root)->isa().name()));
}

// Only a group of a document that keeps its unique keys has this key; every document has a group.
std::int32_t HXDocumentFile::codingTypeOf(const PropertyList& list) {
  return list.keyNamed("HXGroup.subnodesByUniqueKey") == PropertyList::kNoKey
             ? HXCodingTypeEditor
             : HXCodingTypeEditorWithKeys;
}

Result<std::vector<std::uint8_t>> HXDocumentFile::dataWithDocument(const HXDocument& document,
                                                                   std::int32_t codingType) {
  if (auto status = checkCodingType(codingType); !status) return status;
  auto data = StandardKeyedArchiver::archivedData(&document, codingType);
  if (!data) return std::move(data).status();
  return std::move(data->mutableBytes());
}

Result<std::vector<std::uint8_t>> HXDocumentFile::deviceGraph(const HXDocument& document) {
  auto data = HXKeyedArchiver::dataWithRootObject(&document, HXCodingTypeDevice);
  if (!data) return std::move(data).status().within(kNoDeviceGraph);
  return std::move(data->mutableBytes());
}

Result<Ref<HXDocument>> HXDocumentFile::open(const std::string& path, std::int32_t codingType,
                                             std::vector<HXNodeLosses>* losses) {
  auto bytes = File::read(path);
  if (!bytes) return std::move(bytes).status();
  return document(*bytes, codingType, losses).at(path);
}

Status HXDocumentFile::save(const HXDocument& document, const std::string& path,
                            std::int32_t codingType) {
  if (auto status = checkCodingType(codingType); !status) return status;
  return StandardKeyedArchiver::writeArchive(&document, codingType, path);
}

Status HXDocumentFile::send(const HXDocument& document, const std::string& path) {
  auto status = HXKeyedArchiver::writeArchive(&document, HXCodingTypeDevice, path);
  if (status || !status.path().empty()) return status;
  return std::move(status).within(kNoDeviceGraph).at(path);
}

Result<std::vector<String>> HXDocumentFile::sendImages(const HXDocument& document,
                                                       const std::string& directory) {
  return writeImages(document, directory, "plist", HXUnnamableImages::refuse,
                     [](const HXImageStoreEntry& entry) {
                       return HXImageStore::dataRepresentationOfEntry(entry);
                     });
}

Result<std::vector<String>> HXDocumentFile::saveImages(const HXDocument& document,
                                                       const std::string& directory,
                                                       HXUnnamableImages unnamable) {
  return writeImages(document, directory, "png", unnamable,
                     [](const HXImageStoreEntry& entry) -> Result<Ref<const Data>> {
                       const auto& image = entry.image();
                       if (!image || !HXImageStoreEntry::canBeWritten(*image))
                         return Ref<const Data>();
                       return image->PNGRepresentation();
                     });
}

}  // namespace tarnkit
