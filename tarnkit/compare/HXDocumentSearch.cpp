#include "tarnkit/compare/HXDocumentSearch.h"

#include "tarnkit/compare/HXAddresses.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/text/UTF8.h"

namespace tarnkit {

namespace {

bool isOfPatch(const HXNode& node, const String& patch) {
  if (!node.unknownPatchClass().isNil()) return node.unknownPatchClass() == patch;
  if (!node.patch()) return false;
  return patch.view() == node.patchClass().name() || patch == node.patchClass().defaultName();
}

bool isNamed(const HXNode& node, const String& pattern) {
  const String& name = node.name().isNil() ? node.patchClass().defaultName() : node.name();
  return HXDocumentSearch::matches(name.view(), pattern.view());
}

bool shows(const HXNode& node, const String& image) {
  const auto parameters = node.parameters();
  for (const auto& entry : parameters) {
    const auto kind = entry.value->kind();
    const auto* shown = std::get_if<HXImageParameter*>(&kind);
    const auto* held = shown ? (*shown)->imageEntry() : nullptr;
    if (held && held->key() == image) return true;
  }
  return false;
}

template <class Visit>
void eachPort(const HXNode& node, const String& wanted, Visit visit) {
  const auto look = [&](HXPort& port) {
    if (port.uniqueKey() == wanted || port.displayName() == wanted) visit(port);
  };
  for (const auto& entry : node.portsInForce()) look(*entry.value);
  for (const auto side : kBothSides) {
    for (const auto& member : node.symbolicPortsInForce(side)) {
      look(static_cast<HXSymbolicPort&>(*member));
    }
  }
}

}  // namespace

// The text behind the last "*" is tried at every place; what stood before it is settled.
bool HXDocumentSearch::matches(std::string_view name, std::string_view pattern) noexcept {
  constexpr auto kNone = std::string_view::npos;
  std::size_t at = 0, wanted = 0, star = kNone, tried = 0;
  while (at < name.size()) {
    if (wanted < pattern.size() && pattern[wanted] == '*') {
      star = wanted++;
      tried = at;
    } else if (wanted < pattern.size() && pattern[wanted] == '?') {
      at += detail::codePointAt(name, at).size;
      ++wanted;
    } else if (wanted < pattern.size() && pattern[wanted] == name[at]) {
      ++at;
      ++wanted;
    } else if (star != kNone) {
      tried += detail::codePointAt(name, tried).size;
      at = tried;
      wanted = star + 1;
    } else {
      return false;
    }
  }
  while (wanted < pattern.size() && pattern[wanted] == '*') ++wanted;
  return wanted == pattern.size();
}

std::vector<HXSearchMatch> HXDocumentSearch::find(HXDocument& document,
                                                  const HXSearchCriteria& criteria) {
  std::vector<HXSearchMatch> found;
  HXAddresses addresses;
  HXNodeWalk walk(*document.subnodeGroup());
  while (HXNode* node = walk.next()) {
    if (!criteria.patch.isNil() && !isOfPatch(*node, criteria.patch)) continue;
    if (!criteria.name.isNil() && !isNamed(*node, criteria.name)) continue;
    if (!criteria.image.isNil() && !shows(*node, criteria.image)) continue;
    if (criteria.port.isNil()) {
      found.push_back({Ref<HXNode>(node), nullptr, addresses.of(*node)});
      continue;
    }
    eachPort(*node, criteria.port, [&](HXPort& port) {
      found.push_back({Ref<HXNode>(node), Ref<HXPort>(&port), addresses.of(port)});
    });
  }
  return found;
}

}  // namespace tarnkit
