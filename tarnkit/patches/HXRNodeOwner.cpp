#include "tarnkit/patches/HXRNodeOwner.h"

namespace tarnkit {

void HXRNodeOwner::patchRebuildWillBegin(HXRNode&) {}
void HXRNodeOwner::patchRebuildDidEnd(HXRNode&) {}

}  // namespace tarnkit
