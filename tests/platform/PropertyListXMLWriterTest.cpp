#include <gtest/gtest.h>

#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tarnkit/platform/propertylist/PropertyListWriter.h"
#include "tarnkit/platform/propertylist/PropertyListXMLWriter.h"

namespace tarnkit::test {

namespace {

Result<std::string> xmlOf(PropertyListWriter& writer, PropertyListWriter::Index root) {
  const auto bytes = writer.finish(root);
  const auto list = PropertyListReader::read(bytes);
  EXPECT_TRUE(list);
  return PropertyListXMLWriter::write(*list);
}

}  // namespace

TEST(PropertyListXMLWriterTest, HoldsWhatTheBinaryFormHolds) {
  PropertyListWriter writer;
  const std::uint8_t bytes[] = {1, 2, 3, 250};
  const PropertyListWriter::Index elements[] = {writer.addString("<a & \xC3\xA4>\r\n\t"),
                                                writer.addInt(-5),
                                                writer.addReal32(0.1F),
                                                writer.addReal64(0.1),
                                                writer.addBool(true),
                                                writer.addData(bytes),
                                                writer.addUID(7),
                                                writer.addArray({}),
                                                writer.addMap({}, {})};
  const PropertyListWriter::Index keys[] = {writer.addString("k\"")};
  const PropertyListWriter::Index values[] = {writer.addArray(elements)};
  const auto xml = xmlOf(writer, writer.addMap(keys, values));
  ASSERT_TRUE(xml) << xml.status().message();
  const auto list = PropertyListReader::read(bytesOf(*xml));
  ASSERT_TRUE(list) << list.status().message();
  const auto array = list->valueForKey(list->root(), "k\"");
  ASSERT_NE(array, PropertyList::kNone);
  const auto read = list->elements(array);
  ASSERT_EQ(read.size(), std::size(elements));
  EXPECT_EQ(list->string(read[0]), "<a & \xC3\xA4>\r\n\t");
  EXPECT_EQ(list->integer(read[1]), -5);
  EXPECT_EQ(static_cast<float>(list->real(read[2])), 0.1F);
  EXPECT_EQ(list->real(read[3]), 0.1);
  EXPECT_TRUE(list->boolean(read[4]));
  const auto data = list->data(read[5]);
  EXPECT_TRUE(std::equal(data.begin(), data.end(), std::begin(bytes), std::end(bytes)));
  EXPECT_EQ(list->uid(read[6]), 7U);
  EXPECT_EQ(list->count(read[7]) + list->count(read[8]), 0U);
}

TEST(PropertyListXMLWriterTest, RefusesWhatXMLCannotHold) {
  PropertyListWriter control;
  const auto refused = xmlOf(control, control.addString("a\x01"));
  EXPECT_EQ(refused.status().code(), StatusCode::unsupported);
  // A list of lists that are each there twice.
  PropertyListWriter bomb;
  auto list = bomb.addArray({});
  for (int i = 0; i < 40; ++i) {
    const PropertyListWriter::Index twice[] = {list, list};
    list = bomb.addArray(twice);
  }
  EXPECT_EQ(xmlOf(bomb, list).status().code(), StatusCode::tooLarge);
}

}  // namespace tarnkit::test
