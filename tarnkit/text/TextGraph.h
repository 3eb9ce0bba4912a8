#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/text/PatchShape.h"

namespace tarnkit::detail {

/// How a text calls the ports of a node: a key; or, where a published port has none that would do,
/// "#in2" or "#out0", its side and its place among the published ports.
std::string portNumber(std::int32_t orientation, std::size_t index);
/// As a key of a member: a key that would read as something else gets a "/" before it.
std::string portMember(const std::string& portName, bool isNumber);

/// The key by which a text calls a published port, made of what it stands for; empty when that is
/// longer than a key should be.
std::string publishedKey(std::string_view nodeKey, std::string_view portKey);

/// What a document refers to, with the names that a text has for it. Lives as long as one writing,
/// during which the document stays as it is.
class TextGraph {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFU;

  struct Node {
    HXNode* node = nullptr;
    std::string id;
    std::uint32_t parent = kNone;
    std::uint32_t depth = 0;
    /// Of a patch of the catalogue; null without one, and for one that this process does not know.
    const PatchShape* shape = nullptr;
    /// Everything is told, since nobody knows what goes without saying.
    bool isExplicit = false;
  };
  struct Wire {
    const HXConnection* connection = nullptr;
    /// Stands at its input as the user joined it; otherwise, all of it told, at the end.
    bool isRegular = false;
    std::uint32_t node = kNone;
    std::string member;
    bool heldByOutput = false;
    bool heldByInput = false;
    /// Where it stands among the connections of its ends, when that is not its place in the text.
    std::int64_t outputPlace = -1;
    std::int64_t inputPlace = -1;
  };

  TextGraph(const HXDocument& document, PatchShapes& shapes);

  /// The document, then its nodes in the order of the text.
  const std::vector<Node>& nodes() const noexcept { return nodes_; }
  /// In the order of the text.
  const std::vector<Wire>& wires() const noexcept { return wires_; }
  std::uint32_t indexOf(const HXNode* node) const;
  /// "ID/KEY"; empty for a port that is none of the document's.
  std::string addressOf(const HXPort* port) const;
  /// As `portMember`, for a port of the document.
  std::string memberOf(const HXPort& port) const;
  bool isHeld(const HXPort* port) const;
  /// Whether the published port is the first in the order of the text that stands for its inner
  /// port.
  bool isFirstPublication(const HXSymbolicPort& port) const;

 private:
  struct Published {
    std::uint32_t node;
    std::string name;
    bool isNumber;
    bool isFirst;
    const HXPort* resolved;
  };

  void gatherNodes(const HXDocument& document, PatchShapes& shapes);
  void nameNodes();
  void gatherPublished();
  void namePublished(std::uint32_t index);
  void gatherWires();
  void addWire(const HXConnection& connection, const HXPort& holder);
  void placeWires();
  bool heldBy(const HXPort* port, const HXConnection& connection) const;
  const HXPort* resolved(const HXPort* port) const;
  const Published* published(const HXPort* port) const;

  std::vector<Node> nodes_;
  std::unordered_map<const HXNode*, std::uint32_t> indexes_;
  std::unordered_map<const HXPort*, Published> published_;
  std::vector<Wire> wires_;
};

}  // namespace tarnkit::detail
