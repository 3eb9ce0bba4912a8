#include "tools/tarnkit/Session.h"

#include <fmt/format.h>

#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/Output.h"

namespace tarnkit::tool {

namespace {

constexpr char kAddressSeparator = '/';

template <class T>
void give(std::unordered_map<std::string, Ref<T>>& names, const std::string& name,
          const Ref<T>& object) {
  if (name.empty()) return;
  if (object) {
    names.insert_or_assign(name, object);
  } else {
    names.erase(name);
  }
}

template <class T>
Ref<T> find(const std::unordered_map<std::string, Ref<T>>& names, const std::string& name) {
  const auto found = names.find(name);
  return found == names.end() ? nullptr : found->second;
}

}  // namespace

void Session::checkFile(const std::string& path) const {
  if (!allowsFiles_) throw CommandFailure("this session may touch no files");
  if (path == kStandardStream) {
    throw CommandFailure("\"-\" is no file: the script and the trace have the standard streams");
  }
}

void Session::nameNode(const std::string& name, const Ref<HXNode>& node) {
  if (name.find(kAddressSeparator) != std::string::npos) {
    throw CommandFailure(
        fmt::format("\"{}\" cannot name a node: \"/\" separates node and port", name));
  }
  give(nodes_, name, node);
  forgetDeadNodes();
  auto& ofKey = nodesByKey_[node->uniqueKey().toStdString()];
  if (!ofKey.lock()) ofKey = WeakRef<HXNode>(node);
}

void Session::nameConnection(const std::string& name, const Ref<HXConnection>& connection) {
  give(connections_, name, connection);
}

void Session::namePort(const std::string& name, const Ref<HXSymbolicPort>& port) {
  give(ports_, name, port);
}

void Session::nameImage(const std::string& name, const Ref<HXImageStoreEntry>& image) {
  give(images_, name, image);
}

void Session::nameClipboard(const std::string& name, const Ref<Data>& bytes) {
  give(clipboards_, name, bytes);
}

void Session::takeDocument(const std::string& name, const Ref<HXDocument>& document) {
  nameNode(name, document);
  document_ = document;
  isDocumentIndexed_ = false;
  history_ = recordsHistory_ ? make<HXHistory>(*document) : nullptr;
}

HXHistory& Session::history() const {
  if (!recordsHistory_) throw CommandFailure("the session records no history (--history does)");
  if (!history_) throw CommandFailure("there is no document yet");
  return *history_;
}

Ref<HXDocument> Session::document() const {
  if (!document_) throw CommandFailure("there is no document: make or open one first");
  return document_;
}

Ref<HXNode> Session::node(const std::string& name) {
  if (auto named = find(nodes_, name)) return named;
  if (auto node = nodeOfKey(name)) return node;
  throw CommandFailure(fmt::format("there is no node \"{}\"", name));
}

// Where a document kept its keys over a saving, another node may have the same one: that of the
// document in hand, which is indexed after all others, is meant.
Ref<HXNode> Session::nodeOfKey(const std::string& key) {
  if (!isDocumentIndexed_) indexNodesBelow(document_);
  isDocumentIndexed_ = true;
  if (const auto found = nodesByKey_.find(key); found != nodesByKey_.end()) {
    if (auto node = found->second.lock()) return node;
  }
  indexNodes();
  const auto found = nodesByKey_.find(key);
  return found == nodesByKey_.end() ? nullptr : found->second.lock();
}

// A weak reference holds its node's memory. Walking only when the index has doubled keeps that
// within bounds and costs constant time an entry.
void Session::forgetDeadNodes() {
  if (nodesByKey_.size() < nextSweep_) return;
  std::erase_if(nodesByKey_, [](const auto& entry) { return !entry.second.lock(); });
  nextSweep_ = 2 * nodesByKey_.size() + kFirstSweep;
}

// Every node that is alive hangs below a named one that is in no group, or below the document in
// hand.
void Session::indexNodes() {
  nodesByKey_.clear();
  for (const auto& entry : nodes_) {
    if (!entry.second->parentGroup()) indexNodesBelow(entry.second);
  }
  if (document_) indexNodesBelow(document_);
}

void Session::indexNodesBelow(const Ref<HXNode>& root) {
  for (HXNodeWalk walk(*root); HXNode* node = walk.next();) {
    nodesByKey_.insert_or_assign(node->uniqueKey().toStdString(), WeakRef<HXNode>(node));
  }
}

Ref<HXGroup> Session::subnodeGroup(const std::string& name) {
  const auto node = this->node(name);
  if (!node->subnodeGroup()) {
    throw CommandFailure(fmt::format("the node \"{}\" has no subnode group", name));
  }
  return node->subnodeGroup();
}

Ref<HXConnection> Session::connection(const std::string& name) const {
  if (auto connection = find(connections_, name)) return connection;
  throw CommandFailure(fmt::format("there is no connection \"{}\"", name));
}

Ref<HXPort> Session::port(const std::string& address) {
  if (auto named = find(ports_, address)) return named;
  const auto separator = address.find(kAddressSeparator);
  if (separator == std::string::npos) {
    throw CommandFailure(fmt::format("there is no published port \"{}\"", address));
  }
  const auto name = address.substr(0, separator);
  const auto key = address.substr(separator + 1);
  Ref<HXPort> port(node(name)->portForKey(String(key)));
  if (!port) throw CommandFailure(fmt::format("the node \"{}\" has no port \"{}\"", name, key));
  return port;
}

Ref<HXSymbolicPort> Session::symbolicPort(const std::string& address) {
  auto symbolic = as<HXSymbolicPort>(port(address));
  if (!symbolic) throw CommandFailure(fmt::format("\"{}\" is no published port", address));
  return symbolic;
}

Ref<HXImageStoreEntry> Session::image(const std::string& name) const {
  if (auto image = find(images_, name)) return image;
  if (document_) {
    if (auto* entry = document_->imageStore()->imageEntryForKey(String(name))) {
      return Ref<HXImageStoreEntry>(entry);
    }
  }
  throw CommandFailure(fmt::format("there is no image \"{}\"", name));
}

Ref<Data> Session::clipboard(const std::string& name) const {
  if (auto bytes = find(clipboards_, name)) return bytes;
  throw CommandFailure(fmt::format("there is no clipboard \"{}\"", name));
}

}  // namespace tarnkit::tool
