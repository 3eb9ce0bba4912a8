#pragma once

#include "tarnkit/text/TextFormat.h"

/// The places of the members of a node, for tables of them.
namespace tarnkit::detail::m {

inline constexpr std::size_t kID = text::placeIn(text::kNodeMembers, text::kID);
inline constexpr std::size_t kKey = text::placeIn(text::kNodeMembers, text::kKey);
inline constexpr std::size_t kIn = text::placeIn(text::kNodeMembers, text::kIn);
inline constexpr std::size_t kAfter = text::placeIn(text::kNodeMembers, text::kAfter);
inline constexpr std::size_t kView = text::placeIn(text::kNodeMembers, text::kView);
inline constexpr std::size_t kAbove = text::placeIn(text::kNodeMembers, text::kAbove);
inline constexpr std::size_t kClass = text::placeIn(text::kNodeMembers, text::kClass);
inline constexpr std::size_t kPatch = text::placeIn(text::kNodeMembers, text::kPatch);
inline constexpr std::size_t kName = text::placeIn(text::kNodeMembers, text::kName);
inline constexpr std::size_t kComment = text::placeIn(text::kNodeMembers, text::kComment);
inline constexpr std::size_t kPosition = text::placeIn(text::kNodeMembers, text::kPosition);
inline constexpr std::size_t kSelected = text::placeIn(text::kNodeMembers, text::kSelected);
inline constexpr std::size_t kInspectorPanel =
    text::placeIn(text::kNodeMembers, text::kInspectorPanel);
inline constexpr std::size_t kForceAllowsSubnodes =
    text::placeIn(text::kNodeMembers, text::kForceAllowsSubnodes);
inline constexpr std::size_t kSubnodes = text::placeIn(text::kNodeMembers, text::kSubnodes);
inline constexpr std::size_t kCanvasCenter = text::placeIn(text::kNodeMembers, text::kCanvasCenter);
inline constexpr std::size_t kOpaque = text::placeIn(text::kNodeMembers, text::kOpaque);
inline constexpr std::size_t kParameters = text::placeIn(text::kNodeMembers, text::kParameters);
inline constexpr std::size_t kParameterOrder =
    text::placeIn(text::kNodeMembers, text::kParameterOrder);
inline constexpr std::size_t kPorts = text::placeIn(text::kNodeMembers, text::kPorts);
inline constexpr std::size_t kPortGroups[] = {
    text::placeIn(text::kNodeMembers, text::kPortGroups[0]),
    text::placeIn(text::kNodeMembers, text::kPortGroups[1])};
inline constexpr std::size_t kPortGroupOrder[] = {
    text::placeIn(text::kNodeMembers, text::kPortGroupOrder[0]),
    text::placeIn(text::kNodeMembers, text::kPortGroupOrder[1])};
inline constexpr std::size_t kValues = text::placeIn(text::kNodeMembers, text::kValues);
inline constexpr std::size_t kPublishedInputs =
    text::placeIn(text::kNodeMembers, text::kPublished[0]);
inline constexpr std::size_t kPublishedOutputs =
    text::placeIn(text::kNodeMembers, text::kPublished[1]);
inline constexpr std::size_t kArrayOutputs = text::placeIn(text::kNodeMembers, text::kArrayOutputs);
inline constexpr std::size_t kConnections = text::placeIn(text::kNodeMembers, text::kConnections);

}  // namespace tarnkit::detail::m
