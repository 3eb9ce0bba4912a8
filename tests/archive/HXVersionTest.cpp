#include <gtest/gtest.h>

#include "tarnkit/archive/HXVersion.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/system/Bundle.h"

namespace tarnkit {
namespace {

TEST(HXVersion, ReadsThreeRunsOfDigits) {
  struct Case {
    String text;
    HXVersion version;
  };
  const Case cases[] = {
      {nullptr, {0, 0, 0}},
      {"", {0, 0, 0}},
      {"no version", {0, 0, 0}},
      {"2.10.4", {2, 10, 4}},
      {"1-2-3", {1, 2, 3}},
      {"1 2 3 4", {1, 2, 3}},
      {"v3", {3, 0, 0}},
      {"-4.-5", {4, 5, 0}},
      {"1.2b007", {1, 2, 7}},
      {"99999999999.2147483648.1", {2147483647, 2147483647, 1}},
      // Digits of other scripts are no digits here.
      {"\xD9\xA3.7", {7, 0, 0}},
  };
  for (const Case& c : cases) EXPECT_EQ(HXVersionFromString(c.text), c.version) << c.text.view();
  EXPECT_EQ(HXStringFromVersion(HXVersionFromString("2.10.4")), "2.10.4");
  EXPECT_EQ(HXStringFromVersion({-1, 0, 2147483647}), "-1.0.2147483647");
}

TEST(HXVersion, TheCurrentOneIsTheApplications) {
  Bundle& main = Bundle::mainBundle();
  EXPECT_EQ(HXCurrentVersion(), HXVersion());
  main.setInfoDictionary({{"CFBundleShortVersionString", String("3.1 (beta 4)").object()}});
  EXPECT_EQ(HXCurrentVersion(), (HXVersion{3, 1, 4}));
  main.setInfoDictionary({{"CFBundleShortVersionString", Number::withInt(3)}});
  EXPECT_EQ(HXCurrentVersion(), HXVersion());
  main.setInfoDictionary({});
}

TEST(HXVersion, DeviceProtocolVersionsMustBeEqual) {
  EXPECT_EQ(HXCurrentDeviceProtocolVersion(), 1);
  EXPECT_EQ(HXStringFromDeviceProtocolVersion(-12), "-12");
  EXPECT_EQ(HXDeviceProtocolVersionFromString("protocol 12.5"), 12);
  EXPECT_EQ(HXDeviceProtocolVersionFromString(nullptr), 0);
  EXPECT_TRUE(HXDeviceProtocolVersionIsCompatible(1, 1));
  EXPECT_FALSE(HXDeviceProtocolVersionIsCompatible(1, 2));
}

}  // namespace
}  // namespace tarnkit
