#include "tools/tarnkit/ExpressionErrors.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "tarnkit/math/MXError.h"
#include "tarnkit/math/MXLanguage.h"
#include "tarnkit/math/MXMathOperator.h"
#include "tarnkit/platform/system/Log.h"
#include "tarnkit/platform/text/ASCII.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tarnkit/platform/text/UTF8.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Suggestion.h"
#include "tools/tarnkit/Terminal.h"

namespace tarnkit::tool {

namespace {

std::string_view placeOf(const MXError& error, std::string_view text) {
  return error.hasPlace() && error.offset() <= text.size()
             ? text.substr(error.offset(), error.length())
             : std::string_view();
}

bool isSameName(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    return detail::lowerCaseOf(x) == detail::lowerCaseOf(y);
  });
}

const std::vector<MXFunctionDescription>& functions() {
  static const auto described = functionDescriptions();
  return described;
}

bool isCalled(std::string_view text, const MXError& error) {
  const auto behind = text.find_first_not_of(" \t\n", error.offset() + error.length());
  return behind != text.npos && text[behind] == '(';
}

std::string hintOfFunction(std::string_view name, const ExpressionFailure& failure) {
  const auto written = placeOf(failure.error, failure.expression);
  if (name == MXOperatorParenthesisClose) return "the \")\" has no \"(\" before it";
  // What is told from within a variable's value stands elsewhere.
  if (!isSameName(written, name)) return {};
  if (!isCalled(failure.expression, failure.error)) {
    return fmt::format("\"{0}\" is a function here; the variable is ${0}", written);
  }
  std::vector<std::string_view> names;
  for (const auto& function : functions()) {
    names.push_back(function.name);
    for (const String& alias : function.aliases) names.push_back(alias.view());
  }
  const auto nearest = nearestName(name, names);
  return nearest.empty() ? std::string() : fmt::format("did you mean \"{}\"?", nearest);
}

std::string hintOfVariable(std::string_view name, const ExpressionFailure& failure) {
  const std::vector<std::string_view> given(failure.variables.begin(), failure.variables.end());
  const auto nearest = nearestName(name, given);
  if (!nearest.empty()) return fmt::format("did you mean \"${}\"?", nearest);
  const bool isFunction =
      std::any_of(functions().begin(), functions().end(),
                  [&](const auto& function) { return function.isCalled(String(name)); });
  return isFunction ? fmt::format("\"{}\" is a function, which has no \"$\"", name) : std::string();
}

// What is shown of a text that is longer than the terminal is wide: a stretch around the place.
struct Excerpt {
  std::string text;    // without control characters
  std::size_t before;  // columns before the place
  std::size_t marked;  // columns of the place
};

Excerpt excerptOf(std::string_view text, std::size_t offset, std::size_t length,
                  std::size_t width) {
  constexpr std::string_view kLeftOut = "\u2026";
  const auto isInside = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
  const auto columns = [](std::string_view part) { return columnsOf(oneLine(part)); };
  std::size_t from = 0;
  while (from < offset && columns(text.substr(from, offset - from)) > width / 2) {
    // In leaps where it is far, so that a long text is not measured for each of its characters.
    from += std::max<std::size_t>(1, (offset - from - std::min(offset - from, 2 * width)));
    while (from < offset && isInside(text[from])) ++from;
  }
  const auto shownBefore = text.substr(from, offset - from);
  auto rest = text.substr(offset, 4 * width);
  bool isCut = rest.size() < text.size() - offset;
  const std::size_t room = width - std::min(width, columns(shownBefore) + 2);
  while (!rest.empty() &&
         (columns(rest) > room || (isCut && isInside(text[offset + rest.size()])))) {
    rest.remove_suffix(1);
    isCut = true;
  }
  Excerpt excerpt;
  excerpt.before = columns(shownBefore) + (from > 0 ? 1 : 0);
  excerpt.marked = columns(rest.substr(0, length));
  excerpt.text =
      fmt::format("{}{}{}", from > 0 ? kLeftOut : "",
                  oneLine(fmt::format("{}{}", shownBefore, rest)), isCut ? kLeftOut : "");
  return excerpt;
}

void showPlace(const MXError& error, std::string_view text) {
  constexpr std::size_t kIndent = 2;
  const std::size_t width = terminalWidth(STDERR_FILENO);
  if (width < 2 * kIndent + 10 || !error.hasPlace() || error.offset() > text.size()) return;
  const auto excerpt = excerptOf(text, error.offset(), error.length(), width - kIndent - 1);
  std::string marks(1, '^');
  if (excerpt.marked > 1) marks.append(excerpt.marked - 1, '~');
  const std::string blanks(kIndent, ' ');
  Log::line(blanks + excerpt.text);
  Log::line(blanks + std::string(excerpt.before, ' ') + styled(STDERR_FILENO, "1;31", marks));
}

}  // namespace

std::string ExpressionFailure::hint() const {
  if (const String* const function = error.userInfo().find(MXUnknownFunctionKey)) {
    return hintOfFunction(function->view(), *this);
  }
  const String* const variable = error.userInfo().find(MXUnknownVariableKey);
  return variable ? hintOfVariable(variable->view(), *this) : std::string();
}

void ExpressionFailure::writeJSON(JSONWriter& json) const {
  const std::string meant = hint();
  json.beginObject().key("error").beginObject().key("code").value(
      static_cast<std::int32_t>(error.code()));
  json.key("message").value(error.localizedDescription());
  if (error.hasPlace()) {
    json.key("offset").value(std::uint64_t{error.offset()});
    json.key("length").value(std::uint64_t{error.length()});
  }
  if (!meant.empty()) json.key("hint").value(meant);
  json.endObject().endObject();
}

void ExpressionFailure::end() const {
  const std::string meant = hint();
  complain(fmt::format("{} (code {}){}{}", error.localizedDescription(),
                       static_cast<int>(error.code()), meant.empty() ? "" : "; ", meant));
  showPlace(error, expression);
  throw CommandStatus{1};
}

}  // namespace tarnkit::tool
