#include "tarnkit/platform/text/CharacterSet.h"

#include <unicode/uniset.h>

#include <utility>

#include "tarnkit/platform/text/UTF8.h"

namespace tarnkit {

struct CharacterSet::Members {
  icu::UnicodeSet set;
};

CharacterSet::CharacterSet(std::shared_ptr<const Members> members) noexcept
    : members_(std::move(members)) {}

namespace {

icu::UnicodeSet frozen(icu::UnicodeSet set) {
  set.freeze();
  return set;
}

icu::UnicodeSet withPattern(const char16_t* pattern) {
  UErrorCode status = U_ZERO_ERROR;
  return frozen(icu::UnicodeSet(icu::UnicodeString(pattern), status));
}

}  // namespace

const CharacterSet& CharacterSet::whitespaceAndNewline() {
  static const CharacterSet set(
      std::make_shared<const Members>(Members{withPattern(u"[:White_Space:]")}));
  return set;
}

const CharacterSet& CharacterSet::decimalDigit() {
  static const CharacterSet set(std::make_shared<const Members>(Members{withPattern(u"[:Nd:]")}));
  return set;
}

CharacterSet CharacterSet::charactersInString(std::string_view utf8) {
  icu::UnicodeSet set;
  for (std::size_t at = 0; at < utf8.size();) {
    const auto point = detail::codePointAt(utf8, at);
    set.add(static_cast<UChar32>(point.value));
    at += point.size;
  }
  return CharacterSet(std::make_shared<const Members>(Members{frozen(set)}));
}

CharacterSet CharacterSet::inverted() const {
  icu::UnicodeSet set(0, 0x10FFFF);
  set.removeAll(members_->set);
  return CharacterSet(std::make_shared<const Members>(Members{frozen(set)}));
}

bool CharacterSet::contains(std::uint32_t codePoint) const noexcept {
  return members_->set.contains(static_cast<UChar32>(codePoint));
}

}  // namespace tarnkit
