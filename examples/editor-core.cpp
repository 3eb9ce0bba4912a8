// The core of an editor: a canvas that follows a document by its notifications alone, and the edits
// that people make. Builds, wires, groups, publishes, copies into a second document, and undoes all
// of it; the canvas shows at every moment what the document holds, whoever changed it and however.

#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <string>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/editing/HXClipboard.h"
#include "tarnkit/editing/HXGrouping.h"
#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/editing/HXWiring.h"
#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXRefusal.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/PatchRegistry.h"

using namespace tarnkit;

namespace {

// What is drawn of one document: boxes in groups, and wires. A real canvas would have layers where
// this one has lines of text.
class Canvas {
 public:
  explicit Canvas(HXDocument& document)
      : document_(document), observation_([this](const Notification& n) { follow(n); }) {
    for (HXNodeWalk walk(*document.subnodeGroup()); HXNode* node = walk.next();) show(*node);
  }

  std::size_t boxes() const { return boxes_.size(); }
  std::size_t wires() const { return wires_.size(); }

  // Whether the canvas shows the document as it is: what this program is about.
  bool isTrue() const {
    std::map<const HXNode*, Box> boxes;
    std::set<const HXConnection*> wires;
    for (HXNodeWalk walk(*document_.subnodeGroup()); HXNode* node = walk.next();) {
      boxes.emplace(node, boxOf(*node));
      for (const auto& entry : node->portsInForce()) {
        entry.value->connections().forEach([&](HXConnection& wire) { wires.insert(&wire); });
      }
    }
    return boxes == boxes_ && wires == wires_;
  }

 private:
  struct Box {
    std::string name;
    HXPoint position;
    const HXNode* inside;
    bool operator==(const Box&) const = default;
  };
  static Box boxOf(const HXNode& node) {
    return {node.name().toStdString(), node.position(), node.enclosingNode()};
  }

  // A node comes with everything below it, when it is pasted, grouped or brought back.
  void show(HXNode& root) {
    for (HXNodeWalk walk(root); HXNode* node = walk.next();) boxes_[node] = boxOf(*node);
  }
  void hide(HXNode& root) {
    for (HXNodeWalk walk(root); HXNode* node = walk.next();) boxes_.erase(node);
  }

  // Undo and redo come here as well: there is no second way in which a document changes.
  void follow(const Notification& notification) {
    const auto* key = notification.userInfo[HXDocumentKeyInfo];
    if (!key || !key->isEqual(*document_.documentKey().object())) return;
    auto* const node = as<HXNode>(notification.userInfo[HXNodeInfo]);
    auto* const wire = as<HXConnection>(notification.userInfo[HXConnectionInfo]);
    const Symbol& name = notification.name;
    if (name == HXGroupAddNodeNotification) return show(*node);
    if (name == HXGroupRemoveNodeNotification) return hide(*node);
    if (name == HXDocumentAddConnectionNotification) wires_.insert(wire);
    if (name == HXDocumentRemoveConnectionNotification) wires_.erase(wire);
    if (name == HXNodeNameDidChangeNotification || name == HXNodePositionDidChangeNotification) {
      // The name of a node is told before it is in the document, too, and of the document itself.
      if (const auto box = boxes_.find(node); box != boxes_.end()) box->second = boxOf(*node);
    }
  }

  HXDocument& document_;
  std::map<const HXNode*, Box> boxes_;
  std::set<const HXConnection*> wires_;
  NotificationCenter::Observation observation_;
};

int failures = 0;

void check(bool isTrue, const char* what) {
  std::printf("%s %s\n", isTrue ? "ok  " : "FAIL", what);
  if (!isTrue) ++failures;
}

// One open document with what an editor keeps beside it.
struct Editor {
  Ref<HXDocument> document = make<HXDocument>();
  Canvas canvas{*document};
  Ref<HXHistory> history = make<HXHistory>(*document);

  Ref<HXNode> place(const char* patch, HXPoint at) {
    const HXHistory::Step step(*history, "Add Patch");
    const auto node = HXNode::makeForPatch(*patchClassNamed(patch));
    node->setPosition(at);
    document->subnodeGroup()->addNode(*node);
    return node;
  }

  // A wire dragged from one port to another; says why when it does not fit.
  bool drag(HXNode& from, const char* output, HXNode& to, const char* input) {
    HXPort& first = *from.portForKey(output);
    HXPort& second = *to.portForKey(input);
    if (const HXRefusal refusal = HXWiring::whyNotWire(first, second)) {
      std::printf("     no wire: %s\n", refusal.reason().toStdString().c_str());
      return false;
    }
    return HXWiring::wire(*document, first, second) != nullptr;
  }

  // Everything that is kept, byte for byte.
  std::vector<std::uint8_t> bytes() const {
    return *HXDocumentFile::dataWithDocument(*document, HXCodingTypeEditorWithKeys);
  }
};

template <class T>
T required(Result<T> result) {
  if (!result) {
    std::printf("FAIL %s\n", result.status().message().c_str());
    std::exit(1);
  }
  return *std::move(result);
}

}  // namespace

int main() {
  Editor editor;
  const auto empty = editor.bytes();

  // Build: a pan gesture moves a picture, within bounds.
  const auto pan = editor.place("HXRPanInteractionNode", {0, 0});
  const auto clamp = editor.place("HXRClampNode", {200, 0});
  const auto view = editor.place("HXRImageViewNode", {400, 0});
  check(editor.drag(*pan, "Tarn.xPanOutput", *clamp, "Tarn.valueInput"), "pan to clamp");
  check(editor.drag(*clamp, "Tarn.resultOutput", *view, "Tarn.xPositionInput"), "clamp to view");
  check(!editor.drag(*clamp, "Tarn.resultOutput", *view, "Tarn.imageInput"), "no number for image");
  static_cast<HXPatchPort*>(clamp->portForKey("Tarn.maximumInput"))
      ->setStaticValue(PMRPrimitive::primitiveWithNumberValue(320));

  // Move: a drag sets the position many times, and is one step to undo.
  editor.history->setCoalescingKey("drag 1");
  const auto stepsBefore = editor.history->undoCount();
  for (float x = 200; x < 260; x += 10) clamp->setPosition({x, 40});
  check(editor.history->undoCount() == stepsBefore + 1, "a drag is one step");
  editor.history->setCoalescingKey({});
  clamp->setName("Bounds");
  const auto built = editor.bytes();
  editor.history->markClean();

  // Group: the wires across the new border go on through published ports.
  const auto group = required(HXGrouping::group({clamp}, "Limits"));
  check(clamp->enclosingNode() == group.get(), "the clamp is in the group");
  check(group->inputPorts().size() == 1 && group->outputPorts().size() == 1, "two ports published");
  check(editor.canvas.wires() == 2, "both wires are there");

  // Publish: one more input of the inner patch, for whoever uses the group.
  const auto published =
      group->subnodeGroup()->addSymbolicPortForPort(*clamp->portForKey("Tarn.maximumInput"));
  published->setName("Limit");
  check(group->inputPorts().size() == 2, "a third port published");
  check(editor.canvas.isTrue() && editor.history->isModified(), "the canvas shows it all");

  // Copy into a second document, which has a canvas and a history of its own.
  Editor second;
  const auto clipboard = required(HXClipboard::copy({pan, group}));
  const auto pasted = required(
      HXClipboard::paste(clipboard->bytes(), *second.document->subnodeGroup(), HXPoint{20, 20}));
  check(pasted.size() == 2 && second.canvas.boxes() == 3, "three nodes pasted");
  check(second.canvas.wires() == 1 && second.canvas.isTrue(), "with the wire among them");
  check(second.history->undoCount() == 1, "in one step");

  // Undo: all of it, here and there, and the documents are what they were.
  const auto complete = editor.bytes();
  while (editor.history->isModified() && editor.history->undo()) {
    check(editor.canvas.isTrue(),
          ("after undoing, next " + editor.history->undoName().toStdString()).c_str());
  }
  check(editor.bytes() == built && clamp->enclosingNode() == editor.document.get(),
        "back at what was saved, with the same objects");
  while (editor.history->undo()) check(editor.canvas.isTrue(), "after undoing");
  check(editor.bytes() == empty && editor.canvas.boxes() == 0, "back at the beginning");
  while (editor.history->redo()) check(editor.canvas.isTrue(), "after redoing");
  check(editor.bytes() == complete, "and forth to the end");
  check(second.history->undo() && second.canvas.boxes() == 0, "the second document is empty again");

  std::printf("%s\n", failures == 0 ? "all is well" : "something is wrong");
  return failures == 0 ? 0 : 1;
}
