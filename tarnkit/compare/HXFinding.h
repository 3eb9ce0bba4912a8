#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "tarnkit/platform/objects/Ref.h"

namespace tarnkit {

class Object;

/// How much a finding weighs. Worst first.
enum class HXFindingSeverity : std::uint8_t {
  error,    // the device cannot do what the document says, or something of it is lost
  warning,  // it most likely does not do what was meant
  note,     // worth knowing
};
/// "error", "warning", "note".
std::string_view nameOf(HXFindingSeverity severity) noexcept;

/// Everything that a check can find, in the order of the table (`findingKinds`).
enum class HXFindingCode : std::uint8_t {
  fileUnreadable,
  openingMended,
  lostValue,
  lostWire,
  lostPublication,
  lostNode,

  wireKind,
  wireHalf,
  wireNowhere,
  wireUnseen,
  wireElsewhere,
  wireAcrossGroups,
  wireCircle,
  inputJoinedTwice,
  outputJoinedTwice,

  publicationNowhere,
  publicationForeign,
  publicationTwice,
  publicationSameName,
  publicationNoName,
  publicationAtTop,
  publicationUnused,

  parameterBounds,
  valueNoChoice,
  valueNoNumber,
  valueNoNumberText,
  valueColor,

  expressionSyntax,
  expressionFunction,
  expressionArguments,
  expressionNames,
  expressionEmpty,
  expressionConstant,
  scriptFunction,
  scriptNames,

  patchUnknown,
  patchMissing,
  patchRetired,
  groupEmpty,
  containerEmpty,
  documentEmpty,
  nodeUnread,
  inputMissing,
  variablesOutside,
  stateUnpaired,
  viewNeverShown,
  viewUnlisted,
  keyTwice,
  nameUnreadable,
  positionNoNumber,
  positionFar,
  positionShared,

  imageAbsent,
  imageUnused,
  imageUnchosen,
  imageEmpty,
  imageLarge,
  imageKey,

  devicePlugIn,
  deviceValue,
  deviceParameter,
};

/// One row of the table: what a code is called and what it means. Command lines, files for other
/// programs and the documents are made from it.
struct HXFindingKind {
  HXFindingCode code;
  /// As it is written: "wire-kind". Never changed once it is out.
  std::string_view name;
  HXFindingSeverity severity;
  /// Whether there is one safe answer, which `HXDocumentRepair` gives.
  bool isFixable;
  /// A heading without its full stop.
  std::string_view title;
  /// What it means, and what to do.
  std::string_view text;
};

/// Every code once, by subject.
std::span<const HXFindingKind> findingKinds() noexcept;
const HXFindingKind& kindOf(HXFindingCode code) noexcept;
/// Null for a name that no code has.
const HXFindingKind* findingKindNamed(std::string_view name) noexcept;
/// The table as the document for people that stands in docs/checks.md.
std::string findingsManual();

/// One thing that is wrong, or looks wrong, in a document. A plain value; it keeps what it is about
/// alive. For the document's thread.
struct HXFinding {
  HXFindingCode code = HXFindingCode::documentEmpty;
  /// Where, as `HXAddresses` says it: "Album / Page: Value"; "/" of the document as a whole.
  std::string address;
  /// Where, as scripts say it: "node_3", "node_3/Tarn.valueInput", the key of an image; empty where
  /// the place has none.
  std::string key;
  /// One sentence without its full stop.
  std::string sentence;
  /// What would be right; empty where nobody can say.
  std::string suggestion;
  /// Where, for programs: the node, the port, the parameter or the image store's entry; null where
  /// the finding is about the file.
  Ref<Object> place;
  /// What the finding is about where that is not the place itself: the wire.
  Ref<Object> subject;
  /// Of a text of the place: where in it the fault begins, in bytes; `kNoOffset` where nobody
  /// knows.
  std::size_t offset = kNoOffset;

  static constexpr std::size_t kNoOffset = static_cast<std::size_t>(-1);

  const HXFindingKind& kind() const noexcept { return kindOf(code); }
  HXFindingSeverity severity() const noexcept { return kind().severity; }
};

}  // namespace tarnkit
