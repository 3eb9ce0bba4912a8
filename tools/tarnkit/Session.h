#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>

#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/model/HXDocument.h"

namespace tarnkit {
class HXPort;
class HXSymbolicPort;
}  // namespace tarnkit

namespace tarnkit::tool {

/// What an editing session remembers between its operations: the objects that it gave names to,
/// which it keeps alive, the document in hand, and nothing else.
///
/// A name is used for the object it was given to last; nodes, connections, ports, images and
/// clipboards have names of their own each. An object that is asked for and is not there throws
/// CommandFailure. A look-up takes constant time, except the first by unique key after a document
/// was made or opened, which walks that document, and one of a key that is not there, which walks
/// all. For one thread.
class Session {
 public:
  /// Whether operations may read and write files.
  explicit Session(bool allowsFiles = true) : allowsFiles_(allowsFiles) {}

  /// Documents that are taken in hand from now on record their changes.
  void recordHistory() noexcept { recordsHistory_ = true; }
  /// No further operation is performed.
  void end() noexcept { isEnded_ = true; }
  bool isEnded() const noexcept { return isEnded_; }

  /// Of the document in hand; throws when the session records none.
  HXHistory& history() const;

  /// Throws when the session may touch no files, or when the path is that of a standard stream.
  void checkFile(const std::string& path) const;

  // Giving names; "" gives none.

  void nameNode(const std::string& name, const Ref<HXNode>& node);
  void nameConnection(const std::string& name, const Ref<HXConnection>& connection);
  void namePort(const std::string& name, const Ref<HXSymbolicPort>& port);
  void nameImage(const std::string& name, const Ref<HXImageStoreEntry>& image);
  void nameClipboard(const std::string& name, const Ref<Data>& bytes);
  /// Takes a document that was made or opened in hand; its nodes are reached by their unique keys.
  void takeDocument(const std::string& name, const Ref<HXDocument>& document);

  // Finding.

  /// The document that was made or opened last.
  Ref<HXDocument> document() const;
  /// By name or by unique key.
  Ref<HXNode> node(const std::string& name);
  /// The subnode group of the node of that name.
  Ref<HXGroup> subnodeGroup(const std::string& name);
  Ref<HXConnection> connection(const std::string& name) const;
  /// By address ("ID/PORTKEY"), or by the name of a published port.
  Ref<HXPort> port(const std::string& address);
  /// Likewise; throws for a port that publishes none.
  Ref<HXSymbolicPort> symbolicPort(const std::string& address);
  /// By name, or by key in the store of the document in hand.
  Ref<HXImageStoreEntry> image(const std::string& name) const;
  /// The bytes of nodes that were copied under the name.
  Ref<Data> clipboard(const std::string& name) const;

 private:
  template <class T>
  using Names = std::unordered_map<std::string, Ref<T>>;

  Ref<HXNode> nodeOfKey(const std::string& key);
  void forgetDeadNodes();
  void indexNodes();
  void indexNodesBelow(const Ref<HXNode>& root);

  bool allowsFiles_;
  bool recordsHistory_ = false;
  bool isEnded_ = false;
  Ref<HXDocument> document_;
  Ref<HXHistory> history_;  // of the document; null while none is recorded
  /// Whether the nodes of the document in hand are among `nodesByKey_`.
  bool isDocumentIndexed_ = true;
  Names<HXNode> nodes_;
  Names<HXConnection> connections_;
  Names<HXSymbolicPort> ports_;
  Names<HXImageStoreEntry> images_;
  Names<Data> clipboards_;
  std::unordered_map<std::string, WeakRef<HXNode>> nodesByKey_;
  static constexpr std::size_t kFirstSweep = 1000;
  /// The size of `nodesByKey_` at which those that are gone are taken out.
  std::size_t nextSweep_ = kFirstSweep;
};

}  // namespace tarnkit::tool
