#include "tests/render/PictureFixture.h"

#include <cctype>
#include <sstream>

#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/render/HXGraphPicture.h"
#include "tarnkit/render/TextMetrics.h"

namespace tarnkit::test {

using namespace detail;

namespace {

std::string unescaped(std::string_view text) {
  constexpr std::pair<std::string_view, char> kEntities[] = {
      {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}};
  std::string plain;
  while (!text.empty()) {
    std::size_t taken = 1;
    char character = text[0];
    for (const auto& [entity, meant] : kEntities) {
      if (text.substr(0, entity.size()) != entity) continue;
      taken = entity.size();
      character = meant;
    }
    plain += character;
    text.remove_prefix(taken);
  }
  return plain;
}

// The inside of a start tag: the name and `name="value"`s.
void readTag(Element& element, std::string_view tag) {
  const auto nameEnd = std::min(tag.find_first_of(" /"), tag.size());
  element.name = tag.substr(0, nameEnd);
  for (auto at = tag.find('='); at != std::string_view::npos; at = tag.find('=', at)) {
    const auto name = tag.rfind(' ', at) + 1;
    const auto end = tag.find('"', at + 2);
    element.attributes[std::string(tag.substr(name, at - name))] =
        unescaped(tag.substr(at + 2, end - at - 2));
    at = end;
  }
}

Font fontOf(const Element& text) {
  const std::pair<const char*, Font> fonts[] = {{"tk-title", {12, true}},
                                                {"tk-count", {10, true}},
                                                {"tk-heading", {10, true}},
                                                {"tk-value", {10, false}},
                                                {"tk-caption", {15, true}}};
  for (const auto& [kind, font] : fonts) {
    if (text.isOf(kind)) return font;
  }
  return {11, false};
}

}  // namespace

double Element::number(const std::string& attribute) const { return std::stod(at(attribute)); }

bool Element::isOf(std::string_view kind) const {
  const auto found = attributes.find("class");
  if (found == attributes.end()) return false;
  std::istringstream words(found->second);
  for (std::string word; words >> word;) {
    if (word == kind) return true;
  }
  return false;
}

bool Element::isBelow(const Element& other) const {
  for (const Element* at = parent; at; at = at->parent) {
    if (at == &other) return true;
  }
  return false;
}

Picture::Picture(const HXGroup& group) : Picture(graphPicture(group)) {}

Picture::Picture(std::string_view svg) {
  Element* open = nullptr;
  std::size_t at = svg.find("<svg");
  while (at < svg.size()) {
    if (svg[at] != '<') {
      const auto end = std::min(svg.find('<', at), svg.size());
      if (open) open->text += unescaped(svg.substr(at, end - at));
      at = end;
      continue;
    }
    const auto end = svg.find('>', at);
    const auto tag = svg.substr(at + 1, end - at - 1);
    at = end + 1;
    if (tag.front() == '/') {
      if (open) open = const_cast<Element*>(open->parent);
      continue;
    }
    Element& element = elements_.emplace_back();
    readTag(element, tag);
    element.parent = open;
    if (tag.back() != '/') open = &element;
  }
}

std::vector<const Element*> Picture::each(std::string_view kind, const Element* below) const {
  std::vector<const Element*> found;
  for (const Element& element : elements_) {
    if (element.isOf(kind) && (!below || element.isBelow(*below))) found.push_back(&element);
  }
  return found;
}

const Element& Picture::only(std::string_view kind, const Element* below) const {
  const auto found = each(kind, below);
  if (found.size() != 1) throw std::runtime_error("not one but " + std::to_string(found.size()));
  return *found.front();
}

const Element& Picture::node(const std::string& key) const {
  for (const Element* node : each("tk-node")) {
    if (node->at("data-node") == key) return *node;
  }
  throw std::runtime_error("no node " + key);
}

LayoutPoint Picture::origin(const Element& element) {
  LayoutPoint origin;
  for (const Element* at = &element; at; at = at->parent) {
    if (!at->has("transform")) continue;
    const auto moved = numbers(at->at("transform"));
    origin.x += moved.at(0);
    origin.y += moved.at(1);
  }
  return origin;
}

Span Picture::extent(const Element& text) {
  const double width = textWidth(text.text, fontOf(text));
  const double x = text.number("x");
  if (text.has("text-anchor")) return {x - width, x};
  return {x, x + width};
}

std::vector<double> Picture::numbers(std::string_view text) {
  std::vector<double> found;
  for (std::size_t at = 0; at < text.size();) {
    const auto end = std::min(text.find_first_not_of("-.0123456789", at), text.size());
    if (end > at) found.push_back(std::stod(std::string(text.substr(at, end - at))));
    at = end == at ? at + 1 : end;
  }
  return found;
}

std::vector<LayoutPoint> Picture::vertices(const Element& path) {
  std::vector<LayoutPoint> points;
  LayoutPoint at;
  const std::string& d = path.at("d");
  for (std::size_t i = 0; i < d.size();) {
    const char command = d[i];
    const auto end = std::min(d.find_first_of("MCLhvalz", i + 1), d.size());
    const auto given = numbers(std::string_view(d).substr(i + 1, end - i - 1));
    i = end;
    switch (command) {
      case 'M':
      case 'L':
        at = {given.at(0), given.at(1)};
        break;
      case 'C':
        at = {given.at(4), given.at(5)};
        break;
      case 'h':
        at.x += given.at(0);
        break;
      case 'v':
        at.y += given.at(0);
        break;
      case 'l':
        at = {at.x + given.at(0), at.y + given.at(1)};
        break;
      case 'a':
        at = {at.x + given.at(5), at.y + given.at(6)};
        break;
      default:
        continue;
    }
    points.push_back(at);
  }
  return points;
}

std::vector<Picture::Curve> Picture::curves(const Element& path) {
  const auto ends = vertices(path);
  std::vector<Curve> found;
  std::size_t piece = 0;
  const std::string& d = path.at("d");
  for (auto at = d.find_first_of("CL"); at != std::string::npos;
       at = d.find_first_of("CL", at + 1)) {
    ++piece;
    if (d[at] == 'L') continue;
    const auto given = numbers(std::string_view(d).substr(at + 1));
    found.push_back({ends.at(piece - 1),
                     {given.at(0), given.at(1)},
                     {given.at(2), given.at(3)},
                     ends.at(piece)});
  }
  return found;
}

Ref<HXNode> PictureTest::place(const char* patch, HXPoint at, HXNode* to, const char* name) {
  const auto node = make<HXNode>();
  if (patch) node->setPatch(patchClassNamed(patch)->makeDefinition());
  (to ? to : document.get())->subnodeGroup()->addNode(*node);
  node->setPosition(at);
  if (name) node->setName(String(name));
  return node;
}

Ref<HXNode> PictureTest::placeGroup(HXPoint at, HXNode* to, const char* name) {
  const auto node = place(nullptr, at, to, name);
  node->setForceAllowsSubnodes(true);
  return node;
}

HXPatchPort& PictureTest::port(const Ref<HXNode>& node, const char* key) {
  return *as<HXPatchPort>(node->portForKey(String(key)));
}

}  // namespace tarnkit::test
