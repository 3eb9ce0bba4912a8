#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tarnkit/compare/HXDocumentState.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tests/model/ModelFixture.h"

namespace tarnkit::test {

/// A document, and edits of it of which no two are about one thing.
class EditsFixture : public ModelTest {
 protected:
  using Edit = std::function<void(HXDocument&)>;

  EditsFixture() {
    album = addNamed("", "Album");
    clamp = addNamed("HXRClampNode", "Clamp", album.get());
    delay = addNamed("HXRDelayNode", "Delay", album.get());
    source = addNamed("HXRTransitionNode", "Source");
    sink = addNamed("HXRClampNode", "Sink");
    tail = addNamed("HXRClampNode", "Tail");
    choice = addNamed("HXRMultiplexerNode", "Choice");
    debug = addNamed("HXRDebugNode", "Debug");
    loose = addNamed("HXRDelayNode", "Loose");
    shelf = addNamed("", "Shelf");
    views = addNamed("", "Views");
    for (auto* each : {&back, &middle, &front}) *each = add("HXRColorViewNode", views.get());
    connect(*clamp, "Tarn.resultOutput", *delay, "Tarn.valueInput");
    document->connectPort(port(*source, "Tarn.output"), *publish(*clamp, "Tarn.valueInput", "In"));
    set(*sink, "Tarn.valueInput", 1);
    const auto fresh = addNamed("HXRClampNode", "Fresh");
    piece = HXDocumentState::pieceOf(*fresh);
    document->subnodeGroup()->removeNode(fresh.get());
  }

  Ref<HXNode> addNamed(const char* patch, const char* name, HXNode* to = nullptr) {
    const auto node = add(patch, to);
    node->setName(name);
    return node;
  }
  static Ref<HXSymbolicPort> publish(HXNode& node, const char* key, const char* name) {
    const auto published = node.parentGroup()->addSymbolicPortForPort(port(node, key));
    if (published) published->setName(name);
    return published;
  }
  static void set(HXNode& node, const char* key, float value) {
    port(node, key).setStaticValue(PMRPrimitive::primitiveWithNumberValue(value));
  }
  /// The node of a branch that is this one of the document.
  static HXNode& in(HXDocument& branch, const Ref<HXNode>& node) {
    for (HXNodeWalk walk(branch); HXNode* found = walk.next();) {
      if (found->uniqueKey() == node->uniqueKey()) return *found;
    }
    throw std::logic_error(node->name().toStdString());
  }
  static void join(HXDocument& in, HXNode& from, const char* output, HXNode& to,
                   const char* input) {
    in.connectPort(port(from, output), port(to, input));
  }
  static void remove(HXNode& node) { Ref<HXGroup>(node.parentGroup())->removeNode(&node); }

  std::vector<Edit> edits() const {
    const auto image =
        HXImageStore::createImageEntry(*Image::imageWithPixels(1, 1, {1, 2, 3, 255}));
    return {
        [=, this](HXDocument& d) { in(d, sink).setName("Drain"); },
        [=, this](HXDocument& d) { in(d, sink).setComment("why"); },
        [=, this](HXDocument& d) {
          in(d, sink).setPosition({1, 2});
        },
        [=, this](HXDocument& d) { in(d, sink).setSelected(true); },
        [=, this](HXDocument& d) { in(d, sink).setInspectorPanel(3); },
        [=, this](HXDocument& d) { set(in(d, sink), "Tarn.maximumInput", 5); },
        [=, this](HXDocument& d) { set(in(d, sink), "Tarn.minimumInput", 4); },
        [=, this](HXDocument& d) { port(in(d, sink), "Tarn.valueInput").setStaticValue(nullptr); },
        [=, this](HXDocument& d) { in(d, album).subnodeGroup()->setOpaque(true); },
        [=, this](HXDocument& d) {
          in(d, album).subnodeGroup()->setCanvasCenter({7, 8});
        },
        [=, this](HXDocument& d) {
          as<HXIndexParameter>(in(d, debug).parameterForKey("Tarn.integerParameter"))->setValue(3);
        },
        [=, this](HXDocument& d) {
          as<HXNumberParameter>(in(d, debug).parameterForKey("Tarn.floatParameter"))->setValue(3);
        },
        [=, this](HXDocument& d) {
          as<HXIndexParameter>(in(d, choice).parameterForKey("Tarn.numberOfSourcesParameter"))
              ->setValue(4);
        },
        [=, this](HXDocument& d) { in(d, choice).inputPortGroups()[0]->setHidden(true); },
        [=, this](HXDocument& d) {
          in(d, choice).inputPortGroups()[0]->setCollapsedCanvasGroup(true);
        },
        [=, this](HXDocument& d) {
          in(d, choice).outputPortGroups()[0]->setCollapsedSidebarGroup(true);
        },
        [=, this](HXDocument& d) { in(d, album).symbolicInputPorts()[0]->setName("Entry"); },
        [=, this](HXDocument& d) { publish(in(d, clamp), "Tarn.minimumInput", "Limits: low"); },
        [=, this](HXDocument& d) { publish(in(d, delay), "Tarn.valueOutput", "Out"); },
        [=, this](HXDocument& d) {
          join(d, in(d, source), "Tarn.output", in(d, tail), "Tarn.valueInput");
        },
        [=, this](HXDocument& d) {
          join(d, in(d, source), "Tarn.output", in(d, tail), "Tarn.minimumInput");
        },
        [=, this](HXDocument& d) {
          d.breakAllConnectionsToPort(port(in(d, delay), "Tarn.valueInput"));
        },
        [=, this](HXDocument& d) { remove(in(d, loose)); },
        [=, this](HXDocument& d) { in(d, shelf).subnodeGroup()->addNode(in(d, debug)); },
        [=, this](HXDocument& d) {
          in(d, shelf).subnodeGroup()->addNode(*HXDocumentState::nodeOf(*piece, true));
        },
        [=, this](HXDocument& d) {
          as<HXSubviewGroup>(in(d, views).subnodeGroup())->moveSubviewNode(in(d, front), 0);
        },
        [=](HXDocument& d) { d.imageStore()->addImageEntry(image); },
    };
  }

  Ref<HXNode> album, clamp, delay, source, sink, tail, choice, debug, loose, shelf, views, back,
      middle, front;
  Ref<Data> piece;
};

}  // namespace tarnkit::test
