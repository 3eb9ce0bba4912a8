#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/platform/text/String.h"
#include "tarnkit/text/TextLines.h"

/// The words of the text form, for who writes and who reads it.
namespace tarnkit::detail::text {

inline constexpr std::string_view kFormat = "tarnkit";
inline constexpr std::int32_t kFormatVersion = 1;
inline constexpr std::string_view kNodes = "nodes";
inline constexpr std::string_view kOtherConnections = "otherConnections";
inline constexpr std::string_view kImages = "images";
inline constexpr std::string_view kLooseImages = "looseImages";

// Of a node and of the document.
inline constexpr std::string_view kID = "id";
inline constexpr std::string_view kKey = "key";
inline constexpr std::string_view kIn = "in";
inline constexpr std::string_view kAfter = "after";
inline constexpr std::string_view kView = "view";
inline constexpr std::string_view kAbove = "above";
inline constexpr std::string_view kClass = "class";
inline constexpr std::string_view kPatch = "patch";
inline constexpr std::string_view kName = "name";
inline constexpr std::string_view kComment = "comment";
inline constexpr std::string_view kPosition = "position";
inline constexpr std::string_view kSelected = "selected";
inline constexpr std::string_view kInspectorPanel = "inspectorPanel";
inline constexpr std::string_view kForceAllowsSubnodes = "forceAllowsSubnodes";
inline constexpr std::string_view kSubnodes = "subnodes";
inline constexpr std::string_view kCanvasCenter = "canvasCenter";
inline constexpr std::string_view kOpaque = "opaque";
inline constexpr std::string_view kParameters = "parameters";
inline constexpr std::string_view kParameterOrder = "parameterOrder";
inline constexpr std::string_view kPorts = "ports";
inline constexpr std::string_view kPortGroups[] = {"inputGroups", "outputGroups"};
inline constexpr std::string_view kPortGroupOrder[] = {"inputGroupOrder", "outputGroupOrder"};
inline constexpr std::string_view kValues = "values";
inline constexpr std::string_view kPublished[] = {"publishedInputs", "publishedOutputs"};
inline constexpr std::string_view kArrayOutputs = "arrayOutputs";
inline constexpr std::string_view kConnections = "connections";

// Kinds of subnode groups.
inline constexpr std::string_view kNoGroup = "none";
inline constexpr std::string_view kGroup = "group";
inline constexpr std::string_view kViews = "views";

// Of what stands in one line.
inline constexpr std::string_view kKind = "kind";
inline constexpr std::string_view kValue = "value";
inline constexpr std::string_view kSameAs = "sameAs";
inline constexpr std::string_view kLoose = "loose";
inline constexpr std::string_view kPictureOf = "pictureOf";
inline constexpr std::string_view kFile = "file";
inline constexpr std::string_view kPNG = "png";
inline constexpr std::string_view kPort = "port";
inline constexpr std::string_view kOrientation = "orientation";
inline constexpr std::string_view kRelationship = "relationship";
inline constexpr std::string_view kLinked = "linked";
inline constexpr std::string_view kHidden = "hidden";
inline constexpr std::string_view kCollapsedCanvas = "collapsedCanvasGroup";
inline constexpr std::string_view kCollapsedSidebar = "collapsedSidebarGroup";
inline constexpr std::string_view kIsPublished = "published";
inline constexpr std::string_view kGroupKey = "groupKey";
inline constexpr std::string_view kFrom = "from";
inline constexpr std::string_view kOutputPlace = "outputPlace";
inline constexpr std::string_view kInputPlace = "inputPlace";
inline constexpr std::string_view kOutput = "output";
inline constexpr std::string_view kInput = "input";
inline constexpr std::string_view kShownOutput = "shownOutput";
inline constexpr std::string_view kShownInput = "shownInput";
inline constexpr std::string_view kHeldBy = "heldBy";
inline constexpr std::string_view kBoth = "both";

// Kinds of values, by their codes.
inline constexpr std::string_view kValueKinds[] = {"nil",     "boolean", "index", "number",
                                                   "radians", "degrees", "color", "string"};

/// What a node may have, in the order in which it is written. The document, which stands in no
/// group, has none of the second to the sixth but the key.
inline constexpr std::array kNodeMembers{kID,
                                         kKey,
                                         kIn,
                                         kAfter,
                                         kView,
                                         kAbove,
                                         kClass,
                                         kPatch,
                                         kName,
                                         kComment,
                                         kPosition,
                                         kSelected,
                                         kInspectorPanel,
                                         kForceAllowsSubnodes,
                                         kSubnodes,
                                         kCanvasCenter,
                                         kOpaque,
                                         kParameters,
                                         kParameterOrder,
                                         kPorts,
                                         kPortGroups[0],
                                         kPortGroupOrder[0],
                                         kPortGroups[1],
                                         kPortGroupOrder[1],
                                         kValues,
                                         kPublished[0],
                                         kPublished[1],
                                         kArrayOutputs,
                                         kConnections};
/// What the document has beside that.
inline constexpr std::array kTopMembers{kFormat, kNodes, kOtherConnections, kImages, kLooseImages};

/// The place of a member among those.
template <std::size_t count>
constexpr std::size_t placeIn(const std::array<std::string_view, count>& members,
                              std::string_view name) {
  std::size_t place = 0;
  while (members[place] != name) ++place;
  return place;
}

inline constexpr std::string_view kNodeClasses[] = {
    "HXNode", "HXReplicatorNode", "HXLoopNode", "HXRemoteGroupNode", "HXRemoteGroupProcessorNode"};
inline bool isNodeClass(std::string_view name) noexcept {
  return std::find(std::begin(kNodeClasses), std::end(kNodeClasses), name) !=
         std::end(kNodeClasses);
}

/// How many connections a port takes that nobody says more about.
inline constexpr std::int32_t usualRelationship(std::int32_t orientation) noexcept {
  return orientation == 1 ? 2 : 1;
}

/// The name of a node that was given none. Of a patch that is unknown, or was, nobody can say it.
inline String usualName(const HXRNodeClass* patch, bool isUnknown) {
  if (isUnknown) return {};
  return patch ? patch->defaultName() : HXRNode::kClass.defaultName();
}

/// The kind of a value that stands there as a bare number, at a port with a default of that kind.
inline constexpr std::int64_t usualNumber(std::int64_t defaultKind) noexcept {
  return defaultKind >= 2 && defaultKind <= 5 ? defaultKind : 3;
}

inline void writeTexts(TextLines& lines, const std::vector<String>& texts) {
  lines.out() += '[';
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (i != 0) lines.out() += ", ";
    lines.textOrNull(texts[i].isNil(), texts[i]);
  }
  lines.out() += ']';
}

}  // namespace tarnkit::detail::text
