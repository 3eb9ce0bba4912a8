#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/platform/objects/Ref.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

class HXDocument;
class HXNode;
class HXPort;

/// What is looked for; what is nil is not asked. All that is asked has to hold.
struct HXSearchCriteria {
  /// The class of the patch, or the name under which the library lists it. Nodes of a patch that
  /// nobody knows are found by its class.
  String patch = {};
  /// The name that the editor shows: "*" stands for any text, "?" for one character.
  String name = {};
  /// The key of a port of the node, or of one that it publishes, or the name that the editor shows.
  String port = {};
  /// The key of an image that the node shows.
  String image = {};
};

/// A node that was found, and the port that was looked for.
struct HXSearchMatch {
  Ref<HXNode> node;
  Ref<HXPort> port;  // null when none was asked
  /// As `HXAddresses` says it: of the port where one was asked, otherwise of the node.
  std::string address;
};

/// Finding nodes and ports by what people know of them. For the document's thread.
class HXDocumentSearch {
 public:
  /// In the order of `HXNodeWalk`; a node with several ports of a name once for each. Linear in the
  /// document, and in the depth of what is found.
  static std::vector<HXSearchMatch> find(HXDocument& document, const HXSearchCriteria& criteria);

  /// Whether a name is one of the pattern. Costs at most their product.
  static bool matches(std::string_view name, std::string_view pattern) noexcept;
};

}  // namespace tarnkit
