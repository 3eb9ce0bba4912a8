#pragma once

#include <string>
#include <vector>

#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/Output.h"

namespace tarnkit::tool {

/// Prints something of each file, for commands that take one as well as several. `print` takes the
/// file; of several, each is headed by its name, or they are the elements of one JSON array, null
/// where a file failed. A failure among several is told, the others are printed all the same, and
/// the command ends with exit status 1.
template <class Print>
void printEach(const std::vector<std::string>& files, bool isJSON, Print print) {
  if (files.size() == 1) return print(files.front());
  bool hasFailed = false;
  std::string before = isJSON ? "[" : "";
  for (const std::string& file : files) {
    writeToStandardOutput(isJSON ? before : before + oneLine(file) + ":\n");
    before = isJSON ? "," : "\n";
    try {
      print(file);
    } catch (const CommandFailure& failure) {
      complain(failure.what());
      hasFailed = true;
      if (isJSON) writeToStandardOutput("null\n");
    }
  }
  if (isJSON) writeToStandardOutput("]\n");
  if (hasFailed) throw CommandStatus{1};
}

}  // namespace tarnkit::tool
