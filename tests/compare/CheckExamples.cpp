#include "tests/compare/CheckExamples.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXModel.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tests/model/ModelFixture.h"

namespace tarnkit::test {

Ref<HXNode> CheckExample::stray(const char* patch) {
  registerModelClasses();
  auto node =
      patch && *patch != '\0' ? HXNode::makeForPatch(*patchClassNamed(patch)) : make<HXNode>();
  if (patch && *patch == '\0') node->setForceAllowsSubnodes(true);
  if (!patch || *patch == '\0') node->setName("Plain");
  node->setPosition({static_cast<float>(++placed) * 100, 0});
  return node;
}

Ref<HXNode> CheckExample::add(const char* patch, HXNode* to) {
  auto node = stray(patch);
  (to ? to : document.get())->subnodeGroup()->addNode(*node);
  return node;
}

HXPatchPort& CheckExample::port(HXNode& node, const char* key) {
  auto* port = as<HXPatchPort>(node.portForKey(key));
  if (!port) throw std::logic_error(key);
  return *port;
}

Ref<HXConnection> CheckExample::connect(HXNode& from, const char* output, HXNode& to,
                                        const char* input) {
  return document->connectPort(port(from, output), port(to, input));
}

void CheckExample::setText(HXNode& node, const char* parameter, const char* text) {
  as<HXStringParameter>(node.parameterForKey(parameter))->setValue(text);
}

Ref<HXImageStoreEntry> CheckExample::image(std::uint32_t width, std::uint32_t height) const {
  const std::vector<std::uint8_t> pixels(std::size_t{width} * height * 4, 0x80);
  return HXImageStore::createImageEntry(*Image::imageWithPixels(width, height, pixels));
}

void CheckExample::reopen(std::string_view text, std::string_view other) {
  auto bytes = savedBytes(*document, HXCodingTypeEditorWithKeys);
  ASSERT_EQ(text.size(), other.size());
  for (auto at = bytes.begin();;) {
    at = std::search(at, bytes.end(), text.begin(), text.end());
    if (at == bytes.end()) break;
    at = std::copy(other.begin(), other.end(), at);
  }
  opening = std::make_unique<HXOpeningRecord>();
  auto opened = HXDocumentFile::document(bytes, HXCodingTypeEditorWithKeys, opening->losses());
  opening->end();
  ASSERT_TRUE(opened) << opened.status().message();
  document = *opened;
}

namespace {

using Code = HXFindingCode;
using Example = CheckExample;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr const char* kExpression = "Tarn.mathExpressionParameter";
constexpr const char* kScript = "Tarn.javascriptExpressionParameter";

Ref<PMRPrimitive> number(float value) { return PMRPrimitive::primitiveWithNumberValue(value); }
Ref<PMRPrimitive> text(const char* value) { return PMRPrimitive::primitiveWithStringValue(value); }

void setValue(HXNode& node, const char* key, const Ref<PMRPrimitive>& value) {
  Example::port(node, key).setStaticValue(value);
}

// The output of one Clamp and the input of another.
struct Pair {
  explicit Pair(Example& example)
      : from(example.add("HXRClampNode")), to(example.add("HXRClampNode")) {}
  HXPatchPort& output() const { return Example::port(*from, "Tarn.resultOutput"); }
  HXPatchPort& input() const { return Example::port(*to, "Tarn.valueInput"); }
  Ref<HXNode> from, to;
};

// A Clamp in a group, published there, with a node that reads it.
struct Published {
  explicit Published(Example& example)
      : group(example.add("")),
        inner(example.add("HXRClampNode", group.get())),
        port(group->subnodeGroup()->addSymbolicPortForPort(
            Example::port(*inner, "Tarn.resultOutput"))),
        reader(example.add("HXRConsoleLogNode")) {}
  void read(Example& example) const {
    example.document->connectPort(*port, *reader->portForKey("Tarn.valueInput"));
  }
  Ref<HXNode> group, inner;
  Ref<HXSymbolicPort> port;
  Ref<HXNode> reader;
};

Ref<HXNode> expression(Example& example, const char* source) {
  auto node = example.add("HXRMathExpressionNode");
  example.setText(*node, kExpression, source);
  return node;
}
Ref<HXNode> script(Example& example, const char* source) {
  auto node = example.add("HXRJavascriptExpressionNode");
  example.setText(*node, kScript, source);
  return node;
}

Ref<HXImageParameter> imageParameter(HXNode& node) {
  return Ref<HXImageParameter>(as<HXImageParameter>(node.parameterForKey("Tarn.imageParameter")));
}
void showImage(Example& example, const Ref<HXImageStoreEntry>& entry, bool isStored) {
  imageParameter(*example.add("HXRImageNode"))->setImageEntry(entry);
  if (isStored) example.document->imageStore()->addImageEntry(entry);
}

const CheckRow kRows[] = {
    // The file.
    {Code::openingMended,
     [](Example& e) {
       showImage(e, e.image(2, 2), true);
       e.reopen("HXImageStoreEntry.key", "HXImageStoreEntry.kez");
     },
     [](Example& e) {
       showImage(e, e.image(2, 2), true);
       e.reopen("HXImageStoreEntry.key", "HXImageStoreEntry.key");
     }},
    {Code::lostValue,
     [](Example& e) {
       setValue(*e.add("HXRClampNode"), "Tarn.minimumInput", number(3));
       e.reopen("HXRClampNode", "HXRDeltaNode");
     },
     [](Example& e) {
       setValue(*e.add("HXRClampNode"), "Tarn.valueInput", number(3));  // Delta has it, too
       e.reopen("HXRClampNode", "HXRDeltaNode");
     }},
    {Code::lostWire,
     [](Example& e) {
       e.connect(*e.add("HXRPulseNode"), "Tarn.pulseOutput", *e.add("HXRClampNode"),
                 "Tarn.minimumInput");
       e.reopen("HXRClampNode", "HXRDeltaNode");
     },
     [](Example& e) {
       e.connect(*e.add("HXRPulseNode"), "Tarn.pulseOutput", *e.add("HXRClampNode"),
                 "Tarn.valueInput");
       e.reopen("HXRClampNode", "HXRDeltaNode");
     }},
    {Code::lostPublication,
     [](Example& e) {
       Published published(e);
       published.group->subnodeGroup()->addSymbolicPortForPort(
           Example::port(*published.inner, "Tarn.minimumInput"));
       e.reopen("HXRClampNode", "HXRDeltaNode");
     },
     [](Example& e) {
       Published published(e);
       published.group->subnodeGroup()->addSymbolicPortForPort(
           Example::port(*published.inner, "Tarn.valueInput"));
       published.group->subnodeGroup()->removeSymbolicPort(*published.port);
       e.reopen("HXRClampNode", "HXRDeltaNode");
     }},
    {Code::lostNode,
     [](Example& e) {
       e.add("HXRClampNode", e.add("HXRViewNode").get());
       e.reopen("HXRViewNode", "HXRMathNode");
     },
     [](Example& e) {
       e.add("HXRViewNode");
       e.reopen("HXRViewNode", "HXRMathNode");
     }},

    // Wires.
    {Code::wireKind,
     [](Example& e) {
       e.connect(*e.add("HXRTouchInteractionNode"), "Tarn.interactionOutput",
                 *e.add("HXRClampNode"), "Tarn.valueInput");
     },
     [](Example& e) {
       e.connect(*e.add("HXRTouchInteractionNode"), "Tarn.interactionOutput", *e.add("HXRViewNode"),
                 "Tarn.interactionInput");
     }},
    {Code::wireHalf,
     [](Example& e) {
       const Pair pair(e);
       auto wire = e.document->connectPort(pair.output(), pair.input());
       pair.input().disconnectConnection(*wire);
     },
     [](Example& e) {
       const Pair pair(e);
       e.document->connectPort(pair.output(), pair.input());
       e.document->connectPort(pair.output(), pair.input());  // the input has one, told otherwise
     }},
    {Code::wireNowhere,
     [](Example& e) {
       const Pair pair(e);
       const auto gone = e.stray("HXRClampNode");
       e.kept.push_back(gone);
       e.document->connectPort(pair.output(), Example::port(*gone, "Tarn.valueInput"));
     },
     [](Example& e) {
       const Pair pair(e);
       e.document->connectPort(pair.output(), pair.input());
     }},
    {Code::wireUnseen,
     [](Example& e) {
       const Pair pair(e);
       const auto gone = make<HXSymbolicPort>(&pair.output(), pair.from.get(), HXOrientationOutput,
                                              HXConnectionRelationshipMany);
       auto wire = make<HXConnection>(&pair.output(), &pair.input(), gone.get(), &pair.input());
       e.document->restoreConnection(*wire);
     },
     [](Example& e) { Published(e).read(e); }},
    {Code::wireElsewhere,
     [](Example& e) {
       const Pair pair(e);
       auto& other = Example::port(*pair.to, "Tarn.minimumInput");
       auto wire = make<HXConnection>(&pair.output(), &pair.input(), &pair.output(), &other);
       e.document->restoreConnection(*wire);
     },
     [](Example& e) { Published(e).read(e); }},
    {Code::wireAcrossGroups,
     [](Example& e) {
       const Published published(e);
       e.document->connectPort(Example::port(*published.inner, "Tarn.resultOutput"),
                               *published.reader->portForKey("Tarn.valueInput"));
     },
     [](Example& e) { Published(e).read(e); }},
    {Code::wireCircle,
     [](Example& e) {
       const Pair pair(e);
       e.document->connectPort(pair.output(), pair.input());
       e.connect(*pair.to, "Tarn.resultOutput", *pair.from, "Tarn.valueInput");
     },
     [](Example& e) {  // the state's wire runs backward
       const auto out = e.add("HXRStateOutputNode"), in = e.add("HXRStateInputNode");
       e.connect(*out, "Tarn.valueOutput", *in, "Tarn.valueInput");
       e.connect(*out, "Tarn.stateInput", *in, "Tarn.stateOutput");
     }},
    {Code::inputJoinedTwice,
     [](Example& e) {
       const Pair pair(e);
       e.document->connectPort(pair.output(), pair.input());
       e.connect(*e.add("HXRClampNode"), "Tarn.resultOutput", *pair.to, "Tarn.valueInput");
     },
     [](Example& e) {  // a view takes any number of gestures
       const auto view = e.add("HXRViewNode");
       e.connect(*e.add("HXRPanGestureNode"), "Tarn.gestureOutput", *view, "Tarn.gestureInput");
       e.connect(*e.add("HXRPanGestureNode"), "Tarn.gestureOutput", *view, "Tarn.gestureInput");
     }},
    {Code::outputJoinedTwice,
     [](Example& e) {
       const auto pan = e.add("HXRPanGestureNode");
       e.connect(*pan, "Tarn.gestureOutput", *e.add("HXRViewNode"), "Tarn.gestureInput");
       e.connect(*pan, "Tarn.gestureOutput", *e.add("HXRViewNode"), "Tarn.gestureInput");
     },
     [](Example& e) {
       const auto pan = e.add("HXRPanGestureNode");
       const auto first = e.add("HXRClampNode"), second = e.add("HXRClampNode");
       e.connect(*pan, "Tarn.xPanOutput", *first, "Tarn.valueInput");
       e.connect(*pan, "Tarn.xPanOutput", *second, "Tarn.valueInput");
     }},

    // Published ports.
    {Code::publicationNowhere,
     [](Example& e) {
       const auto group = e.add("");
       const auto gone = e.stray("HXRClampNode");
       const auto port = make<HXSymbolicPort>(&Example::port(*gone, "Tarn.resultOutput"), nullptr,
                                              HXOrientationOutput, HXConnectionRelationshipMany);
       group->subnodeGroup()->restoreSymbolicPort(*port);
     },
     [](Example& e) { const Published published(e); }},
    {Code::publicationForeign,
     [](Example& e) {
       const auto group = e.add("");
       const auto outside = e.add("HXRClampNode");
       group->subnodeGroup()->addSymbolicPortForPort(Example::port(*outside, "Tarn.resultOutput"));
     },
     [](Example& e) { const Published published(e); }},
    {Code::publicationTwice,
     [](Example& e) {
       const Published published(e);
       published.group->subnodeGroup()->addSymbolicPortForPort(
           Example::port(*published.inner, "Tarn.resultOutput"));
     },
     [](Example& e) {  // at two levels
       const Published published(e);
       e.document->subnodeGroup()->addSymbolicPortForPort(*published.port);
     }},
    {Code::publicationSameName,
     [](Example& e) {
       const Published published(e);
       const auto second = published.group->subnodeGroup()->addSymbolicPortForPort(
           Example::port(*e.add("HXRClampNode", published.group.get()), "Tarn.resultOutput"));
       second->setName(published.port->name());
     },
     [](Example& e) {  // an input and an output
       const Published published(e);
       const auto second = published.group->subnodeGroup()->addSymbolicPortForPort(
           Example::port(*published.inner, "Tarn.valueInput"));
       second->setName(published.port->name());
     }},
    {Code::publicationNoName, [](Example& e) { Published(e).port->setName(""); },
     [](Example& e) { Published(e).port->setName("x"); }},
    {Code::publicationAtTop,
     [](Example& e) {
       e.document->subnodeGroup()->addSymbolicPortForPort(
           Example::port(*e.add("HXRClampNode"), "Tarn.resultOutput"));
     },
     [](Example& e) { const Published published(e); }},
    {Code::publicationUnused, [](Example& e) { const Published published(e); },
     [](Example& e) { Published(e).read(e); }},

    // Values.
    {Code::parameterBounds,
     [](Example& e) {
       as<HXIndexParameter>(
           e.add("HXRMultiplexerNode")->parameterForKey("Tarn.numberOfSourcesParameter"))
           ->setValue(101);
     },
     [](Example& e) {
       as<HXIndexParameter>(
           e.add("HXRMultiplexerNode")->parameterForKey("Tarn.numberOfSourcesParameter"))
           ->setValue(100);
     }},
    {Code::valueNoChoice,
     [](Example& e) {
       setValue(*e.add("HXRPulseNode"), "Tarn.modeInput", PMRPrimitive::primitiveWithIndexValue(3));
     },
     [](Example& e) { setValue(*e.add("HXRPulseNode"), "Tarn.modeInput", number(2)); }},
    {Code::valueNoNumber,
     [](Example& e) { setValue(*e.add("HXRClampNode"), "Tarn.valueInput", number(kNaN)); },
     [](Example& e) { setValue(*e.add("HXRClampNode"), "Tarn.valueInput", text("nan")); }},
    {Code::valueNoNumberText,
     [](Example& e) { setValue(*e.add("HXRViewNode"), "Tarn.widthInput", text("wide")); },
     [](Example& e) { setValue(*e.add("HXRViewNode"), "Tarn.widthInput", text(" \r-1.5 px")); }},
    {Code::valueColor,
     [](Example& e) {
       setValue(*e.add("HXRColorViewNode"), "Tarn.colorInput",
                PMRPrimitive::primitiveWithColorValue({0, 1, 1.01F, 1}));
     },
     [](Example& e) {
       setValue(*e.add("HXRColorViewNode"), "Tarn.colorInput",
                PMRPrimitive::primitiveWithColorValue({0, 1, 0.5F, 1}));
     }},

    // Expressions.
    {Code::expressionSyntax, [](Example& e) { expression(e, "($a + 1"); },
     [](Example& e) { expression(e, "($a + 1)"); }},
    {Code::expressionFunction, [](Example& e) { expression(e, "foo($a)"); },
     [](Example& e) { expression(e, "avg($a, 2)"); }},
    {Code::expressionArguments, [](Example& e) { expression(e, "sin($a, 2)"); },
     [](Example& e) { expression(e, "random($a, $b)"); }},
    {Code::expressionNames, [](Example& e) { expression(e, "$width + $Width"); },
     [](Example& e) { expression(e, "$width + $width + sin($widths)"); }},
    {Code::expressionEmpty, [](Example& e) { expression(e, " \n"); },
     [](Example& e) { expression(e, "0"); }},
    {Code::expressionConstant, [](Example& e) { expression(e, "2 * pi"); },
     [](Example& e) { expression(e, "2 * $pi"); }},
    {Code::scriptFunction, [](Example& e) { script(e, "function expressions(a) { return a; }"); },
     [](Example& e) { script(e, "Function\n expression (a) { return a; }"); }},
    {Code::scriptNames, [](Example& e) { script(e, "function expression(a, b, a) {}"); },
     [](Example& e) { script(e, "function expression(a, b, aa) {}"); }},

    // Structure.
    {Code::patchUnknown,
     [](Example& e) {
       e.add("HXRClampNode");
       e.reopen("HXRClampNode", "HXRClampNodf");
     },
     [](Example& e) {
       e.add("HXRClampNode");
       e.reopen("HXRClampNode", "HXRDeltaNode");
     }},
    {Code::patchMissing, [](Example& e) { e.add(nullptr); }, [](Example& e) { e.add(""); }},
    {Code::patchRetired, [](Example& e) { e.add("HXRFamousNode"); },
     [](Example& e) { e.add("HXRTurnDownForNode"); }},
    {Code::groupEmpty, [](Example& e) { e.add("", e.add("").get()); },
     [](Example& e) { e.add("HXRClampNode", e.add("").get()); }},
    {Code::containerEmpty, [](Example& e) { e.add("HXRReplicatorNode"); },
     [](Example& e) { e.add("HXRViewNode"); }},
    {Code::documentEmpty, [](Example&) {}, [](Example& e) { e.add(""); }},
    {Code::nodeUnread, [](Example& e) { e.add("HXRClampNode"); },
     [](Example& e) { e.add("HXRStatusBarNode"); }},
    {Code::inputMissing, [](Example& e) { e.add("HXRImageViewNode"); },
     [](Example& e) {
       e.connect(*e.add("HXRImageNode"), "Tarn.imageOutput", *e.add("HXRImageViewNode"),
                 "Tarn.imageInput");
     }},
    {Code::variablesOutside, [](Example& e) { e.add("HXRReplicatorVariablesNode"); },
     [](Example& e) {
       e.add("HXRReplicatorVariablesNode", e.add("", e.add("HXRReplicatorNode").get()).get());
     }},
    {Code::stateUnpaired, [](Example& e) { e.add("HXRStateInputNode"); },
     [](Example& e) {
       e.connect(*e.add("HXRStateOutputNode"), "Tarn.stateInput", *e.add("HXRStateInputNode"),
                 "Tarn.stateOutput");
     }},
    {Code::viewNeverShown,
     [](Example& e) { setValue(*e.add("HXRViewNode"), "Tarn.opacityInput", number(0)); },
     [](Example& e) {
       const auto view = e.add("HXRViewNode");
       setValue(*view, "Tarn.opacityInput", number(0));
       e.connect(*e.add("HXRClampNode"), "Tarn.resultOutput", *view, "Tarn.opacityInput");
     }},
    {Code::viewUnlisted,
     [](Example& e) {
       e.add("HXRViewNode");
       e.add("HXRTransitionNode");
       e.reopen("HXRTransitionNode", "HXRCircleViewNode");
     },
     [](Example& e) { e.add("HXRViewNode"); }},
    {Code::keyTwice,
     [](Example& e) {
       const auto clamp = e.add("HXRClampNode");
       const auto other = openedDocument(savedBytes(*e.document, HXCodingTypeEditorWithKeys),
                                         HXCodingTypeEditorWithKeys);
       e.add("")->subnodeGroup()->addNode(
           *other->subnodeGroup()->subnodeForKey(clamp->uniqueKey()));
     },
     [](Example& e) {
       e.add("HXRClampNode");
       e.add("HXRClampNode", e.add("").get());
     }},
    {Code::nameUnreadable, [](Example& e) { e.add("HXRClampNode")->setName("a\nb"); },
     [](Example& e) { e.add("HXRClampNode")->setName("ä 🙂"); }},
    {Code::positionNoNumber,
     [](Example& e) {
       e.add("HXRClampNode")->setPosition({1, kNaN});
     },
     [](Example& e) {
       e.add("HXRClampNode")->setPosition({1, 1e30F});
     }},
    {Code::positionFar,
     [](Example& e) {
       e.add("HXRClampNode")->setPosition({0, 100'001});
     },
     [](Example& e) {
       e.add("HXRClampNode")->setPosition({0, -100'000});
     }},
    {Code::positionShared,
     [](Example& e) { e.add("HXRClampNode")->setPosition(e.add("HXRClampNode")->position()); },
     [](Example& e) {
       const auto group = e.add("");
       e.add("HXRClampNode", group.get())->setPosition(group->position());
     }},

    // Images.
    {Code::imageAbsent, [](Example& e) { showImage(e, e.image(2, 2), false); },
     [](Example& e) { showImage(e, e.image(2, 2), true); }},
    {Code::imageUnused, [](Example& e) { e.document->imageStore()->addImageEntry(e.image(2, 2)); },
     [](Example& e) { showImage(e, e.image(2, 2), true); }},
    {Code::imageUnchosen, [](Example& e) { e.add("HXRImageNode"); },
     [](Example& e) { showImage(e, e.image(2, 2), true); }},
    {Code::imageEmpty,
     [](Example& e) { showImage(e, make<HXImageStoreEntry>(nullptr, "empty"), true); },
     [](Example& e) { showImage(e, e.image(1, 1), true); }},
    {Code::imageLarge, [](Example& e) { showImage(e, e.image(4097, 1), true); },
     [](Example& e) { showImage(e, e.image(4096, 1), true); }},
    {Code::imageKey,
     [](Example& e) {
       showImage(e, make<HXImageStoreEntry>(e.image(2, 2)->image(), "../key"), true);
     },
     [](Example& e) {
       showImage(e, make<HXImageStoreEntry>(e.image(2, 2)->image(), "..key"), true);
     }},

    // The device.
    {Code::deviceValue,
     [](Example& e) { setValue(*e.add("HXRImageViewNode"), "Tarn.imageInput", text("sea.png")); },
     [](Example& e) { setValue(*e.add("HXRImageViewNode"), "Tarn.widthInput", number(3)); }},
    {Code::deviceParameter,
     [](Example& e) {
       e.add("HXRMultiplexerNode")->setPatch(patchClassNamed("HXRArrayNode")->makeDefinition());
     },
     [](Example& e) {
       e.add("HXRArrayNode")->setPatch(patchClassNamed("HXRArrayValuesNode")->makeDefinition());
     }},
};

}  // namespace

std::span<const CheckRow> checkRows() { return kRows; }

}  // namespace tarnkit::test
