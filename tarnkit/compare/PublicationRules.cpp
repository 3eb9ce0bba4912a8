#include <fmt/format.h>

#include <unordered_set>

#include "tarnkit/compare/CheckRules.h"
#include "tarnkit/compare/HXAddresses.h"
#include "tarnkit/model/HXSymbolicPort.h"

namespace tarnkit::detail {

namespace {

using Code = HXFindingCode;

void findNowhere(CheckReport& report, HXSymbolicPort& published) {
  if (!report.leadsNowhere(published)) return;
  report.add(Code::publicationNowhere, published,
             "the port that this published port stood for is gone");
}

void findForeign(CheckReport& report, HXSymbolicPort& published) {
  const HXPort* inner = published.port();
  if (report.leadsNowhere(published) || inner->node()->enclosingNode() == published.node()) return;
  report.add(Code::publicationForeign, published,
             "the published port stands for a port that belongs to no node of this group",
             "publish it where its node stands");
}

void findTwice(CheckReport& report, HXSymbolicPort& published) {
  const HXPort* inner = published.port();
  const HXSymbolicPort* other = inner ? inner->symbolicPort() : nullptr;
  if (report.leadsNowhere(published) || other == &published) return;
  report.add(Code::publicationTwice, published,
             other ? fmt::format("the same port is published as \"{}\", too",
                                 HXAddresses::escaped(other->name().view()))
                   : "the port does not know that it is published",
             "end this publication");
}

void findNoName(CheckReport& report, HXSymbolicPort& published) {
  if (!published.name().view().empty()) return;
  report.add(Code::publicationNoName, published, "the published port has no name");
}

void findAtTop(CheckReport& report, HXSymbolicPort& published) {
  if (published.node() != &report.document()) return;
  report.add(Code::publicationAtTop, published,
             "the port is published from the outermost group, where nothing can be joined to it");
}

bool isRead(const CheckReport& report, const HXSymbolicPort& published) {
  if (published.symbolicPort() || report.isJoined(published)) return true;
  const HXPort* inner = published.port();
  // What a replicator publishes is read at the array that collects it.
  const HXPort* array = inner ? published.node()->collectingPort(*inner) : nullptr;
  return array && (array->symbolicPort() || !array->connections().isEmpty());
}

void findUnused(CheckReport& report, HXSymbolicPort& published) {
  if (published.orientation() != HXOrientationOutput || published.node() == &report.document() ||
      isRead(report, published)) {
    return;
  }
  report.add(Code::publicationUnused, published, "nothing reads this published output");
}

void findSameNames(CheckReport& report, const CheckedNode& checked) {
  for (const auto side : kBothSides) {
    const OrderedSet& ports = checked.node->symbolicPortsInForce(side);
    if (ports.count() < 2) continue;
    std::unordered_set<std::string_view> names;
    for (const auto& member : ports) {
      auto& published = static_cast<HXSymbolicPort&>(*member);
      const std::string_view name = published.name().view();
      if (name.empty() || names.insert(name).second) continue;
      report.add(
          Code::publicationSameName, published,
          fmt::format("another published {} is called \"{}\", too",
                      side == HXOrientationInput ? "input" : "output", HXAddresses::escaped(name)),
          "rename one of the two");
    }
  }
}

constexpr CheckRule<HXSymbolicPort> kPublications[] = {
    {Code::publicationNowhere, findNowhere}, {Code::publicationForeign, findForeign},
    {Code::publicationTwice, findTwice},     {Code::publicationNoName, findNoName},
    {Code::publicationAtTop, findAtTop},     {Code::publicationUnused, findUnused},
};
constexpr CheckRule<const CheckedNode> kNodes[] = {
    {Code::publicationSameName, findSameNames},
};

}  // namespace

constinit const CheckRules kPublicationRules{.nodes = kNodes, .publications = kPublications};

}  // namespace tarnkit::detail
