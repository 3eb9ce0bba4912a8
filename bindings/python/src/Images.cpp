#include "bindings/python/src/Module.h"
#include "bindings/python/src/Slots.h"
#include "tarnkit/model/HXImageStore.h"
#include "tarnkit/platform/system/File.h"

namespace tarnkit::python {

namespace {

HXImageStore& storeOf(Object& owner) { return *static_cast<HXDocument&>(owner).imageStore(); }
HXImageStore& storeOf(py::handle view) { return storeOf(ownerOf(view.ptr())); }

const ViewKind kImages{
    "Images",
    "image",
    "The images of a document, each once, with a count of how often it was added: by index, or by "
    "key.",
    [](Object& owner, std::int32_t) {
      std::vector<Ref<Object>> images;
      for (const auto& [key, entry] : storeOf(owner).imageEntriesInForce()) {
        images.emplace_back(entry.get());
      }
      return images;
    },
    [](Object& owner, std::int32_t) -> std::size_t {
      return storeOf(owner).imageEntriesInForce().size();
    },
    [](Object& owner, std::int32_t, std::string_view key) -> Object* {
      return storeOf(owner).imageEntryForKey(String(key));
    }};

py::object png(HXImageStoreEntry& entry) {
  const auto file = entry.image() ? entry.image()->PNGRepresentation()
                                  : Result<Ref<const Data>>(Status::damaged("there is no picture"));
  if (!file) throwStatus(file.status());
  const auto bytes = (*file)->bytes();
  return py::bytes(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

std::int32_t widthOf(HXImageStoreEntry& e) {
  return e.image() ? static_cast<std::int32_t>(e.image()->width()) : 0;
}
std::int32_t heightOf(HXImageStoreEntry& e) {
  return e.image() ? static_cast<std::int32_t>(e.image()->height()) : 0;
}

PyGetSetDef attributes[] = {
    attribute<HXImageStoreEntry, const String&>(
        "key", "The digest of its pixels, by which documents know it: str.",
        [](HXImageStoreEntry& e) -> const String& { return e.key(); }),
    attribute<HXImageStoreEntry, std::int32_t>("width", "In pixels: int.", widthOf),
    attribute<HXImageStoreEntry, std::int32_t>("height", "In pixels: int.", heightOf),
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyObject* describe(PyObject* self) {
  return guarded<PyObject*>(nullptr, [&] {
    auto& entry = static_cast<HXImageStoreEntry&>(*handleOf(self).object);
    return newText("<tarnkit.Image " + entry.key().toStdString() + ", " +
                   std::to_string(widthOf(entry)) + " x " + std::to_string(heightOf(entry)) + ">");
  });
}

PyObject* newImage(PyTypeObject*, PyObject* arguments, PyObject* named) {
  return guarded<PyObject*>(nullptr, [&] {
    static const char* kNames[] = {"source", nullptr};
    PyObject* source = nullptr;
    if (!PyArg_ParseTupleAndKeywords(arguments, named, "O:Image", const_cast<char**>(kNames),
                                     &source)) {
      throw py::error_already_set();
    }
    return newReference(imageFrom(source).get());
  });
}

}  // namespace

std::string bytesFrom(py::handle given, std::string* path) {
  if (py::hasattr(given, "read")) {
    const py::object read = given.attr("read")();
    if (PyUnicode_Check(read.ptr())) return std::string(viewOf(read, "what was read"));
    return bytesFrom(read, nullptr);
  }
  if (PyObject_CheckBuffer(given.ptr())) {
    Py_buffer view;
    if (PyObject_GetBuffer(given.ptr(), &view, PyBUF_SIMPLE) != 0) throw py::error_already_set();
    std::string bytes(static_cast<const char*>(view.buf), static_cast<std::size_t>(view.len));
    PyBuffer_Release(&view);
    return bytes;
  }
  const std::string name = pathFrom(given);
  if (path) *path = name;
  auto read = Section::withoutInterpreter([&] { return File::read(name); });
  const auto bytes = valueOf(std::move(read));
  return std::string(bytes.begin(), bytes.end());
}

Ref<HXImageStoreEntry> imageFrom(py::handle given) {
  if (isHandle(given.ptr(), types.image)) return &live<HXImageStoreEntry>(given.ptr());
  std::string path;
  const std::string bytes = bytesFrom(given, &path);
  auto made = Section::withoutInterpreter([&]() -> Result<Ref<HXImageStoreEntry>> {
    auto image = Image::imageWithData(bytesOf(bytes));
    if (!image) return std::move(image).status().at(path);
    return HXImageStore::entryWithImage(*image);
  });
  return valueOf(std::move(made));
}

void defineImages(py::module_& module) {
  imagesType = makeViewType(module, kImages);
  types.image = makeHandleType(
      module, "Image",
      "Image(source)\n--\n\n"
      "A picture, out of a PNG, TIFF or JPEG file: a path, bytes, or a file object. A value of its "
      "own, which documents share.",
      nullptr, attributes, describe, newImage);
  setHandleType(HXImageStoreEntry::kClass, types.image);
  method(types.image, "png", "(self)", "The picture as a PNG file: bytes.", png);
  method(types.image, "_repr_png_", "(self)", "For notebooks.", png);
  method(
      types.image, "__reduce_ex__", "(self, protocol, /)", "An image is copied by its picture.",
      [](py::object self, int) {
        auto& entry = live<HXImageStoreEntry>(self.ptr());
        return py::make_tuple(py::type::of(self), py::make_tuple(png(entry)));
      },
      py::arg("protocol"));

  method(
      imagesType, "add", "(self, source)",
      "Adds a picture: an Image, or a path, bytes or a file object. Returns the document's "
      "Image, which is another one where the document has the picture already.",
      [](py::object self, const py::object& source) {
        HXImageStore& store = storeOf(self);
        const Ref<HXImageStoreEntry> entry = imageFrom(source);
        Told told;
        store.addImageEntry(entry);
        auto* const held = store.imageEntryForKey(entry->key());
        if (!held) throwRefused(told.takeReason());
        return wrap(held);
      },
      py::arg("source"));
  method(
      imagesType, "remove", "(self, image)",
      "Counts the image down; the last one leaves the document.",
      [](py::object self, HXImageStoreEntry& image) { storeOf(self).removeImageEntry(&image); },
      py::arg("image"));
  method(
      imagesType, "count", "(self, image)", "How often it was added and not yet removed.",
      [](py::object self, HXImageStoreEntry& image) {
        return storeOf(self).countForKey(image.key());
      },
      py::arg("image"));
}

}  // namespace tarnkit::python
