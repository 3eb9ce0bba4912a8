// Writes a document and its device graph with the installed library and opens the document again.
#include <cstdio>

#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/patches/PatchRegistry.h"

int main() {
  using namespace tarnkit;
  const auto document = make<HXDocument>();
  const auto node = make<HXNode>();
  node->setPatch(patchClassNamed("HXRClampNode")->makeDefinition());
  document->subnodeGroup()->addNode(*node);

  const auto bytes = HXDocumentFile::dataWithDocument(*document, 0);
  const auto opened = HXDocumentFile::document(*bytes, 0);
  if (!opened || opened->subnodeGroup()->subnodes().size() != 1) {
    std::fprintf(stderr, "%s\n", opened.status().message().c_str());
    return 1;
  }
  std::puts(HXDocumentFile::deviceGraph(**opened) ? "model: ok" : "no device graph");
}
