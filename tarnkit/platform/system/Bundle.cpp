#include "tarnkit/platform/system/Bundle.h"

#include <unordered_map>
#include <utility>
#include <vector>

#include "tarnkit/platform/text/Symbol.h"

namespace tarnkit {

namespace {

constinit const Symbol kIdentifierKey{"CFBundleIdentifier"};

Bundle::InfoDictionary infoWithIdentifier(const String& identifier) {
  if (identifier.isNil()) return {};
  return {{kIdentifierKey.string(), identifier.object()}};
}

// The two tables are never destroyed: static objects may still ask at the end of the process.

std::vector<Bundle*>& pluginBundles() {
  static auto* const bundles = new std::vector<Bundle*>;
  return *bundles;
}

std::unordered_map<const Class*, Bundle*>& claimedClasses() {
  static auto* const classes = new std::unordered_map<const Class*, Bundle*>;
  return *classes;
}

}  // namespace

Bundle& Bundle::mainBundle() {
  static auto* const bundle = new Bundle;
  return *bundle;
}

Bundle& Bundle::libraryBundle() {
  static auto* const bundle = [] {
    auto* const made = new Bundle;
    made->setInfoDictionary(infoWithIdentifier(String::interned("tarnkit")));
    return made;
  }();
  return *bundle;
}

Bundle* Bundle::bundleWithIdentifier(const String& identifier) {
  if (identifier.isNil()) return nullptr;
  for (Bundle* const bundle : {&mainBundle(), &libraryBundle()}) {
    if (bundle->bundleIdentifier() == identifier) return bundle;
  }
  for (Bundle* const bundle : pluginBundles()) {
    if (bundle->bundleIdentifier() == identifier) return bundle;
  }
  return nullptr;
}

Bundle& Bundle::forClass(const Class& record) {
  const auto& classes = claimedClasses();
  const auto found = classes.find(&record);
  return found == classes.end() ? libraryBundle() : *found->second;
}

Bundle& Bundle::addBundle(const String& identifier) {
  if (Bundle* const present = bundleWithIdentifier(identifier)) return *present;
  auto* const bundle = new Bundle;
  bundle->setInfoDictionary(infoWithIdentifier(identifier));
  pluginBundles().push_back(bundle);
  return *bundle;
}

void Bundle::claimClass(const Class& record) { claimedClasses()[&record] = this; }

String Bundle::bundleIdentifier() const {
  return String::from(objectForInfoDictionaryKey(kIdentifierKey.string()));
}

void Bundle::setInfoDictionary(InfoDictionary infoDictionary) {
  infoDictionary_ = std::move(infoDictionary);
}

Object* Bundle::objectForInfoDictionaryKey(const String& key) const {
  const auto* const value = infoDictionary_.find(key);
  return value ? value->get() : nullptr;
}

}  // namespace tarnkit
