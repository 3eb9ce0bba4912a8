#include "tarnkit/model/HXLookup.h"

#include <fmt/format.h>

#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPort.h"

namespace tarnkit {

namespace {

constexpr char kAddressSeparator = '/';

template <class Fits>
std::vector<Ref<HXNode>> nodesThat(HXNode& root, Fits fits) {
  std::vector<Ref<HXNode>> nodes;
  for (HXNodeWalk walk(root); HXNode* node = walk.next();) {
    if (fits(*node)) nodes.emplace_back(node);
  }
  return nodes;
}

}  // namespace

HXNode* HXLookup::nodeForKey(HXNode& root, const String& uniqueKey) {
  for (HXNodeWalk walk(root); HXNode* node = walk.next();) {
    if (node->uniqueKey() == uniqueKey) return node;
  }
  return nullptr;
}

HXNode* HXLookup::nodeForKeyPath(HXNode& root, const std::vector<String>& keyPath) {
  if (keyPath.empty() || keyPath.back() != root.uniqueKey()) return nullptr;
  HXNode* node = &root;
  for (auto key = keyPath.rbegin() + 1; node && key != keyPath.rend(); ++key) {
    node = node->subnodeGroup() ? node->subnodeGroup()->subnodeForKey(*key) : nullptr;
  }
  return node;
}

Object* HXLookup::objectForAddress(HXNode& root, std::string_view address) {
  const auto separator = address.find(kAddressSeparator);
  HXNode* const node = nodeForKey(root, String(address.substr(0, separator)));
  if (!node || separator == std::string_view::npos) return node;
  const String key(address.substr(separator + 1));
  if (HXPort* port = node->portForKey(key)) return port;
  return node->parameterForKey(key);
}

std::string HXLookup::addressOf(const HXPort* port) {
  const auto* node = port ? port->node() : nullptr;
  if (!node) return {};
  return fmt::format("{}{}{}", node->uniqueKey().view(), kAddressSeparator,
                     port->uniqueKey().view());
}

std::vector<Ref<HXNode>> HXLookup::nodesNamed(HXNode& root, const String& name) {
  return nodesThat(root, [&](const HXNode& node) { return node.name() == name; });
}

std::vector<Ref<HXNode>> HXLookup::nodesOfPatch(HXNode& root, std::string_view patchClass) {
  return nodesThat(root, [&](const HXNode& node) {
    if (!node.unknownPatchClass().isNil()) return node.unknownPatchClass() == patchClass;
    const auto patch = node.patch();
    return patch && patch->isa().name() == patchClass;
  });
}

}  // namespace tarnkit
