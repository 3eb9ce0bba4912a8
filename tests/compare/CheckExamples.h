#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <span>
#include <vector>

#include "tarnkit/compare/HXDocumentCheck.h"
#include "tarnkit/compare/HXOpeningRecord.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXPatchPort.h"

namespace tarnkit::test {

/// A small document in the making.
struct CheckExample {
  Ref<HXDocument> document = make<HXDocument>();
  /// What opening it has told, where it comes from a file.
  std::unique_ptr<HXOpeningRecord> opening;
  /// What has to live as long as the document.
  std::vector<Ref<Object>> kept;

  /// A node of the patch; of "" a group, of nullptr a node without a patch. Each stands at a place
  /// of its own.
  Ref<HXNode> add(const char* patch, HXNode* to = nullptr);
  /// Not in the document.
  Ref<HXNode> stray(const char* patch);
  static HXPatchPort& port(HXNode& node, const char* key);
  Ref<HXConnection> connect(HXNode& from, const char* output, HXNode& to, const char* input);
  void setText(HXNode& node, const char* parameter, const char* text);
  Ref<HXImageStoreEntry> image(std::uint32_t width, std::uint32_t height) const;
  /// The document as it comes back from a file in which one text stands for another one of the same
  /// length.
  void reopen(std::string_view text, std::string_view other);

  int placed = 0;
};

/// A document in which a code is found, and one where it almost is.
struct CheckRow {
  HXFindingCode code;
  void (*shows)(CheckExample& example);
  void (*almost)(CheckExample& example);
};

/// One for each code, but for the one of files that cannot be read.
std::span<const CheckRow> checkRows();

}  // namespace tarnkit::test
