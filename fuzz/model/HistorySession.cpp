#include "fuzz/model/HistorySession.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "fuzz/model/ModelEditor.h"
#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/compare/HXDocumentRepair.h"
#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tests/model/Consistency.h"

namespace tarnkit::fuzz {

namespace {

class Session {
 public:
  Session(const std::uint8_t* bytes, std::size_t size)
      : document_(make<HXDocument>()), editor_(bytes, size) {
    editor_.keepTo(*document_);
    // Some things are there before the history is.
    for (auto edits = editor_.nextByte() % 8; edits > 0; --edits) editor_.runOne();
    history_ = make<HXHistory>(*document_);
    history_->setCoalesces(false);
    history_->setRecordsViewState(true);
    states_.push_back(archive());
  }

  std::vector<std::string> run() {
    while (faults_.empty() && !editor_.isUsedUp()) {
      const auto choice = editor_.nextByte() % 8;
      if (choice == 0) {
        undo(1);
      } else if (choice == 1) {
        redo(1);
      } else if (!edit()) {
        break;
      }
    }
    undo(states_.size());
    redo(states_.size());
    if (faults_.empty()) repair();
    undo(states_.size());
    if (faults_.empty() && at_ != 0) fault("not everything was undone");
    return faults_;
  }

 private:
  std::string archive() {
    const auto bytes = HXDocumentFile::dataWithDocument(*document_, HXCodingTypeEditorWithKeys);
    if (!bytes) {
      fault("the document cannot be saved");
      return {};
    }
    return std::string(bytes->begin(), bytes->end());
  }

  bool edit() {
    const auto steps = history_->undoCount();
    history_->beginStep();
    const bool abandons = editor_.nextByte() % 16 == 0;
    bool hasEdited = false;
    for (auto edits = editor_.nextByte() % 4 + 1; edits > 0; --edits) {
      hasEdited = editor_.runOne() || hasEdited;
    }
    if (abandons) {
      editor_.setPaused(true);
      if (!history_->abandonStep()) fault("a step cannot be abandoned");
      editor_.setPaused(false);
    } else {
      editor_.setPaused(true);  // what is changed because a step has ended would be one more
      history_->endStep();
      editor_.setPaused(false);
    }
    const auto state = archive();
    const auto now = history_->undoCount();
    if (now == steps) {
      if (state != states_[at_]) {
        differs(abandons ? "abandoned" : "nothing recorded", states_[at_], state);
      }
      return hasEdited;
    }
    checkConsistency("edited");
    if (now != steps + 1)
      fault(fmt::format("an edit is no single step: {} instead of {}, abandons {}", now, steps + 1,
                        abandons));
    states_.resize(++at_);
    states_.push_back(state);
    return hasEdited;
  }

  void undo(std::size_t count) {
    for (; count > 0 && faults_.empty() && history_->canUndo(); --count) {
      editor_.setPaused(true);
      if (!history_->undo()) fault("an undo was refused");
      editor_.setPaused(false);
      --at_;
      check("undone");
    }
  }
  void redo(std::size_t count) {
    for (; count > 0 && faults_.empty() && history_->canRedo(); --count) {
      editor_.setPaused(true);
      if (!history_->redo()) fault("a redo was refused");
      editor_.setPaused(false);
      ++at_;
      check("redone");
    }
  }
  // All that has one safe answer is answered, in one step, and stays so when the document is saved
  // and opened.
  void repair() {
    editor_.setPaused(true);
    const auto steps = history_->undoCount();
    HXDocumentCheck::check(*document_);
    const auto answered = HXDocumentRepair::repair(*document_);
    requireRepaired(*document_, "repaired");
    checkConsistency("repaired");
    const auto bytes = HXDocumentFile::dataWithDocument(*document_, HXCodingTypeEditorWithKeys);
    if (!bytes) return fault("the repaired document cannot be saved");
    const auto opened = HXDocumentFile::document(*bytes, HXCodingTypeEditorWithKeys);
    if (!opened) return fault("the repaired document cannot be opened");
    // Of a port that was published twice, opening ends the later publication only.
    if (!editor_.doublePublications()) requireRepaired(**opened, "repaired and opened");
    if (history_->undoCount() > steps + 1) fault("a repair is no single step");
    if (history_->undoCount() > steps && !history_->undo()) fault("a repair cannot be undone");
    const auto state = archive();
    if (state != states_[at_]) differs("repair undone", states_[at_], state);
    editor_.setPaused(false);
  }
  void requireRepaired(HXDocument& document, const char* what) {
    HXCheckOptions fixable;
    fixable.fixableOnly = true;
    for (const HXFinding& finding : HXDocumentCheck::check(document, fixable).findings) {
      fault(fmt::format("{}: {}: {} [{}]", what, finding.address, finding.sentence,
                        finding.kind().name));
    }
  }
  void check(const char* what) {
    const auto state = archive();
    if (state != states_[at_]) differs(what, states_[at_], state);
    checkConsistency(what);
  }
  void checkConsistency(const char* what) {
    const test::Leniency leniency{.doublePublications = editor_.doublePublications()};
    for (const auto& text : test::faultsOf(*document_, leniency)) {
      fault(fmt::format("{}: {}", what, text));
    }
  }
  void differs(const char* what, const std::string& expected, const std::string& is) {
    if (const char* folder = std::getenv("TARNKIT_FUZZ_DUMP")) {
      std::ofstream(std::string(folder) + "/expected") << expected;
      std::ofstream(std::string(folder) + "/is") << is;
    }
    const auto size = std::min(expected.size(), is.size());
    std::size_t at = 0;
    while (at < size && expected[at] == is[at]) ++at;
    fault(fmt::format("{}: step {}: {} bytes instead of {}, the first other one at {}", what, at_,
                      is.size(), expected.size(), at));
  }
  void fault(std::string text) { faults_.push_back(std::move(text)); }

  Ref<HXDocument> document_;
  ModelEditor editor_;
  Ref<HXHistory> history_;
  std::vector<std::string> states_;  // what the document is after each step
  std::size_t at_ = 0;
  std::vector<std::string> faults_;
};

}  // namespace

std::vector<std::string> faultsOfHistorySession(const std::uint8_t* bytes, std::size_t size) {
  return Session(bytes, size).run();
}

}  // namespace tarnkit::fuzz
