#include "tarnkit/editing/HXWiring.h"

#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXPort.h"

namespace tarnkit {

HXRefusal HXWiring::whyNotWire(const HXPort& first, const HXPort& second) {
  using Code = HXRefusal::Code;
  if (!first.canConnectToPort(&second) && !second.canConnectToPort(&first)) {
    // The sentence of the end that was asked rightly.
    return second.orientation() == HXOrientationInput ? second.whyNotConnectToPort(&first)
                                                      : first.whyNotConnectToPort(&second);
  }
  // A publication out of a file may stand on another side than what it publishes.
  for (const HXPort* port : {&first, &second}) {
    if (port->orientation() == HXOrientationInput || port->orientation() == HXOrientationOutput) {
      continue;
    }
    return HXRefusal(Code::noSide, "a port is neither an input nor an output", &first, &second);
  }
  if (first.orientation() != second.orientation()) return {};
  return HXRefusal(Code::sameSide, "both ports stand on the same side", &first, &second);
}

Ref<HXConnection> HXWiring::wire(HXDocument& document, HXPort& first, HXPort& second) {
  if (whyNotWire(first, second)) return nullptr;
  const Ref<HXDocument> kept(&document);
  const Ref<HXPort> keptFirst(&first);
  const Ref<HXPort> keptSecond(&second);
  const HXHistory::Step step(document, "Connect");
  for (const auto& end : {Ref<HXPort>(first.resolvedPort()), Ref<HXPort>(second.resolvedPort())}) {
    if (!end || end->orientation() != HXOrientationInput) continue;
    if (end->connectionRelationship() != HXConnectionRelationshipOne) continue;
    document.breakAllConnectionsToPort(*end);
  }
  return document.connectPort(first, second);
}

}  // namespace tarnkit
