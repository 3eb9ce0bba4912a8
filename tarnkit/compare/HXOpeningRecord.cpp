#include "tarnkit/compare/HXOpeningRecord.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tarnkit {

namespace {

// The log's warnings of the model: "WARNING: [CLASS] MESSAGE". What definitions log (of a text that
// is no expression) is found in the document itself.
constexpr std::string_view kWarning = "WARNING: [HX";
constexpr std::string_view kOfDefinition = "WARNING: [HXR";
constexpr std::string_view kOfReplicator = "WARNING: [HXReplicator";

bool isOfModel(std::string_view line) {
  return line.starts_with(kWarning) &&
         (!line.starts_with(kOfDefinition) || line.starts_with(kOfReplicator));
}

}  // namespace

HXOpeningRecord::HXOpeningRecord() {
  earlier_ = Log::setSink([this](std::string_view line) { lines_.emplace_back(line); });
}

void HXOpeningRecord::end() {
  if (!std::exchange(isOpen_, false)) return;
  Log::setSink(std::exchange(earlier_, {}));
  // The losses are told last, a line for each.
  std::size_t told = 0;
  for (const HXNodeLosses& losses : losses_) {
    for (const HXNodeItem& item : losses.dropped) {
      if (item.kind != HXNodeItem::Kind::port && item.kind != HXNodeItem::Kind::parameter) ++told;
    }
  }
  lines_.resize(lines_.size() - std::min(told, lines_.size()));
  for (const std::string& line : lines_) {
    if (!isOfModel(line)) continue;
    const auto bracket = line.find("] ");
    mended_.push_back(bracket == std::string::npos ? line : line.substr(bracket + 2));
  }
  lines_.clear();
}

}  // namespace tarnkit
