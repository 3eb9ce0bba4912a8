// What docs/building-an-editor.md shows of following a document.
#include <cstdio>
#include <map>
#include <string>

#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/editing/HXWiring.h"
#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/patches/PatchRegistry.h"

using namespace tarnkit;

namespace {

// region canvas
class Canvas {
 public:
  explicit Canvas(HXDocument& document)
      : document_(document), observation_([this](const Notification& n) { follow(n); }) {
    // What is there already announces nothing.
    for (const auto& node : document.subnodeGroup()->subnodes()) show(*node);
  }

 private:
  void follow(const Notification& notification) {
    // Every notice names the document that it is about: an editor has several.
    const auto* key = notification.userInfo[HXDocumentKeyInfo];
    if (!key || !key->isEqual(*document_.documentKey().object())) return;

    auto* const node = as<HXNode>(notification.userInfo[HXNodeInfo]);
    auto* const wire = as<HXConnection>(notification.userInfo[HXConnectionInfo]);
    if (notification.name == HXGroupAddNodeNotification) show(*node);
    if (notification.name == HXGroupRemoveNodeNotification) hide(*node);
    if (notification.name == HXNodeNameDidChangeNotification) update(*node);
    if (notification.name == HXNodePositionDidChangeNotification) update(*node);
    if (notification.name == HXDocumentAddConnectionNotification) draw(*wire);
    if (notification.name == HXDocumentRemoveConnectionNotification) erase(*wire);
    if (notification.name == HXHistoryDidUndoNotification) settle();
    if (notification.name == HXHistoryDidRedoNotification) settle();
  }

  // A node comes with all that is below it, and goes with it.
  void show(HXNode& root) {
    for (HXNodeWalk walk(root); HXNode* node = walk.next();) {
      boxes_[node] = node->name().toStdString();
      std::printf("box    + %s\n", boxes_[node].c_str());
    }
  }
  void hide(HXNode& root) {
    for (HXNodeWalk walk(root); HXNode* node = walk.next();) {
      std::printf("box    - %s\n", boxes_[node].c_str());
      boxes_.erase(node);
    }
  }
  // A node that an undo moved out of a group, before the group went, was not told of.
  void settle() {
    std::erase_if(boxes_, [&](const auto& box) { return box.first->document() != &document_; });
  }
  void update(HXNode& node) {
    const auto box = boxes_.find(&node);
    if (box == boxes_.end()) return;
    box->second = node.name().toStdString();
    std::printf("box      %s at (%g, %g)\n", box->second.c_str(), node.position().x,
                node.position().y);
  }
  // Drawn between the ports that the user joined, which may be published ones.
  void draw(const HXConnection& wire) {
    std::printf("wire   + %s -> %s\n", nameOf(wire.displayOutputPort()).c_str(),
                nameOf(wire.displayInputPort()).c_str());
  }
  void erase(const HXConnection&) { std::puts("wire   -"); }
  static std::string nameOf(const HXPort* port) {
    if (!port || !port->node()) return "?";
    return port->node()->name().toStdString() + "/" + port->displayName().toStdString();
  }

  HXDocument& document_;
  std::map<const HXNode*, std::string> boxes_;
  NotificationCenter::Observation observation_;  // as long as the canvas
};
// end canvas

}  // namespace

int main() {
  // region edits
  const auto document = make<HXDocument>();
  Canvas canvas(*document);
  const auto history = make<HXHistory>(*document);
  const auto place = [&](const char* patch) {
    const auto node = HXNode::makeForPatch(*patchClassNamed(patch));
    document->subnodeGroup()->addNode(*node);
    return node;
  };
  const auto touch = place("HXRTouchInteractionNode");
  const auto toggle = place("HXRSwitchNode");
  toggle->setPosition({200, 40});
  HXWiring::wire(*document, *touch->portForKey("Tarn.downOutput"),
                 *toggle->portForKey("Tarn.toggleInput"));
  std::puts("-- the touch is removed");
  document->subnodeGroup()->removeNode(touch.get());
  std::puts("-- undone");
  history->undo();
  // end edits
  return history->undoCount() == 4 ? 0 : 1;
}
