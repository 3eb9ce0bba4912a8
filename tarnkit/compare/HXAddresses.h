#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "tarnkit/platform/objects/Ref.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

class HXDocument;
class HXGroup;
class HXNode;
class HXPort;

/// Where things stand in a document, said so that a person finds them: by the names that the editor
/// shows, from the top downward. "Album / Page" is the node Page in the group Album, "Album / Page:
/// Value" its port.
///
/// A node without a name goes by that of its patch. Where several nodes of a group go by one name,
/// all but the first (in the group's order) carry their number: "Page [2]". Control characters and
/// quotation marks of names are escaped as in JSON, so an address is one line.
///
/// Of a document that does not change meanwhile. The names of a group are counted when the first of
/// its nodes is asked for, and those of a node's ports when the first of them is, so addresses of
/// all nodes and ports cost their number and depth. For one thread.
class HXAddresses {
 public:
  HXAddresses() = default;
  HXAddresses(const HXAddresses&) = delete;
  HXAddresses& operator=(const HXAddresses&) = delete;

  /// Of the topmost node (the document, or what stands in none): "/".
  std::string of(const HXNode& node);
  /// "Album / Page: Value", by the name that the editor shows; the key where several ports of the
  /// side go by that name, or where the port has none. Of a port whose node is gone: its key.
  std::string of(const HXPort& port);
  /// "Page [2]": the last part of the node's address.
  const std::string& labelOf(const HXNode& node);
  /// The name of the port as `of` writes it.
  std::string labelOf(const HXPort& port);

  /// A name as it stands in an address.
  static std::string escaped(std::string_view name);
  /// The same in quotation marks; "no name", without them, for nil.
  static std::string quoted(const String& name);

 private:
  /// The shown ports of a side by their names; null for a name that several have.
  using PortsByName = std::unordered_map<std::string, const HXPort*>;

  void count(const HXGroup& group);
  bool sharesName(const HXPort& port, const String& name);
  const PortsByName& portsByName(const HXNode& node, bool inputs);

  std::unordered_map<const HXNode*, std::string> labels_;
  std::unordered_map<const HXNode*, PortsByName> inputs_;
  std::unordered_map<const HXNode*, PortsByName> outputs_;
};

}  // namespace tarnkit
