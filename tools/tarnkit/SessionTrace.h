#pragma once

#include <cstdint>
#include <string_view>

#include "tarnkit/platform/system/Log.h"
#include "tarnkit/platform/system/NotificationCenter.h"

namespace tarnkit {
class JSONWriter;
}

namespace tarnkit::tool {

/// Writes what happens during a session, as JSON lines: every notification that the model posts and
/// every line that it logs, under the number of the operation that is being performed.
///
/// Observes from its making to its end; while there is none, nobody observes and lines go to the
/// log. One at a time; for one thread.
class SessionTrace {
 public:
  explicit SessionTrace(JSONWriter& json);
  ~SessionTrace();
  SessionTrace(const SessionTrace&) = delete;
  SessionTrace& operator=(const SessionTrace&) = delete;

  void setOperation(std::uint64_t number) noexcept { operation_ = number; }

 private:
  void write(const Notification& notification);
  void write(std::string_view logLine);

  JSONWriter& json_;
  std::uint64_t operation_ = 0;
  NotificationCenter::Observation observation_;
  Log::Sink formerSink_;
};

}  // namespace tarnkit::tool
