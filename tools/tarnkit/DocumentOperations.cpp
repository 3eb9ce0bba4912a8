#include <fmt/format.h>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/system/File.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tarnkit/text/HXTextFile.h"
#include "tools/tarnkit/Arguments.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/FileKind.h"
#include "tools/tarnkit/Operations.h"
#include "tools/tarnkit/Session.h"
#include "tools/tarnkit/Shapes.h"
#include "tools/tarnkit/ValueShapes.h"

namespace tarnkit::tool {

namespace {

Result keysOf(const Ref<HXDocument>& document) {
  return [document](JSONWriter& json) {
    json.beginObject().key("uniqueKey");
    writeString(json, document->uniqueKey());
    json.key("documentKey");
    writeString(json, document->documentKey());
    json.endObject();
  };
}

std::string filePath(const Session& session, const Arguments& arguments) {
  auto path = arguments.text("file");
  session.checkFile(path);
  return path;
}

Result quit(Session& session, const Arguments&) {
  session.end();
  return {};
}

Result newDocument(Session& session, const Arguments& arguments) {
  const auto name = arguments.optionalText("as");
  const auto document = make<HXDocument>();
  session.takeDocument(name, document);
  return keysOf(document);
}

Result documentGraph(Session& session, const Arguments& arguments) {
  const auto name = arguments.optionalText("as");
  const auto className = arguments.text("class");
  const auto document = as<HXDocument>(patchClassGiven(className).documentGraph());
  if (!document) throw CommandFailure(fmt::format("no document can be made of \"{}\"", className));
  session.takeDocument(name, document);
  return keysOf(document);
}

void refuseOther(const std::string& path, FileKind kind) {
  if (kind == FileKind::document || kind == FileKind::textDocument) return;
  const std::string other = describeOther(kind);
  if (!other.empty()) throw CommandFailure(fmt::format("{}, {}", path, other));
}

Result open(Session& session, const Arguments& arguments) {
  const auto name = arguments.optionalText("as");
  const auto path = filePath(session, arguments);
  const auto bytes = required(File::read(path).at(path));
  const bool isText = HXTextFile::isText(bytes);
  // A text calls its nodes by their keys, which are therefore kept unless somebody says otherwise.
  const auto codingType = arguments.integer("codingType", isText ? HXCodingTypeEditorWithKeys : 0);
  auto document = isText ? HXTextFile::open(path, codingType)
                         : HXDocumentFile::document(bytes, codingType).at(path);
  if (!document) refuseOther(path, fileKindOf(bytes));
  session.takeDocument(name, required(std::move(document)));
  return keysOf(session.document());
}

Result save(Session& session, const Arguments& arguments) {
  const auto codingType = arguments.integer("codingType", 0);
  const auto path = filePath(session, arguments);
  const auto format = arguments.optionalText("format");
  if (format == "json") {
    require(HXTextFile::save(*session.document(), path));
  } else if (format.empty() || format == "binary") {
    require(HXDocumentFile::save(*session.document(), path, codingType));
  } else {
    throw CommandFailure(fmt::format("there is no format \"{}\"", format));
  }
  return {};
}

Result send(Session& session, const Arguments& arguments) {
  const auto path = filePath(session, arguments);
  require(HXDocumentFile::send(*session.document(), path));
  return {};
}

Result sendImages(Session& session, const Arguments& arguments) {
  const auto directory = arguments.text("directory");
  session.checkFile(directory);
  auto keys = required(HXDocumentFile::sendImages(*session.document(), directory));
  return [keys = std::move(keys)](JSONWriter& json) {
    json.beginObject().key("keys");
    writeStrings(json, keys);
    json.endObject();
  };
}

Result dump(Session& session, const Arguments& arguments) {
  const Ref<HXNode> node = arguments.has("node") ? session.node(arguments.text("node"))
                                                 : Ref<HXNode>(session.document());
  checkShapeDepth(*node);
  return [node](JSONWriter& json) { writeNode(json, *node); };
}

constexpr Operation kOperations[] = {
    {"newDocument", "as?", newDocument},
    {"documentGraph", "class as?", documentGraph},
    {"open", "file codingType? as?", open},
    {"save", "file codingType? format?", save},
    {"send", "file", send},
    {"sendImages", "directory", sendImages},
    {"dump", "node?", dump},
    {"quit", "", quit},
};

}  // namespace

std::span<const Operation> documentOperations() { return kOperations; }

}  // namespace tarnkit::tool
