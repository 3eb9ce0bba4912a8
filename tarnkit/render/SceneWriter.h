#pragma once

#include <string>
#include <string_view>

#include "tarnkit/render/GroupScene.h"
#include "tarnkit/render/HXGraphPicture.h"

namespace tarnkit::detail {

/// Writes a scene as SVG, by appending to one text. For one picture.
class SceneWriter {
 public:
  static constexpr double kRadius = 7;  // of a box's corners
  static constexpr double kDotRadius = 4;
  static constexpr double kNoteHeight = 18;

  SceneWriter(const GroupScene& scene, const HXPictureOptions& options, std::string& out);

  void write();
  double left() const noexcept { return left_; }
  double top() const noexcept { return top_; }
  double width() const noexcept { return right_ - left_; }
  double height() const noexcept { return bottom_ - top_; }

 private:
  void frame();
  void open();
  void caption();
  void edge();
  void edgePort(const EdgePort& port);
  void wire(const Wire& wire);
  void node(const NodeBox& box);
  void titleBar(const NodeBox& box);
  void badge(const NodeBox& box, bool light);
  void line(const NodeBox& box, const PortLine& line, std::size_t index, bool isInput);
  void portLine(const NodeBox& box, const PortLine& line, double y, bool isInput);
  void heading(const NodeBox& box, const PortLine& line, double y, bool isInput);
  void value(const NodeBox& box, const PortValue& value, double y);
  void notes();
  void markClass(SceneMark mark);
  void sign(SceneMark mark);

  void dot(double x, double y, RGBA fill, bool filled, bool ringed);
  /// A text whose left edge (or right edge) is at x, whichever way it runs.
  void text(const char* classes, double x, double y, const Label& label, bool fromTheRight = false);
  void plainText(const char* classes, double x, double y, std::string_view words);
  void attribute(const char* name, double number);
  void color(const char* name, RGBA color);
  void nodeId(const HXNode* node);
  void portAddress(const HXPort* port);
  void path(const Wire& wire);
  void point(double x, double y);

  const GroupScene& scene_;
  const HXPictureOptions& options_;
  std::string& out_;
  double left_ = 0;
  double top_ = 0;
  double right_ = 0;
  double bottom_ = 0;
  std::string countsText_;
};

}  // namespace tarnkit::detail
