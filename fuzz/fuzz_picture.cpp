// Pictures of graphs from anywhere: whatever nodes are called and wherever they stand, the picture
// is well-formed XML of a finite size, and the page holds it.

#include <expat.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXGroup.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/PMRPrimitive.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/system/Log.h"
#include "tarnkit/render/HXGraphPage.h"

namespace {

using namespace tarnkit;

void require(bool condition) {
  if (!condition) std::abort();
}

// Takes what it needs from the input; zeros when that is used up.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : bytes_(data, size) {}

  bool isEmpty() const { return bytes_.empty(); }
  std::size_t pick(std::size_t count) { return take<std::uint16_t>() % count; }
  float real() {
    return take<std::uint8_t>() % 4 == 0 ? take<float>()
                                         : static_cast<float>(take<std::int16_t>()) / 8;
  }
  std::string text() {
    const std::size_t wanted = take<std::uint8_t>() % 64;
    const std::size_t size = std::min(wanted, bytes_.size());
    const std::string text(reinterpret_cast<const char*>(bytes_.data()), size);
    bytes_ = bytes_.subspan(size);
    return text;
  }

 private:
  template <class T>
  T take() {
    T value{};
    const std::size_t size = std::min(sizeof value, bytes_.size());
    if (size > 0) std::memcpy(&value, bytes_.data(), size);
    bytes_ = bytes_.subspan(size);
    return value;
  }

  ByteSpan bytes_;
};

class Graph {
 public:
  explicit Graph(Input input) : input_(input), document_(make<HXDocument>()) {
    groups_.push_back(document_->subnodeGroup());
    for (int step = 0; step < 200 && !input_.isEmpty(); ++step) edit();
  }
  const std::vector<Ref<HXGroup>>& groups() const { return groups_; }

 private:
  HXPatchPort* anyPort() {
    const auto& ports = nodes_[input_.pick(nodes_.size())]->portsInForce();
    if (ports.size() == 0) return nullptr;
    auto at = ports.begin();
    std::advance(at, static_cast<std::ptrdiff_t>(input_.pick(ports.size())));
    return at->value.get();
  }
  void addNode() {
    const auto& patches = catalogue();
    auto node = make<HXNode>();
    const std::size_t number = input_.pick(patches.size() + 1);
    if (number < patches.size()) node->setPatch(patches[number]->makeDefinition());
    groups_[input_.pick(groups_.size())]->addNode(*node);
    nodes_.push_back(node);
  }
  void edit() {
    const std::size_t operation = input_.pick(8);
    if (operation < 2 || nodes_.empty()) return addNode();
    HXNode& node = *nodes_[input_.pick(nodes_.size())];
    switch (operation) {
      case 2:
        node.setName(String(input_.text()));
        return;
      case 3: {
        const float x = input_.real();
        return node.setPosition({x, input_.real()});
      }
      case 4:
        node.setForceAllowsSubnodes(true);
        if (node.subnodeGroup() && groups_.size() < 8) groups_.push_back(node.subnodeGroup());
        return;
      case 5: {
        HXPatchPort* const first = anyPort();
        HXPatchPort* const second = anyPort();
        if (first && second) document_->connectPort(*first, *second);
        return;
      }
      case 6:
        if (HXPatchPort* const port = anyPort()) {
          port->setStaticValue(PMRPrimitive::primitiveWithStringValue(String(input_.text())));
        }
        return;
      default:
        if (HXPatchPort* const port = anyPort()) {
          port->node()->parentGroup()->addSymbolicPortForPort(*port);
        }
    }
  }

  Input input_;
  Ref<HXDocument> document_;
  std::vector<Ref<HXGroup>> groups_;
  std::vector<Ref<HXNode>> nodes_;
};

void checkXML(std::string_view text) {
  XML_Parser parser = XML_ParserCreate("UTF-8");
  require(XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1) == XML_STATUS_OK);
  XML_ParserFree(parser);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool quiet = (Log::setSink([](std::string_view) {}), true);
  static_cast<void>(quiet);
  const Graph graph(Input(data, size));
  HXPictureOptions options;
  options.caption = size % 2 == 0;
  for (const auto& group : graph.groups()) {
    HXPictureReport report;
    const std::string picture = graphPicture(*group, options, &report);
    checkXML(picture);
    require(std::isfinite(report.width) && std::isfinite(report.height) && report.width > 0);
    require(graphPicture(*group, options) == picture);
  }
  const std::string page = graphPage(*graph.groups().front(), HXPictureTheme::dark);
  require(page.ends_with("</html>\n"));
  return 0;
}
