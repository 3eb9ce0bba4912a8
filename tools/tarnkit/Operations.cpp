#include "tools/tarnkit/Operations.h"

#include <unordered_map>

namespace tarnkit::tool {

namespace {

std::unordered_map<std::string_view, const Operation*> allOperations() {
  std::unordered_map<std::string_view, const Operation*> table;
  for (const auto& operations :
       {documentOperations(), nodeOperations(), groupOperations(), portOperations(),
        imageOperations(), valueOperations(), historyOperations(), replacementOperations(),
        groupingOperations(), clipboardOperations()}) {
    for (const Operation& operation : operations) table.emplace(operation.name, &operation);
  }
  return table;
}

}  // namespace

const Operation* operationNamed(std::string_view name) {
  static const auto table = allOperations();
  const auto found = table.find(name);
  return found == table.end() ? nullptr : found->second;
}

}  // namespace tarnkit::tool
