#include "tools/tarnkit/reference/PatchTables.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/HXRPrimitiveInputPort.h"
#include "tools/tarnkit/reference/Html.h"
#include "tools/tarnkit/reference/PortKinds.h"
#include "tools/tarnkit/reference/ReferencePages.h"
#include "tools/tarnkit/reference/ValueHtml.h"

namespace tarnkit::tool {

namespace {

/// From how many ports of a base on they go behind the patch's own.
constexpr std::size_t kManyInherited = 8;

struct PortGroup {
  String key;
  std::vector<const HXRPort*> ports;
};
using PortGroups = std::vector<PortGroup>;

/// Ports to be shown in one table.
struct PortList {
  std::string heading;  // HTML
  std::string caption;
  PortGroups groups;
};

std::size_t countOf(const PortGroups& groups) {
  std::size_t count = 0;
  for (const PortGroup& group : groups) count += group.ports.size();
  return count;
}

bool isInherited(const HXRPort& port, const HXRNodeClass& patch) {
  if (!patch.base()) return false;
  const auto* const same = patch.base()->prototype().portLayout().ports().find(port.uniqueKey());
  return same && (*same)->name() == port.name();
}

/// The groups with the ports for which `belongs` holds, without those that are empty then.
template <class Belongs>
PortGroups chosenPorts(const HXRPortGroupCollection& collection, Belongs belongs) {
  PortGroups chosen;
  for (const auto& [key, group] : collection.portGroupsInForce()) {
    PortGroup some{key, {}};
    for (const auto& port : group->ports()) {
      if (belongs(*port)) some.ports.push_back(port.get());
    }
    if (!some.ports.empty()) chosen.push_back(std::move(some));
  }
  return chosen;
}

bool hasChoices(const PortGroups& groups) {
  for (const PortGroup& group : groups) {
    for (const HXRPort* port : group.ports) {
      const auto* const input = as<HXRPrimitiveInputPort>(port);
      if (input && !input->mappedValues().empty()) return true;
    }
  }
  return false;
}

std::string headRow(std::initializer_list<const char*> columns) {
  std::string html = "<thead><tr>";
  for (const char* column : columns) html += fmt::format("<th scope=\"col\">{}</th>", column);
  return html + "</tr></thead>\n";
}

std::string tableStart(std::string_view heading, std::string_view caption, int level) {
  return fmt::format(
      "<section>\n<h{0}>{1}</h{0}>\n"
      "<div class=\"wide\" tabindex=\"0\" role=\"region\" aria-label=\"{2}\">\n"
      "<table>\n<caption>{2}</caption>\n",
      level, heading, escaped(caption));
}

constexpr const char* kTableEnd = "</table>\n</div>\n</section>\n";

std::string portRow(const HXRPort& port, bool isInput, bool withChoices) {
  std::string html = fmt::format("<tr><th scope=\"row\">{}</th><td>{}</td><td>{}</td>",
                                 nameHtml(port.name()), codeHtml(port.uniqueKey()), kindOf(port));
  const auto* const input = as<HXRPrimitiveInputPort>(&port);
  if (isInput) html += fmt::format("<td>{}</td>", input ? defaultHtml(*input) : valueHtml(nullptr));
  if (withChoices) html += fmt::format("<td>{}</td>", input ? choicesHtml(*input) : "");
  return html + "</tr>\n";
}

std::string portTable(const PortList& list, const HXRNodeClass& patch, bool isInput, int level) {
  if (list.groups.empty()) return {};
  const bool withChoices = hasChoices(list.groups);
  std::string html = tableStart(list.heading, list.caption, level);
  if (!isInput) {
    html += headRow({"Name", "Key", "Type"});
  } else if (withChoices) {
    html += headRow({"Name", "Key", "Type", "Default", "Choices"});
  } else {
    html += headRow({"Name", "Key", "Type", "Default"});
  }
  const int columns = isInput ? 4 + withChoices : 3;
  for (const PortGroup& group : list.groups) {
    html += "<tbody>\n";
    if (group.key != HXRDefaultPortGroupKey) {
      const bool isHidden = patch.hiddenPortGroupKeys().contains(group.key.object().get());
      html += fmt::format(
          "<tr class=\"group\"><th scope=\"rowgroup\" colspan=\"{}\">{}{}</th></tr>\n", columns,
          nameHtml(group.key), isHidden ? " <span class=\"note\">hidden at first</span>" : "");
    }
    for (const HXRPort* port : group.ports) html += portRow(*port, isInput, withChoices);
    html += "</tbody>\n";
  }
  return html + kTableEnd;
}

std::string sideTables(const HXRNodeClass& patch, const ReferencePages& pages, bool isInput,
                       int level) {
  const auto& layout = patch.prototype().portLayout();
  const auto& collection = isInput ? layout.inputs() : layout.outputs();
  const char* const side = isInput ? "Inputs" : "Outputs";
  const auto inherited = [&](const HXRPort& port) { return isInherited(port, patch); };
  const auto own = [&](const HXRPort& port) { return !isInherited(port, patch); };
  PortList ownList{side, fmt::format("{} of {}", side, titleOf(patch)),
                   chosenPorts(collection, own)};
  PortList baseList{{}, {}, chosenPorts(collection, inherited)};
  const auto* const base = patch.base();
  if (!base || !pages.pageOf(*base) || countOf(baseList.groups) < kManyInherited) {
    ownList.groups = chosenPorts(collection, [](const HXRPort&) { return true; });
    return portTable(ownList, patch, isInput, level);
  }
  baseList.heading = fmt::format("{} of every <a href=\"{}\">{}</a>", side,
                                 pages.linkToPatch(*base), escaped(titleOf(*base)));
  baseList.caption =
      fmt::format("{} of {} that every {} has", side, titleOf(patch), titleOf(*base));
  return portTable(ownList, patch, isInput, level) + portTable(baseList, patch, isInput, level);
}

std::string parameterTable(const HXRNodeClass& patch, int level) {
  const auto& parameters = patch.prototype().parameters();
  if (parameters.empty()) return {};
  const bool withBounds =
      std::any_of(parameters.begin(), parameters.end(),
                  [](const auto& parameter) { return !boundsText(*parameter).empty(); });
  std::string html =
      tableStart("Parameters", fmt::format("Parameters of {}", titleOf(patch)), level);
  html += withBounds ? headRow({"Name", "Key", "Type", "Default", "Bounds"})
                     : headRow({"Name", "Key", "Type", "Default"});
  html += "<tbody>\n";
  for (const auto& parameter : parameters) {
    html +=
        fmt::format("<tr><th scope=\"row\">{}{}</th><td>{}</td><td>{}</td><td>{}</td>",
                    nameHtml(parameter->name()),
                    parameter->hidden() ? " <span class=\"note\">not shown</span>" : "",
                    codeHtml(parameter->uniqueKey()), kindOf(*parameter), defaultHtml(*parameter));
    if (withBounds) html += fmt::format("<td>{}</td>", boundsText(*parameter));
    html += "</tr>\n";
  }
  return html + "</tbody>\n" + kTableEnd;
}

}  // namespace

std::string patchTables(const HXRNodeClass& patch, const ReferencePages& pages, int level) {
  return sideTables(patch, pages, true, level) + sideTables(patch, pages, false, level) +
         parameterTable(patch, level);
}

}  // namespace tarnkit::tool
