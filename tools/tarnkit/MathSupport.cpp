#include "tools/tarnkit/MathSupport.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>

#include "tarnkit/math/MXExpressionRewriter.h"
#include "tarnkit/math/MXMathOperatorSet.h"
#include "tarnkit/math/MXNumber.h"
#include "tarnkit/platform/numbers/Decimal.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/numbers/NumberText.h"

namespace tarnkit::tool {

void addExpressionArgument(CLI::App& command, std::string& expression) {
  command.add_option("EXPRESSION", expression, "The expression")->type_name("");
  command.allow_extras();
}

void takeExpression(const CLI::App& command, std::string& expression) {
  auto extras = command.remaining();
  if (const auto end = std::find(extras.begin(), extras.end(), "--"); end != extras.end()) {
    extras.erase(end);  // where the options end
  }
  const bool isGiven = command.count("EXPRESSION") > 0;
  if (!isGiven && extras.empty()) throw CLI::RequiredError("EXPRESSION");
  const auto isOption = [](const std::string& text) {
    return text.size() > 2 && text.compare(0, 2, "--") == 0 &&
           std::isalpha(static_cast<unsigned char>(text[2])) != 0;
  };
  if (extras.size() + (isGiven ? 1 : 0) > 1 || (!isGiven && isOption(extras.front()))) {
    std::reverse(extras.begin(), extras.end());  // the exception names them from the last on
    throw CLI::ExtrasError(command.get_name(), extras);
  }
  if (!isGiven) expression = extras.front();
}

void readPercentSignAsPercent() {
  MXExpressionRewriter::defaultRewriter();
  MXMathOperatorSet::defaultOperatorSet()->setInterpretsPercentSignAsModulo(false);
}

Ref<Object> substitutionFromText(const std::string& text, bool keepsDigits) {
  if (!keepsDigits && MXNumber::isNumberText(text)) {
    return Number::withDouble(MXNumber::fromText(text).doubleValue());
  }
  return String(text).object();
}

std::string valueText(const MXNumber& value, bool precise) {
  if (!precise) return shortestText(value.doubleValue());
  return value.decimal().text();
}

}  // namespace tarnkit::tool
