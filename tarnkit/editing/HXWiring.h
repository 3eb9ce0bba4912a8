#pragma once

#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXRefusal.h"

namespace tarnkit {

class HXDocument;
class HXPort;

/// Joining two ports as an editor does when a wire is dragged from one to the other:
/// `HXDocument::connectPort` itself asks nothing and breaks nothing. For the document's thread.
class HXWiring {
 public:
  /// Why the two cannot be wired; empty when they can. They can when either of them takes the
  /// other, whichever way the wire was dragged.
  static HXRefusal whyNotWire(const HXPort& first, const HXPort& second);
  /// Asks both ends, breaks the connection of an input that takes only one (of a published port:
  /// of the port that it resolves to), and connects. Deliberately leaves alone an output that takes
  /// only one: the document shows the new wire at its input, and the old one stays where it was.
  ///
  /// Null, and nothing changed, when `whyNotWire` refuses. One step of the document's history.
  static Ref<HXConnection> wire(HXDocument& document, HXPort& first, HXPort& second);
};

}  // namespace tarnkit
