#include <dlfcn.h>

#include "bindings/python/src/Module.h"
#include "bindings/python/src/Slots.h"
#include "tarnkit/compare/HXOpeningRecord.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/patches/PluginLoader.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tarnkit/platform/system/File.h"
#include "tarnkit/text/HXTextFile.h"

namespace tarnkit::python {

namespace {

using Losses = std::vector<HXNodeLosses>;

// Under the coding type under which it was written: under another one its nodes are not found.
Result<Ref<HXDocument>> documentInArchive(ByteSpan bytes, bool keepsKeys, Losses* losses) {
  auto list = PropertyListReader::read(bytes);
  if (!list) return std::move(list).status();
  const auto codingType = HXDocumentFile::codingTypeOf(*list);
  auto document = HXDocumentFile::document(*list, codingType, losses);
  if (!document || keepsKeys || codingType != HXCodingTypeEditorWithKeys) return document;
  const auto without = HXDocumentFile::dataWithDocument(**document, HXCodingTypeEditor);
  if (!without) return Status::failure(without.status().code(), without.status().sentence());
  return HXDocumentFile::document(*without, HXCodingTypeEditor);
}

Result<Ref<HXDocument>> documentIn(const std::string& bytes, const std::string& folder,
                                   bool keepsKeys, Losses* losses) {
  if (!HXTextFile::isText(bytesOf(bytes))) {
    return documentInArchive(bytesOf(bytes), keepsKeys, losses);
  }
  return HXTextFile::document(bytes, keepsKeys ? HXCodingTypeEditorWithKeys : HXCodingTypeEditor,
                              folder, losses);
}

py::object open(const py::object& source, const py::object& keepKeys) {
  const bool keepsKeys = boolFrom(keepKeys, "keep_keys");
  std::string path;
  const std::string bytes = bytesFrom(source, &path);
  const std::string folder = path.empty() ? std::string() : File::directoryOf(path);
  std::unique_ptr<HXOpeningRecord> opening;
  auto result = Section::withoutInterpreter([&] {
    opening = std::make_unique<HXOpeningRecord>();
    auto opened = documentIn(bytes, folder, keepsKeys, opening->losses());
    opening->end();
    return std::move(opened).at(path);
  });
  const auto document = valueOf(std::move(result));
  py::object handle = wrap(document);
  if (!std::as_const(*opening).losses().empty() || !opening->mended().empty()) {
    sideOf(*document).opening = std::move(opening);
  }
  return handle;
}

std::string archiveOf(HXDocument& document, bool withKeys) {
  auto result = Section::withoutInterpreter([&] {
    return HXDocumentFile::dataWithDocument(
        document, withKeys ? HXCodingTypeEditorWithKeys : HXCodingTypeEditor);
  });
  const auto bytes = valueOf(std::move(result));
  return std::string(bytes.begin(), bytes.end());
}

std::string textOf(HXDocument& document) {
  return valueOf(
      Section::withoutInterpreter([&] { return HXTextFile::textWithDocument(document); }));
}

bool isTextPath(const std::string& path) { return path.ends_with(".json"); }

// "archive", "text", or None: by the name of the file.
bool wantsText(const py::object& form, const std::string& path) {
  if (form.is_none()) return isTextPath(path);
  const auto name = viewOf(form, "a form");
  if (name == "text") return true;
  if (name != "archive") throw py::value_error("a form is \"archive\" or \"text\"");
  return false;
}

void writeTo(const py::object& target, const std::string& bytes) {
  if (py::hasattr(target, "write")) {
    target.attr("write")(py::bytes(bytes));
    return;
  }
  const std::string path = pathFrom(target);
  requireOK(Section::withoutInterpreter([&] { return File::write(path, bytesOf(bytes)); }));
}

void save(HXDocument& document, const py::object& target, const py::object& form, bool keys,
          const py::object& images) {
  const bool isFile = py::hasattr(target, "write");
  const std::string path = isFile ? std::string() : pathFrom(target);
  const bool asText = wantsText(form, path);
  if (!images.is_none()) {
    if (!asText || isFile) throw py::value_error("only a text in a file has images beside it");
    // Below the text's own folder, wherever the process stands.
    std::string folder = pathFrom(images);
    if (!folder.starts_with('/')) folder = File::directoryOf(path) + "/" + folder;
    requireOK(
        Section::withoutInterpreter([&] { return HXTextFile::save(document, path, folder); }));
    return;
  }
  writeTo(target, asText ? textOf(document) : archiveOf(document, keys));
}

std::string graphOf(HXDocument& document) {
  const auto bytes =
      valueOf(Section::withoutInterpreter([&] { return HXDocumentFile::deviceGraph(document); }));
  return std::string(bytes.begin(), bytes.end());
}

// A plug-in finds the library's symbols in this module, which Python has loaded for itself alone.
void shareSymbols() {
  Dl_info info;
  if (dladdr(reinterpret_cast<const void*>(&shareSymbols), &info) != 0 && info.dli_fname) {
    dlopen(info.dli_fname, RTLD_NOW | RTLD_GLOBAL | RTLD_NOLOAD);
  }
}

}  // namespace

void defineFiles(py::module_& module) {
  function(module, "open", "(source, *, keep_keys=True)",
           "Opens a document: a path, bytes, or a file object, in any of the forms in which "
           "documents are saved.\n\n"
           "The keys of its nodes are those of the file, where it has any; with keep_keys=False "
           "fresh ones are drawn. What could not be kept is told by `Document.mended`. The bytes "
           "need not be trusted. FileError for what is no document.",
           open, py::arg("source"), py::kw_only(), py::arg("keep_keys") = true);
  function(
      module, "load_plugin", "(path)",
      "Loads a plug-in: its patches are in the catalogue from then on. FileError when it is "
      "none, or was built for another version of the library.",
      [](const py::object& path) {
        shareSymbols();
        const std::string name = pathFrom(path);
        const Told told;
        requireOK(loadPlugin(name));
        forgetPatchNames();
      },
      py::arg("path"));

  PyTypeObject* const type = types.document;
  method(type, "save", "(self, target, *, form=None, keys=True, images=None)",
         "Saves the document to a path (whole or not at all) or a binary file object.\n\n"
         "The form is \"archive\" or \"text\"; without it the name tells: \".json\" is a text. An "
         "archive keeps the unique keys unless keys is False. With images, the pictures of a text "
         "go to that folder beside it.",
         save, py::arg("target"), py::kw_only(), py::arg("form") = py::none(),
         py::arg("keys") = true, py::arg("images") = py::none());
  method(
      type, "to_bytes", "(self, *, keys=True)", "The document as an archive: bytes.",
      [](HXDocument& document, bool keys) { return py::bytes(archiveOf(document, keys)); },
      py::kw_only(), py::arg("keys") = true);
  method(type, "to_text", "(self)", "The document as a text, its images within: str.",
         [](HXDocument& document) { return text(std::string_view(textOf(document))); });
  method(type, "device_graph", "(self)", "What the device gets: bytes.",
         [](HXDocument& document) { return py::bytes(graphOf(document)); });
  method(
      type, "send", "(self, target)",
      "Writes what the device gets to a path or a binary file object.",
      [](HXDocument& document, const py::object& target) { writeTo(target, graphOf(document)); },
      py::arg("target"));
  method(
      type, "send_images", "(self, folder)",
      "Writes one archive for each image, \"KEY.plist\", into the folder; returns the keys.",
      [](HXDocument& document, const py::object& folder) {
        const std::string path = pathFrom(folder);
        const auto keys = valueOf(Section::withoutInterpreter(
            [&] { return HXDocumentFile::sendImages(document, path); }));
        py::list list;
        for (const auto& key : keys) list.append(text(key));
        return list;
      },
      py::arg("folder"));
  method(
      type, "save_images", "(self, folder)",
      "Writes the pictures, \"KEY.png\", into the folder; returns the keys.",
      [](HXDocument& document, const py::object& folder) {
        const std::string path = pathFrom(folder);
        const auto keys = valueOf(Section::withoutInterpreter(
            [&] { return HXDocumentFile::saveImages(document, path); }));
        py::list list;
        for (const auto& key : keys) list.append(text(key));
        return list;
      },
      py::arg("folder"));
  method(
      type, "__reduce_ex__", "(self, protocol, /)",
      "A document is copied and pickled by what a file holds of it.",
      [](HXDocument& document, int) {
        return py::make_tuple(plainType("_open_document"),
                              py::make_tuple(py::bytes(archiveOf(document, true))));
      },
      py::arg("protocol"));
}

}  // namespace tarnkit::python
