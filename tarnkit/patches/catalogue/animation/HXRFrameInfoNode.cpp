#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRFrameInfoNode{"HXRFrameInfoNode",
                                    &HXRNode::kClass,
                                    {.defaultName = "Frame Info",
                                     .libraryCategory = "Animation",
                                     .processClassName = "PMRFrameInfoPatch"},
                                    [](PatchDeclaration& patch) {
                                      patch.out("Delta Time", "Tarn.deltaTimeOutput");
                                      patch.out("Video Sync", "Tarn.videoSyncOutput");
                                    }};

}  // namespace tarnkit
