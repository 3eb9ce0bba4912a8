#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit::test {

/// Records what is posted and logged while it lives: "NAME key=value …" with the user info in
/// order, objects by their unique keys.
class Recorder {
 public:
  Recorder();
  ~Recorder();
  /// The lines so far, which are then forgotten.
  std::vector<std::string> take() { return std::exchange(lines_, {}); }
  std::vector<std::string> takeLog() { return std::exchange(log_, {}); }

 private:
  Log::Sink earlier_;
  std::vector<std::string> lines_;
  std::vector<std::string> log_;
  NotificationCenter::Observation observation_;
};

/// The document as bytes, and bytes as a document; that either fails is a failure of the test.
std::vector<std::uint8_t> savedBytes(const HXDocument& document, std::int32_t codingType = 0);
Ref<HXDocument> openedDocument(ByteSpan bytes, std::int32_t codingType = 0);

/// A document with nodes that are made by patch class name.
class ModelTest : public ::testing::Test {
 protected:
  ModelTest() : document(make<HXDocument>()) { document->setName("Top"); }

  /// A node of the patch in the group (by default the top-level one); of "" a node that holds a
  /// group.
  Ref<HXNode> add(const char* patchClass, HXNode* to = nullptr);
  static Ref<HXNode> nodeOf(const char* patchClass);
  static HXPatchPort& port(HXNode& node, const char* key);
  Ref<HXConnection> connect(HXNode& from, const char* output, HXNode& to, const char* input);
  /// What comes back of the document when it is saved and opened again.
  static Ref<HXDocument> reopened(const HXDocument& document, std::int32_t codingType = 0);
  /// The subnode of that name.
  static Ref<HXNode> named(const HXNode& parent, const char* name);
  /// The keys of the ports as shown.
  static std::vector<std::string> keys(const std::vector<Ref<HXPort>>& ports);

  Ref<HXDocument> document;
};

}  // namespace tarnkit::test
