#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRReplicatorVariablesNode{"HXRReplicatorVariablesNode",
                                              &HXRNode::kClass,
                                              {.defaultName = "Replicator Variables",
                                               .libraryCategory = "Loop",
                                               .processClassName = "PMRReplicatorVariablesPatch",
                                               .defaultColor = &HXLoopPatchColor},
                                              [](PatchDeclaration& patch) {
                                                patch.out("Index", "Tarn.indexOutput");
                                                patch.out("Position", "Tarn.positionOutput");
                                                patch.out("Copies", "Tarn.copiesOutput");
                                              }};

}  // namespace tarnkit
