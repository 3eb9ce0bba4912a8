#include "tarnkit/model/HXChangeNotices.h"

#include <algorithm>

namespace tarnkit {

std::size_t HXChangeNotices::KeyHash::operator()(const Key& key) const noexcept {
  const auto owner = reinterpret_cast<std::uintptr_t>(key.owner) >> 4;
  const auto what = reinterpret_cast<std::uintptr_t>(key.what) >> 4;
  return (owner * 31 + what) * 31 + static_cast<std::size_t>(key.order);
}

HXChangeNotices::Notice& HXChangeNotices::notice(const Key& key, Order whenGone,
                                                 std::function<void(bool)> post) {
  const auto [found, isNew] = indexes_.try_emplace(key, notices_.size());
  if (isNew) notices_.push_back({key.order, whenGone, 0, std::move(post)});
  return notices_[found->second];
}

void HXChangeNotices::addMember(const Object& owner, const Object& member, bool came,
                                Order whenCame, Order whenGone, std::function<void(bool)> post) {
  notice({&owner, &member, whenCame}, whenGone, std::move(post)).balance += came ? 1 : -1;
}

void HXChangeNotices::addValue(const Object& owner, const char* property,
                               std::function<void()> post, Order order) {
  notice({&owner, property, order}, order, [post = std::move(post)](bool) { post(); }).balance = 1;
}

void HXChangeNotices::post() {
  const auto orderOf = [](const Notice& notice) {
    return notice.balance > 0 ? notice.whenCame : notice.whenGone;
  };
  auto notices = std::move(notices_);
  notices_.clear();
  indexes_.clear();
  std::erase_if(notices, [](const Notice& notice) { return notice.balance == 0; });
  std::stable_sort(notices.begin(), notices.end(),
                   [&](const Notice& a, const Notice& b) { return orderOf(a) < orderOf(b); });
  for (const auto& notice : notices) notice.post(notice.balance > 0);
}

}  // namespace tarnkit
