#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRTouchRippleViewNode{"HXRTouchRippleViewNode",
                                          &HXRViewNode,
                                          {.defaultName = "Touch Ripple View",
                                           .libraryCategory = "Material",
                                           .processClassName = "PMRTouchRippleViewPatch"}};

}  // namespace tarnkit
