// Editing sessions from anywhere: a script may be refused at any operation, but the model must
// stand whatever it is told, and the trace must stay JSON lines. Bytes after a zero byte drive an
// observer that edits the document while it is told of the script's changes.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "fuzz/model/ModelEditor.h"
#include "tarnkit/model/HXModel.h"
#include "tests/model/Consistency.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/SessionRun.h"

namespace {

// Longer traces are not kept: a few operations can dump a document again and again.
constexpr std::size_t kLongestCheckedTrace = 1 << 20;

void checkLines(std::string_view trace) {
  while (!trace.empty()) {
    const auto end = trace.find('\n');
    if (end == std::string_view::npos) std::abort();
    const auto line = trace.substr(0, end);
    if (!nlohmann::json::accept(line.begin(), line.end())) std::abort();
    trace.remove_prefix(end + 1);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tarnkit;
  registerModelClasses();
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const auto script = input.substr(0, input.find('\0'));
  fuzz::ModelEditor editor(data + script.size(), size - script.size());
  tool::SessionRun run;
  run.recordsHistory = true;
  run.output = tool::SessionRun::Output::trace;
  run.allowsFiles = false;
  std::string trace;
  bool isWhole = true;
  try {
    run.perform(script, [&](std::string_view text) {
      isWhole = isWhole && trace.size() + text.size() <= kLongestCheckedTrace;
      if (isWhole) trace += text;
    });
  } catch (const tool::CommandFailure& failure) {
    if (std::string_view(failure.what()).empty()) std::abort();
  }
  editor.stop();
  if (isWhole) checkLines(trace);
  const test::Leniency leniency{
      .doublePublications = true, .refusedConnections = true, .foreignGroupKeys = true};
  if (!editor.document()) return 0;
  const auto faults = test::faultsOf(*editor.document(), leniency);
  for (const auto& fault : faults) std::fprintf(stderr, "%s\n", fault.c_str());
  if (!faults.empty()) std::abort();
  return 0;
}
