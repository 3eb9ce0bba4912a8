// Loads a plug-in with the installed library and makes one of its patches, or says why not.
#include <cstdio>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/patches/PluginLoader.h"

int main(int, char** arguments) {
  using namespace tarnkit;
  if (const auto status = loadPlugin(arguments[1]); !status) {
    std::printf("refused: %s\n", status.sentence().c_str());
    return 0;
  }
  const auto definition = patchClassNamed("ConsumersNode")->makeDefinition();
  std::puts(definition->portForKey("Consumers.output") ? "editor: ok" : "no port");
}
