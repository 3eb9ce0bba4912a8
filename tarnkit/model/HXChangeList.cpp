#include "tarnkit/model/HXChangeList.h"

#include <utility>

namespace tarnkit {

std::unique_ptr<HXChange> HXChangeList::take(HXChange* change) noexcept {
  if (!change) return nullptr;
  (change->previous_ ? change->previous_->next_ : first_) = change->next_;
  (change->next_ ? change->next_->previous_ : last_) = change->previous_;
  change->previous_ = change->next_ = nullptr;
  --count_;
  return std::unique_ptr<HXChange>(change);
}

void HXChangeList::swap(HXChangeList& other) noexcept {
  std::swap(first_, other.first_);
  std::swap(last_, other.last_);
  std::swap(count_, other.count_);
}

}  // namespace tarnkit
