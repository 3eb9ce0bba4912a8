#include <gtest/gtest.h>

#include "tarnkit/archive/HXArchiveReader.h"
#include "tarnkit/archive/HXArchiveText.h"
#include "tarnkit/archive/HXKeyedArchiver.h"
#include "tarnkit/math/MXExpression.h"

namespace tarnkit {
namespace {

// The device's archiver writes a tree like any other objects.
TEST(ExpressionArchive, IsWrittenForTheDevice) {
  const auto tree =
      MXExpression::expressionFromString("Foo($x, 2.5) + 12345678901234567890.5", nullptr);
  const auto data = HXKeyedArchiver::archivedDataWithRootObject(tree.get());
  HXArchiveReader reader;
  ASSERT_TRUE(reader.open(data->bytes()));
  const std::string text = HXArchiveText::indented(reader);
  for (const char* part : {"_MXFunctionExpression", "_MXVariableExpression", "_MXNumberExpression",
                           "add", "Foo", "x", "2.5", "12345678901234567890.5"}) {
    EXPECT_NE(text.find(part), std::string::npos) << part << " in " << text;
  }
}

}  // namespace
}  // namespace tarnkit
