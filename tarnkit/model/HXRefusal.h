#pragma once

#include <cstdint>
#include <string_view>

#include "tarnkit/platform/objects/Ref.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

class HXPort;
class HXRPort;

/// Why something cannot be done with ports or nodes, for an editor that has to say so: a code for
/// programs, one sentence for people. Empty (false) when nothing stands in the way.
///
/// Asked of who would do it: `HXPort::whyNotConnectToPort`, `HXGroup::whyNotAddNode`, …, which
/// refuse whenever the operation itself would, and never otherwise. Asking changes nothing and logs
/// nothing, and costs what the plain question does as long as nothing is refused. For one thread.
class HXRefusal {
 public:
  enum class Code : std::uint8_t {
    none,
    missingPort,      // there is none, or it is a published one that stands for nothing
    noSide,           // a port that is neither input nor output
    sameSide,         // two inputs, or two outputs
    unknownKind,      // of a patch that nobody knows nobody can say what it takes
    kind,             // the input does not take what the output gives
    askedOfOutput,    // they fit, but an output of a kind leaves the answer to the input
    isDocument,       // a document stands in no group
    insideItself,     // the group is the node's own, or stands below it
    noParent,         // the node stands in no group that it could be moved from
    anotherDocument,  // the two stand in different documents, or one of them in none
  };
  /// The port that was asked, or the other one.
  struct End {
    Ref<const HXPort> port;  // null for none
    /// What it takes or gives: "value", "primitive", "angle", "array", "dictionary", "image",
    /// "filter", "view", "gesture", "interaction", "feedback", or "unknown"; "" without a port.
    std::string_view kind;
  };

  /// Nothing is refused.
  HXRefusal() noexcept;
  HXRefusal(Code code, String reason);
  /// About two ports.
  HXRefusal(Code code, String reason, const HXPort* port, const HXPort* other);
  HXRefusal(const HXRefusal&);
  HXRefusal(HXRefusal&&) noexcept;
  HXRefusal& operator=(const HXRefusal&);
  HXRefusal& operator=(HXRefusal&&) noexcept;
  ~HXRefusal();

  /// Whether something is refused.
  explicit operator bool() const noexcept { return code_ != Code::none; }
  Code code() const noexcept { return code_; }
  /// One sentence without its full stop: "the input takes an image, the output gives feedback";
  /// nil when nothing is refused.
  const String& reason() const noexcept { return reason_; }
  /// Of a refusal about ports: the one that was asked, and the other.
  const End& port() const noexcept { return port_; }
  const End& other() const noexcept { return other_; }

  /// What a port takes or gives, as in `End`.
  static std::string_view kindOf(const HXPort* port);

 private:
  Code code_ = Code::none;
  String reason_;
  End port_;
  End other_;
};

/// "none", "missingPort", "noSide", …: as the code is written.
std::string_view nameOf(HXRefusal::Code code) noexcept;

}  // namespace tarnkit
