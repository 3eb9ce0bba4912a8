#include "bindings/python/src/Module.h"
#include "bindings/python/src/ParameterKey.h"
#include "bindings/python/src/Slots.h"
#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/model/HXImageStore.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/platform/objects/Overloaded.h"

namespace tarnkit::python {

namespace {

constexpr const char* kWhat = "the value of this parameter";

py::object stolen(PyObject* object) { return py::reinterpret_steal<py::object>(object); }

py::object valueOf(HXParameter& parameter) {
  return std::visit(Overloaded{[](HXImageParameter* p) { return wrap(p->imageEntry()); },
                               [](auto* p) { return stolen(toPython(p->value())); }},
                    parameter.kind());
}

// The document's own, where it has the picture already; otherwise it gets it, in the same step.
void setImage(HXImageParameter& parameter, py::handle value) {
  Ref<HXImageStoreEntry> entry = value.is_none() ? nullptr : imageFrom(value);
  const auto* const node = parameter.node();
  auto* const document = node ? node->document() : nullptr;
  if (!document || !entry) {
    parameter.setImageEntry(entry);
    return;
  }
  const HXHistory::Step step(*document);
  HXImageStore& store = *document->imageStore();
  if (!store.imageEntryForKey(entry->key())) store.addImageEntry(entry);
  if (auto* const held = store.imageEntryForKey(entry->key())) entry = held;
  parameter.setImageEntry(entry);
}

void setValue(HXParameter& parameter, py::handle value) {
  std::visit(Overloaded{
                 [&](HXBooleanParameter* p) { p->setValue(boolFrom(value, kWhat)); },
                 [&](HXNumberParameter* p) { p->setValue(floatFrom(value, kWhat)); },
                 [&](HXIndexParameter* p) { p->setValue(indexFrom(value, kWhat)); },
                 [&](HXStringParameter* p) { p->setValue(stringFrom(value, kWhat)); },
                 [&](HXColorParameter* p) { p->setValue(colorFrom(value, kWhat)); },
                 [&](HXImageParameter* p) { setImage(*p, value); },
             },
             parameter.kind());
}

template <class Bound>
py::object boundOf(HXParameter& parameter, Bound bound) {
  return std::visit(Overloaded{
                        [&](HXNumberParameter* p) { return stolen(toPython(bound(*p))); },
                        [&](HXIndexParameter* p) { return stolen(toPython(bound(*p))); },
                        [](auto*) { return py::object(py::none()); },
                    },
                    parameter.kind());
}

std::string_view kindOf(HXParameter& parameter) {
  return std::visit(Overloaded{[](HXBooleanParameter*) { return "boolean"; },
                               [](HXNumberParameter*) { return "number"; },
                               [](HXIndexParameter*) { return "index"; },
                               [](HXStringParameter*) { return "string"; },
                               [](HXColorParameter*) { return "color"; },
                               [](HXImageParameter*) { return "image"; }},
                    parameter.kind());
}

const ViewKind kParameters{
    "Parameters",
    "parameter",
    "The parameters of a node: by index, by key (\"Tarn.numberOfValuesParameter\") or by name.",
    [](Object& owner, std::int32_t) {
      std::vector<Ref<Object>> parameters;
      for (const auto& [key, parameter] : static_cast<HXNode&>(owner).parametersInForce()) {
        parameters.emplace_back(parameter.get());
      }
      return parameters;
    },
    [](Object& owner, std::int32_t) -> std::size_t {
      return static_cast<HXNode&>(owner).parametersInForce().size();
    },
    [](Object& owner, std::int32_t, std::string_view name) -> Object* {
      const auto& node = static_cast<HXNode&>(owner);
      if (auto* const parameter = node.parameterForKey(String(name))) return parameter;
      for (const auto& [key, parameter] : node.parametersInForce()) {
        if (parameter->name() == name) return parameter.get();
      }
      return nullptr;
    }};

PyGetSetDef attributes[] = {
    exists(),
    attribute<HXParameter, String>("key", "Under which its node finds it: str.",
                                   [](HXParameter& p) { return keyOf(p); }),
    attribute<HXParameter, String>(
        "name", "What it is called: str, or None of one that its patch does not have any more.",
        [](HXParameter& p) { return p.name(); }),
    attribute<HXParameter, Object*>("node", "The node whose it is: Node.",
                                    [](HXParameter& p) -> Object* { return p.node(); }),
    attribute<HXParameter, std::string_view>(
        "kind",
        "What its value is: \"boolean\", \"number\", \"index\", \"string\", \"color\" or "
        "\"image\": str.",
        kindOf),
    attribute<HXParameter, py::object>(
        "value",
        "Its value: bool, float, int, str, Color, or Image or None. An image may be set from a "
        "path, bytes or a file object; a document that does not have it gets it.",
        valueOf, setValue),
    attribute<HXParameter, bool>("is_set", "Whether somebody has set the value: bool.",
                                 [](HXParameter& p) { return p.valueInitialized(); }),
    attribute<HXParameter, bool>("is_hidden", "Whether the editor leaves it out: bool.",
                                 [](HXParameter& p) { return p.hidden(); }),
    attribute<HXParameter, py::object>(
        "minimum", "The least value that the editor takes, of a number or an index; else None.",
        [](HXParameter& p) { return boundOf(p, [](auto& kind) { return kind.minimumValue(); }); }),
    attribute<HXParameter, py::object>(
        "maximum", "The greatest value that the editor takes, of a number or an index; else None.",
        [](HXParameter& p) { return boundOf(p, [](auto& kind) { return kind.maximumValue(); }); }),
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyObject* describe(PyObject* self) {
  return guarded<PyObject*>(nullptr, [&] {
    const auto& parameter = static_cast<HXParameter&>(*handleOf(self).object);
    return newText("<tarnkit.Parameter " + keyOf(parameter).toStdString() +
                   (isLive(handleOf(self)) ? ">" : ", gone>"));
  });
}

}  // namespace

void defineParameters(py::module_& module) {
  parametersType = makeViewType(module, kParameters);
  types.parameter =
      makeHandleType(module, "Parameter", "A setting of a node's patch that is no port.", nullptr,
                     attributes, describe);
  setHandleType(HXParameter::kClass, types.parameter);
}

}  // namespace tarnkit::python
