#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "tarnkit/render/HXGraphPicture.h"
#include "tarnkit/render/PictureColors.h"

namespace tarnkit::detail {

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

TEST(PictureColors, TextCanBeReadOnEveryColor) {
  EXPECT_NEAR(luminance({1, 1, 1, 1}), 1, 1e-9);
  EXPECT_NEAR(luminance({0.5F, 0.25F, 0.75F, 0}), 0.119618, 1e-6);
  EXPECT_NEAR(contrast(0, 1), 21, 1e-9);
  for (float red = 0; red <= 1; red += 1.0F / 16) {
    for (float green = 0; green <= 1; green += 1.0F / 64) {
      for (float blue = 0; blue <= 1; blue += 1.0F / 16) {
        const RGBA color{red, green, blue, 1};
        const double text = wantsLightText(color) ? 1 : 0;
        ASSERT_GE(contrast(luminance(color), text), 4.5) << red << ' ' << green << ' ' << blue;
      }
    }
  }
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(luminance({kNaN, -5, 0, 1}), 0);
  EXPECT_NEAR(luminance({1e30F, 7, 2, 1}), 1, 1e-9);
}

TEST(PictureColors, AThemeIsTheRulesWithItsColors) {
  const std::pair<HXPictureTheme, const char*> themes[] = {{HXPictureTheme::light, "#f5f6f8"},
                                                           {HXPictureTheme::dark, "#15171b"}};
  for (const auto& [theme, canvas] : themes) {
    const std::string style = pictureStyle(theme);
    EXPECT_THAT(style, HasSubstr(".tk-canvas{fill:" + std::string(canvas) + "}\n"));
    EXPECT_THAT(style, Not(HasSubstr("var(")));
    EXPECT_THAT(style, EndsWith("}\n"));
    EXPECT_THAT(pictureColors(theme), StartsWith("--tk-canvas:" + std::string(canvas) + ";"));
  }
  EXPECT_THAT(pictureStyle(), HasSubstr(".tk-canvas{fill:var(--tk-canvas)}\n"));
}

}  // namespace

}  // namespace tarnkit::detail
