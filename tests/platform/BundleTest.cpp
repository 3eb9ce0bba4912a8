#include <gtest/gtest.h>

#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/system/Bundle.h"

namespace tarnkit {
namespace {

const Class kPluginClass{"BundleTestPlugin", &Object::kClass};
const Class kPluginSubclass{"BundleTestPluginSubclass", &kPluginClass};

TEST(Bundle, MainBundleIsWhatTheHostSays) {
  Bundle& main = Bundle::mainBundle();
  EXPECT_TRUE(main.bundleIdentifier().isNil());
  EXPECT_EQ(main.objectForInfoDictionaryKey("CFBundleShortVersionString"), nullptr);
  main.setInfoDictionary(
      {{"CFBundleIdentifier", String("editor").object()}, {"Year", Number::withInt(7)}});
  EXPECT_EQ(main.bundleIdentifier(), "editor");
  EXPECT_EQ(Bundle::bundleWithIdentifier("editor"), &main);
  EXPECT_EQ(as<Number>(main.objectForInfoDictionaryKey("Year"))->intValue(), 7);
  main.setInfoDictionary({{"CFBundleIdentifier", Number::withInt(1)}});
  EXPECT_TRUE(main.bundleIdentifier().isNil());
  main.setInfoDictionary({});
  EXPECT_EQ(Bundle::bundleWithIdentifier("editor"), nullptr);
}

TEST(Bundle, ClassesBelongToWhoeverClaimedThem) {
  Bundle& library = Bundle::libraryBundle();
  EXPECT_EQ(&Bundle::forClass(Object::kClass), &library);
  EXPECT_EQ(Bundle::bundleWithIdentifier(library.bundleIdentifier()), &library);
  Bundle& plugin = Bundle::addBundle("bundle-test-plugin");
  plugin.claimClass(kPluginClass);
  EXPECT_EQ(&Bundle::forClass(kPluginClass), &plugin);
  // A subclass is brought by whoever brings it, whatever its superclass.
  EXPECT_EQ(&Bundle::forClass(kPluginSubclass), &library);
  EXPECT_EQ(Bundle::bundleWithIdentifier("bundle-test-plugin"), &plugin);
  EXPECT_EQ(&Bundle::addBundle("bundle-test-plugin"), &plugin);
  EXPECT_EQ(Bundle::bundleWithIdentifier(nullptr), nullptr);
}

}  // namespace
}  // namespace tarnkit
