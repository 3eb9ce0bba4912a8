// What docs/building-an-editor.md shows of files, threads and ownership.
#include <cstdio>
#include <thread>
#include <utility>
#include <vector>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/compare/HXOpeningRecord.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/system/Bundle.h"

using namespace tarnkit;

namespace {

// region save
// Whole or not at all: a failure leaves the old file as it was. Type 3 keeps the keys of the nodes,
// so that the document can be compared and merged.
bool save(const HXDocument& document, const std::string& path) {
  const Status status = HXDocumentFile::save(document, path, HXCodingTypeEditorWithKeys);
  if (status) return true;
  std::printf("%s\n", status.message().c_str());  // "PATH: SENTENCE", for the user
  return false;
}
// end save

// region open
// What the file has and this program cannot keep is told while the document is opened: before the
// next save would destroy it.
Ref<HXDocument> open(const std::string& path) {
  HXOpeningRecord record;  // takes the log until it ends
  const auto document = HXDocumentFile::open(path, HXCodingTypeEditorWithKeys, record.losses());
  record.end();
  if (!document) {
    std::printf("%s (%s)\n", document.status().message().c_str(),
                nameOf(document.status().code()).data());
    return nullptr;
  }
  for (const HXNodeLosses& losses : std::as_const(record).losses()) {
    for (const HXNodeItem& item : losses.dropped) {
      std::printf("%s loses %s\n", losses.node->name().toStdString().c_str(),
                  item.description().c_str());
    }
  }
  for (const std::string& line : record.mended()) std::printf("%s\n", line.c_str());
  return *document;
}
// end open

// region send
// The application's version stands in what is sent.
void describe() {
  Bundle::mainBundle().setInfoDictionary(
      {{"CFBundleShortVersionString", String("2.1.0").object()}});
}

bool send(const HXDocument& document) {
  const auto graph = HXDocumentFile::deviceGraph(document);  // bytes, for a connection
  if (!graph) return false;
  const auto images = HXDocumentFile::sendImages(document, "images");  // one archive each
  return images.isOK();
}
// end send

// region threads
// A document is for one thread at a time; different documents may be in different ones.
std::size_t openAll(const std::vector<std::string>& paths) {
  std::vector<Ref<HXDocument>> documents(paths.size());
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    threads.emplace_back([&, i] {
      auto opened = HXDocumentFile::open(paths[i], HXCodingTypeEditorWithKeys);
      if (opened) documents[i] = *opened;
    });
  }
  for (auto& thread : threads) thread.join();
  std::size_t count = 0;
  for (const auto& document : documents) count += document ? 1 : 0;
  return count;
}
// end threads

}  // namespace

int main() {
  describe();
  auto document = make<HXDocument>();
  const auto add = [&](const char* patch) {
    document->subnodeGroup()->addNode(*HXNode::makeForPatch(*patchClassNamed(patch)));
  };
  add("HXRClampNode");
  add("HXRColorViewNode");
  if (!save(*document, "cookbook.document") || !send(*document)) return 1;
  if (save(*document, "/nowhere/cookbook.document")) return 1;
  if (!open("cookbook.document") || open("missing.document")) return 1;
  if (openAll({"cookbook.document", "cookbook.document", "missing.document"}) != 2) return 1;

  // region ownership
  // Documents own nodes, nodes own ports and groups; every reference upward is weak. Whoever wants
  // a node to outlive its removal holds a Ref, whoever only wants to know a WeakRef.
  Ref<HXNode> held = document->subnodeGroup()->subnodes().front();
  WeakRef<HXNode> known = document->subnodeGroup()->subnodes().back();
  document = nullptr;  // the last Ref of the document
  std::printf("held: %s, known: %s\n", held->name().toStdString().c_str(),
              known.lock() ? "still there" : "gone");
  // end ownership
  return !known.lock() && !held->document() ? 0 : 1;
}
