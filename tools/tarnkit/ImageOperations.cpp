#include "tarnkit/model/HXImageStore.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/Arguments.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/Operations.h"
#include "tools/tarnkit/Session.h"
#include "tools/tarnkit/ValueShapes.h"

namespace tarnkit::tool {

namespace {

Result addImage(Session& session, const Arguments& arguments) {
  const auto name = arguments.optionalText("as");
  const auto path = arguments.text("file");
  session.checkFile(path);
  const auto document = session.document();
  const auto image = required(Image::imageWithContentsOfFile(String(path)));
  const auto entry =
      required(HXImageStore::entryWithImage(image).within("the image cannot be stored").at(path));
  document->imageStore()->addImageEntry(entry);
  session.nameImage(name, entry);
  return [entry](JSONWriter& json) {
    json.beginObject().key("key");
    writeString(json, entry->key());
    json.key("width").value(entry->image()->width());
    json.key("height").value(entry->image()->height()).endObject();
  };
}

Result removeImage(Session& session, const Arguments& arguments) {
  const auto entry = session.image(arguments.text("image"));
  session.document()->imageStore()->removeImageEntry(entry.get());
  return {};
}

constexpr Operation kOperations[] = {
    {"addImage", "file as?", addImage},
    {"removeImage", "image", removeImage},
};

}  // namespace

std::span<const Operation> imageOperations() { return kOperations; }

}  // namespace tarnkit::tool
