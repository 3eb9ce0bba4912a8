#include "bindings/python/src/Module.h"
#include "bindings/python/src/Slots.h"
#include "tarnkit/compare/HXAddresses.h"
#include "tarnkit/compare/HXDocumentSearch.h"
#include "tarnkit/compare/HXOpeningRecord.h"
#include "tarnkit/model/HXImageStoreEntry.h"
#include "tarnkit/model/HXLookup.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPort.h"

namespace tarnkit::python {

namespace {

py::object mendedIn(HXDocument& document) {
  py::list lines;
  const auto& side = sideOf(document);
  if (!side.opening) return lines;
  for (const auto& losses : std::as_const(*side.opening).losses()) {
    for (const auto& item : losses.dropped) {
      lines.append(text(losses.node->uniqueKey().toStdString() + " lost " + item.description()));
    }
  }
  for (const auto& line : side.opening->mended()) lines.append(text(std::string_view(line)));
  return lines;
}

PyGetSetDef attributes[] = {
    attribute<HXDocument, String>("document_key",
                                  "Its key among the documents of the process: str.",
                                  [](HXDocument& d) { return d.documentKey(); }),
    attribute<HXDocument, py::object>(
        "mended",
        "What opening it has left out or put right, since its patches are not what they were or "
        "the file contradicted itself: list of str, a sentence each.",
        mendedIn),
    view<&connectionsType>("connections", "All of its connections: Connections."),
    view<&imagesType>("images", "The pictures that it holds: Images."),
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyObject* newDocument(PyTypeObject*, PyObject* arguments, PyObject* named) {
  return guarded<PyObject*>(nullptr, [&] {
    static const char* kNames[] = {nullptr};
    if (!PyArg_ParseTupleAndKeywords(arguments, named, ":Document", const_cast<char**>(kNames))) {
      throw py::error_already_set();
    }
    return newReference(make<HXDocument>().get());
  });
}

py::list find(HXDocument& document, const py::object& patch, const py::object& name,
              const py::object& port, const py::object& image) {
  HXSearchCriteria criteria;
  if (PyUnicode_Check(patch.ptr())) {
    criteria.patch = stringFrom(patch, "a patch");
  } else if (!patch.is_none()) {
    criteria.patch = String(patchFrom(patch).name());
  }
  criteria.name = stringFrom(name, "a name");
  criteria.port = stringFrom(port, "a port");
  criteria.image = isHandle(image.ptr(), types.image) ? live<HXImageStoreEntry>(image.ptr()).key()
                                                      : stringFrom(image, "an image");
  py::list matches;
  const py::object type = plainType("Match");
  for (const auto& match : HXDocumentSearch::find(document, criteria)) {
    matches.append(type(wrap(match.node), wrap(match.port), text(std::string_view(match.address))));
  }
  return matches;
}

}  // namespace

void defineDocuments(py::module_& module) {
  types.document = makeHandleType(
      module, "Document",
      "Document()\n--\n\n"
      "A prototype: the outermost node, whose group is the top-level canvas. It lasts as long as "
      "somebody holds it; what stands in it does not keep it.\n\n"
      "It can be copied and pickled: the copy is another document with the same keys.",
      types.node, attributes, nullptr, newDocument, true);
  setHandleType(HXDocument::kClass, types.document);
  PyTypeObject* const type = types.document;

  method(
      type, "connect", "(self, first, second)",
      "Connects two ports of the document, as `Port.connect` does.",
      [](HXDocument&, HXPort& first, HXPort& second) { return wire(first, second); },
      py::arg("first"), py::arg("second"));
  method(type, "find", "(self, *, patch=None, name=None, port=None, image=None)",
         "The nodes of which all that is given holds, wherever they stand: list of Match. The name "
         "may hold \"*\" and \"?\"; a port is given by key or name, an image by itself or its key.",
         find, py::kw_only(), py::arg("patch") = py::none(), py::arg("name") = py::none(),
         py::arg("port") = py::none(), py::arg("image") = py::none());
  method(
      type, "node", "(self, key)", "The node of that key, wherever it stands. KeyError without.",
      [](HXDocument& document, const String& key) {
        auto* const found = HXLookup::nodeForKey(document, key);
        if (!found) throw py::key_error("there is no node " + key.toStdString());
        return found;
      },
      py::arg("key"));
  method(
      type, "at", "(self, address)",
      "What stands at \"node_3\", or at \"node_3/KEY\": a node, a port or a parameter. KeyError "
      "without.",
      [](HXDocument& document, const String& address) {
        auto* const found = HXLookup::objectForAddress(document, address.view());
        if (!found) throw py::key_error("there is nothing at " + address.toStdString());
        return wrap(found);
      },
      py::arg("address"));
  method(
      type, "address_of", "(self, what)",
      "Where a node or a port stands, by the names that people see: \"Album / Page: Value\".",
      [](HXDocument&, const py::object& what) {
        HXAddresses addresses;
        return text(std::string_view(isHandle(what.ptr(), types.node)
                                         ? addresses.of(live<HXNode>(what.ptr()))
                                         : addresses.of(live<HXPort>(what.ptr()))));
      },
      py::arg("what"));
}

}  // namespace tarnkit::python
