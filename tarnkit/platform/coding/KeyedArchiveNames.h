#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tarnkit/platform/text/Symbol.h"

/// The names by which keyed archives tell what belongs to the archive and not to an object, for
/// their writers and their readers.
namespace tarnkit::detail::archive {

inline constinit const Symbol kClass{"$class"};
inline constinit const Symbol kObjects{"$objects"};
inline constinit const Symbol kVersion{"$version"};

// Of standard keyed archives.
inline constinit const Symbol kArchiver{"$archiver"};
inline constexpr std::string_view kArchiverName = "NSKeyedArchiver";
inline constexpr std::int64_t kFormatVersion = 100000;
inline constinit const Symbol kTop{"$top"};
inline constinit const Symbol kTopObject{"root"};
inline constinit const Symbol kClassName{"$classname"};
inline constinit const Symbol kClassChain{"$classes"};
inline constexpr std::string_view kNull = "$null";

// Of archives of `HXKeyedArchiver`.
inline constinit const Symbol kRoot{"$root"};
inline constinit const Symbol kReference{"$reference"};

// Of the platform's own values and containers.
inline constinit const Symbol kMembers{"NS.objects"};
inline constinit const Symbol kKeys{"NS.keys"};
inline constinit const Symbol kText{"NS.string"};
inline constinit const Symbol kBytes{"NS.data"};
/// Followed by the member's number.
inline constexpr std::string_view kNumberedMember = "NS.object.";

/// The key under which a standard keyed archive holds what an object calls `key`. Keys with a "$"
/// before them are the archive's own, so those of an object get a second one.
inline std::string keyOfObject(std::string_view key) {
  return key.substr(0, 1) == "$" ? "$" + std::string(key) : std::string(key);
}

}  // namespace tarnkit::detail::archive
