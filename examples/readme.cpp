#include <cstdio>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/patches/PatchRegistry.h"

using namespace tarnkit;

int main() {
  const auto document = make<HXDocument>();
  const auto place = [&](const char* patch) {
    const auto node = HXNode::makeForPatch(*patchClassNamed(patch));
    document->subnodeGroup()->addNode(*node);
    return node;
  };
  const auto touch = place("HXRTouchInteractionNode"), toggle = place("HXRSwitchNode");
  document->connectPort(*touch->portForKey("Tarn.downOutput"),
                        *toggle->portForKey("Tarn.toggleInput"));

  const auto status = HXDocumentFile::save(*document, "touch.document", HXCodingTypeEditor);
  if (status) return 0;
  std::puts(status.message().c_str());
  return 1;
}
