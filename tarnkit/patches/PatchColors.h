#pragma once

#include "tarnkit/patches/RGBA.h"

namespace tarnkit {

/// The colours in which the editor draws patches and ports, by what they do.
inline constexpr RGBA HXPrimaryPatchColor{85.0F / 255, 92.0F / 255, 104.0F / 255, 1};
inline constexpr RGBA HXOperatorPatchColor{220.0F / 255, 229.0F / 255, 235.0F / 255, 1};
inline constexpr RGBA HXGesturePatchColor{255.0F / 255, 88.0F / 255, 0, 1};
inline constexpr RGBA HXInteractionPatchColor{255.0F / 255, 149.0F / 255, 0, 1};
inline constexpr RGBA HXLoopPatchColor{255.0F / 255, 0, 0, 1};
inline constexpr RGBA HXViewPatchColor{0, 158.0F / 255, 255.0F / 255, 1};

}  // namespace tarnkit
