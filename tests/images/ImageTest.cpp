#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>

#include "ImageFiles.h"
#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tarnkit/platform/coding/StandardKeyedUnarchiver.h"
#include "tarnkit/platform/images/Image.h"

namespace tarnkit {
namespace {

using imagefiles::Bytes;

constinit const Symbol kPNGKey{"NSImage.png"};

Bytes randomPixels(std::uint32_t width, std::uint32_t height, bool opaque) {
  std::mt19937 random(width * 31 + height);
  Bytes pixels(std::size_t{width} * height * 4);
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    pixels[i] = opaque && i % 4 == 3 ? 255 : static_cast<std::uint8_t>(random());
  }
  return pixels;
}

Bytes copyOf(const Result<Ref<const Data>>& data) {
  return {data->bytes().begin(), data->bytes().end()};
}

TEST(Image, WritesFilesThatReadBackToTheSamePixels) {
  for (const bool opaque : {false, true}) {
    const auto image = Image::imageWithPixels(13, 7, randomPixels(13, 7, opaque));
    const auto pixels = copyOf(image->pixels());
    for (const auto& file : {*image->TIFFRepresentation(), *image->PNGRepresentation()}) {
      const auto again = Image::imageWithData(file->bytes());
      ASSERT_TRUE(again);
      EXPECT_EQ(copyOf(again->pixels()), pixels);
      EXPECT_TRUE(again->isEqual(**image));
      EXPECT_EQ(again->hash(), image->hash());
    }
    EXPECT_EQ(copyOf(image->pixels()), pixels);
  }
}

// Content keys are digests of these bytes and stand in documents: they may never change.
TEST(Image, TIFFRepresentationIsFixedToTheByte) {
  const auto image = Image::imageWithPixels(1, 2, {1, 2, 3, 4, 5, 6, 7, 8});
  const Bytes expected{
      'I', 'I', 42, 0, 8, 0, 0, 0, 11,  0,        //
      0,   1,   4,  0, 1, 0, 0, 0, 1,   0, 0, 0,  // width
      1,   1,   4,  0, 1, 0, 0, 0, 2,   0, 0, 0,  // height
      2,   1,   3,  0, 4, 0, 0, 0, 146, 0, 0, 0,  // where the depths stand
      3,   1,   3,  0, 1, 0, 0, 0, 1,   0, 0, 0,  // uncompressed
      6,   1,   3,  0, 1, 0, 0, 0, 2,   0, 0, 0,  // red, green, blue
      17,  1,   4,  0, 1, 0, 0, 0, 154, 0, 0, 0,  // where the pixels stand
      21,  1,   3,  0, 1, 0, 0, 0, 4,   0, 0, 0,  // samples
      22,  1,   4,  0, 1, 0, 0, 0, 2,   0, 0, 0,  // rows of the strip
      23,  1,   4,  0, 1, 0, 0, 0, 8,   0, 0, 0,  // bytes of the strip
      28,  1,   3,  0, 1, 0, 0, 0, 1,   0, 0, 0,  // interleaved
      82,  1,   3,  0, 1, 0, 0, 0, 2,   0, 0, 0,  // straight alpha
      0,   0,   0,  0, 8, 0, 8, 0, 8,   0, 8, 0,  //
      1,   2,   3,  4, 5, 6, 7, 8,
  };
  EXPECT_EQ(copyOf(image->TIFFRepresentation()), expected);
}

TEST(Image, RepresentationsDependOnThePixelsOnly) {
  const auto pixels = randomPixels(20, 20, true);
  const auto image = Image::imageWithPixels(20, 20, pixels);
  const auto tiff = copyOf(image->TIFFRepresentation());
  const auto png = *image->PNGRepresentation();
  EXPECT_EQ(*image->PNGRepresentation(), png);
  EXPECT_EQ(copyOf(image->TIFFRepresentation()), tiff);
  const auto reread = Image::imageWithData(tiff);
  EXPECT_EQ(copyOf(reread->PNGRepresentation()), copyOf(png));
  auto changed = pixels;
  changed[399 * 4] ^= 1;
  const auto other = Image::imageWithPixels(20, 20, changed);
  EXPECT_NE(copyOf(other->TIFFRepresentation()), tiff);
  EXPECT_FALSE(other->isEqual(**image));
  EXPECT_FALSE(Image::imageWithPixels(10, 40, pixels)->isEqual(**image));
}

TEST(Image, IsMadeOnlyOfAsManyBytesAsItHasPixels) {
  const auto wrong = Image::imageWithPixels(2, 2, Bytes(15)).status();
  EXPECT_EQ(nameOf(wrong.code()), "refused");
  EXPECT_EQ(wrong.message(), "15 bytes are no 2 x 2 pixels");
  EXPECT_FALSE(Image::imageWithPixels(0, 2, {}));
  EXPECT_EQ(nameOf(Image::imageWithPixels(1U << 31, 1U << 31, {}).status().code()), "tooLarge");
  const auto empty = make<Image>();
  EXPECT_EQ(empty->pixels().status().message(), "the picture is empty");
  EXPECT_FALSE(empty->TIFFRepresentation());
  EXPECT_FALSE(empty->PNGRepresentation());
}

TEST(Image, ReadsFilesAndNamesThoseItCannotRead) {
  const auto folder = std::filesystem::temp_directory_path() / "tarnkit-image-test";
  std::filesystem::create_directories(folder);
  const auto write = [&](const char* name, const Bytes& bytes) {
    std::ofstream(folder / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return String((folder / name).string());
  };
  const auto image = Image::imageWithPixels(3, 3, randomPixels(3, 3, false));
  const auto good = write("good", copyOf(image->PNGRepresentation()));
  EXPECT_TRUE(Image::imageWithContentsOfFile(good)->isEqual(**image));
  const auto bad = write("bad.png", {1, 2, 3});
  const struct {
    String path;
    StatusCode code;
    const char* sentence;
  } cases[] = {
      {bad, StatusCode::unsupported, "this is no PNG, TIFF or JPEG file"},
      {String((folder / "missing").string()), StatusCode::notFound, "No such file or directory"},
      {String(folder.string()), StatusCode::notAFile, "Is a directory"},
  };
  for (const auto& c : cases) {
    const auto status = Image::imageWithContentsOfFile(c.path).status();
    EXPECT_EQ(nameOf(status.code()), nameOf(c.code));
    EXPECT_EQ(status.sentence(), c.sentence);
    EXPECT_EQ(status.path(), c.path.view());
  }
  std::filesystem::remove_all(folder);
}

/// Stands in an archive under the name of an image, with keys of its own.
class Impostor final : public Object {
  TARNKIT_CLASS
 public:
  std::function<void(Encoder&)> encode;
  void encodeWithCoder(Encoder& coder) const override { encode(coder); }
};
const Class Impostor::kClass{"NSImage", &Object::kClass};

class ImageInArchive : public testing::Test {
 protected:
  void SetUp() override { ClassRegistry::add(Image::kClass); }

  static Result<Ref<Image>> roundTrip(const Object& object) {
    const auto archive = StandardKeyedArchiver::archivedData(&object, 0);
    auto root = StandardKeyedUnarchiver::unarchive(archive->bytes(), 0);
    if (!root) return std::move(root).status();
    return as<Image>(*root);
  }
  static Result<Ref<Image>> readBytes(const Bytes& png) {
    const auto impostor = make<Impostor>();
    impostor->encode = [&](Encoder& coder) { coder.encodeBytes(png, kPNGKey); };
    return roundTrip(*impostor);
  }
};

TEST_F(ImageInArchive, ComesBackWithTheSameContent) {
  const auto image = Image::imageWithPixels(8, 3, randomPixels(8, 3, false));
  const auto tiff = copyOf(image->TIFFRepresentation());
  const auto again = roundTrip(**image);
  ASSERT_TRUE(again);
  EXPECT_EQ(again->width(), 8U);
  EXPECT_EQ(again->height(), 3U);
  EXPECT_TRUE(again->isEqual(**image));
  EXPECT_EQ(copyOf(again->TIFFRepresentation()), tiff);
  EXPECT_EQ(copyOf(roundTrip(**again)->PNGRepresentation()), copyOf(image->PNGRepresentation()));
  // Nobody holds the pixels between two questions, and two who hold them share them.
  const auto pixels = *again->pixels();
  EXPECT_EQ(*again->pixels(), pixels);
}

TEST_F(ImageInArchive, MakesTheDocumentUnreadableWhenItIsNone) {
  const auto whole = copyOf(Image::imageWithPixels(4, 4, Bytes(64, 1))->PNGRepresentation());
  const auto tiff = copyOf(Image::imageWithPixels(4, 4, Bytes(64, 1))->TIFFRepresentation());
  auto damaged = whole;
  damaged[damaged.size() / 2] ^= 1;
  const struct {
    Bytes bytes;
    StatusCode code;
  } cases[] = {
      {{}, StatusCode::unsupported},
      {tiff, StatusCode::unsupported},
      {Bytes(whole.begin(), whole.end() - 4), StatusCode::damaged},
      {damaged, StatusCode::damaged},
      {imagefiles::pngOfChunks(1U << 20, 1, Bytes(5000)), StatusCode::tooLarge},
  };
  for (const auto& c : cases) {
    const auto status = readBytes(c.bytes).status();
    EXPECT_EQ(nameOf(status.code()), nameOf(c.code));
    EXPECT_EQ(status.sentence().rfind("NSImage.png: ", 0), 0U) << status.sentence();
  }
  for (const bool withText : {false, true}) {
    const auto impostor = make<Impostor>();
    impostor->encode = [&](Encoder& coder) {
      if (withText) coder.encodeString("picture", kPNGKey);
    };
    EXPECT_FALSE(roundTrip(*impostor));
  }
}

TEST_F(ImageInArchive, DamageInsideThePackedPixelsShowsWhenTheyAreAskedFor) {
  const auto broken = imagefiles::pngOfChunks(4, 4, Bytes(30, 0x5A));
  const auto image = readBytes(broken);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->width(), 4U);
  const auto status = image->pixels().status();
  EXPECT_EQ(nameOf(status.code()), "damaged");
  EXPECT_NE(status.sentence().find("the PNG file is damaged"), std::string::npos);
  EXPECT_FALSE(image->TIFFRepresentation());
  EXPECT_TRUE(image->isEqual(**image));
  EXPECT_TRUE(image->isEqual(**readBytes(broken)));
  EXPECT_FALSE(image->isEqual(**Image::imageWithPixels(4, 4, Bytes(64))));
  EXPECT_EQ(copyOf(image->PNGRepresentation()), broken);
}

}  // namespace
}  // namespace tarnkit
