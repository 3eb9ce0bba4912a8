#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/platform/Coder.h"
#include "tarnkit/platform/Object.h"
#include "tarnkit/platform/String.h"

namespace tarnkit {

class HXNode;
class HXPort;

/// One wire of the patch graph, from an output port to an input port: the patch ports that carry
/// the value, and the ports that the user joined, which may be published ports.
///
/// Made by the document and kept alive by the patch ports' connection sets; it refers to all four
/// ports weakly. For one thread.
class HXConnection final : public Object {
  TARNKIT_CLASS
 public:
  /// Draws a new key; connects nothing (`HXDocument` does).
  HXConnection(HXPort* outputPort, HXPort* inputPort, HXPort* displayOutputPort,
               HXPort* displayInputPort);

  /// "connection_%i"; nil for one decoded under a coding type that reads nothing. Unique within one
  /// run only.
  String uniqueKey() const;
  /// The resolved ports; null once gone.
  HXPort* outputPort() const noexcept { return outputPort_.get(); }
  HXPort* inputPort() const noexcept { return inputPort_.get(); }
  /// The ports as the user joined them; null once gone.
  HXPort* displayOutputPort() const noexcept { return displayOutputPort_.get(); }
  HXPort* displayInputPort() const noexcept { return displayInputPort_.get(); }

  /// Where a connection runs: the nearest node that encloses both ends, and the keys from each
  /// end's node (first) up to, not including, that node.
  struct Path {
    Ref<HXNode> parentNode;
    std::vector<String> outputKeyPath;
    std::vector<String> inputKeyPath;
  };
  /// False, with one line logged and `path` untouched, when an end is gone or the ends have no
  /// common ancestor. Costs the depth of the ends.
  bool traverseConnection(Path& path) const;
  static bool hx_traverseConnection(const HXPort* outputPort, const HXPort* inputPort, Path& path);
  /// The keys of the port's node and of every enclosing node, innermost first; empty for null.
  static std::vector<String> hx_keyPathForPort(const HXPort* port);

  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;

  /// Draws the next key, "connection_%i".
  static String hx_newUniqueKey();

 private:
  static std::int32_t hx_newKeyNumber();
  HXConnection() noexcept = default;
  static Ref<Object> makeForDecoding(const Class&);
  template <class T, class... Args>
  friend Ref<T> make(Args&&... args);

  WeakRef<HXPort> outputPort_;
  WeakRef<HXPort> inputPort_;
  WeakRef<HXPort> displayOutputPort_;
  WeakRef<HXPort> displayInputPort_;
  std::int32_t keyNumber_ = -1;  // the key is "connection_" and this number
  bool hasKey_ = false;
};

}  // namespace tarnkit
