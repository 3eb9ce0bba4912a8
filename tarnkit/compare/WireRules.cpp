#include <fmt/format.h>

#include <algorithm>

#include "tarnkit/compare/CheckRules.h"
#include "tarnkit/compare/HXAddresses.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXRefusal.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/HXRTypedPorts.h"

namespace tarnkit::detail {

namespace {

using Code = HXFindingCode;

std::string quoted(const HXPort& port) {
  const HXNode* node = port.node();
  const String name = port.displayName() ? port.displayName() : port.uniqueKey();
  const String owner = node ? node->name() : String();
  return fmt::format("\"{}\" of \"{}\"", HXAddresses::escaped(name.view()),
                     HXAddresses::escaped(owner ? owner.view() : "a node without a name"));
}

// The end at which the finding stands: the input where there is one, since it is there that
// something does not arrive.
HXPort& endOf(const CheckedWire& wire) { return wire.inputIsThere ? *wire.input : *wire.output; }

void add(CheckReport& report, Code code, const CheckedWire& wire, std::string sentence,
         std::string suggestion = {}) {
  report.add(code, endOf(wire), std::move(sentence), std::move(suggestion)).subject =
      Ref<Object>(&wire.connection);
}

void findKind(CheckReport& report, const CheckedWire& wire) {
  if (!wire.isWhole() || wire.input->canConnectToPort(wire.output) ||
      wire.output->canConnectToPort(wire.input)) {
    return;
  }
  const HXRefusal refusal = wire.input->whyNotConnectToPort(wire.output);
  if (refusal.code() != HXRefusal::Code::kind) return;
  add(report, Code::wireKind, wire,
      fmt::format("the wire from {} does not fit: {}", quoted(*wire.output),
                  refusal.reason().view()));
}

bool takesOne(const HXPort& port) {
  return port.connectionRelationship() == HXConnectionRelationshipOne;
}
bool inputRefused(const CheckedWire& wire) {
  return wire.isWhole() && !wire.inputHolds && takesOne(*wire.input) &&
         !wire.input->connections().isEmpty();
}
bool outputRefused(const CheckedWire& wire) {
  return wire.isWhole() && !wire.outputHolds && takesOne(*wire.output) &&
         !wire.output->connections().isEmpty();
}

void findInputTwice(CheckReport& report, const CheckedWire& wire) {
  if (!inputRefused(wire)) return;
  add(report, Code::inputJoinedTwice, wire,
      fmt::format("the input has a wire already, and {} is joined to it, too",
                  quoted(*wire.output)),
      "break one of the two");
}

void findOutputTwice(CheckReport& report, const CheckedWire& wire) {
  if (!outputRefused(wire)) return;
  add(report, Code::outputJoinedTwice, wire,
      fmt::format("{} gives to one input, and has another wire already", quoted(*wire.output)),
      "use a node for each input");
}

void findHalf(CheckReport& report, const CheckedWire& wire) {
  if (!wire.isWhole() || (wire.inputHolds && wire.outputHolds) || inputRefused(wire) ||
      outputRefused(wire)) {
    return;
  }
  add(report, Code::wireHalf, wire,
      fmt::format("the wire from {} is known at its {} only", quoted(*wire.output),
                  wire.inputHolds ? "input" : "output"));
}

void findNowhere(CheckReport& report, const CheckedWire& wire) {
  if (wire.isWhole()) return;
  add(report, Code::wireNowhere, wire,
      fmt::format("a wire leads to {} that is not in the document",
                  wire.inputIsThere ? "an output" : "an input"));
}

bool isShownAtBothEnds(const CheckReport& report, const CheckedWire& wire) {
  const HXPort* output = wire.connection.displayOutputPort();
  const HXPort* input = wire.connection.displayInputPort();
  return (output == wire.output || report.isThere(output)) &&
         (input == wire.input || report.isThere(input));
}

void findUnseen(CheckReport& report, const CheckedWire& wire) {
  if (!wire.isWhole() || isShownAtBothEnds(report, wire)) return;
  add(report, Code::wireUnseen, wire,
      fmt::format("the wire from {} is shown nowhere, since the published port that it was joined "
                  "to is gone",
                  quoted(*wire.output)));
}

void findElsewhere(CheckReport& report, const CheckedWire& wire) {
  if (!wire.isWhole() || !isShownAtBothEnds(report, wire)) return;
  const HXPort& output = *wire.connection.displayOutputPort();
  const HXPort& input = *wire.connection.displayInputPort();
  const bool outputDiffers = output.resolvedPort() != wire.output;
  if (!outputDiffers && input.resolvedPort() == wire.input) return;
  add(report, Code::wireElsewhere, wire,
      fmt::format("the wire is shown at {}, which stands for another port",
                  quoted(outputDiffers ? output : input)),
      "join the ports again");
}

void findAcrossGroups(CheckReport& report, const CheckedWire& wire) {
  if (!wire.isWhole() || !isShownAtBothEnds(report, wire)) return;
  const HXPort& output = *wire.connection.displayOutputPort();
  const HXPort& input = *wire.connection.displayInputPort();
  if (output.node()->parentGroup() == input.node()->parentGroup()) return;
  add(report, Code::wireAcrossGroups, wire,
      fmt::format("the wire comes from {}, which stands in another group", quoted(output)),
      "publish the inner port, and join the published one");
}

// What flows along the wire computes something: a gesture or an interaction only says who is meant,
// and a state is read one step later.
bool carriesValue(const HXPort& output) {
  const auto* port = as<HXPatchPort>(&output);
  const HXRPort* definition = port ? port->definition() : nullptr;
  return definition && definition->isKindOf(HXRValueOutputPort::kClass);
}

/// The nodes that lead to each other by wires: strongly connected, after Tarjan, on a stack of its
/// own. Linear in nodes and wires.
class Circles {
 public:
  explicit Circles(const CheckReport& report) : first_(report.nodes().size() + 1) {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> edges;
    for (const CheckedWire& wire : report.wires()) {
      if (!wire.isWhole() || !wire.outputHolds || !wire.inputHolds || !carriesValue(*wire.output)) {
        continue;
      }
      edges.emplace_back(report.numberOf(*wire.output->node()),
                         report.numberOf(*wire.input->node()));
    }
    for (const auto& edge : edges) ++first_[edge.first + 1];
    for (std::size_t i = 1; i < first_.size(); ++i) first_[i] += first_[i - 1];
    targets_.resize(edges.size());
    auto next = first_;
    for (const auto& edge : edges) targets_[next[edge.first]++] = edge.second;
  }

  /// Calls `visit` with the members of each circle, ascending.
  template <class Visit>
  void each(Visit visit) {
    const auto count = static_cast<std::uint32_t>(first_.size() - 1);
    states_.assign(count, {});
    for (std::uint32_t start = 0; start < count; ++start) {
      if (states_[start].order != 0) continue;
      enter(start);
      while (!path_.empty()) step(visit);
    }
  }

 private:
  struct State {
    std::uint32_t order = 0;  // 0: not met
    std::uint32_t lowest = 0;
    std::uint32_t next = 0;
    bool isOpen = false;
  };

  void enter(std::uint32_t node) {
    states_[node] = {++order_, order_, first_[node], true};
    open_.push_back(node);
    path_.push_back(node);
  }

  template <class Visit>
  void step(Visit& visit) {
    const std::uint32_t node = path_.back();
    State& state = states_[node];
    if (state.next < first_[node + 1]) {
      const std::uint32_t target = targets_[state.next++];
      if (states_[target].order == 0) {
        enter(target);
      } else if (states_[target].isOpen) {
        state.lowest = std::min(state.lowest, states_[target].order);
      }
      return;
    }
    path_.pop_back();
    if (!path_.empty()) {
      State& before = states_[path_.back()];
      before.lowest = std::min(before.lowest, state.lowest);
    }
    if (state.lowest == state.order) close(node, visit);
  }

  template <class Visit>
  void close(std::uint32_t node, Visit& visit) {
    std::vector<std::uint32_t> members;
    do {
      members.push_back(open_.back());
      states_[open_.back()].isOpen = false;
      open_.pop_back();
    } while (members.back() != node);
    const auto begin = targets_.begin() + first_[node];
    const auto end = targets_.begin() + first_[node + 1];
    if (members.size() == 1 && std::find(begin, end, node) == end) return;
    std::sort(members.begin(), members.end());
    visit(members);
  }

  std::vector<std::uint32_t> first_;  // of a node's targets
  std::vector<std::uint32_t> targets_;
  std::vector<State> states_;
  std::vector<std::uint32_t> open_;
  std::vector<std::uint32_t> path_;
  std::uint32_t order_ = 0;
};

void findCircles(CheckReport& report, HXDocument&) {
  constexpr std::size_t kNamed = 4;
  Circles(report).each([&](const std::vector<std::uint32_t>& members) {
    HXNode& first = *report.nodes()[members.front()].node;
    if (members.size() == 1) {
      report.add(Code::wireCircle, first, "the node waits for its own value");
      return;
    }
    std::string others;
    for (std::size_t i = 1; i < std::min(members.size(), kNamed); ++i) {
      const String& name = report.nodes()[members[i]].node->name();
      if (!others.empty()) others += ", ";
      others += fmt::format("\"{}\"", name ? HXAddresses::escaped(name.view()) : "");
    }
    report.add(Code::wireCircle, first,
               fmt::format("{} nodes wait for each other's values: this one, {}{}", members.size(),
                           others, members.size() > kNamed ? " and others" : ""));
  });
}

constexpr CheckRule<const CheckedWire> kWires[] = {
    {Code::wireKind, findKind},
    {Code::wireHalf, findHalf},
    {Code::wireNowhere, findNowhere},
    {Code::wireUnseen, findUnseen},
    {Code::wireElsewhere, findElsewhere},
    {Code::wireAcrossGroups, findAcrossGroups},
    {Code::inputJoinedTwice, findInputTwice},
    {Code::outputJoinedTwice, findOutputTwice},
};
constexpr CheckRule<HXDocument> kDocument[] = {
    {Code::wireCircle, findCircles},
};

}  // namespace

constinit const CheckRules kWireRules{.document = kDocument, .wires = kWires};

}  // namespace tarnkit::detail
