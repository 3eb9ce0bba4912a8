#include <fmt/format.h>

#include <atomic>
#include <set>
#include <thread>

#include "ModelFixture.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/patches/HXRNodeClass.h"

// Documents in several threads, each in its own. The preset `tsan` builds this program with
// ThreadSanitizer, which reports any access that is not ordered.

namespace tarnkit::test {

namespace {

constexpr int kThreads = 4;

// Every key that the document drew, and whether it came through saving and opening.
bool makeDocument(std::vector<std::string>& keys) {
  const auto document = make<HXDocument>();
  const auto group = make<HXNode>();
  group->setForceAllowsSubnodes(true);
  document->subnodeGroup()->addNode(*group);
  keys.push_back(document->documentKey().toStdString());
  keys.push_back(document->uniqueKey().toStdString());
  keys.push_back(group->subnodeGroup()->uniqueKey().toStdString());
  std::vector<Ref<HXNode>> nodes;
  for (const auto* record : catalogue()) {
    const auto node = HXNode::makeOfClass(record->nodeClassName().view());
    node->setPatch(record->makeDefinition());
    group->subnodeGroup()->addNode(*node);
    keys.push_back(node->uniqueKey().toStdString());
    nodes.push_back(node);
  }
  const auto clamp = make<HXNode>();
  clamp->setPatch(patchClassNamed("HXRClampNode")->makeDefinition());
  group->subnodeGroup()->addNode(*clamp);
  for (const auto& node : nodes) {
    if (node->outputPorts().empty()) continue;
    const auto connection =
        document->connectPort(*node->outputPorts()[0], *clamp->portForKey("Tarn.valueInput"));
    if (connection) keys.push_back(connection->uniqueKey().toStdString());
  }
  const auto published =
      group->subnodeGroup()->addSymbolicPortForPort(*clamp->portForKey("Tarn.minimumInput"));
  static const std::string longName(300, 'x');
  published->setName(String(fmt::format("{}: Least", longName)));
  const auto opened = openedDocument(savedBytes(*document, 0), 0);
  return opened && HXDocumentFile::deviceGraph(*opened).isOK();
}

}  // namespace

TEST(Threads, SeveralDocumentsEachInItsOwn) {
  std::vector<std::string> keys[kThreads];
  std::atomic<int> waiting{kThreads};
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (auto& own : keys) {
    threads.emplace_back([&] {
      --waiting;
      while (waiting.load() > 0) std::this_thread::yield();
      for (int i = 0; i < 3; ++i) failures += makeDocument(own) ? 0 : 1;
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(failures, 0);
  std::set<std::string> different;
  std::size_t all = 0;
  for (const auto& own : keys) {
    different.insert(own.begin(), own.end());
    all += own.size();
  }
  EXPECT_EQ(different.size(), all) << "two documents drew one key";
}

}  // namespace tarnkit::test
