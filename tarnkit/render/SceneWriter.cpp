#include "tarnkit/render/SceneWriter.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/render/Markup.h"
#include "tarnkit/render/PictureColors.h"
#include "tarnkit/render/WirePath.h"

namespace tarnkit::detail {

namespace {

constexpr double kCaptionHeight = 46;
constexpr double kLeastWidth = 320;
constexpr double kLeastHeight = 120;
constexpr Font kCaptionFont{15, true};
constexpr Font kNoteFont{11, false};

}  // namespace

SceneWriter::SceneWriter(const GroupScene& scene, const HXPictureOptions& options, std::string& out)
    : scene_(scene), options_(options), out_(out) {
  frame();
  assert(left_ < right_ && top_ < bottom_);
}

void SceneWriter::frame() {
  left_ = scene_.left;
  right_ = scene_.right;
  top_ = scene_.top;
  bottom_ = scene_.bottom;
  if (scene_.boxes.empty() && !scene_.hasEdge()) {
    left_ = -kLeastWidth / 2;
    right_ = kLeastWidth / 2;
    top_ = -kLeastHeight / 2;
    bottom_ = kLeastHeight / 2;
  }
  left_ -= GroupScene::kMargin;
  right_ += GroupScene::kMargin;
  top_ -= GroupScene::kMargin;
  bottom_ += GroupScene::kMargin;
  if (options_.caption) {
    top_ -= kCaptionHeight;
    countsText_ = std::to_string(scene_.boxes.size());
    countsText_ += scene_.boxes.size() == 1 ? " node · " : " nodes · ";
    countsText_ += std::to_string(scene_.wires.size());
    countsText_ += scene_.wires.size() == 1 ? " connection" : " connections";
    right_ = std::max(right_, left_ + kLeastWidth);
  }
  for (const std::string& words : scene_.notes) {
    bottom_ += kNoteHeight;
    right_ = std::max(right_, left_ + textWidth(words, kNoteFont) + 2 * GroupScene::kMargin);
  }
  left_ = std::floor(left_);
  top_ = std::floor(top_);
  right_ = std::ceil(right_);
  bottom_ = std::ceil(bottom_);
}

void SceneWriter::write() {
  open();
  if (options_.caption) caption();
  if (scene_.hasEdge()) edge();
  for (const Wire& each : scene_.wires) wire(each);
  for (const NodeBox& box : scene_.boxes) node(box);
  if (scene_.boxes.empty()) {
    const double middle = (left_ + right_) / 2;
    out_ += "<text class=\"tk-note tk-empty\" text-anchor=\"middle\"";
    attribute("x", middle);
    attribute("y", (scene_.top + scene_.bottom) / 2);
    out_ += ">This group is empty.</text>\n";
  }
  notes();
  out_ += "</svg>\n";
}

void SceneWriter::open() {
  if (!options_.embedded) out_ += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  out_ += "<svg xmlns=\"http://www.w3.org/2000/svg\" class=\"tk-picture\" role=\"img\" viewBox=\"";
  for (const double number : {left_, top_, width(), height()}) {
    appendNumber(out_, number);
    out_ += ' ';
  }
  out_.back() = '"';
  attribute("width", width());
  attribute("height", height());
  out_ += " aria-label=\"";
  appendEscaped(out_, titleOfGroup(scene_.group));
  out_ += "\" data-group=\"";
  appendEscaped(out_, scene_.keyOf(scene_.group));
  out_ += scene_.laidOut ? "\" data-laid-out=\"true\">\n" : "\">\n";
  if (!options_.embedded) {
    out_ += "<style>\n";
    out_ += pictureStyle(options_.theme);
    out_ += "</style>\n";
  }
  out_ += "<rect class=\"tk-canvas\"";
  attribute("x", left_);
  attribute("y", top_);
  attribute("width", width());
  attribute("height", height());
  out_ += "/>\n";
}

void SceneWriter::caption() {
  const double room = right_ - left_ - 2 * GroupScene::kMargin;
  const String name = titleOfGroup(scene_.group);
  text("tk-caption", left_ + GroupScene::kMargin, top_ + 36, Label(name, kCaptionFont, room));
  plainText("tk-counts", left_ + GroupScene::kMargin, top_ + 54, countsText_);
}

void SceneWriter::edge() {
  out_ += "<rect class=\"tk-frame\" rx=\"12\"";
  attribute("x", scene_.leftEdge);
  attribute("y", scene_.top);
  attribute("width", scene_.rightEdge - scene_.leftEdge);
  attribute("height", scene_.bottom - scene_.top);
  out_ += "/>\n";
  for (const EdgePort& port : scene_.edgePorts) edgePort(port);
}

void SceneWriter::edgePort(const EdgePort& port) {
  const double width = port.label.width + 2 * EdgePort::kPadding;
  const double half = EdgePort::kHeight / 2;
  const double sign = port.isInput ? 1 : -1;
  const double at = port.isInput ? scene_.leftEdge : scene_.rightEdge;
  const double tip = at + sign * width;
  out_ += port.hasInner ? "<g class=\"tk-edge" : "<g class=\"tk-edge tk-missing";
  markClass(port.mark);
  out_ += "\" id=\"";
  out_ += options_.idPrefix;
  out_ += port.mark == SceneMark::removed ? "gone--" : "edge--";
  const String key = port.port->uniqueKey();
  appendIdPart(out_, scene_.group.uniqueKey());
  out_ += "--";
  appendIdPart(out_, key);
  out_ += "\" data-port=\"";
  appendEscaped(out_, key);
  out_ += port.isInput ? "\" data-orientation=\"input\">" : "\" data-orientation=\"output\">";
  if (port.hasInner) {
    out_ += "<path class=\"tk-link\"";
    color("stroke", port.color);
    Wire link;
    link.from = port.isInput ? LayoutPoint{tip, port.y} : port.inner;
    link.to = port.isInput ? port.inner : LayoutPoint{tip, port.y};
    path(link);
    out_ += "/>";
  }
  out_ += "<path class=\"tk-tab\" d=\"M";
  point(at, port.y - half);
  const double straight = sign * (width - 6);
  out_ += 'h';
  appendNumber(out_, straight);
  out_ += port.isInput ? "a6 6 0 0 1 6 6v" : "a6 6 0 0 0 -6 6v";
  appendNumber(out_, EdgePort::kHeight - 12);
  out_ += port.isInput ? "a6 6 0 0 1 -6 6h" : "a6 6 0 0 0 6 6h";
  appendNumber(out_, -straight);
  out_ += "z\"/>";
  text("tk-name", at + sign * EdgePort::kPadding, port.y + 4, port.label, !port.isInput);
  dot(tip, port.y, port.color, port.hasInner, false);
  out_ += "</g>\n";
}

void SceneWriter::wire(const Wire& wire) {
  const String key = wire.connection->uniqueKey();
  out_ += "<path class=\"tk-wire";
  markClass(wire.mark);
  out_ += "\" id=\"";
  out_ += options_.idPrefix;
  out_ += wire.mark == SceneMark::removed ? "gone--" : "wire--";
  appendIdPart(out_, scene_.group.uniqueKey());
  out_ += "--";
  if (key.isNil()) {
    appendNumber(out_, static_cast<std::size_t>(&wire - scene_.wires.data()));
  } else {
    appendIdPart(out_, key);
  }
  out_ += "\" data-connection=\"";
  appendEscaped(out_, key);
  out_ += "\" data-from=\"";
  portAddress(wire.output);
  out_ += "\" data-to=\"";
  portAddress(wire.input);
  out_ += '"';
  color("stroke", wire.color);
  path(wire);
  out_ += "/>\n";
  if (wire.fromBox >= 0 && wire.toBox >= 0) return;
  const LayoutPoint& end = wire.fromBox < 0 ? wire.from : wire.to;
  out_ += "<circle class=\"tk-far\" r=\"3\"";
  attribute("cx", end.x);
  attribute("cy", end.y);
  color("stroke", wire.color);
  out_ += "/>\n";
}

void SceneWriter::node(const NodeBox& box) {
  const HXNode& node = *box.node;
  out_ += box.complaint.full.isNil() ? "<g class=\"tk-node" : "<g class=\"tk-node tk-missing";
  markClass(box.mark);
  if (box.holdsChanges) out_ += " holds-changes";
  out_ += "\" id=\"";
  nodeId(&node);
  out_ += "\" data-node=\"";
  appendEscaped(out_, scene_.keyOf(node));
  if (const String patch = patchNameOfNode(node); !patch.isNil()) {
    out_ += "\" data-patch=\"";
    appendEscaped(out_, patch);
  }
  if (const auto& group = node.subnodeGroup()) {
    out_ += "\" data-group=\"";
    appendEscaped(out_, scene_.keyOf(*group));
    out_ += "\" data-count=\"";
    appendNumber(out_, std::size_t{group->subnodesInForce().size()});
  }
  out_ += "\" transform=\"translate(";
  point(box.x, box.y);
  out_ += ")\">\n";
  if (box.hasBadge()) {
    out_ += "<rect class=\"tk-stack\" rx=\"7\" x=\"4\" y=\"4\"";
    attribute("width", box.width);
    attribute("height", box.height);
    out_ += "/>";
  }
  out_ += "<rect class=\"tk-body\" rx=\"7\"";
  attribute("width", box.width);
  attribute("height", box.height);
  out_ += "/>";
  titleBar(box);
  for (std::size_t i = 0; i < box.inputs.size(); ++i) line(box, box.inputs[i], i, true);
  for (std::size_t i = 0; i < box.outputs.size(); ++i) line(box, box.outputs[i], i, false);
  if (!box.complaint.full.isNil()) {
    const double y = NodeBox::lineY(std::max(box.inputs.size(), box.outputs.size()));
    text("tk-value tk-warn", NodeBox::kInset, y + 3.5, box.complaint);
  }
  if (box.mark != SceneMark::none) sign(box.mark);
  out_ += "</g>\n";
}

void SceneWriter::markClass(SceneMark mark) {
  if (mark == SceneMark::none) return;
  out_ += " is-";
  out_ += nameOf(mark);
}

// What no colour tells to everybody.
void SceneWriter::sign(SceneMark mark) {
  out_ += "<g class=\"tk-sign\"><title>";
  out_ += nameOf(mark);
  out_ += "</title><circle r=\"8\"/><path d=\"";
  out_ += mark == SceneMark::added     ? "M-4 0h8M0 -4v8"
          : mark == SceneMark::removed ? "M-4 0h8"
                                       : "M-4 1.5c2 -4 3 -4 4 -1.5s2 2.5 4 -1.5";
  out_ += "\"/></g>";
}

void SceneWriter::titleBar(const NodeBox& box) {
  const RGBA bar = box.node->defaultColor();
  const bool light = wantsLightText(bar);
  const bool whole = box.height <= NodeBox::kTitleHeight;
  out_ += "<path class=\"tk-bar\"";
  color("fill", bar);
  out_ += " d=\"M0 ";
  if (whole) {
    out_ += "7v12a7 7 0 0 0 7 7h";
    appendNumber(out_, box.width - 2 * kRadius);
    out_ += "a7 7 0 0 0 7 -7v-12";
  } else {
    out_ += "26h";
    appendNumber(out_, box.width);
    out_ += "v-19";
  }
  out_ += "a7 7 0 0 0 -7 -7h";
  appendNumber(out_, 2 * kRadius - box.width);
  out_ += "a7 7 0 0 0 -7 7z\"/>";
  text(light ? "tk-title tk-light" : "tk-title tk-dark", NodeBox::kInset, 17.5, box.title);
  if (box.hasBadge()) badge(box, light);
  out_ += '\n';
}

void SceneWriter::badge(const NodeBox& box, bool light) {
  const double x = box.width - NodeBox::kInset + 3 - box.badgeWidth();
  out_ += light ? "<rect class=\"tk-badge tk-light\" rx=\"8\" y=\"5\" height=\"16\""
                : "<rect class=\"tk-badge tk-dark\" rx=\"8\" y=\"5\" height=\"16\"";
  attribute("x", x);
  attribute("width", box.badgeWidth());
  out_ += "/>";
  text(light ? "tk-count tk-light" : "tk-count tk-dark", x + NodeBox::kBadgePadding, 16.5,
       box.countText);
}

void SceneWriter::line(const NodeBox& box, const PortLine& line, std::size_t index, bool isInput) {
  const double y = NodeBox::lineY(index);
  if (line.kind == PortLine::Kind::port) {
    portLine(box, line, y, isInput);
  } else {
    heading(box, line, y, isInput);
  }
}

void SceneWriter::portLine(const NodeBox& box, const PortLine& line, double y, bool isInput) {
  const HXPort& port = *line.port;
  const String key = port.uniqueKey();
  out_ += line.hasChanged ? "<g class=\"tk-port is-changed\" id=\"" : "<g class=\"tk-port\" id=\"";
  nodeId(box.node);
  out_ += "--";
  appendIdPart(out_, key);
  out_ += "\" data-port=\"";
  appendEscaped(out_, key);
  out_ += isInput ? "\" data-orientation=\"input\"" : "\" data-orientation=\"output\"";
  if (line.connected) out_ += " data-connected=\"true\"";
  const HXSymbolicPort* const published = port.symbolicPort();
  if (published) {
    out_ += " data-published=\"";
    appendEscaped(out_, published->uniqueKey());
    out_ += '"';
  }
  out_ += '>';
  dot(isInput ? 0 : box.width, y, port.defaultColor(), line.connected || published != nullptr,
      published != nullptr);
  text("tk-name", isInput ? NodeBox::kInset : box.width - NodeBox::kInset, y + 4, line.label,
       !isInput);
  if (line.value.kind != PortValue::Kind::none) value(box, line.value, y);
  out_ += "</g>\n";
}

void SceneWriter::heading(const NodeBox& box, const PortLine& line, double y, bool isInput) {
  const bool collapsed = line.kind == PortLine::Kind::collapsed;
  out_ += collapsed ? "<g class=\"tk-collapsed\" data-port-group=\""
                    : "<g class=\"tk-group\" data-port-group=\"";
  appendEscaped(out_, line.group->groupKey());
  out_ += isInput ? "\" data-orientation=\"input\">" : "\" data-orientation=\"output\">";
  const double chevron = collapsed ? NodeBox::kChevronWidth : 0;
  const double edge = isInput ? NodeBox::kInset : box.width - NodeBox::kInset;
  if (collapsed) {
    out_ += line.connected ? "<circle class=\"tk-many\" r=\"4\""
                           : "<circle class=\"tk-many tk-open\" r=\"4\"";
    attribute("cx", isInput ? 0 : box.width);
    attribute("cy", y);
    out_ += "/><path class=\"tk-chevron\" d=\"M";
    point(isInput ? edge + 1 : edge - 4, y - 3);
    out_ += "l3 3l-3 3\"/>";
  }
  text("tk-heading", isInput ? edge + chevron : edge - chevron, y + 4, line.label, !isInput);
  out_ += "</g>\n";
}

void SceneWriter::value(const NodeBox& box, const PortValue& value, double y) {
  const double x = box.valueX;
  switch (value.kind) {
    case PortValue::Kind::none:
      return;
    case PortValue::Kind::boolean:
      out_ += value.boolean ? "<rect class=\"tk-switch tk-on\" rx=\"6\" width=\"20\" height=\"12\""
                            : "<rect class=\"tk-switch\" rx=\"6\" width=\"20\" height=\"12\"";
      attribute("x", x);
      attribute("y", y - 6);
      out_ += value.boolean ? "><title>on</title></rect><circle class=\"tk-knob\" r=\"4\""
                            : "><title>off</title></rect><circle class=\"tk-knob\" r=\"4\"";
      attribute("cx", x + (value.boolean ? 14 : 6));
      attribute("cy", y);
      out_ += "/>";
      return;
    case PortValue::Kind::color:
      for (const bool below : {true, false}) {
        out_ += "<rect class=\"tk-swatch\" rx=\"3\" width=\"22\" height=\"12\"";
        attribute("x", x);
        attribute("y", y - 6);
        color("fill", below ? OIColorWhiteRGBA : value.color);
        if (below) {
          out_ += "/>";
          continue;
        }
        attribute("fill-opacity", std::clamp(static_cast<double>(value.color.alpha), 0.0, 1.0));
        out_ += "><title>";
        appendEscaped(out_, value.text.full);
        out_ += "</title></rect>";
      }
      return;
    case PortValue::Kind::text:
      out_ += "<rect class=\"tk-chip\" rx=\"3\" height=\"14\"";
      attribute("x", x);
      attribute("y", y - 7);
      attribute("width", value.text.width + 2 * NodeBox::kChipPadding);
      out_ += "/>";
      text(value.isSet ? "tk-value tk-set" : "tk-value", x + NodeBox::kChipPadding, y + 3.5,
           value.text);
      return;
  }
}

void SceneWriter::notes() {
  double y = bottom_ - GroupScene::kMargin + 8 -
             kNoteHeight * (static_cast<double>(scene_.notes.size()) - 1);
  for (const std::string& words : scene_.notes) {
    plainText("tk-note", left_ + GroupScene::kMargin, y, words);
    y += kNoteHeight;
  }
}

void SceneWriter::dot(double x, double y, RGBA fill, bool filled, bool ringed) {
  if (ringed) {
    out_ += "<circle class=\"tk-ring\" r=\"7\"";
    attribute("cx", x);
    attribute("cy", y);
    color("stroke", fill);
    out_ += "/>";
  }
  out_ += filled ? "<circle class=\"tk-dot\"" : "<circle class=\"tk-dot tk-open\"";
  attribute("cx", x);
  attribute("cy", y);
  attribute("r", kDotRadius);
  color("stroke", fill);
  if (filled) color("fill", fill);
  out_ += "/>";
}

void SceneWriter::text(const char* classes, double x, double y, const Label& label,
                       bool fromTheRight) {
  out_ += "<text class=\"";
  out_ += classes;
  out_ += '"';
  attribute("x", x);
  attribute("y", y);
  const bool rightToLeft = isRightToLeft(label.full);
  if (rightToLeft) out_ += " direction=\"rtl\" unicode-bidi=\"embed\"";
  // A text that runs from the right starts at its right edge.
  if (fromTheRight != rightToLeft) out_ += " text-anchor=\"end\"";
  out_ += '>';
  if (label.shortened) {
    out_ += "<title>";
    appendEscaped(out_, label.full);
    out_ += "</title>";
  }
  appendEscaped(out_, label.shown());
  if (label.shortened) out_ += "…";
  out_ += "</text>";
}

void SceneWriter::plainText(const char* classes, double x, double y, std::string_view words) {
  out_ += "<text class=\"";
  out_ += classes;
  out_ += '"';
  attribute("x", x);
  attribute("y", y);
  out_ += '>';
  appendEscaped(out_, words);
  out_ += "</text>\n";
}

void SceneWriter::attribute(const char* name, double number) {
  out_ += ' ';
  out_ += name;
  out_ += "=\"";
  appendNumber(out_, number);
  out_ += '"';
}

void SceneWriter::color(const char* name, RGBA color) {
  out_ += ' ';
  out_ += name;
  out_ += "=\"";
  appendColor(out_, color);
  out_ += '"';
}

void SceneWriter::nodeId(const HXNode* node) {
  out_ += options_.idPrefix;
  appendIdPart(out_, scene_.keyOf(*node));
}

void SceneWriter::portAddress(const HXPort* port) {
  const HXNode* const node = port ? port->node() : nullptr;
  if (!node) return;
  appendEscaped(out_, scene_.keyOf(*node));
  out_ += '/';
  appendEscaped(out_, port->uniqueKey());
}

void SceneWriter::point(double x, double y) {
  appendNumber(out_, x);
  out_ += ' ';
  appendNumber(out_, y);
}

void SceneWriter::path(const Wire& wire) {
  out_ += " d=\"M";
  point(wire.from.x, wire.from.y);
  eachWirePiece(wire.from, wire.to, wire.via, [&](const WirePiece& piece) {
    if (piece.isStraight) {
      out_ += 'L';
    } else {
      out_ += 'C';
      point(piece.firstControl.x, piece.firstControl.y);
      out_ += ' ';
      point(piece.secondControl.x, piece.secondControl.y);
      out_ += ' ';
    }
    point(piece.end.x, piece.end.y);
  });
  out_ += '"';
}

}  // namespace tarnkit::detail
