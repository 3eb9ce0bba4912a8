#include "tarnkit/compare/HXDocumentCheck.h"

#include <fmt/format.h>

#include <algorithm>

#include "tarnkit/compare/CheckRules.h"
#include "tarnkit/compare/HXOpeningRecord.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/system/Status.h"

namespace tarnkit {

namespace detail {

namespace {

const CheckRules* const kSubjects[] = {
    &kWireRules, &kPublicationRules, &kValueRules, &kExpressionRules, &kStructureRules,
    &kViewRules, &kPlaceRules,       &kImageRules, &kDeviceRules,
};

/// The rules of one kind that are wanted, of all subjects.
template <class Subject>
class Rules {
 public:
  Rules(const CheckReport& report, CheckRuleList<Subject> CheckRules::*kind) {
    for (const CheckRules* subject : kSubjects) {
      for (const auto& rule : subject->*kind) {
        if (report.wants(rule.code)) rules_.push_back(rule);
      }
    }
  }
  bool isEmpty() const noexcept { return rules_.empty(); }
  void look(CheckReport& report, Subject& subject) const {
    for (const auto& rule : rules_) rule.look(report, subject);
  }

 private:
  std::vector<CheckRule<Subject>> rules_;
};

void noteImage(CheckReport& report, HXParameter& parameter) {
  const auto kind = parameter.kind();
  const auto* image = std::get_if<HXImageParameter*>(&kind);
  const HXImageStoreEntry* entry = image ? (*image)->imageEntry() : nullptr;
  if (entry) report.imagesInUse().insert(entry->key().view());
}

/// Applies all rules to all that they look at.
class Round {
 public:
  explicit Round(CheckReport& report)
      : report_(report),
        document_(report, &CheckRules::document),
        nodes_(report, &CheckRules::nodes),
        ports_(report, &CheckRules::ports),
        values_(report, &CheckRules::values),
        parameters_(report, &CheckRules::parameters),
        publications_(report, &CheckRules::publications),
        wires_(report, &CheckRules::wires),
        images_(report, &CheckRules::images) {}

  void run() {
    for (const CheckedNode& node : report_.nodes()) lookAt(node);
    for (const CheckedWire& wire : report_.wires()) wires_.look(report_, wire);
    document_.look(report_, report_.document());
    for (const auto& entry : report_.document().imageStore()->imageEntriesInForce()) {
      images_.look(report_, *entry.value);
    }
  }

 private:
  void lookAt(const CheckedNode& checked) {
    nodes_.look(report_, checked);
    if (!ports_.isEmpty() || !values_.isEmpty()) {
      for (const auto& entry : checked.node->portsInForce()) {
        ports_.look(report_, *entry.value);
        if (entry.value->staticValue()) values_.look(report_, *entry.value);
      }
    }
    for (const auto& entry : checked.node->parameters()) {
      parameters_.look(report_, *entry.value);
      noteImage(report_, *entry.value);
    }
    if (publications_.isEmpty()) return;
    for (const auto side : kBothSides) {
      for (const auto& member : checked.node->symbolicPortsInForce(side)) {
        publications_.look(report_, static_cast<HXSymbolicPort&>(*member));
      }
    }
  }

  CheckReport& report_;
  Rules<HXDocument> document_;
  Rules<const CheckedNode> nodes_;
  Rules<HXPatchPort> ports_;
  Rules<HXPatchPort> values_;
  Rules<HXParameter> parameters_;
  Rules<HXSymbolicPort> publications_;
  Rules<const CheckedWire> wires_;
  Rules<HXImageStoreEntry> images_;
};

// Ports and parameters that nobody used are no loss.
bool isLoss(HXNodeItem::Kind kind, HXFindingCode& code) {
  switch (kind) {
    case HXNodeItem::Kind::value:
      code = HXFindingCode::lostValue;
      return true;
    case HXNodeItem::Kind::connection:
      code = HXFindingCode::lostWire;
      return true;
    case HXNodeItem::Kind::publication:
      code = HXFindingCode::lostPublication;
      return true;
    case HXNodeItem::Kind::node:
      code = HXFindingCode::lostNode;
      return true;
    case HXNodeItem::Kind::port:
    case HXNodeItem::Kind::parameter:
      break;
  }
  return false;
}

void tellOpening(CheckReport& report, const HXOpeningRecord& opening) {
  for (const HXNodeLosses& losses : opening.losses()) {
    for (const HXNodeItem& item : losses.dropped) {
      HXFindingCode code{};
      if (!isLoss(item.kind, code) || !report.wants(code)) continue;
      report.add(
          code, *losses.node,
          fmt::format("opening the file lost {}, since the patch has changed", item.description()));
    }
  }
  if (!report.wants(HXFindingCode::openingMended)) return;
  for (const std::string& line : opening.mended()) {
    report.add(HXFindingCode::openingMended, report.document(), "opening the file: " + line);
  }
}

}  // namespace

}  // namespace detail

bool HXCheckOptions::wants(HXFindingCode code) const {
  const auto has = [&](const std::vector<HXFindingCode>& codes) {
    return std::find(codes.begin(), codes.end(), code) != codes.end();
  };
  return (only.empty() || has(only)) && !has(ignored) && (!fixableOnly || kindOf(code).isFixable);
}

HXCheckResult HXDocumentCheck::check(HXDocument& document, const HXCheckOptions& options,
                                     const HXOpeningRecord* opening) {
  detail::CheckReport::Wanted wanted;
  for (const HXFindingKind& kind : findingKinds()) {
    wanted[static_cast<std::size_t>(kind.code)] = options.wants(kind.code);
  }
  detail::CheckReport report(document, wanted);
  if (opening) detail::tellOpening(report, *opening);
  detail::Round(report).run();
  HXCheckResult result;
  for (std::size_t i = 0; i < result.counts.size(); ++i) {
    result.counts[i] = report.count(static_cast<HXFindingSeverity>(i));
  }
  result.findings = report.take(options.limit);
  return result;
}

HXCheckResult HXDocumentCheck::ofFailure(const Status& failure, const HXCheckOptions& options) {
  HXCheckResult result;
  if (!options.wants(HXFindingCode::fileUnreadable)) return result;
  HXFinding finding;
  finding.code = HXFindingCode::fileUnreadable;
  finding.address = "/";
  finding.sentence = "the file cannot be read: " + failure.sentence();
  ++result.counts[static_cast<std::size_t>(finding.severity())];
  if (options.limit != 0) result.findings.push_back(std::move(finding));
  return result;
}

}  // namespace tarnkit
