#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <map>
#include <string>

#include "tarnkit/patches/PMRPrimitive.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/coding/Coder.h"
#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tarnkit/platform/coding/StandardKeyedUnarchiver.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/objects/Color.h"
#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {
namespace {

using P = PMRPrimitive;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kPi = 3.1415927F;
constexpr float kTiny = std::numeric_limits<float>::denorm_min();

Ref<P> string(const char* text) { return P::primitiveWithStringValue(text); }

TEST(PMRPrimitive, EveryKindReadsAsEveryOther) {
  struct Case {
    Ref<P> value;
    std::int64_t type;
    bool boolean;
    std::int32_t index;
    float number;
    float radians;
    float degrees;
    RGBA color;
    const char* text;
  };
  const RGBA black = OIColorBlackRGBA;
  const RGBA white = OIColorWhiteRGBA;
  const RGBA clear{0, 0, 0, 0};
  const RGBA blue{0, 0, 0.5F, 0};
  const Case cases[] = {
      {P::primitiveWithNilValue(), 0, false, 0, 0, 0, 0, black, "nil"},
      {P::primitiveWithBooleanValue(false), 1, false, 0, 0, 0, 0, black, "NO"},
      // A true boolean is half a turn.
      {P::primitiveWithBooleanValue(true), 1, true, 1, 1, kPi, 180, white, "YES"},
      // The bits of an index read as a float where an angle is asked for.
      {P::primitiveWithIndexValue(3), 2, true, 3, 3, 3 * kTiny, 172 * kTiny, white, "3"},
      {P::primitiveWithIndexValue(0x3F800000), 2, true, 0x3F800000, 1065353216.0F, 1, 57.29578F,
       white, "1065353216"},
      {P::primitiveWithNumberValue(-2.75F), 3, true, -2, -2.75F, -2.75F, -157.5634F, white,
       "-2.75"},
      {P::primitiveWithNumberValue(0.1F), 3, true, 0, 0.1F, 0.1F, 5.729578F, white, "0.1"},
      {P::primitiveWithRadiansValue(kPi), 4, true, 3, kPi, kPi, 180, white, "180°"},
      {P::primitiveWithRadiansValue(0), 4, false, 0, 0, 0, 0, black, "0°"},
      {P::primitiveWithDegreesValue(180), 5, true, 3, kPi, kPi, 180, white, "180°"},
      {P::primitiveWithDegreesValue(90), 5, true, 1, 1.5707964F, 1.5707964F, 90, white, "90°"},
      {P::primitiveWithColorValue(clear), 6, false, 0, 0, 0, 0, clear, "RGBA (0 0 0 0)"},
      {P::primitiveWithColorValue(blue), 6, true, 1, 1, kPi, 180, blue, "RGBA (0 0 0.5 0)"},
      {string(nullptr), 7, false, 0, 0, 0, 0, clear, ""},
      {string("Yes 7"), 7, true, 0, 0, 0, 0, {7, 0, 0, 0}, "Yes 7"},
      {string(" 12.5 x"), 7, true, 12, 12.5F, 12.5F, 716.1972F, {12.5F, 0, 0, 0}, " 12.5 x"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(c.value->storageType(), c.type);
    EXPECT_EQ(c.value->booleanValue(), c.boolean);
    EXPECT_EQ(c.value->indexValue(), c.index);
    EXPECT_FLOAT_EQ(c.value->numberValue(), c.number);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(c.value->radiansValue()),
              std::bit_cast<std::uint32_t>(c.radians));
    EXPECT_FLOAT_EQ(c.value->degreesValue(), c.degrees);
    EXPECT_EQ(c.value->colorValue(), c.color);
    EXPECT_EQ(c.value->stringValue(), c.text);
  }
}

TEST(PMRPrimitive, ConversionsOutOfRangeAreDefined) {
  struct Case {
    float number;
    std::int32_t index;
  };
  const Case cases[] = {
      {kNaN, 0},
      {kInfinity, -1},
      {-kInfinity, 0},
      {1e30F, -1},
      {-1e30F, 0},
      {4294967296.0F, 0},
      {2147483648.0F, std::numeric_limits<std::int32_t>::min()},
      {-2147483904.0F, 2147483392},
  };
  for (const Case& c : cases) {
    const auto value = P::primitiveWithNumberValue(c.number);
    EXPECT_EQ(value->indexValue(), c.index) << c.number;
    value->hash();  // must not be undefined behaviour either
  }
  EXPECT_TRUE(P::primitiveWithNumberValue(kNaN)->booleanValue());
  EXPECT_TRUE(P::primitiveWithColorValue({0, kNaN, 0, 0})->booleanValue());
  P::primitiveWithColorValue({kNaN, kInfinity, -kInfinity, -1})->hash();
}

TEST(PMRPrimitive, ColorsReadBackFromTheirText) {
  for (const RGBA& color : {RGBA{0.25F, 0.5F, 0.75F, 1}, RGBA{0.333333F, 1e-5F, 0, 0.125F}}) {
    const auto text = P::primitiveWithColorValue(color)->stringValue();
    EXPECT_EQ(P::primitiveWithStringValue(text)->colorValue(), color) << text.view();
  }
  // Signs and leading points are lost, what is not there is 0.
  const std::map<const char*, RGBA> texts = {
      {"-0.5 .5 1.5.5", {0.5F, 5, 1.5F, 5}},
      {"#12g34", {12, 34, 0, 0}},
      {"1e2 1e 1e+1 2e-1x", {100, 1, 10, 0.2F}},
      {"none", {0, 0, 0, 0}},
      {"1e99", {kInfinity, 0, 0, 0}},
      {"1 2 3 4 5", {1, 2, 3, 4}},
  };
  for (const auto& [text, color] : texts) EXPECT_EQ(string(text)->colorValue(), color) << text;
}

TEST(PMRPrimitive, KindIsPartOfTheValue) {
  const auto one = P::primitiveWithNumberValue(1);
  EXPECT_TRUE(one->isEqual(*P::primitiveWithNumberValue(1)));
  // What they hold is the same to the bit.
  const Ref<P> ones[] = {one, P::primitiveWithRadiansValue(1), P::primitiveWithDegreesValue(1)};
  const Ref<P> nothings[] = {P::primitiveWithNilValue(), P::primitiveWithBooleanValue(false),
                             P::primitiveWithIndexValue(0), P::primitiveWithNumberValue(0)};
  const auto expectDifferent = [](const auto& values) {
    for (const auto& a : values) {
      for (const auto& b : values) EXPECT_EQ(a->isEqual(*b), a == b) << a->storageType();
    }
  };
  expectDifferent(ones);
  expectDifferent(nothings);
  const auto nan = P::primitiveWithNumberValue(kNaN);
  EXPECT_FALSE(nan->isEqual(*nan));
  EXPECT_FALSE(one->isEqual(*Number::withFloat(1)));

  // Equal values, equal hashes: the two zeros are equal.
  const Ref<P> pairs[][2] = {
      {P::primitiveWithNilValue(), P::primitiveWithNilValue()},
      {P::primitiveWithNumberValue(0.0F), P::primitiveWithNumberValue(-0.0F)},
      {P::primitiveWithColorValue({0.0F, 1, 0, 1}), P::primitiveWithColorValue({-0.0F, 1, 0, 1})},
      {string("a"), P::primitiveWithStringValue(String(std::string("a")))},
  };
  for (const auto& [a, b] : pairs) {
    EXPECT_TRUE(a->isEqual(*b));
    EXPECT_EQ(a->hash(), b->hash());
  }
  EXPECT_EQ(P::primitiveWithBooleanValue(true)->hash(), 32U);
  EXPECT_EQ(P::primitiveWithIndexValue(-32)->hash(), ~std::uint64_t{0});
  EXPECT_EQ(P::primitiveWithNumberValue(1)->hash(), 65566U);
  EXPECT_EQ(P::primitiveWithColorValue({0, 0, 0, 1})->hash(), (31U * 31 * 31 * 31) + 255);
  EXPECT_EQ(P::primitiveWithColorValue({1, 0, 0, 0})->hash(), (31U + 255) * 31 * 31 * 31);
  // Where a sum needs the whole width, and where it has none any more.
  EXPECT_EQ(P::primitiveWithColorValue({0, 0, 0, 0x1.010102p+55F})->hash(), std::uint64_t{1} << 63);
  EXPECT_EQ(P::primitiveWithColorValue({0, 0, 0, 0x1.010102p+56F})->hash(), ~std::uint64_t{0});
}

TEST(PMRPrimitive, ChangesKindAndIsCopiedByValue) {
  const auto value = string("text");
  const auto copy = value->copy();
  value->setDegreesValue(45);
  EXPECT_EQ(value->storageType(), P::degrees);
  EXPECT_TRUE(copy->isEqual(*string("text")));
  value->setStringValue(nullptr);  // unlike the constructor, the setter keeps nil
  EXPECT_TRUE(value->stringValue().isNil());
  value->clearStorage();
  EXPECT_TRUE(value->isEqual(*P::primitiveWithNilValue()));
}

TEST(PMRPrimitive, AFrozenValueStaysAsItIs) {
  const auto value = PMRPrimitive::primitiveWithStringValue("kept");
  value->freeze();
  int lines = 0;
  const auto earlier = Log::setSink([&](std::string_view) { ++lines; });
  value->setBooleanValue(true);
  value->setIndexValue(1);
  value->setNumberValue(42);
  value->setRadiansValue(1);
  value->setDegreesValue(1);
  value->setColorValue({});
  value->setStringValue("other");
  value->clearStorage();
  EXPECT_EQ(lines, 8);
  EXPECT_EQ(value->stringValue(), "kept");
  const auto copy = value->copy();
  copy->setNumberValue(42);
  Log::setSink(earlier);
  EXPECT_EQ(lines, 8);
  EXPECT_EQ(copy->numberValue(), 42);
}

TEST(PMRPrimitive, LeavesAsAPlatformObject) {
  EXPECT_FALSE(P::primitiveWithNilValue()->toObject());
  const auto number = as<Number>(P::primitiveWithDegreesValue(180)->toObject());
  ASSERT_TRUE(number);
  EXPECT_EQ(number->kind(), Number::Kind::float32);
  EXPECT_FLOAT_EQ(number->floatValue(), kPi);
  EXPECT_EQ(as<Number>(P::primitiveWithBooleanValue(true)->toObject())->kind(),
            Number::Kind::boolean);
  EXPECT_EQ(as<Number>(P::primitiveWithIndexValue(7)->toObject())->kind(), Number::Kind::int32);
  const auto color = as<Color>(P::primitiveWithColorValue({0.1F, 0.2F, 0.3F, 0.4F})->toObject());
  ASSERT_TRUE(color);
  EXPECT_TRUE(color->isEqual(*Color::colorWithRGBA(0.1F, 0.2F, 0.3F, 0.4F)));
  EXPECT_EQ(String::from(string("s")->toObject().get()), "s");
}

Ref<P> archivedAndBack(const P& value) {
  registerPatchClasses();
  const auto data = StandardKeyedArchiver::archivedData(&value, 0);
  return as<P>(StandardKeyedUnarchiver::unarchive(data->bytes(), 0).valueOr(nullptr));
}

TEST(PMRPrimitive, ArchivesKeepTheKind) {
  const Ref<P> values[] = {
      P::primitiveWithNilValue(),
      P::primitiveWithBooleanValue(true),
      P::primitiveWithIndexValue(std::numeric_limits<std::int32_t>::min()),
      P::primitiveWithNumberValue(0.1F),
      P::primitiveWithRadiansValue(-1),
      P::primitiveWithDegreesValue(720.5F),
      P::primitiveWithColorValue({0.1F, 0.2F, 0.3F, 0.4F}),
      string("grüß"),
  };
  for (const auto& value : values) {
    const auto back = archivedAndBack(*value);
    ASSERT_TRUE(back) << value->stringValue().view();
    EXPECT_TRUE(back->isEqual(*value)) << value->stringValue().view();
  }
}

/// A coder of nothing but the keys that it was given, for archives that no encoder writes.
class FakeDecoder final : public Decoder {
 public:
  std::map<std::string_view, std::int64_t> integers;

  bool containsValue(const Symbol& key) override { return integers.count(key.text()) != 0; }
  bool decodeBool(const Symbol&) override { return true; }
  std::int32_t decodeInt(const Symbol& key) override {
    return static_cast<std::int32_t>(decodeInt64(key));
  }
  std::int64_t decodeInt64(const Symbol& key) override { return integers[key.text()]; }
  float decodeFloat(const Symbol&) override { return 1; }
  double decodeDouble(const Symbol&) override { return 1e300; }
  std::vector<std::uint8_t> decodeBytes(const Symbol&) override { return {}; }
  Ref<Object> decodeObject(const Symbol&) override { return nullptr; }
  bool decodeCollection(const Symbol&, FunctionRef<void(const Ref<Object>&)>) override {
    return false;
  }
  bool decodeMap(const Symbol&, FunctionRef<void(const String&, const Ref<Object>&)>) override {
    return false;
  }
  void fail(Status) override {}
  bool failed() const override { return false; }
  void eachDecoded(FunctionRef<void(Object&)>) const override {}
};

TEST(PMRPrimitive, ReadsUnknownKindsAsNil) {
  constexpr std::int64_t kLarge = (std::int64_t{1} << 40) + P::number;
  for (const std::int64_t type : {std::int64_t{8}, std::int64_t{-1}, kLarge}) {
    FakeDecoder coder;
    coder.integers["PMRPrimitive.storageType"] = type;
    const auto value = make<P>();
    value->initWithCoder(coder);
    EXPECT_EQ(value->storageType(), type);
    EXPECT_FALSE(value->booleanValue());
    EXPECT_EQ(value->degreesValue(), 0);
    EXPECT_EQ(value->colorValue(), OIColorBlackRGBA);
    EXPECT_EQ(value->stringValue(), "nil");
    EXPECT_FALSE(value->toObject());
    EXPECT_EQ(value->hash(), 1U);
    EXPECT_EQ(value->copy()->storageType(), P::nil);
    EXPECT_EQ(archivedAndBack(*value)->storageType(), type);
  }
  FakeDecoder coder;
  coder.integers["PMRPrimitive.storageType"] = P::string;
  const auto value = make<P>();
  value->initWithCoder(coder);  // an archive without the text
  EXPECT_TRUE(value->stringValue().isNil());
  EXPECT_EQ(value->indexValue(), 0);
  EXPECT_EQ(value->hash(), 31U);
  coder.integers["PMRPrimitive.storageType"] = P::number;
  value->initWithCoder(coder);
  EXPECT_EQ(value->numberValue(), kInfinity);
}

}  // namespace
}  // namespace tarnkit
