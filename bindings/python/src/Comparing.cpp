#include "bindings/python/src/Module.h"
#include "bindings/python/src/Slots.h"
#include "tarnkit/compare/HXDocumentCheck.h"
#include "tarnkit/compare/HXDocumentDifference.h"
#include "tarnkit/compare/HXDocumentMerge.h"
#include "tarnkit/compare/HXDocumentRepair.h"
#include "tarnkit/render/HXDifferencePage.h"

namespace tarnkit::python {

namespace {

py::object toText(const std::string& value) { return text(std::string_view(value)); }

py::object toChange(const HXDocumentChange& change) {
  py::list consequences;
  for (const auto& one : change.consequences) consequences.append(toText(one));
  return plainType("Change")(text(tarnkit::nameOf(change.kind)), toText(change.address),
                             toText(change.subject), toText(change.oldText), toText(change.newText),
                             toText(change.description()), py::tuple(consequences),
                             change.isViewState());
}

py::object toConflict(const HXMergeConflict& conflict) {
  return plainType("Conflict")(text(tarnkit::nameOf(conflict.kind)), toText(conflict.address),
                               toText(conflict.subject), toText(conflict.ours),
                               toText(conflict.theirs), toText(conflict.taken), conflict.isDecided,
                               toText(conflict.description()));
}

py::object toFinding(const HXFinding& finding) {
  Object* const place = finding.place.get();
  return plainType("Finding")(
      text(finding.kind().name), text(tarnkit::nameOf(finding.severity())), toText(finding.address),
      toText(finding.key), toText(finding.sentence), toText(finding.suggestion),
      finding.kind().isFixable,
      finding.offset == HXFinding::kNoOffset ? py::object(py::none())
                                             : py::object(py::int_(finding.offset)),
      place && canWrap(*place) ? wrap(place) : py::object(py::none()));
}

HXFindingCode codeFrom(py::handle name) {
  const auto* const kind = findingKindNamed(viewOf(name, "a code"));
  if (!kind) throw py::value_error("no check has the code " + py::repr(name).cast<std::string>());
  return kind->code;
}

HXCheckOptions optionsFrom(const py::object& only, const py::object& ignored) {
  HXCheckOptions options;
  for (const auto name : py::reinterpret_borrow<py::iterable>(only)) {
    options.only.push_back(codeFrom(name));
  }
  for (const auto name : py::reinterpret_borrow<py::iterable>(ignored)) {
    options.ignored.push_back(codeFrom(name));
  }
  return options;
}

py::list toFindings(const std::vector<HXFinding>& findings) {
  py::list list;
  for (const auto& finding : findings) list.append(toFinding(finding));
  return list;
}

HXNodeMatching::Keys keysFrom(bool byKeys) {
  return byKeys ? HXNodeMatching::Keys::whereTheyAgree : HXNodeMatching::Keys::ignored;
}

HXMergeSide sideFrom(py::handle name) {
  const auto side = viewOf(name, "a side");
  if (side == "theirs") return HXMergeSide::theirs;
  if (side != "ours") throw py::value_error("a side is \"ours\" or \"theirs\"");
  return HXMergeSide::ours;
}

py::object merge(const HXDocument& base, const HXDocument& ours, const HXDocument& theirs,
                 const py::object& prefer, const py::dict& favored, bool byKeys) {
  HXDocumentMerge::Options options;
  options.keys = keysFrom(byKeys);
  if (!prefer.is_none()) {
    options.preference = sideFrom(prefer);
    options.isPreferenceDecided = true;
  }
  for (const auto& [address, side] : favored) {
    options.favored.emplace(viewOf(address, "an address"), sideFrom(side));
  }
  const auto outcome = valueOf(HXDocumentMerge::merge(base, ours, theirs, options));
  py::list conflicts;
  for (const auto& conflict : outcome.conflicts) conflicts.append(toConflict(conflict));
  return plainType("Merge")(wrap(outcome.document), py::tuple(conflicts));
}

}  // namespace

void defineComparing(py::module_& module) {
  py::class_<HXDocumentDifference>(
      module, "Difference",
      "What leads from one document to another: a sequence of Change, and the way there. Keeps "
      "nothing of the documents alive.",
      plainClass())
      .def_property_readonly(
          "changes",
          [](const HXDocumentDifference& difference) {
            py::list changes;
            for (const auto& change : difference.changes()) changes.append(toChange(change));
            return changes;
          },
          py::call_guard<Section>(), "By the place where they are: list of Change.")
      .def_property_readonly("has_content_changes", &HXDocumentDifference::hasContentChanges,
                             "Whether more than how the documents are looked at differs: bool.")
      .def(
          "apply_to",
          [](const HXDocumentDifference& difference, HXDocument& document) {
            requireOK(difference.applyTo(document));
          },
          py::call_guard<Section>(), py::arg("document"),
          "apply_to(self, document)\n--\n\nMakes the old document, or one of the same state, the "
          "new one, as one step. RefusedError or FileError, and nothing changed, for another.")
      .def("__len__", [](const HXDocumentDifference& d) { return d.changes().size(); })
      .def("__bool__", [](const HXDocumentDifference& d) { return !d.isEmpty(); })
      .def("__iter__", [](py::object self) { return py::iter(self.attr("changes")); });

  function(
      module, "diff", "(old, new, *, by_keys=True)",
      "What leads from one document to the other: Difference. With by_keys=False nodes are "
      "matched by what they are, for documents that were opened with fresh keys.",
      [](const HXDocument& old, const HXDocument& now, bool byKeys) {
        return std::make_unique<HXDocumentDifference>(old, now, keysFrom(byKeys));
      },
      py::arg("old"), py::arg("new"), py::kw_only(), py::arg("by_keys") = true);
  function(
      module, "merge", "(base, ours, theirs, *, prefer=None, favored={}, by_keys=True)",
      "What two branches have made of a document, as one document: Merge.\n\n"
      "Where they differ, ours is taken, unless `prefer` is \"theirs\" or `favored` has a side "
      "for the address (\"Album / Page: name\").",
      merge, py::arg("base"), py::arg("ours"), py::arg("theirs"), py::kw_only(),
      py::arg("prefer") = py::none(), py::arg("favored") = py::dict(), py::arg("by_keys") = true);
  method(
      types.document, "check", "(self, *, only=(), ignored=())",
      "What is wrong in the document, the worst first: list of Finding. The codes are those of "
      "docs/checks.md.",
      [](HXDocument& document, const py::object& only, const py::object& ignored) {
        const auto& side = sideOf(document);
        return toFindings(
            HXDocumentCheck::check(document, optionsFrom(only, ignored), side.opening.get())
                .findings);
      },
      py::kw_only(), py::arg("only") = py::tuple(), py::arg("ignored") = py::tuple());
  method(
      types.document, "repair", "(self, *, only=(), ignored=())",
      "Gives the one safe answer to what a check finds, where there is one, as one step; "
      "returns the findings that were answered.",
      [](HXDocument& document, const py::object& only, const py::object& ignored) {
        return toFindings(HXDocumentRepair::repair(document, optionsFrom(only, ignored)));
      },
      py::kw_only(), py::arg("only") = py::tuple(), py::arg("ignored") = py::tuple());
}

}  // namespace tarnkit::python
