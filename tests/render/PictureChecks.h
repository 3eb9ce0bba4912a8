#pragma once

#include "tests/render/PictureFixture.h"

namespace tarnkit::test {

/// The sides of what is drawn, in the picture's own numbers.
struct Box {
  double left, top, right, bottom;
};

Box boxOf(const Picture& picture, const Element& node);
bool overlap(const Box& a, const Box& b);

/// Expects that the picture has the given air around all that is drawn, and no more.
void checkFrame(const Picture& picture);
/// Expects that every box holds what is drawn in it and no more than it needs, that wires end at
/// their ports, and that frame and edges are where they belong.
void check(const Picture& picture);

}  // namespace tarnkit::test
