#include "tools/tarnkit/Script.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/tarnkit/Command.h"

namespace tarnkit::tool {

namespace {

using Json = nlohmann::json;
using Event = Json::parse_event_t;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kWhiteSpace = " \t\r\n";
constexpr std::size_t kLongestReason = 160;

// What the reader of JSON says, without its own name, printable and short: it quotes what it met.
std::string reasonOf(const Json::exception& error) {
  std::string_view text = error.what();
  if (const auto end = text.find("] "); end != std::string_view::npos) text.remove_prefix(end + 2);
  std::string reason;
  for (const char c : text.substr(0, kLongestReason)) {
    const auto byte = static_cast<unsigned char>(c);
    reason += byte >= 0x20 && byte < 0x7F ? c : '?';
  }
  if (text.size() > kLongestReason) reason += "...";
  return reason;
}

void checkDepth(int depth, Event event) {
  if (depth <= Script::kMaximumDepth) return;
  if (event != Event::object_start && event != Event::array_start) return;
  throw CommandFailure(fmt::format("it is nested more than {} deep", Script::kMaximumDepth));
}

// Reads the elements of an array one by one: none of them is kept.
void readElements(std::string_view text, const Script::Visit* visit) {
  std::size_t number = 0;
  bool goesOn = true;
  const auto element = [&](int depth, Event event, Json& parsed) {
    checkDepth(depth, event);
    const bool ends =
        event == Event::object_end || event == Event::array_end || event == Event::value;
    if (depth != 1 || !ends) return true;
    if (visit && goesOn) goesOn = (*visit)({number, &parsed, {}});
    ++number;
    return false;
  };
  [[maybe_unused]] const Json rest = Json::parse(text.begin(), text.end(), element);
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(kWhiteSpace) == std::string_view::npos;
}

std::string_view withoutByteOrderMark(std::string_view text) {
  if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
    text.remove_prefix(kByteOrderMark.size());
  }
  return text;
}

}  // namespace

Script::Script(std::string_view text) : text_(withoutByteOrderMark(text)) {}

bool Script::isArray(std::string_view beginning) {
  const auto text = withoutByteOrderMark(beginning);
  const auto first = text.find_first_not_of(kWhiteSpace);
  return first != text.npos && text[first] == '[';
}

void Script::eachStep(const Visit& visit) const {
  if (isArray(text_)) return eachElement(visit);
  ScriptLines lines(visit);
  for (std::size_t at = 0; at < text_.size();) {
    const auto end = std::min(text_.find('\n', at), text_.size());
    if (!lines.take(text_.substr(at, end - at))) return;
    at = end + 1;
  }
}

void Script::eachElement(const Visit& visit) const {
  try {
    readElements(text_, nullptr);
  } catch (const Json::exception& error) {
    throw CommandFailure("script", "the array of operations", reasonOf(error));
  } catch (const CommandFailure& failure) {
    throw CommandFailure("script", "the array of operations", failure.what());
  }
  readElements(text_, &visit);
}

bool ScriptLines::take(std::string_view line) {
  if (++lineNumber_ == 1) line = withoutByteOrderMark(line);
  if (isBlank(line)) return true;
  Json operation;
  ScriptStep step{number_++, &operation, {}};
  try {
    operation = Json::parse(line.begin(), line.end(), [](int depth, Event event, Json&) {
      checkDepth(depth, event);
      return true;
    });
  } catch (const Json::exception& error) {
    step = {step.number, nullptr, fmt::format("line {}, {}", lineNumber_, reasonOf(error))};
  } catch (const CommandFailure& failure) {
    step = {step.number, nullptr, fmt::format("line {}, {}", lineNumber_, failure.what())};
  }
  return visit_(step);
}

bool ScriptLines::takeUnreadable(std::string_view why) {
  return visit_({number_++, nullptr, fmt::format("line {}, {}", ++lineNumber_, why)});
}

}  // namespace tarnkit::tool
