#include "bindings/python/src/Module.h"
#include "bindings/python/src/Slots.h"
#include "tarnkit/compare/HXDocumentDifference.h"
#include "tarnkit/render/HXDifferencePage.h"
#include "tarnkit/render/HXGraphPage.h"
#include "tarnkit/render/HXGraphPicture.h"

namespace tarnkit::python {

namespace {

HXPictureTheme themeFrom(const py::object& name) {
  const auto theme = viewOf(name, "a theme");
  if (theme == "dark") return HXPictureTheme::dark;
  if (theme != "light") throw py::value_error("a theme is \"light\" or \"dark\"");
  return HXPictureTheme::light;
}

py::object picture(HXGroup& group, const py::object& theme, bool caption) {
  HXPictureOptions options;
  options.theme = themeFrom(theme);
  options.caption = caption;
  const auto svg = Section::withoutInterpreter([&] { return graphPicture(group, options); });
  return text(std::string_view(svg));
}

py::object page(HXGroup& group, const py::object& theme) {
  const auto wanted = themeFrom(theme);
  const auto html = Section::withoutInterpreter([&] { return graphPage(group, wanted); });
  return text(std::string_view(html));
}

HXGroup& groupOf(HXNode& node) {
  if (!node.subnodeGroup()) throwRefused("the node holds no group that could be drawn");
  return *node.subnodeGroup();
}

}  // namespace

void defineRendering(py::module_& module) {
  const char* const picked = "(self, *, theme=\"light\", caption=True)";
  method(types.group, "to_svg", picked,
         "A picture of the group, its nodes with their ports, values and connections: str, a whole "
         "SVG file. The theme is \"light\" or \"dark\".",
         picture, py::kw_only(), py::arg("theme") = "light", py::arg("caption") = true);
  method(types.group, "to_html", "(self, *, theme=\"light\")",
         "A page to look around in the group and those below it: str, one HTML file that refers to "
         "nothing outside of itself.",
         page, py::kw_only(), py::arg("theme") = "light");
  method(types.group, "_repr_svg_", "(self)", "For notebooks.",
         [](HXGroup& group) { return picture(group, py::str("light"), true); });
  method(
      types.node, "to_svg", picked, "A picture of its group: see Group.to_svg.",
      [](HXNode& node, const py::object& theme, bool caption) {
        return picture(groupOf(node), theme, caption);
      },
      py::kw_only(), py::arg("theme") = "light", py::arg("caption") = true);
  method(
      types.node, "to_html", "(self, *, theme=\"light\")",
      "A page to look around in its group: see Group.to_html.",
      [](HXNode& node, const py::object& theme) { return page(groupOf(node), theme); },
      py::kw_only(), py::arg("theme") = "light");
  method(types.document, "_repr_svg_", "(self)", "For notebooks.",
         [](HXDocument& document) { return picture(groupOf(document), py::str("light"), true); });
  function(
      module, "diff_page", "(old, new, *, theme=\"light\")",
      "A page to look around in what leads from one document to the other: str, one HTML "
      "file.",
      [](HXDocument& old, HXDocument& now, const py::object& theme) {
        HXDifferencePageOptions options;
        options.theme = themeFrom(theme);
        const auto html = Section::withoutInterpreter(
            [&] { return differencePage(old, now, HXDocumentDifference(old, now), options); });
        return text(std::string_view(html));
      },
      py::arg("old"), py::arg("new"), py::kw_only(), py::arg("theme") = "light");
}

}  // namespace tarnkit::python
