// Three random descendants of one document: what leads from one to the other leads there, merges
// keep their laws, and what comes out can be saved, opened and sent.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz/model/ModelEditor.h"
#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/compare/HXDocumentDifference.h"
#include "tarnkit/compare/HXDocumentMerge.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/platform/system/Log.h"
#include "tests/model/Consistency.h"

namespace {

using namespace tarnkit;

void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

std::vector<std::uint8_t> saved(const HXDocument& document) {
  auto bytes = HXDocumentFile::dataWithDocument(document, HXCodingTypeEditorWithKeys);
  require(static_cast<bool>(bytes), "a document cannot be saved");
  return *std::move(bytes);
}

Ref<HXDocument> settled(const HXDocument& document) {
  auto opened = HXDocumentFile::document(saved(document), HXCodingTypeEditorWithKeys);
  require(static_cast<bool>(opened), "a document cannot be opened");
  return *std::move(opened);
}

void checkDifference(const HXDocument& from, const HXDocument& to) {
  const auto document = settled(from);
  const HXDocumentDifference difference(*document, to);
  require(static_cast<bool>(difference.applyTo(*document)), "a difference cannot be applied");
  if (difference.matching().isByKeys()) {
    require(saved(*document) == saved(to), "a difference leads elsewhere");
  } else {  // nodes keep the keys that they have
    require(HXDocumentDifference(*document, to, HXNodeMatching::Keys::ignored).isEmpty(),
            "a difference leaves something");
  }
}

Ref<HXDocument> merged(const HXDocument& base, const HXDocument& ours, const HXDocument& theirs) {
  auto outcome = HXDocumentMerge::merge(base, ours, theirs);
  require(static_cast<bool>(outcome), "documents cannot be merged");
  return outcome->document;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const bool quiet = !std::getenv("TARNKIT_FUZZ_LOG");
  const auto earlier = quiet ? Log::setSink([](std::string_view) {}) : nullptr;
  Ref<HXDocument> documents[3];
  bool fits = true;
  for (std::size_t i = 0; i < 3; ++i) {
    const auto edited = i == 0 ? make<HXDocument>() : settled(*documents[0]);
    // Half of the bytes make the base, a quarter each the branches.
    const std::size_t begin = i == 0 ? 0 : size / 2 + (i - 1) * (size / 4);
    const std::size_t end = i == 0 ? size / 2 : begin + size / 4;
    fuzz::ModelEditor editor(data + begin, end - begin);
    editor.setPaused(true);
    editor.keepTo(*edited);
    while (editor.runOne()) {
    }
    documents[i] = settled(*edited);
    fits = fits && HXDocumentState(*documents[i]).fitsTogether;
  }
  const auto& [base, ours, theirs] = documents;
  if (fits) {
    checkDifference(*base, *ours);
    checkDifference(*ours, *theirs);
    require(saved(*merged(*base, *ours, *base)) == saved(*ours), "merge(b, o, b) is not o");
    require(saved(*merged(*base, *base, *theirs)) == saved(*theirs), "merge(b, b, t) is not t");
    require(saved(*merged(*base, *ours, *ours)) == saved(*ours), "merge(b, x, x) is not x");
    for (const auto& one : {merged(*base, *ours, *theirs), merged(*base, *theirs, *ours)}) {
      for (const auto& fault : test::faultsOf(*one)) require(false, fault.c_str());
      settled(*one);
      require(static_cast<bool>(HXDocumentFile::deviceGraph(*one)), "a merge cannot be sent");
    }
  }
  if (quiet) Log::setSink(earlier);
  return 0;
}
