#include "tools/tarnkit/Operations.h"

#include <unordered_map>

namespace tarnkit::tool {

std::vector<const Operation*> allOperations() {
  std::vector<const Operation*> all;
  for (const auto& operations :
       {documentOperations(), nodeOperations(), groupOperations(), groupingOperations(),
        portOperations(), replacementOperations(), clipboardOperations(), historyOperations(),
        imageOperations(), valueOperations()}) {
    for (const Operation& operation : operations) all.push_back(&operation);
  }
  return all;
}

const Operation* operationNamed(std::string_view name) {
  static const auto table = [] {
    std::unordered_map<std::string_view, const Operation*> byName;
    for (const Operation* operation : allOperations()) byName.emplace(operation->name, operation);
    return byName;
  }();
  const auto found = table.find(name);
  return found == table.end() ? nullptr : found->second;
}

}  // namespace tarnkit::tool
