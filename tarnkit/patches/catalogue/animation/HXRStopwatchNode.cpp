#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

const HXRNodeClass HXRStopwatchNode{"HXRStopwatchNode",
                                    &HXRNode::kClass,
                                    {.defaultName = "Stopwatch",
                                     .libraryCategory = "Animation",
                                     .processClassName = "PMRStopwatchPatch"},
                                    [](PatchDeclaration& patch) {
                                      patch.in("Start", "Tarn.startInput", value::boolean(false));
                                      patch.in("Stop", "Tarn.stopInput", value::boolean(false));
                                      patch.in("Reset", "Tarn.resetInput", value::boolean(false));
                                      patch.out("Time", "Tarn.timeOutput");
                                    }};

}  // namespace tarnkit
