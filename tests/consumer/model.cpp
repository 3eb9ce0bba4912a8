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

  std::string reason;
  const auto bytes = HXDocumentFile::dataWithDocument(*document, 0, reason);
  const auto opened = HXDocumentFile::document(bytes, 0, reason);
  if (!opened || opened->subnodeGroup()->subnodes().size() != 1) {
    std::fprintf(stderr, "%s\n", reason.c_str());
    return 1;
  }
  std::puts(HXDocumentFile::deviceGraph(*opened).empty() ? "no device graph" : "model: ok");
}
