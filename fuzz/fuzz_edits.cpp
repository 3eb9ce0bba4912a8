// Edits of a document, with observers that edit it once more while they are told: whatever goes in
// the middle of whatever, everything must fit together in the end, and be saved and opened.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz/model/ModelEditor.h"
#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/platform/system/Log.h"
#include "tests/model/Consistency.h"

namespace {

using namespace tarnkit;

void requireNone(const std::vector<std::string>& faults, const char* where) {
  for (const auto& fault : faults) std::fprintf(stderr, "%s: %s\n", where, fault.c_str());
  if (!faults.empty()) std::abort();
}

std::size_t nodeCount(const HXDocument& document) {
  std::vector<const HXNode*> all{&document};
  for (std::size_t at = 0; at < all.size(); ++at) {
    if (!all[at]->subnodeGroup()) continue;
    for (const auto& entry : all[at]->subnodeGroup()->subnodesInForce()) {
      all.push_back(entry.value.get());
    }
  }
  return all.size();
}

void checkRoundTrip(const HXDocument& document, const test::Leniency& leniency) {
  for (const auto codingType : {HXCodingTypeEditor, HXCodingTypeEditorWithKeys}) {
    const auto bytes = HXDocumentFile::dataWithDocument(document, codingType);
    if (!bytes) requireNone({bytes.status().message()}, "saving");
    const auto opened = HXDocumentFile::document(*bytes, codingType);
    if (!opened) requireNone({opened.status().message()}, "opening");
    requireNone(test::faultsOf(**opened, leniency), "opened");
    if (nodeCount(**opened) != nodeCount(document)) requireNone({"nodes are missing"}, "opened");
  }
  const auto graph = HXDocumentFile::deviceGraph(document);
  if (!graph) requireNone({graph.status().message()}, "sending");
}

// How much was done stands beside libFuzzer's own count of runs.
struct Report {
  ~Report() {
    std::fprintf(stderr, "%llu edits\n",
                 static_cast<unsigned long long>(fuzz::ModelEditor::editCount()));
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Report report;
  const auto earlier = Log::setSink([](std::string_view) {});
  {
    fuzz::ModelEditor editor(data, size);
    editor.run();
    if (const auto& document = editor.document()) {
      const test::Leniency leniency{.doublePublications = editor.doublePublications()};
      requireNone(test::faultsOf(*document, leniency), "edited");
      checkRoundTrip(*document, leniency);
    }
  }
  Log::setSink(earlier);
  return 0;
}
