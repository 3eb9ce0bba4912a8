// A plug-in that wishes its host ill: names with markup, control characters and other scripts, and
// a help page of any name, taken from the environment. Two of its patches mean well: they have all
// their ports on one side.
#include <cstdlib>
#include <vector>

#include "tarnkit/patches/HXRPluginEntry.h"
#include "tarnkit/patches/PatchDeclaration.h"

namespace {

using namespace tarnkit;

constexpr const char* kHiddenGroups[] = {"<b>Group</b> & \"more\"", nullptr};

const HXRNodeClass hostileNode{"Hostile<Node> \"&1",
                               &HXRNode::kClass,
                               {.defaultName = "</title><script>alert(1)</script>",
                                .libraryCategory = "\"><img src=x> مرحبا\x01",
                                .libraryDescription = std::getenv("HOSTILE_HELP_PAGE"),
                                .processClassName = "<Hostile & Patch>",
                                .hiddenPortGroupKeys = kHiddenGroups},
                               [](PatchDeclaration& patch) {
                                 patch.in("<i>量</i>", "Hostile.\"amount\"Input",
                                          value::string("</code>\x02\n</pre>"));
                                 patch.group("<b>Group</b> & \"more\"");
                                 auto& choice = patch.in("", "Hostile.<choice>", value::index(1));
                                 choice.mapValue(value::index(1), "<one>");
                                 choice.mapValue(value::index(2), "");
                                 patch.group();
                                 patch.parameter("\x7F<p>", "Hostile.parameter", "<textarea>");
                                 patch.out("&amp;", "Hostile.output");
                               }};

const HXRNodeClass namelessNode{"NamelessNode", &hostileNode, {.defaultName = " "}};

const HXRNodeClass listeningNode{"ListeningNode",
                                 &HXRNode::kClass,
                                 {.defaultName = "Listening", .libraryCategory = "AZaz09 é-"},
                                 [](PatchDeclaration& patch) {
                                   patch.in("One", "Listening.one");
                                   patch.in("Two", "Listening.two");
                                   patch.in("Three", "Listening.three");
                                   patch.in("Four", "Listening.four");
                                   patch.in("Five", "Listening.five");
                                   patch.parameter("Loud", "Listening.loud", false);
                                   patch.parameter("Near", "Listening.near", false);
                                 }};

const HXRNodeClass tellingNode{
    "TellingNode", &HXRNode::kClass, {.defaultName = "Telling"}, [](PatchDeclaration& patch) {
      patch.out("One", "Telling.one");
      patch.out("Two", "Telling.two");
      patch.out("Three", "Telling.three");
      patch.out("Four", "Telling.four");
      patch.out("Five", "Telling.five");
      patch.out("Six", "Telling.six");
    }};

class HostilePlugin final : public HXRPlugin {
 public:
  std::vector<const HXRNodeClass*> nodeClasses() const override {
    return {&hostileNode, &namelessNode, &listeningNode, &tellingNode};
  }
};

}  // namespace

const HXRPluginEntry tarnkitPluginEntry = pluginEntry<HostilePlugin>();
