#include "tarnkit/platform/collections/Dictionary.h"

#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

const Class Dictionary::kClass{"NSDictionary", &Object::kClass};

void Dictionary::setObject(Ref<Object> object, const String& forKey) {
  if (forKey.isNil()) {
    Log::warning(kClass.name(), "Refusing an object under a key that is nil");
  } else if (!object) {
    Log::warning(kClass.name(), "Refusing an object that is nil");
  } else {
    entries_.set(forKey, std::move(object));
  }
}

}  // namespace tarnkit
