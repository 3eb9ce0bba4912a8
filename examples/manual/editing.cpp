// What docs/building-an-editor.md shows of undo, copies, palettes and other patches.
#include <cstdio>
#include <map>
#include <vector>

#include "tarnkit/editing/HXClipboard.h"
#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/editing/HXReplacement.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/PatchRegistry.h"

using namespace tarnkit;

namespace {

void palette() {
  // region palette
  std::map<std::string, std::vector<const HXRNodeClass*>> palette;  // by category
  for (const HXRNodeClass* patch : catalogue()) {
    if (patch->hiddenInLibrary() || patch->libraryCategory().isNil()) continue;
    palette[patch->libraryCategory().toStdString()].push_back(patch);
  }
  for (const HXRNodeClass* patch : palette["Color"]) {
    std::printf("%s, ", patch->defaultName().toStdString().c_str());
  }
  std::puts("...");
  // What a drop on the canvas makes:
  const auto node = HXNode::makeForPatch(*palette["Color"].front());
  // end palette
  if (!node) std::puts("no node");
}

}  // namespace

int main() {
  palette();
  // region undo
  const auto document = make<HXDocument>();
  const auto history = make<HXHistory>(*document);  // records from here on
  const auto clamp = HXNode::makeForPatch(*patchClassNamed("HXRClampNode"));
  {
    const HXHistory::Step step(*history, "Add Clamp");  // one step, however much happens
    clamp->setPosition({100, 40});
    document->subnodeGroup()->addNode(*clamp);
  }
  as<HXPatchPort>(clamp->portForKey("Tarn.maximumInput"))
      ->setStaticValue(PMRPrimitive::primitiveWithNumberValue(10));
  history->markClean();  // what is saved

  std::printf("modified: %d\n", history->isModified());
  history->undo();
  std::printf("modified: %d, next: Undo %s\n", history->isModified(),
              history->undoName().toStdString().c_str());
  history->redo();
  // end undo

  // region drag
  history->setCoalescingKey("drag 1");  // one gesture, one step
  for (float x = 100; x <= 300; x += 50) {
    const HXHistory::Step step(*history, "Move");
    clamp->setPosition({x, 40});
  }
  history->setCoalescingKey({});
  std::printf("steps: %zu\n", history->undoCount());
  // end drag

  // region copy
  const auto bytes = HXClipboard::copy({clamp});  // for the system's pasteboard
  const auto pasted = HXClipboard::paste((*bytes)->bytes(), *document->subnodeGroup(), {20, 20});
  if (pasted) {
    const HXNode& copy = *pasted->front();
    std::printf("%s at (%g, %g), maximum %s\n", copy.name().toStdString().c_str(),
                copy.position().x, copy.position().y,
                as<HXPatchPort>(copy.portForKey("Tarn.maximumInput"))
                    ->effectiveValue()
                    ->stringValue()
                    .toStdString()
                    .c_str());
  } else {
    std::printf("%s\n", pasted.status().sentence().c_str());  // no clipboard, damaged, ...
  }
  // end copy

  // region replace
  const auto other = patchClassNamed("HXRTransitionNode")->makeDefinition();
  HXReplacementOptions options;
  options.mayLose = [](const HXNodeReport& report) {
    for (const HXNodeItem& item : report.losses()) {
      std::printf("would lose %s\n", item.description().c_str());
    }
    return false;  // the user said no, and nothing has changed
  };
  const auto replaced = HXReplacement::replacePatch(*clamp, other, options);
  std::printf("replaced: %d\n", replaced.has_value());
  // end replace
  return history->undoCount() == 4 && !replaced ? 0 : 1;
}
