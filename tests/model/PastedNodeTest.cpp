#include <gtest/gtest.h>

#include "tarnkit/model/HXGroup.h"
#include "tarnkit/model/HXImageStore.h"
#include "tarnkit/model/HXModel.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tarnkit/platform/coding/StandardKeyedUnarchiver.h"

// What another process copied, read as the first thing that this one does: each test runs in a
// process of its own.

namespace tarnkit::test {

namespace {

// Leaves an archive of an object of that class, without making one.
class Copied final : public Object {
 public:
  static constexpr Class kClass{"Copied", &Object::kClass};
  explicit Copied(const Symbol& className) : className_(className) {}
  const Class& isa() const noexcept override { return kClass; }
  void encodeWithCoder(Encoder& coder) const override { coder.setClassName(className_, kClass); }

 private:
  const Symbol& className_;
};

Ref<Data> archiveOf(const char* className) {
  const Symbol name{className};
  return *StandardKeyedArchiver::archivedData(make<Copied>(name).get(), 0);
}

}  // namespace

TEST(PastedNodeTest, TheFirstThingReadMayBeAPartOfADocument) {
  const auto node = unarchivedModelObject(archiveOf("HXLoopNode")->bytes(), 0);
  ASSERT_TRUE(node) << node.status().message();
  EXPECT_TRUE(as<HXNode>(*node));
  const auto stranger = unarchivedModelObject(archiveOf("HXStranger")->bytes(), 0).status();
  EXPECT_EQ(nameOf(stranger.code()), "unsupported");
  EXPECT_NE(stranger.sentence().find("HXStranger"), std::string::npos) << stranger.sentence();
}

TEST(PastedNodeTest, WhoeverHasAGroupMayReadIntoIt) {
  const auto group = make<HXGroup>();
  const auto root = StandardKeyedUnarchiver::unarchive(archiveOf("HXNode")->bytes(), 0);
  ASSERT_TRUE(root) << root.status().message();
  const auto node = as<HXNode>(*root);
  ASSERT_TRUE(node);
  group->addNode(*node);
  EXPECT_EQ(node->parentGroup(), group.get());
}

TEST(PastedNodeTest, WhoeverHasAnImageStoreMayReadIntoIt) {
  const auto store = make<HXImageStore>();
  const auto root = StandardKeyedUnarchiver::unarchive(archiveOf("HXImageStoreEntry")->bytes(), 0);
  ASSERT_TRUE(root) << root.status().message();
  EXPECT_TRUE(as<HXImageStoreEntry>(*root));
}

}  // namespace tarnkit::test
