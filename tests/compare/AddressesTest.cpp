#include "tarnkit/compare/HXAddresses.h"
#include "tests/model/ModelFixture.h"

namespace tarnkit {
namespace {

using AddressesTest = test::ModelTest;

TEST_F(AddressesTest, NodesOfOneNameAreToldApartEvenFromNamesThatLookLikeNumbers) {
  const auto album = add("");
  album->setName("Album");
  const auto named = [&](const char* name) {
    const auto node = add("", album.get());
    if (name) node->setName(name);
    return node;
  };
  const auto first = named("Page");
  const auto second = named("Page");
  const auto looksLikeSecond = named("Page [2]");
  const auto third = named("Page");
  const auto nameless = named(nullptr);
  const auto hostile = named("a\"\n\x1b[2J");
  HXAddresses addresses;
  EXPECT_EQ(addresses.of(*document), "/");
  EXPECT_EQ(addresses.of(*first), "Album / Page");
  EXPECT_EQ(addresses.of(*second), "Album / Page [2]");
  EXPECT_EQ(addresses.of(*looksLikeSecond), "Album / Page [2] [2]");
  EXPECT_EQ(addresses.of(*third), "Album / Page [3]");
  EXPECT_EQ(addresses.of(*nameless), "Album / Group");
  EXPECT_EQ(addresses.of(*hostile), "Album / a\\\"\\n\\u001b[2J");
}

TEST_F(AddressesTest, PortsGoByTheNameThatIsShown) {
  const auto clamp = add("HXRClampNode");
  HXAddresses addresses;
  EXPECT_EQ(addresses.of(port(*clamp, "Tarn.minimumInput")), "Clamp: Minimum");
}

}  // namespace
}  // namespace tarnkit
