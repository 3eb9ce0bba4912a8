#include "tarnkit/platform/Dictionary.h"

namespace tarnkit {

const Class Dictionary::kClass{"NSDictionary", &Object::kClass};

}  // namespace tarnkit
