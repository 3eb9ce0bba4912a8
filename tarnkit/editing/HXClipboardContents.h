#pragma once

#include <vector>

#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXNode.h"

namespace tarnkit {

/// The root object of a clipboard: nodes that were chosen, with all that is below them, and the
/// connections among them.
///
/// The nodes of one that was read stand in no group and have no connections yet, and nobody else
/// has them: they are to be placed once. For one thread.
class HXClipboardContents final : public Object {
  TARNKIT_CLASS
 public:
  HXClipboardContents() = default;
  /// Those of an editor: the nodes stay where they are.
  HXClipboardContents(std::vector<Ref<HXNode>> nodes, std::vector<Ref<HXConnection>> connections)
      : nodes_(std::move(nodes)), connections_(std::move(connections)) {}

  /// Enters the class, and those of the model, for readers.
  static void registerClasses();

  /// The outermost ones, in the order in which they were chosen.
  const std::vector<Ref<HXNode>>& nodes() const noexcept { return nodes_; }
  /// What is to be joined once the nodes are placed: the ports as the user joined them.
  struct Wire {
    Ref<HXPort> output;
    Ref<HXPort> input;
  };
  const std::vector<Wire>& wires() const noexcept { return wires_; }

  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;
  /// Fails the decoding unless the nodes, and what is below them, are all that there is: each once,
  /// and no document.
  void awakeAfterDecoding(Decoder& coder) override;
  void abandonDecoding() override;

 private:
  void checkNodes(Decoder& coder);
  void takeConnectionsOff();

  std::vector<Ref<HXNode>> nodes_;
  std::vector<Ref<HXConnection>> connections_;  // one that was read has wires instead
  std::vector<Wire> wires_;
};

}  // namespace tarnkit
