#pragma once

#include <span>

#include "tarnkit/compare/CheckReport.h"

namespace tarnkit {
class HXParameter;
class HXPatchPort;
}  // namespace tarnkit

namespace tarnkit::detail {

/// One rule: what it looks for, and how. A rule whose code nobody wants is not asked.
template <class Subject>
struct CheckRule {
  HXFindingCode code;
  void (*look)(CheckReport& report, Subject& subject);
};
template <class Subject>
using CheckRuleList = std::span<const CheckRule<Subject>>;

/// The rules of one subject, by what they look at.
struct CheckRules {
  CheckRuleList<HXDocument> document = {};
  CheckRuleList<const CheckedNode> nodes = {};
  CheckRuleList<HXPatchPort> ports = {};
  /// Ports that have a static value.
  CheckRuleList<HXPatchPort> values = {};
  CheckRuleList<HXParameter> parameters = {};
  CheckRuleList<HXSymbolicPort> publications = {};
  CheckRuleList<const CheckedWire> wires = {};
  CheckRuleList<HXImageStoreEntry> images = {};
};

extern const CheckRules kWireRules;
extern const CheckRules kPublicationRules;
extern const CheckRules kValueRules;
extern const CheckRules kExpressionRules;
extern const CheckRules kStructureRules;
extern const CheckRules kViewRules;
extern const CheckRules kPlaceRules;
extern const CheckRules kImageRules;
extern const CheckRules kDeviceRules;

}  // namespace tarnkit::detail
