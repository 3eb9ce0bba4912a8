#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/render/LayeredLayout.h"

namespace tarnkit::test {

using detail::LayoutPoint;

/// An element of a picture.
struct Element {
  std::string name;
  std::map<std::string, std::string> attributes;
  std::string text;  // what is to be seen, without a tooltip
  const Element* parent = nullptr;

  bool has(const std::string& attribute) const { return attributes.count(attribute) > 0; }
  const std::string& at(const std::string& attribute) const { return attributes.at(attribute); }
  double number(const std::string& attribute) const;
  bool isOf(std::string_view kind) const;
  bool isBelow(const Element& other) const;
};

struct Span {
  double from = 0;
  double to = 0;
};

/// A picture as whoever draws it reads it.
class Picture {
 public:
  explicit Picture(std::string_view svg);
  explicit Picture(const HXGroup& group);

  std::vector<const Element*> each(std::string_view kind, const Element* below = nullptr) const;
  const Element& only(std::string_view kind, const Element* below = nullptr) const;
  const Element& node(const std::string& key) const;
  const Element& root() const { return elements_.front(); }

  /// Where the element's own coordinates begin.
  static LayoutPoint origin(const Element& element);
  /// From where to where a text runs, in the fonts of the style.
  static Span extent(const Element& text);
  /// The points that the line of a path goes through.
  static std::vector<LayoutPoint> vertices(const Element& path);
  struct Curve {
    LayoutPoint from;
    LayoutPoint firstControl;
    LayoutPoint secondControl;
    LayoutPoint to;
  };
  /// The curves of a path, without its straight pieces.
  static std::vector<Curve> curves(const Element& path);
  static std::vector<double> numbers(std::string_view text);

 private:
  std::deque<Element> elements_;
};

/// A document whose nodes stand where the test puts them.
class PictureTest : public ::testing::Test {
 protected:
  Ref<HXNode> place(const char* patch, HXPoint at, HXNode* to = nullptr,
                    const char* name = nullptr);
  /// A node that holds a group.
  Ref<HXNode> placeGroup(HXPoint at, HXNode* to = nullptr, const char* name = nullptr);
  static HXPatchPort& port(const Ref<HXNode>& node, const char* key);
  Ref<HXConnection> connect(HXPort& from, HXPort& to) { return document->connectPort(from, to); }

  Ref<HXDocument> document = make<HXDocument>();
};

}  // namespace tarnkit::test
