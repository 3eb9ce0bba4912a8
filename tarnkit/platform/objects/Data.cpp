#include "tarnkit/platform/objects/Data.h"

namespace tarnkit {

const Class Data::kClass{"NSData", &Object::kClass};

bool Data::isEqual(const Object& other) const {
  const auto* data = as<Data>(&other);
  return data && data->bytes_ == bytes_;
}

std::uint64_t Data::hash() const {
  std::uint64_t value = 14695981039346656037ULL;
  for (const auto byte : bytes_) value = (value ^ byte) * 1099511628211ULL;
  return value;
}

}  // namespace tarnkit
