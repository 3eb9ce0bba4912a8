#include "tools/tarnkit/FileKind.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

#include "tarnkit/text/HXTextFile.h"
#include "tools/tarnkit/Script.h"

namespace tarnkit::tool {

namespace {

bool isPicture(std::string_view text) {
  constexpr std::string_view kBeginnings[] = {
      "\x89PNG\r\n", "\xFF\xD8\xFF", std::string_view("II*\0", 4), std::string_view("MM\0*", 4)};
  return std::any_of(std::begin(kBeginnings), std::end(kBeginnings), [text](auto beginning) {
    return text.substr(0, beginning.size()) == beginning;
  });
}

// Only what stands in the outermost object counts, and in the objects of an outermost list.
FileKind kindOfJSON(std::string_view text) {
  using Json = nlohmann::json;
  FileKind kind = FileKind::unknown;
  const bool isArray = Script::isArray(text);
  const auto look = [&](int depth, Json::parse_event_t event, Json& parsed) {
    if (event == Json::parse_event_t::key && depth == (isArray ? 2 : 1) &&
        kind == FileKind::unknown) {
      if (parsed == "do") kind = FileKind::script;
      if (parsed == "tarnkit" && !isArray) kind = FileKind::textDocument;
    }
    return event == Json::parse_event_t::key || depth == 0;
  };
  // What fails behind the first object is still a script: one operation a line.
  [[maybe_unused]] const Json rest = Json::parse(text.begin(), text.end(), look, false);
  return kind;
}

}  // namespace

FileKind fileKindOf(HXArchiveKind kind) noexcept {
  switch (kind) {
    case HXArchiveKind::editorDocument:
      return FileKind::document;
    case HXArchiveKind::deviceGraph:
      return FileKind::deviceGraph;
    case HXArchiveKind::imageArchive:
      return FileKind::imageArchive;
    case HXArchiveKind::none:
      break;
  }
  return FileKind::unknown;
}

FileKind fileKindOf(ByteSpan bytes) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if (isPicture(text)) return FileKind::picture;
  if (HXTextFile::isText(bytes) || Script::isArray(text)) return kindOfJSON(text);
  return fileKindOf(HXArchiveReader::sniff(bytes));
}

std::string describeOther(FileKind kind) {
  switch (kind) {
    case FileKind::document:
    case FileKind::textDocument:
      return "it is a document; tarnkit open reads it";
    case FileKind::deviceGraph:
      return "it is a device graph; tarnkit inspect reads it";
    case FileKind::imageArchive:
      return "it is the archive of an image; tarnkit inspect reads it";
    case FileKind::script:
      return "it is a script; tarnkit run performs it";
    case FileKind::picture:
      return "it is a picture; the operation addImage of a session takes it";
    case FileKind::unknown:
      break;
  }
  return {};
}

}  // namespace tarnkit::tool
