#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>

#include "tarnkit/platform/text/JSONWriter.h"

namespace tarnkit {

namespace {

using Escapes = JSONWriter::Escapes;

TEST(JSONWriter, TextsAreEscapedByOneRuleAndMoreInScripts) {
  struct Case {
    std::string_view text;
    const char* plain;
    const char* inScript;
  };
  using namespace std::string_view_literals;
  const Case cases[] = {
      {"", R"("")", R"("")"},
      {"\"a\\b\"/", R"("\"a\\b\"/")", R"("\"a\\b\"/")"},
      {"\n\r\t\0\x1f\x7f~"sv, R"("\n\u000d\u0009\u0000\u001f\u007f~")",
       R"("\n\u000d\u0009\u0000\u001f\u007f~")"},
      {"</script>&\u2028\u2029\u2027", "\"</script>&\\u2028\\u2029\u2027\"",
       "\"\\u003c/script\\u003e\\u0026\\u2028\\u2029\u2027\""},
      // What turns the direction of the text around it, beside letters that bring their own.
      {"\u061c\u200e\u200f\u202a\u202e\u2066\u2069",
       R"("\u061c\u200e\u200f\u202a\u202e\u2066\u2069")",
       R"("\u061c\u200e\u200f\u202a\u202e\u2066\u2069")"},
      {"\u05d0\u061b\u200d\u202f\u2065\u206a", "\"\u05d0\u061b\u200d\u202f\u2065\u206a\"",
       "\"\u05d0\u061b\u200d\u202f\u2065\u206a\""},
      {"é 画 👩 \uFFFD", "\"é 画 👩 \uFFFD\"", "\"é 画 👩 \uFFFD\""},
      // A stray byte, a sequence cut short, an overlong one, half of a surrogate pair.
      {"a\xffz\xe7\x94", "\"a\uFFFDz\uFFFD\uFFFD\"", "\"a\uFFFDz\uFFFD\uFFFD\""},
      {"\xc0\x80\xed\xa0\x80|", "\"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD|\"",
       "\"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD|\""},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.plain);
    std::string plain = "before ";
    JSONWriter::appendQuoted(plain, each.text);
    EXPECT_EQ(plain, std::string("before ") + each.plain);
    std::string script;
    JSONWriter(script, Escapes::script).beginObject().key(each.text).value(each.text).endObject();
    EXPECT_EQ(script, std::string("{") + each.inScript + ":" + each.inScript + "}");
  }
}

TEST(JSONWriter, ValuesOfEveryKindWithCommasWhereTheyBelong) {
  std::string out;
  JSONWriter json(out);
  json.text("0 dump ");
  json.beginArray().beginObject().endObject().beginArray().endArray().null().value(true);
  json.value(false).value(std::numeric_limits<std::int64_t>::min());
  json.value(std::numeric_limits<std::uint64_t>::max()).value(std::int32_t{-7}).value("seven");
  json.beginObject().key("a").value(0.1F).key("b").beginArray().value(0.1).endArray().endObject();
  json.floats({1, -0.5F, std::numeric_limits<float>::infinity()}).number("2.50");
  json.value(-std::numeric_limits<double>::infinity());
  json.value(std::numeric_limits<double>::quiet_NaN()).endArray().endLine();
  json.value(1e21).endLine();
  json.flush();
  EXPECT_EQ(out,
            "0 dump [{},[],null,true,false,-9223372036854775808,18446744073709551615,-7,\"seven\","
            "{\"a\":0.1,\"b\":[0.1]},[1,-0.5,\"inf\"],2.50,\"-inf\",\"nan\"]\n1e+21\n");
}

TEST(JSONWriter, LengthAndDepthAreHandedOnInPieces) {
  constexpr int kDepth = 300'000;
  std::string whole;
  std::size_t longest = 0;
  std::size_t pieces = 0;
  JSONWriter json([&](std::string_view piece) {
    whole += piece;
    longest = std::max(longest, piece.size());
    ++pieces;
  });
  for (int i = 0; i < kDepth; ++i) json.beginArray();
  for (int i = 0; i < kDepth; ++i) json.endArray();
  json.endLine();
  for (int i = 0; i < kDepth; ++i) json.value(std::int32_t{8}).endLine();
  json.flush();
  json.flush();
  EXPECT_EQ(whole.substr(kDepth - 1, 4), "[]]]");
  EXPECT_EQ(whole.size(), 2U * kDepth + 1 + 2U * kDepth);
  EXPECT_EQ(whole.substr(whole.size() - 5), "\n8\n8\n");
  EXPECT_LT(longest, 70'000U);
  EXPECT_GE(pieces, whole.size() / 70'000);
}

TEST(JSONWriter, WhatTheSinkThrowsGoesToWhoeverWritesAndMayBeFollowedByEnds) {
  std::size_t taken = 0;
  JSONWriter json([&](std::string_view piece) {
    if (taken != 0) throw std::runtime_error("the disk is full");
    taken += piece.size();
  });
  json.beginArray();
  EXPECT_THROW(for (;;) json.beginObject().key("text").value(std::string(1000, 'x')).endObject(),
               std::runtime_error);
  EXPECT_GT(taken, 65535U);
  EXPECT_THROW(json.endArray().endLine(), std::runtime_error);
}

}  // namespace

}  // namespace tarnkit
