#pragma once

namespace CLI {
class App;
}

namespace tarnkit::tool {

/// `tarnkit catalogue`: lists the patch definitions, plug-ins' included.
void addCatalogueCommand(CLI::App& app);

}  // namespace tarnkit::tool
