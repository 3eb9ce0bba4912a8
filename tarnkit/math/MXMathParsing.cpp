#include "tarnkit/math/MXMathParsing.h"

#include "tarnkit/math/MXFunctionExpression.h"
#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/math/MXNumberExpression.h"
#include "tarnkit/math/MXVariableExpression.h"

namespace tarnkit {

std::optional<MXNumber> numberByEvaluatingString(const String& string) {
  return numberByEvaluatingStringWithSubstitutions(string, {});
}

std::optional<MXNumber> numberByEvaluatingStringWithSubstitutions(
    const String& string, const MXSubstitutions& substitutions) {
  return MXMathEvaluator::defaultMathEvaluator()->evaluateString(string, substitutions);
}

std::optional<MXNumber> numberByEvaluatingStringWithSubstitutions(
    const String& string, const MXSubstitutions& substitutions, MXError* error) {
  return MXMathEvaluator::defaultMathEvaluator()->evaluateString(string, substitutions, error);
}

void registerMathClasses() {
  ClassRegistry::add(detail::MXNumberExpression::kClass);
  ClassRegistry::add(detail::MXVariableExpression::kClass);
  ClassRegistry::add(detail::MXFunctionExpression::kClass);
}

}  // namespace tarnkit
