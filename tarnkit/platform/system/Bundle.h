#pragma once

#include "tarnkit/platform/collections/OrderedMap.h"
#include "tarnkit/platform/objects/Class.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

class Object;

/// A unit of code as the process knows it: the running application, this library, or a plug-in,
/// with the information that it carries about itself.
///
/// Bundles are made by whoever brings the code in and live as long as the process. For one thread;
/// a question costs one look-up, one by identifier a walk along the bundles.
class Bundle {
 public:
  using InfoDictionary = OrderedMap<Ref<Object>>;
  Bundle(const Bundle&) = delete;
  Bundle& operator=(const Bundle&) = delete;

  /// The running application. Its information is empty until the host sets it.
  static Bundle& mainBundle();
  /// This library.
  static Bundle& libraryBundle();
  /// The bundle of that identifier, or null when there is none (or the identifier is nil). Of two
  /// with one identifier the application comes first, then the library, then the older.
  static Bundle* bundleWithIdentifier(const String& identifier);
  /// The bundle that brought the class: what `claimClass` said, else this library.
  static Bundle& forClass(const Class& record);

  /// Makes the bundle of a plug-in; of an identifier that is taken, returns the bundle that has it.
  static Bundle& addBundle(const String& identifier);
  /// Says that the class comes from this bundle. A plug-in's loader calls it for each class.
  void claimClass(const Class& record);

  /// The entry "CFBundleIdentifier"; nil when there is none or it is no string.
  String bundleIdentifier() const;
  const InfoDictionary& infoDictionary() const noexcept { return infoDictionary_; }
  /// Replaces the whole information.
  void setInfoDictionary(InfoDictionary infoDictionary);
  /// Null when the key is absent.
  Object* objectForInfoDictionaryKey(const String& key) const;

 private:
  Bundle() = default;

  InfoDictionary infoDictionary_;
};

}  // namespace tarnkit
