#include "tarnkit/patches/HXRNodeOwner.h"

#include "tarnkit/patches/HXRNode.h"

namespace tarnkit {

Ref<Object> HXRNodeOwner::patchWillChange(HXRNode&) { return nullptr; }
void HXRNodeOwner::patchRebuildWillBegin(HXRNode&) {}
void HXRNodeOwner::patchRebuildDidEnd(HXRNode&) {}
bool HXRNodeOwner::holdsPatch(const HXRNode&) const noexcept { return false; }

void HXRNodeOwner::takeUp(HXRNode& definition) { definition.linkNode(this, {}); }
void HXRNodeOwner::letGo(HXRNode& definition) { definition.linkNode(nullptr, {}); }

}  // namespace tarnkit
