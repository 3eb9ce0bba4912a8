#pragma once

#include <string>

#include "tarnkit/render/GroupScene.h"

namespace tarnkit::detail {

/// Appends what a page's script knows of a group, as JSON that may stand in a <script> element:
/// `{"title","notes":[…],"nodes":[{"key","name","patch","patchName","category","group","count",
/// "complaint","color","box":[x,y,width,height],"inputs":[port…],"outputs":[port…],
/// "parameters":[{"name","value","swatch"}…]}…],"wires":[{"from":end,"to":end}…]}` with port =
/// `{"key","name","portGroup","hidden","color","value","swatch","set","published"}` and end =
/// `[node key, port key, node name, port name]`. A swatch is the colour that a value is; what does
/// not apply is left out. Linear in the scene and the texts.
void appendPageData(std::string& out, const GroupScene& scene);

}  // namespace tarnkit::detail
