// A plug-in that wishes its host ill: names with markup, control characters and other scripts, and
// a help page of any name, taken from the environment.
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

class HostilePlugin final : public HXRPlugin {
 public:
  std::vector<const HXRNodeClass*> nodeClasses() const override {
    return {&hostileNode, &namelessNode};
  }
};

}  // namespace

const HXRPluginEntry tarnkitPluginEntry = pluginEntry<HostilePlugin>();
