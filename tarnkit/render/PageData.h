#pragma once

#include <string>

#include "tarnkit/render/GroupScene.h"
#include "tarnkit/render/PageTables.h"

namespace tarnkit::detail {

/// Appends what a page's script draws a group from and tells of it, as JSON that may stand in a
/// <script> element. Numbers are those of entries of the tables, -1 for none; sizes and places are
/// in canvas units unless told otherwise; what a group has not of is left out:
/// - "title" (texts), "notes" as texts, "frame" of the picture: [left, top, width, height]
/// - "edge" of a group that publishes ports: [left, top, width, height], and "edgePorts": [label
///   (texts), key (texts), color (colors), 1 for an input, mark, width of the label, height of the
///   middle] with where the inner port stands, unless it is gone: [x, y]
/// - "emptyAt": the height of the words that tell that there are no nodes
/// - of the nodes, each in its order: "keys", of which [before, first, count] stands for as many
///   keys that count on behind the same beginning; "titles" (texts); "forms" (forms); "x" and "y",
///   each the difference from the one before, in units of 1 / "unit"
/// - "groups" in them: [node, key (texts), count, width of the badge or 0 for none]
/// - "marks": [node, mark, 1 where it holds changes]; a mark is the number of a SceneMark
/// - "wires", four numbers each: the node at the output less that of the wire before, the port's
/// row
///   in the node's outputs, the node at the input less the one at the output, the row in its
///   inputs. Where the first row is -1 the wire is the next of "odd": [node at the output, x, y,
///   node at the input, x, y, color (colors), mark, output, input], each of these two [node, row],
///   or [node's key, port's key, node's name, port's name] (texts) for one elsewhere, or 0 for one
///   that is gone
/// - "via": [wire, x, y, x2…], the level pieces that the wire runs through
/// Linear in the scene and the texts.
void appendPageData(std::string& out, const GroupScene& scene, PageTables& tables);

}  // namespace tarnkit::detail
