#pragma once

#include <string_view>

#include "tarnkit/platform/text/JSONWriter.h"

namespace tarnkit::tool {

/// How a script is performed.
struct SessionRun {
  enum class Output : unsigned char {
    /// One line for each operation that has a result: its number, its name and the result.
    results,
    /// The results as one JSON array, with the number and the name of each operation.
    json,
    /// JSON lines: every notification, every line logged, and the result of every operation.
    trace,
  };
  Output output = Output::results;
  /// Whether operations may read and write files.
  bool allowsFiles = true;
  /// Whether the changes of documents are recorded, to be undone.
  bool recordsHistory = false;

  /// Performs the operations of the script one after the other, in a session of its own that ends
  /// with the run. The first that cannot be performed ends it with a CommandFailure that names its
  /// number, what it does and why; what was written before is written.
  void perform(std::string_view script, const JSONWriter::Sink& sink) const;
};

}  // namespace tarnkit::tool
