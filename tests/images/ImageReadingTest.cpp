#include <gtest/gtest.h>
#include <png.h>
#include <tiff.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "ImageFiles.h"
#include "tarnkit/platform/images/Image.h"

namespace tarnkit {
namespace {

using imagefiles::Bytes;
using imagefiles::JPEGColor;
using imagefiles::JPEGScans;

struct Case {
  const char* name;
  Bytes file;
  std::uint32_t width;
  std::uint32_t height;
  Bytes pixels;
  int tolerance = 0;
};

void expectPixels(const Case& c) {
  SCOPED_TRACE(c.name);
  const auto image = Image::imageWithData(c.file);
  ASSERT_TRUE(image) << image.status().message();
  ASSERT_EQ(image->width(), c.width);
  ASSERT_EQ(image->height(), c.height);
  const auto pixels = *image->pixels();
  ASSERT_EQ(pixels->size(), c.pixels.size());
  for (std::size_t i = 0; i < c.pixels.size(); ++i) {
    ASSERT_LE(std::abs(int{pixels->bytes()[i]} - int{c.pixels[i]}), c.tolerance) << "byte " << i;
  }
}

TEST(ImageReading, TakesEveryKindOfPNG) {
  using imagefiles::png;
  Bytes gradient(9 * 5 * 4);
  for (std::size_t i = 0; i < gradient.size(); ++i) gradient[i] = static_cast<std::uint8_t>(i * 7);
  const Case cases[] = {
      {"RGBA", png(9, 5, {8, PNG_COLOR_TYPE_RGBA}, gradient), 9, 5, gradient},
      {"RGBA, interlaced", png(9, 5, {8, PNG_COLOR_TYPE_RGBA, true}, gradient), 9, 5, gradient},
      {"RGB",
       png(2, 1, {8, PNG_COLOR_TYPE_RGB}, {1, 2, 3, 4, 5, 6}),
       2,
       1,
       {1, 2, 3, 255, 4, 5, 6, 255}},
      {"RGB of 16 bits is rounded",
       png(2, 1, {16, PNG_COLOR_TYPE_RGB},
           {0x12, 0x92, 0, 0x80, 0, 0x81, 0xFF, 0xFF, 0x80, 0, 0, 1}),
       2,
       1,
       {0x12, 0, 1, 255, 255, 128, 0, 255}},
      {"grey of 1 bit",
       png(3, 2, {1, PNG_COLOR_TYPE_GRAY}, {0xA0, 0x40}),
       3,
       2,
       {255, 255, 255, 255, 0,   0,   0,   255, 255, 255, 255, 255,
        0,   0,   0,   255, 255, 255, 255, 255, 0,   0,   0,   255}},
      {"grey and alpha",
       png(2, 1, {8, PNG_COLOR_TYPE_GRAY_ALPHA}, {7, 0, 200, 128}),
       2,
       1,
       {7, 7, 7, 0, 200, 200, 200, 128}},
      {"palette with transparency",
       png(3, 1, {2, PNG_COLOR_TYPE_PALETTE, false, {9, 8, 7, 1, 2, 3, 4, 5, 6}, {100, 200}},
           {0x18}),
       3,
       1,
       {9, 8, 7, 100, 1, 2, 3, 200, 4, 5, 6, 255}},
  };
  for (const Case& c : cases) expectPixels(c);
}

TEST(ImageReading, TakesEveryKindOfTIFF) {
  using imagefiles::tiff;
  const Bytes colors{10, 20, 30, 40, 50, 60};
  const Bytes straight{200, 100, 50, 128, 9, 8, 7, 0};
  const Bytes opaque{10, 20, 30, 255, 40, 50, 60, 255};
  Bytes tile(16 * 16 * 3);
  std::copy(colors.begin(), colors.end(), tile.begin());
  const Case cases[] = {
      {"RGB", tiff(2, 1, {8, 3, PHOTOMETRIC_RGB}, colors), 2, 1, opaque},
      {"big endian", tiff(2, 1, {8, 3, PHOTOMETRIC_RGB, 1, -1, false, 0, "wb"}, colors), 2, 1,
       opaque},
      {"64-bit offsets", tiff(2, 1, {8, 3, PHOTOMETRIC_RGB, 1, -1, false, 0, "w8"}, colors), 2, 1,
       opaque},
      {"LZW", tiff(2, 1, {8, 3, PHOTOMETRIC_RGB, COMPRESSION_LZW}, colors), 2, 1, opaque},
      {"Deflate", tiff(2, 1, {8, 3, PHOTOMETRIC_RGB, COMPRESSION_ADOBE_DEFLATE}, colors), 2, 1,
       opaque},
      {"PackBits", tiff(2, 1, {8, 3, PHOTOMETRIC_RGB, COMPRESSION_PACKBITS}, colors), 2, 1, opaque},
      {"tiles", tiff(2, 1, {8, 3, PHOTOMETRIC_RGB, 1, -1, false, 16}, tile), 2, 1, opaque},
      {"planes", tiff(2, 1, {8, 3, PHOTOMETRIC_RGB, 1, -1, true}, {10, 40, 20, 50, 30, 60}), 2, 1,
       opaque},
      {"straight alpha", tiff(2, 1, {8, 4, PHOTOMETRIC_RGB, 1, EXTRASAMPLE_UNASSALPHA}, straight),
       2, 1, straight},
      {"straight alpha in planes",
       tiff(2, 1, {8, 4, PHOTOMETRIC_RGB, 1, EXTRASAMPLE_UNASSALPHA, true},
            {200, 9, 100, 8, 50, 7, 128, 0}),
       2, 1, straight},
      {"premultiplied alpha is divided out",
       tiff(2, 1, {8, 4, PHOTOMETRIC_RGB, 1, EXTRASAMPLE_ASSOCALPHA},
            {100, 50, 25, 128, 9, 0, 0, 0}),
       2,
       1,
       {199, 100, 50, 128, 9, 0, 0, 0}},
      {"a fourth sample of no meaning",
       tiff(1, 1, {8, 4, PHOTOMETRIC_RGB, 1, EXTRASAMPLE_UNSPECIFIED}, {1, 2, 3, 4}),
       1,
       1,
       {1, 2, 3, 255}},
      {"16 bits with straight alpha",
       tiff(1, 1, {16, 4, PHOTOMETRIC_RGB, 1, EXTRASAMPLE_UNASSALPHA},
            {0x01, 0x80, 0x00, 0x40, 0xFF, 0xFF, 0x00, 0x80}),
       1,
       1,
       {0x80, 0x40, 0xFF, 0x80},
       1},
      {"grey",
       tiff(2, 1, {8, 1, PHOTOMETRIC_MINISBLACK}, {0, 77}),
       2,
       1,
       {0, 0, 0, 255, 77, 77, 77, 255}},
      {"bilevel, white is 0",
       tiff(2, 1, {1, 1, PHOTOMETRIC_MINISWHITE, COMPRESSION_CCITTFAX4}, {0x40}),
       2,
       1,
       {255, 255, 255, 255, 0, 0, 0, 255}},
      {"palette",
       tiff(2, 1, {8, 1, PHOTOMETRIC_PALETTE}, {0, 200}),
       2,
       1,
       {0, 255, 0x80, 255, 200, 55, 0x80, 255}},
  };
  for (const Case& c : cases) expectPixels(c);
}

TEST(ImageReading, TakesEveryKindOfJPEG) {
  using imagefiles::jpeg;
  Bytes rgb;
  Bytes rgba;
  Bytes grey;
  Bytes greyPixels;
  for (int y = 0; y < 16; ++y) {
    for (int x = 0; x < 24; ++x) {
      const auto level = static_cast<std::uint8_t>(x * 8 + y * 2);
      const auto other = static_cast<std::uint8_t>(255 - level);
      rgb.insert(rgb.end(), {level, 100, other});
      rgba.insert(rgba.end(), {level, 100, other, 255});
      grey.push_back(level);
      greyPixels.insert(greyPixels.end(), {level, level, level, 255});
    }
  }
  // Without the usual writer's mark 0 stands for no ink; libjpeg's own CMYK files carry the mark.
  Bytes inks;
  Bytes light;
  for (int i = 0; i < 8 * 8; ++i) {
    inks.insert(inks.end(), {255, 128, 0, 128});
    light.insert(light.end(), {128, 64, 0, 255});
  }
  const Case cases[] = {
      {"colour", jpeg(24, 16, JPEGColor::rgb, JPEGScans::one, rgb), 24, 16, rgba, 3},
      {"progressive", jpeg(24, 16, JPEGColor::rgb, JPEGScans::progressive, rgb), 24, 16, rgba, 3},
      {"grey", jpeg(24, 16, JPEGColor::grey, JPEGScans::one, grey), 24, 16, greyPixels, 2},
      {"CMYK", jpeg(8, 8, JPEGColor::cmyk, JPEGScans::one, inks), 8, 8, light, 2},
  };
  for (const Case& c : cases) expectPixels(c);
}

// A pixel whose samples are all 0, but for the alpha when it is opaque: every file is read right or
// refused.
TEST(ImageReading, NeverDropsTheAlphaOfATIFF) {
  using imagefiles::tiff;
  const struct {
    const char* name;
    std::uint16_t photometric;
    std::uint16_t colors;
    Bytes opaque;
  } kinds[] = {{"white is 0", PHOTOMETRIC_MINISWHITE, 1, {255, 255, 255, 255}},
               {"grey", PHOTOMETRIC_MINISBLACK, 1, {0, 0, 0, 255}},
               {"RGB", PHOTOMETRIC_RGB, 3, {0, 0, 0, 255}},
               {"palette", PHOTOMETRIC_PALETTE, 1, {0, 255, 128, 255}},
               {"CMYK", PHOTOMETRIC_SEPARATED, 4, {255, 255, 255, 255}},
               {"Lab", PHOTOMETRIC_CIELAB, 3, {0, 0, 0, 255}}};
  const imagefiles::TIFFKind layouts[] = {
      {8, 0, 0}, {16, 0, 0}, {8, 0, 0, 1, -1, true}, {16, 0, 0, 1, -1, true}};
  std::string read;
  for (const auto& kind : kinds) {
    for (imagefiles::TIFFKind layout : layouts) {
      const std::string name = std::string(kind.name) + " " + std::to_string(layout.depth) +
                               (layout.separate ? " in planes" : "");
      SCOPED_TRACE(name);
      layout.photometric = kind.photometric;
      layout.samples = static_cast<std::uint16_t>(kind.colors + 1);
      const std::size_t sample = layout.depth / 8;
      Bytes clear(layout.samples * sample);
      Bytes opaque = clear;
      std::fill(opaque.end() - static_cast<std::ptrdiff_t>(sample), opaque.end(), 0xFF);
      for (const int extra : {EXTRASAMPLE_ASSOCALPHA, EXTRASAMPLE_UNASSALPHA}) {
        layout.extraSample = extra;
        const auto none = Image::imageWithData(tiff(1, 1, layout, clear));
        const auto all = Image::imageWithData(tiff(1, 1, layout, opaque));
        ASSERT_EQ(!none, !all);
        if (!all) {
          EXPECT_EQ(nameOf(all.status().code()), "unsupported");
          continue;
        }
        EXPECT_EQ(none->pixels()->bytes()[3], 0);
        const auto bytes = all->pixels()->bytes();
        EXPECT_EQ(Bytes(bytes.begin(), bytes.end()), kind.opaque);
        if (extra == EXTRASAMPLE_UNASSALPHA) read += name + "; ";
      }
    }
  }
  EXPECT_EQ(read,
            "white is 0 8; grey 8; grey 8 in planes; grey 16 in planes; RGB 8; RGB 16; "
            "RGB 8 in planes; RGB 16 in planes; ");
}

// The pixels of a picture of 3 x 2 by name, as they are stored and as they are to be seen.
TEST(ImageReading, TurnsPicturesAsTheirFilesSay) {
  const struct {
    std::uint16_t orientation;
    std::uint32_t width;
    const char* shown;
  } cases[] = {{0, 3, "abcdef"}, {1, 3, "abcdef"}, {2, 3, "cbafed"}, {3, 3, "fedcba"},
               {4, 3, "defabc"}, {5, 2, "adbecf"}, {6, 2, "daebfc"}, {7, 2, "fcebda"},
               {8, 2, "cfbead"}, {9, 3, "abcdef"}};
  const auto pixelsOf = [](std::string_view names) {
    Bytes pixels;
    for (const char name : names) {
      const auto level = static_cast<std::uint8_t>((name - 'a') * 40);
      pixels.insert(pixels.end(), {level, level, level, 255});
    }
    return pixels;
  };
  const Bytes levels{0, 40, 80, 120, 160, 200};
  for (const auto& c : cases) {
    const std::string name = "orientation " + std::to_string(c.orientation);
    imagefiles::TIFFKind kind{8, 1, PHOTOMETRIC_MINISBLACK};
    kind.orientation = c.orientation;
    if (c.orientation <= 8) {
      expectPixels({name.c_str(), imagefiles::tiff(3, 2, kind, levels), c.width, 6 / c.width,
                    pixelsOf(c.shown)});
    }
    for (const bool little : {false, true}) {
      const Bytes file = imagefiles::jpeg(3, 2, JPEGColor::grey, JPEGScans::one, levels,
                                          imagefiles::exif(c.orientation, little));
      expectPixels({name.c_str(), file, c.width, 6 / c.width, pixelsOf(c.shown), 3});
    }
  }
  // What is no EXIF, or cut off anywhere, changes nothing.
  const Bytes whole = imagefiles::exif(6, true);
  for (std::size_t size = 0; size < whole.size() - 4; ++size) {
    const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    const Bytes file = imagefiles::jpeg(3, 2, JPEGColor::grey, JPEGScans::one, levels, part);
    const auto image = Image::imageWithData(file);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width(), size < 37 ? 3U : 2U) << size;
  }
}

// Larger than the squares in which pixels are moved.
TEST(ImageReading, TurnsLargePictures) {
  constexpr std::uint32_t kWidth = 150;
  constexpr std::uint32_t kHeight = 70;
  Bytes levels(kWidth * kHeight);
  for (std::size_t i = 0; i < levels.size(); ++i) levels[i] = static_cast<std::uint8_t>(i * 7);
  imagefiles::TIFFKind kind{8, 1, PHOTOMETRIC_MINISBLACK};
  kind.orientation = ORIENTATION_RIGHTTOP;
  const auto image = Image::imageWithData(imagefiles::tiff(kWidth, kHeight, kind, levels));
  ASSERT_TRUE(image);
  ASSERT_EQ(image->width(), kHeight);
  ASSERT_EQ(image->height(), kWidth);
  const auto pixels = *image->pixels();
  for (std::uint32_t y = 0; y < kWidth; ++y) {
    for (std::uint32_t x = 0; x < kHeight; ++x) {
      ASSERT_EQ(pixels->bytes()[(y * kHeight + x) * 4], levels[(kHeight - 1 - x) * kWidth + y]);
    }
  }
}

std::vector<Case> smallFiles() {
  Bytes rgb(16 * 16 * 3);
  for (std::size_t i = 0; i < rgb.size(); ++i) rgb[i] = static_cast<std::uint8_t>(i * 29 % 251);
  const auto image = Image::imageWithPixels(4, 4, Bytes(64, 99));
  const auto own = image->TIFFRepresentation();
  return {
      {"PNG", imagefiles::png(16, 16, {8, PNG_COLOR_TYPE_RGB, true}, rgb), 16, 16, {}},
      {"JPEG", imagefiles::jpeg(16, 16, JPEGColor::rgb, JPEGScans::one, rgb), 16, 16, {}},
      {"progressive JPEG",
       imagefiles::jpeg(16, 16, JPEGColor::rgb, JPEGScans::progressive, rgb),
       16,
       16,
       {}},
      {"own TIFF", Bytes(own->bytes().begin(), own->bytes().end()), 4, 4, {}},
      {"LZW TIFF",
       imagefiles::tiff(16, 16, {8, 3, PHOTOMETRIC_RGB, COMPRESSION_LZW}, rgb),
       16,
       16,
       {}},
  };
}

TEST(ImageReading, RefusesEveryCutWithAReasonAndWithoutAWord) {
  testing::internal::CaptureStderr();
  for (const Case& c : smallFiles()) {
    SCOPED_TRACE(c.name);
    EXPECT_TRUE(Image::imageWithData(c.file));
    for (std::size_t size = 0; size < c.file.size(); ++size) {
      const Bytes cut(c.file.begin(), c.file.begin() + static_cast<std::ptrdiff_t>(size));
      const auto image = Image::imageWithData(cut);
      ASSERT_FALSE(image) << size << " of " << c.file.size();
      const std::string& reason = image.status().sentence();
      ASSERT_FALSE(reason.empty());
      ASSERT_EQ(reason.find('\n'), reason.npos) << reason;
    }
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(ImageReading, SurvivesDamageOfEveryByte) {
  testing::internal::CaptureStderr();
  std::mt19937 random(3);
  ImageLimits limits;
  limits.pixels = 1 << 16;
  for (const Case& c : smallFiles()) {
    SCOPED_TRACE(c.name);
    for (std::size_t at = 0; at < c.file.size(); ++at) {
      Bytes damaged = c.file;
      damaged[at] = static_cast<std::uint8_t>(random());
      const auto image = Image::imageWithData(damaged, limits);
      ASSERT_EQ(image.status().sentence().empty(), image.isOK());
      if (image) {
        ASSERT_EQ(image->pixels()->size(), std::size_t{image->width()} * image->height() * 4);
      }
    }
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

Bytes withBytesAt(Bytes file, std::size_t at, const Bytes& bytes) {
  std::copy(bytes.begin(), bytes.end(), file.begin() + static_cast<std::ptrdiff_t>(at));
  return file;
}

TEST(ImageReading, RefusesWhatIsNoPicture) {
  const auto own = Image::imageWithPixels(1, 1, Bytes(4))->TIFFRepresentation();
  const Bytes tiff(own->bytes().begin(), own->bytes().end());
  const Bytes jpeg = imagefiles::jpeg(8, 8, JPEGColor::grey, JPEGScans::one, Bytes(64));
  // The frame header begins with its length, precision, height and width.
  const Bytes frame{0xFF, 0xC0, 0, 11, 8};
  const auto found = std::search(jpeg.begin(), jpeg.end(), frame.begin(), frame.end());
  ASSERT_NE(found, jpeg.end());
  const auto size = static_cast<std::size_t>(found - jpeg.begin()) + frame.size();
  const std::string text = "picture.png";
  struct Refused {
    const char* reason;
    Bytes file;
    StatusCode code = StatusCode::damaged;
  };
  const Refused cases[] = {
      {"the file is empty", {}},
      {"this is no PNG, TIFF or JPEG file", Bytes(text.begin(), text.end()),
       StatusCode::unsupported},
      {"2147483647 x 2147483647 pixels is too large",
       imagefiles::pngOfChunks(0x7FFFFFFF, 0x7FFFFFFF, Bytes(100)), StatusCode::tooLarge},
      {"too little data for 8000 x 8000", imagefiles::pngOfChunks(8000, 8000, Bytes(100))},
      {"no pixels (0 x 1)", imagefiles::pngOfChunks(0, 1, Bytes(100))},
      {"the PNG file is damaged", imagefiles::pngOfChunks(1, 1, Bytes(100))},
      {"4294967295 x 1 pixels is too large", withBytesAt(tiff, 18, {0xFF, 0xFF, 0xFF, 0xFF}),
       StatusCode::tooLarge},
      {"the TIFF file cannot be read", withBytesAt(tiff, 18, {0, 0, 0, 0})},
      {"compression is not supported", withBytesAt(tiff, 54, {0x65, 0x80}),
       StatusCode::unsupported},
      {"65500 x 65500 pixels is too large", withBytesAt(jpeg, size, {0xFF, 0xDC, 0xFF, 0xDC}),
       StatusCode::tooLarge},
      {"the JPEG file cannot be read", withBytesAt(jpeg, size, {0, 8, 0, 0})},
  };
  for (const Refused& c : cases) {
    const auto status = Image::imageWithData(c.file).status();
    EXPECT_EQ(nameOf(status.code()), nameOf(c.code)) << c.reason;
    EXPECT_NE(status.sentence().find(c.reason), std::string::npos)
        << status.sentence() << " instead of " << c.reason;
  }
}

TEST(ImageReading, EachLimitHolds) {
  ImageLimits exact;
  exact.width = 9;
  exact.height = 5;
  exact.pixels = 45;
  for (const Bytes& file : {imagefiles::png(9, 5, {8, PNG_COLOR_TYPE_GRAY}, Bytes(45)),
                            imagefiles::tiff(9, 5, {8, 1, PHOTOMETRIC_MINISBLACK}, Bytes(45)),
                            imagefiles::jpeg(9, 5, JPEGColor::grey, JPEGScans::one, Bytes(45))}) {
    exact.inputBytes = file.size();
    EXPECT_TRUE(Image::imageWithData(file, exact));
    ImageLimits less[4] = {exact, exact, exact, exact};
    --less[0].width;
    --less[1].height;
    --less[2].pixels;
    --less[3].inputBytes;
    for (const ImageLimits& limits : less) {
      const auto status = Image::imageWithData(file, limits).status();
      EXPECT_EQ(nameOf(status.code()), "tooLarge");
      EXPECT_NE(status.sentence().find("too large"), std::string::npos) << status.sentence();
    }
  }
}

TEST(ImageReading, AJPEGMayNotHaveScansWithoutEnd) {
  const Bytes file = imagefiles::jpeg(8, 8, JPEGColor::grey, JPEGScans::wholePrecision, Bytes(64));
  // The last scan stands between its marker and the end of the file.
  const Bytes marker{0xFF, 0xDA};
  const auto scan = std::find_end(file.begin(), file.end(), marker.begin(), marker.end());
  const auto repeated = [&](int scans) {
    Bytes many(file.begin(), scan);
    for (int i = 0; i < scans; ++i) many.insert(many.end(), scan, file.end() - 2);
    many.insert(many.end(), file.end() - 2, file.end());
    return many;
  };
  EXPECT_TRUE(Image::imageWithData(repeated(50)));
  const auto status = Image::imageWithData(repeated(200)).status();
  EXPECT_EQ(nameOf(status.code()), "tooLarge");
  EXPECT_NE(status.sentence().find("more than 100 scans"), std::string::npos) << status.sentence();
}

}  // namespace
}  // namespace tarnkit
