#include "tools/tarnkit/reference/PatchSummary.h"

#include <fmt/format.h>

#include <vector>

#include "tarnkit/patches/HXRNode.h"
#include "tools/tarnkit/reference/PatchTexts.h"
#include "tools/tarnkit/reference/ReferencePages.h"

namespace tarnkit::tool {

namespace {

constexpr std::size_t kMostNames = 4;

bool isBlank(const String& name) {
  return name.view().find_first_not_of(" \t\n\r") == std::string_view::npos;
}

/// "A", "A and B", "A, B and C", "A, B, C, D and 3 more".
std::string listed(const std::vector<std::string>& names) {
  std::string text;
  const std::size_t shown = names.size() > kMostNames + 1 ? kMostNames : names.size();
  for (std::size_t i = 0; i < shown; ++i) {
    if (i > 0) text += i + 1 == names.size() ? " and " : ", ";
    text += names[i];
  }
  if (shown < names.size()) text += fmt::format(" and {} more", names.size() - shown);
  return text;
}

std::vector<std::string> portNames(const HXRPortGroupCollection& groups) {
  std::vector<std::string> names;
  for (const auto& entry : groups.portGroupsInForce()) {
    for (const auto& port : entry.value->ports()) {
      const String& name = port->name();
      if (!isBlank(name)) names.push_back(name.toStdString());
    }
  }
  return names;
}

std::string derivedSummary(const HXRNodeClass& patch) {
  const HXRNode& definition = patch.prototype();
  const auto inputs = portNames(definition.portLayout().inputs());
  const auto outputs = portNames(definition.portLayout().outputs());
  std::vector<std::string> parameters;
  for (const auto& parameter : definition.parameters()) {
    if (parameter->hidden() || isBlank(parameter->name())) continue;
    parameters.push_back(parameter->name().toStdString());
  }
  std::string text = patch.libraryCategory()
                         ? fmt::format("A patch of the category {}", categoryOf(patch))
                         : "A patch of no category";
  if (inputs.empty() && outputs.empty()) {
    text += definition.portLayout().ports().empty() ? " without ports" : " without named ports";
  } else {
    text += " that ";
    if (!inputs.empty()) text += "takes " + listed(inputs);
    if (!inputs.empty() && !outputs.empty()) text += " and ";
    if (!outputs.empty()) text += "gives " + listed(outputs);
  }
  text += '.';
  if (!parameters.empty()) text += fmt::format(" It is set up by {}.", listed(parameters));
  return text;
}

}  // namespace

std::string summaryOf(const HXRNodeClass& patch) {
  const auto text = patchText(patch.name());
  return text.empty() ? derivedSummary(patch) : std::string(text);
}

std::string_view firstSentence(std::string_view text) {
  const auto end = text.find(". ");
  return end == std::string_view::npos ? text : text.substr(0, end + 1);
}

}  // namespace tarnkit::tool
