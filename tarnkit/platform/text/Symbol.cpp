#include "tarnkit/platform/text/Symbol.h"

#include <deque>
#include <mutex>
#include <unordered_map>

namespace tarnkit {

namespace {

struct Table {
  std::mutex mutex;
  std::unordered_map<std::string_view, std::uint32_t> numbers;
  std::deque<String> texts;
};

Table& table() {
  static auto* const shared = new Table;  // outlives every static object that may still use it
  return *shared;
}

}  // namespace

const String& Symbol::resolve() const {
  auto& shared = table();
  const String text = String::interned(text_);
  const std::lock_guard lock(shared.mutex);
  if (const auto* resolved = string_.load(std::memory_order_relaxed)) return *resolved;
  const auto next = static_cast<std::uint32_t>(shared.texts.size());
  const auto [entry, isNew] = shared.numbers.emplace(text.view(), next);
  if (isNew) shared.texts.push_back(text);
  number_ = entry->second;
  const String& string = shared.texts[entry->second];  // a deque's elements keep their addresses
  string_.store(&string, std::memory_order_release);
  return string;
}

std::uint32_t Symbol::count() {
  auto& shared = table();
  const std::lock_guard lock(shared.mutex);
  return static_cast<std::uint32_t>(shared.texts.size());
}

String Symbol::stringOf(std::uint32_t number) {
  auto& shared = table();
  const std::lock_guard lock(shared.mutex);
  return shared.texts[number];
}

}  // namespace tarnkit
