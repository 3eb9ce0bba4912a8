// Loads a plug-in with the installed library and makes one of its patches, or says why not.
#include <cstdio>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/patches/PluginLoader.h"

int main(int, char** arguments) {
  using namespace tarnkit;
  std::string reason;
  if (!loadPlugin(arguments[1], reason)) {
    std::printf("refused: %s\n", reason.c_str());
    return 0;
  }
  const auto definition = patchClassNamed("ConsumersNode")->makeDefinition();
  std::puts(definition->portForKey("Consumers.output") ? "editor: ok" : "no port");
}
