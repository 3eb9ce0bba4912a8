#include "tarnkit/patches/HXRDictionaryEntry.h"

namespace tarnkit {

const Class HXRDictionaryEntry::kClass{"HXRDictionaryEntry", &Object::kClass};

}  // namespace tarnkit
