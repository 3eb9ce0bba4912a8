// Computes with the installed expression engine, and with nothing else of the library.
#include <cstdio>

#include "tarnkit/math/MXMathEvaluator.h"

int main() {
  using namespace tarnkit;
  MXError error;
  const auto value = MXMathEvaluator::defaultMathEvaluator()->evaluateString("1+2*3", {}, &error);
  if (!value || value->doubleValue() != 7) {
    std::fprintf(stderr, "%s\n", error.localizedDescription().c_str());
    return 1;
  }
  std::puts("math: ok");
}
