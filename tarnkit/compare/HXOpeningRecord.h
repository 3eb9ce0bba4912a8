#pragma once

#include <string>
#include <vector>

#include "tarnkit/model/HXNodeReport.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

/// What opening a document tells beside the document: what nodes lost, since their patch is not
/// what it was, and what contradicted itself and was left out. While the record is open the log of
/// the process comes here and nowhere else, so the document is opened and the record is ended:
///
///     HXOpeningRecord record;
///     auto document = HXDocumentFile::open(path, codingType, record.losses());
///     record.end();
///
/// For one thread; one at a time.
class HXOpeningRecord {
 public:
  HXOpeningRecord();
  ~HXOpeningRecord() { end(); }
  HXOpeningRecord(const HXOpeningRecord&) = delete;
  HXOpeningRecord& operator=(const HXOpeningRecord&) = delete;

  /// To be handed to whoever opens the document.
  std::vector<HXNodeLosses>* losses() noexcept { return &losses_; }
  const std::vector<HXNodeLosses>& losses() const noexcept { return losses_; }
  /// Gives the log back; what it has told so far stays here.
  void end();
  /// One sentence for each thing that was left out and is no loss of a node.
  const std::vector<std::string>& mended() const noexcept { return mended_; }

 private:
  Log::Sink earlier_;
  bool isOpen_ = true;
  std::vector<std::string> lines_;
  std::vector<std::string> mended_;
  std::vector<HXNodeLosses> losses_;
};

}  // namespace tarnkit
