#include "tarnkit/text/HXTextFile.h"

#include <fmt/format.h>

#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tarnkit/platform/system/File.h"
#include "tarnkit/text/TextReader.h"
#include "tarnkit/text/TextWriter.h"

namespace tarnkit {

bool HXTextFile::isText(ByteSpan bytes) noexcept {
  std::size_t at = 0;
  constexpr std::uint8_t kByteOrderMark[] = {0xEF, 0xBB, 0xBF};
  if (bytes.size() >= 3 && std::equal(kByteOrderMark, kByteOrderMark + 3, bytes.begin())) at = 3;
  for (; at < bytes.size(); ++at) {
    const auto byte = bytes[at];
    if (byte != ' ' && byte != '\n' && byte != '\r' && byte != '\t') return byte == '{';
  }
  return false;
}

Result<std::string> HXTextFile::textWithDocument(const HXDocument& document,
                                                 const ImageFiles& files) {
  return detail::TextWriter(document, files).write();
}

Result<Ref<HXDocument>> HXTextFile::document(std::string_view text, std::int32_t codingType,
                                             const std::string& folder,
                                             std::vector<HXNodeLosses>* losses, ImageFiles* files,
                                             AbsentImages absent) {
  if (!isEditorCodingType(codingType)) {
    return Status::failure(
        StatusCode::refused,
        fmt::format("coding type {} is not an editor's (0, 1 or 3)", codingType));
  }
  try {
    Result<Ref<Data>> archive = Status::damaged("nothing was read");
    {
      detail::TextReader reader(text, folder, absent);
      const auto record = reader.read();
      if (!record) return Status::failure(record.status().code(), record.status().sentence());
      archive = StandardKeyedArchiver::archivedData(*record, codingType);
      if (files) *files = reader.imageFiles();
    }
    if (!archive) return std::move(archive).status();
    return HXDocumentFile::document((*archive)->bytes(), codingType, losses);
  } catch (const std::bad_alloc&) {
    return Status::failure(StatusCode::outOfMemory, "there is not enough memory to read it");
  }
}

Result<Ref<HXDocument>> HXTextFile::open(const std::string& path, std::int32_t codingType,
                                         std::vector<HXNodeLosses>* losses) {
  const auto bytes = File::read(path);
  if (!bytes) return Status::failure(bytes.status().code(), bytes.status().sentence(), path);
  const std::string_view text(reinterpret_cast<const char*>(bytes->data()), bytes->size());
  return document(text, codingType, File::directoryOf(path), losses).at(path);
}

Status HXTextFile::save(const HXDocument& document, const std::string& path,
                        const std::string& imageFolder) {
  ImageFiles files;
  if (!imageFolder.empty()) {
    const std::string folder = File::directoryOf(path);
    std::string below = imageFolder;
    while (below.size() > 1 && below.back() == '/') below.pop_back();
    if (folder != "." || below.starts_with("./")) {
      const std::string start = folder == "/" ? folder : folder + "/";
      if (!below.starts_with(start)) {
        return Status::failure(StatusCode::refused,
                               "the images' folder has to be below that of the document",
                               imageFolder);
      }
      below.erase(0, start.size());
    }
    auto written = HXDocumentFile::saveImages(document, imageFolder, HXUnnamableImages::leaveOut);
    if (!written) return std::move(written).status();
    for (const auto& key : *written) files[key] = fmt::format("{}/{}.png", below, key.view());
  }
  const auto text = textWithDocument(document, files);
  if (!text) return Status::failure(text.status().code(), text.status().sentence(), path);
  return File::write(path, bytesOf(*text));
}

}  // namespace tarnkit
