// A plug-in with the fault that the environment asks for. Before the faulty class it brings a good
// one, which must not come in either.
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "tarnkit/patches/HXRPluginEntry.h"
#include "tarnkit/patches/PatchRegistry.h"

namespace {

using namespace tarnkit;

std::string_view fault() {
  const char* const text = std::getenv("FAULTY_PLUGIN");
  return text ? text : "";
}

const HXRNodeClass goodNode{"GoodNode", &HXRNode::kClass, {.libraryCategory = "Utility"}};

// As in a plug-in that has taken a copy of the library into itself.
const HXRNodeClass ownRoot{"HXRNode", nullptr, {}};

class FaultyPlugin final : public HXRPlugin {
 public:
  std::vector<const HXRNodeClass*> nodeClasses() const override {
    if (fault() == "nothing") return {};
    if (fault() == "throws") throw std::runtime_error("not\ntoday");
    if (fault() == "derived") return {derivedFrom("WiggleNode")};
    if (fault() == "baseless") return {&goodNode, derivedFrom("NoSuchNode")};
    if (fault() == "impostor") {
      static const HXRNodeClass impostor("HXRClampNode", &HXRNode::kClass, {});
      static const HXRNodeClass derived("DerivedNode", &impostor, {});
      return {&goodNode, &derived};
    }
    if (fault() == "twokeys") {
      static const HXRNodeClass twoKeys("TwoKeysNode", &HXRNode::kClass, {},
                                        [](PatchDeclaration& patch) {
                                          patch.in("One", "Faulty.key");
                                          patch.out("Other", "Faulty.key");
                                        });
      return {&goodNode, &twoKeys};
    }
    if (fault() == "known") return {&goodNode, patchClassNamed("HXRClampNode")};
    static const HXRNodeClass named(fault().data(), &HXRNode::kClass, {});
    return {&goodNode, &named};
  }

 private:
  static const HXRNodeClass* derivedFrom(const char* name) {
    static const HXRNodeClass derived(
        "DerivedNode", patchClassNamed(name), {.defaultName = "Derived"},
        [](PatchDeclaration& patch) { patch.out("More", "Derived.more"); });
    return &derived;
  }
};

HXRPluginEntry faultyEntry() {
  auto entry = pluginEntry<FaultyPlugin>();
  if (fault() == "mark") entry.mark[0] = 'T';
  if (fault() == "version") ++entry.version;
  if (fault() == "layout") ++entry.layout;
  if (fault() == "copy") entry.root = &ownRoot;
  return entry;
}

}  // namespace

const HXRPluginEntry tarnkitPluginEntry = faultyEntry();
