#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string_view>
#include <vector>

namespace tarnkit {
class JSONWriter;
}

namespace tarnkit::tool {

class Arguments;
class Session;

/// What an operation came to: writes its JSON when it is asked to, at any time before the next
/// operation. Empty: null.
using Result = std::function<void(JSONWriter&)>;

/// One operation of an editing session: what its arguments are called (as `Arguments::check` takes
/// them), and what performs it.
struct Operation {
  std::string_view name;
  std::string_view arguments;
  Result (*perform)(Session& session, const Arguments& arguments);
};

// The operations by subject.
std::span<const Operation> documentOperations();
std::span<const Operation> nodeOperations();
std::span<const Operation> groupOperations();
std::span<const Operation> groupingOperations();
std::span<const Operation> portOperations();
std::span<const Operation> imageOperations();
std::span<const Operation> valueOperations();
std::span<const Operation> historyOperations();
std::span<const Operation> replacementOperations();
std::span<const Operation> clipboardOperations();

/// All of them, by subject.
std::vector<const Operation*> allOperations();

/// Null for an unknown one. Costs one look-up.
const Operation* operationNamed(std::string_view name);

}  // namespace tarnkit::tool
