// What docs/building-an-editor.md shows of wires, published ports and groups.
#include <cstdio>

#include "tarnkit/editing/HXGrouping.h"
#include "tarnkit/editing/HXWiring.h"
#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXRefusal.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/PatchRegistry.h"

using namespace tarnkit;

namespace {

Ref<HXNode> place(HXDocument& document, const char* patch) {
  auto node = HXNode::makeForPatch(*patchClassNamed(patch));
  document.subnodeGroup()->addNode(*node);
  return node;
}

}  // namespace

int main() {
  // region wires
  const auto document = make<HXDocument>();
  const auto image = place(*document, "HXRImageNode");
  const auto clamp = place(*document, "HXRClampNode");
  const auto view = place(*document, "HXRImageViewNode");

  // While the wire is dragged: may it end here, and if not, why?
  HXPort& output = *image->portForKey("Tarn.imageOutput");
  for (HXPort* input :
       {clamp->portForKey("Tarn.valueInput"), view->portForKey("Tarn.imageInput")}) {
    if (const HXRefusal refusal = HXWiring::whyNotWire(output, *input)) {
      std::printf("%s: %s\n", nameOf(refusal.code()).data(),
                  refusal.reason().toStdString().c_str());
      continue;
    }
    // When it is dropped: what an input that takes one wire had is broken first.
    HXWiring::wire(*document, output, *input);
    std::printf("joined to %s\n", input->displayName().toStdString().c_str());
  }
  // end wires

  // region look
  for (const auto& port : view->ports()) {
    if (port->orientation() != HXOrientationInput) continue;  // or HXOrientationOutput
    port->connections().forEach([&](HXConnection& wire) {
      std::printf("%s comes from %s\n", port->displayName().toStdString().c_str(),
                  wire.outputPort()->node()->name().toStdString().c_str());
      document->breakConnection(wire);
    });
  }
  // end look

  // region publish
  // A port is published out of the group that its node stands in, and has the other one's name
  // until somebody gives it one. "Size:Width" shows it under the title "Size".
  const auto card = make<HXNode>();
  card->setName("Card");
  card->setForceAllowsSubnodes(true);  // without a patch it holds nodes because it is told to
  document->subnodeGroup()->addNode(*card);
  const auto inside = HXNode::makeForPatch(*patchClassNamed("HXRColorViewNode"));
  card->subnodeGroup()->addNode(*inside);
  const auto width =
      card->subnodeGroup()->addSymbolicPortForPort(*inside->portForKey("Tarn.widthInput"));
  width->setName("Size:Width");
  const auto wire = HXWiring::wire(*document, *clamp->portForKey("Tarn.resultOutput"), *width);
  std::printf("drawn to %s of %s, carried to %s of %s\n",
              wire->displayInputPort()->displayName().toStdString().c_str(),
              wire->displayInputPort()->node()->name().toStdString().c_str(),
              wire->inputPort()->displayName().toStdString().c_str(),
              wire->inputPort()->node()->name().toStdString().c_str());
  // end publish

  // region group
  // Nodes are put into a group of their own; wires that come to cross its border go on through
  // ports that it publishes, and are there again when it is taken apart.
  const auto group = HXGrouping::group({clamp}, "Limits");
  if (group) {
    std::printf("%s publishes %zu\n", (*group)->name().toStdString().c_str(),
                (*group)->symbolicOutputPorts().size());
    const auto apart = HXGrouping::ungroup(**group);
    std::printf("lost: %zu\n", apart ? apart->lost.connections.size() : 0);
  } else {
    std::printf("%s\n", group.status().sentence().c_str());
  }
  // end group
  const auto* inner = inside->portForKey("Tarn.widthInput");
  return inner->connections().count() == 1 ? 0 : 1;
}
