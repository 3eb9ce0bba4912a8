#include "tarnkit/patches/catalogue/animation/CubicBezier.h"

#include "tarnkit/patches/PatchDeclaration.h"

namespace tarnkit {

void declareCubicBezier(PatchDeclaration& patch, float x1, float y1, float x2, float y2) {
  patch.in("Progress", "Tarn.progressInput", value::number(0));
  patch.group("Control Point 1");
  patch.in("X1", "Tarn.x1Input", value::number(x1));
  patch.in("Y1", "Tarn.y1Input", value::number(y1));
  patch.group("Control Point 2");
  patch.in("X2", "Tarn.x2Input", value::number(x2));
  patch.in("Y2", "Tarn.y2Input", value::number(y2));
  patch.group();
  patch.out("Progress", "Tarn.progressOutput");
}

}  // namespace tarnkit
