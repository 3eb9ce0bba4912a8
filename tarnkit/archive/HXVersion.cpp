#include "tarnkit/archive/HXVersion.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "tarnkit/platform/numbers/NumberText.h"
#include "tarnkit/platform/system/Bundle.h"
#include "tarnkit/platform/text/ASCII.h"
#include "tarnkit/platform/text/String.h"
#include "tarnkit/platform/text/Symbol.h"

namespace tarnkit {

namespace {

constinit const Symbol kShortVersionKey{"CFBundleShortVersionString"};

/// Takes the next run of digits off the text; 0 when there is none left.
std::int32_t scanInteger(std::string_view& text) noexcept {
  const auto first = std::find_if(text.begin(), text.end(), detail::isDigit);
  const auto last = std::find_if_not(first, text.end(), detail::isDigit);
  const std::string_view digits(first, last);
  text = std::string_view(last, text.end());
  return readInt32(digits);
}

}  // namespace

HXVersion HXCurrentVersion() {
  return HXVersionFromString(
      String::from(Bundle::mainBundle().objectForInfoDictionaryKey(kShortVersionKey.string())));
}

String HXStringFromVersion(HXVersion version) {
  return String(fmt::format("{}.{}.{}", version.major, version.minor, version.patch));
}

HXVersion HXVersionFromString(const String& string) {
  std::string_view rest = string.view();
  HXVersion version;
  version.major = scanInteger(rest);
  version.minor = scanInteger(rest);
  version.patch = scanInteger(rest);
  return version;
}

std::int32_t HXCurrentDeviceProtocolVersion() { return 1; }

String HXStringFromDeviceProtocolVersion(std::int32_t version) {
  return String(fmt::format("{}", version));
}

std::int32_t HXDeviceProtocolVersionFromString(const String& string) {
  std::string_view rest = string.view();
  return scanInteger(rest);
}

bool HXDeviceProtocolVersionIsCompatible(std::int32_t version, std::int32_t other) {
  return version == other;
}

}  // namespace tarnkit
