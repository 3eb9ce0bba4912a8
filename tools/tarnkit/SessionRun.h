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

  /// Whether the run goes on behind an operation that cannot be performed.
  bool keepsGoing = false;

  /// Performs the operations of the script one after the other, in a session of its own that ends
  /// with the run, or at the operation "quit". The first that cannot be performed ends it with a
  /// CommandFailure that names its number, what it does and why; what was written before is
  /// written. One that keeps going writes `{"op","do","error"}` instead, and throws at the end.
  void perform(std::string_view script, const JSONWriter::Sink& sink) const;

  /// The same of standard input: operations that come line by line are performed as they come, and
  /// what there is to write is written when no more input waits.
  void performInput(const JSONWriter::Sink& sink) const;
};

}  // namespace tarnkit::tool
