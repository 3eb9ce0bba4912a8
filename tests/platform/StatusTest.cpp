#include <gtest/gtest.h>

#include <cerrno>
#include <set>
#include <string>

#include "tarnkit/platform/collections/Array.h"
#include "tarnkit/platform/system/Result.h"

namespace tarnkit {
namespace {

static_assert(sizeof(Status) == sizeof(void*), "a success is a null pointer");

TEST(Status, GathersWhatEachKnowsOnItsWayUp) {
  auto status = Status::damaged("its first object is missing").within("not an archive").at("a");
  EXPECT_EQ(status.message(), "a: not an archive: its first object is missing");
  EXPECT_EQ(nameOf(status.code()), "damaged");
  status = std::move(status).at("b").within("opening");
  EXPECT_EQ(status.path(), "a") << "the first one stood nearest to the failure";
  EXPECT_EQ(status.sentence(), "opening: not an archive: its first object is missing");

  auto fine = Status().within("opening").at("a");
  EXPECT_TRUE(fine);
  EXPECT_EQ(fine.message() + fine.path() + std::string(nameOf(fine.code())), "ok");
}

TEST(Status, TellsCodesApartByNamesAndErrorNumbersByCodes) {
  std::set<std::string_view> names;
  for (int code = 0; code <= static_cast<int>(StatusCode::refused); ++code) {
    names.insert(nameOf(static_cast<StatusCode>(code)));
  }
  EXPECT_EQ(names.size(), static_cast<std::size_t>(StatusCode::refused) + 1);
  EXPECT_FALSE(names.contains(""));
  const struct {
    int number;
    StatusCode code;
  } cases[] = {
      {ENOENT, StatusCode::notFound},    {EACCES, StatusCode::notPermitted},
      {EPERM, StatusCode::notPermitted}, {EROFS, StatusCode::notPermitted},
      {EISDIR, StatusCode::notAFile},    {ENOTDIR, StatusCode::notAFile},
      {ENOSPC, StatusCode::noSpace},     {EDQUOT, StatusCode::noSpace},
      {EFBIG, StatusCode::noSpace},      {ENOMEM, StatusCode::outOfMemory},
      {EIO, StatusCode::systemFailure},  {EPIPE, StatusCode::systemFailure},
  };
  for (const auto& item : cases) {
    EXPECT_EQ(nameOf(Status::ofSystem(item.number).code()), nameOf(item.code)) << item.number;
  }
}

TEST(Result, IsAValueOrTheReasonWhyThereIsNone) {
  Result<std::string> text(std::string("text"));
  EXPECT_TRUE(text && text.status());
  EXPECT_EQ(text->size(), 4U);
  EXPECT_EQ(*std::move(text).within("reading").at("a"), "text");

  auto none = Result<std::string>(Status::damaged("it is cut off")).within("reading").at("a");
  EXPECT_FALSE(none);
  EXPECT_EQ(none.status().message(), "a: reading: it is cut off");
  EXPECT_EQ(std::move(none).valueOr("other"), "other");

  // Of a reference, the object behind it is at hand.
  Result<Ref<Array>> array(make<Array>());
  EXPECT_EQ(array->count(), 0U);
  const Ref<Array> object = *array;
  EXPECT_EQ(std::move(array).valueOr(nullptr), object);
}

}  // namespace
}  // namespace tarnkit
