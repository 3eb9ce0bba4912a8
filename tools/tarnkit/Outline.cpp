#include "tools/tarnkit/Outline.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "tarnkit/foundation/MapAdditions.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXLookup.h"
#include "tarnkit/model/HXNodeReport.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/collections/MembersOf.h"
#include "tarnkit/platform/numbers/NumberText.h"
#include "tarnkit/platform/text/UTF8.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/ValueShapes.h"

namespace tarnkit::tool {

namespace {

constexpr std::size_t kPiece = std::size_t{1} << 16;

// Many nodes and ports of a document may share one text as long as the document.
std::string brief(std::string_view text) {
  const auto beginning = detail::beginningOf(text, kLongestOutlineText);
  return oneLine(beginning) + (beginning.size() < text.size() ? "…" : "");
}

std::string quoted(const String& text) { return fmt::format("\"{}\"", brief(text)); }

std::string counted(std::size_t count, std::string_view thing) {
  return fmt::format("{} {}{}", count, thing, count == 1 ? "" : "s");
}

class OutlineWriter {
 public:
  explicit OutlineWriter(const std::function<void(std::string_view)>& sink) : sink_(sink) {}

  void write(const HXDocument& document) {
    writeSummary(document);
    writeNode(document, 0);
    HXNodeWalk walk(*document.subnodeGroup(), HXNodeWalk::Siblings::sortedByKey);
    while (const HXNode* node = walk.next()) writeNode(*node, walk.level() + 1);
    writeImages(*document.imageStore());
    flush();
  }

 private:
  void flush() {
    sink_(text_);
    text_.clear();
  }

  void line(std::size_t level, std::string_view text) {
    if (text_.size() >= kPiece) flush();
    text_.append(2 * std::min(level, kMaximumOutlineIndentation), ' ');
    text_ += text;
    text_ += '\n';
  }

  void writeSummary(const HXDocument& document) {
    std::size_t nodes = 0;
    std::size_t connections = 0;
    const auto count = [&connections](const HXNode& node) {
      for (const auto& port : node.portsInForce()) {
        if (port.value->orientation() == HXOrientationInput) {
          connections += port.value->connections().count();
        }
      }
    };
    count(document);
    for (HXNodeWalk walk(*document.subnodeGroup()); const HXNode* node = walk.next(); ++nodes) {
      count(*node);
    }
    line(0, fmt::format("{}: {}, {}, {}", document.documentKey().view(), counted(nodes, "node"),
                        counted(connections, "connection"),
                        counted(document.imageStore()->imageEntriesInForce().size(), "image")));
  }

  void writeNode(const HXNode& node, std::size_t level) {
    std::string text = brief(node.uniqueKey());
    if (!node.name().isNil()) text += ' ' + quoted(node.name());
    if (node.patch()) {
      fmt::format_to(std::back_inserter(text), ", {}", node.patch()->isa().name());
    } else if (!node.unknownPatchClass().isNil()) {
      fmt::format_to(std::back_inserter(text), ", {} (unknown)", brief(node.unknownPatchClass()));
    }
    fmt::format_to(std::back_inserter(text), " at ({}, {})", shortestText(node.position().x),
                   shortestText(node.position().y));
    if (as<HXSubviewGroup>(node.subnodeGroup().get())) text += ", views";
    line(level, text);
    for (const auto* published :
         {&node.symbolicInputPortsInForce(), &node.symbolicOutputPortsInForce()}) {
      for (const auto& port : membersOf<HXSymbolicPort>(*published)) {
        writePublishedPort(port, level + 1);
      }
    }
    for (const auto& item : HXNodeState::itemsOfParameters(node)) {
      if (item.kind != HXNodeItem::Kind::value) continue;
      line(level + 1, fmt::format("{} = {}", brief(item.key), quoted(item.text)));
    }
    for (const auto& entry : node.portsInForce()) writePort(*entry.value, level + 1);
  }

  void writePublishedPort(const HXSymbolicPort& port, std::size_t level) {
    const auto inner = HXLookup::addressOf(port.port());
    line(level, fmt::format("publishes {} {} as {}",
                            port.orientation() == HXOrientationInput ? "input" : "output",
                            inner.empty() ? "that is gone" : brief(inner), quoted(port.name())));
  }

  void writePort(const HXPatchPort& port, std::size_t level) {
    if (const auto& value = port.staticValue()) {
      line(level, fmt::format("{} = {}", brief(port.uniqueKey()), quoted(value->stringValue())));
    }
    if (port.orientation() != HXOrientationInput) return;
    port.connections().forEach([&](HXConnection& connection) {
      const auto from = HXLookup::addressOf(connection.displayOutputPort());
      line(level, fmt::format("{} <- {}", brief(port.uniqueKey()),
                              from.empty() ? "a port that is gone" : brief(from)));
    });
  }

  void writeImages(const HXImageStore& store) {
    for (const auto& entry : allValuesSortedByKey(store.imageEntriesInForce())) {
      const auto* image = entry->image().get();
      line(0, fmt::format("image {}, {} x {}", brief(entry->key()), image ? image->width() : 0,
                          image ? image->height() : 0));
    }
  }

  const std::function<void(std::string_view)>& sink_;
  std::string text_;
};

}  // namespace

void writeOutline(const HXDocument& document, const std::function<void(std::string_view)>& sink) {
  OutlineWriter(sink).write(document);
}

}  // namespace tarnkit::tool
