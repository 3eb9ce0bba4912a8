#include "tarnkit/patches/catalogue/animation/LFO.h"

#include "tarnkit/patches/PatchDeclaration.h"

namespace tarnkit {

void declareLFO(PatchDeclaration& patch, float amplitude) {
  patch.choice("Wave", "Tarn.waveTypeInput", 0,
               {"Sine", "Cosine", "Triangle", "Square", "Sawtooth Up", "Sawtooth Down"});
  patch.in("Period", "Tarn.periodInput", value::number(1));
  patch.in("Phase", "Tarn.phaseInput", value::number(0));
  patch.in("Amplitude", "Tarn.amplitudeInput", value::number(amplitude));
  patch.in("Offset", "Tarn.offsetInput");
  patch.out("Value", "Tarn.valueOutput");
}

}  // namespace tarnkit
