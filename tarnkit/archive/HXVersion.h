#pragma once

#include <cstdint>

namespace tarnkit {

class String;

/// A version of the application; passed by value. The functions below never fail: what a text does
/// not supply is 0. Safe on any thread, except `HXCurrentVersion`, which reads the main bundle.
struct HXVersion {
  std::int32_t major = 0;
  std::int32_t minor = 0;
  std::int32_t patch = 0;
  friend constexpr bool operator==(const HXVersion&, const HXVersion&) = default;
};

/// The running application's version: "CFBundleShortVersionString" of the main bundle's information
/// (the application's, not this library's); 0.0.0 when it is absent or no string.
HXVersion HXCurrentVersion();
/// "MAJOR.MINOR.PATCH".
String HXStringFromVersion(HXVersion version);
/// Reads three integers in turn, skipping everything that is not one of the digits 0 to 9 before
/// each ("1.2.3", "1-2-3" and "v1 2 3" are one version, a minus sign is no part of a number). An
/// integer too large for 32 bits is the largest that fits. 0.0.0 for nil.
HXVersion HXVersionFromString(const String& string);

/// The version of the protocol spoken with the device: 1.
std::int32_t HXCurrentDeviceProtocolVersion();
/// The decimal number.
String HXStringFromDeviceProtocolVersion(std::int32_t version);
/// Reads one integer as `HXVersionFromString` does; 0 for nil.
std::int32_t HXDeviceProtocolVersionFromString(const String& string);
/// Only equal versions are compatible; there is no range and no ordering.
bool HXDeviceProtocolVersionIsCompatible(std::int32_t version, std::int32_t other);

}  // namespace tarnkit
