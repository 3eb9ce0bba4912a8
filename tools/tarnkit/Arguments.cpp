#include "tools/tarnkit/Arguments.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "tarnkit/patches/Orientation.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/Suggestion.h"

namespace tarnkit::tool {

namespace {

struct ArgumentName {
  std::string_view name;
  bool isOptional;
};

// Takes the next name off the front of the list.
ArgumentName takeName(std::string_view& list) {
  const auto end = std::min(list.find(' '), list.size());
  auto name = list.substr(0, end);
  list.remove_prefix(std::min(end + 1, list.size()));
  const bool isOptional = !name.empty() && name.back() == '?';
  if (isOptional) name.remove_suffix(1);
  return {name, isOptional};
}

bool lists(std::string_view allowed, std::string_view name) {
  while (!allowed.empty()) {
    if (takeName(allowed).name == name) return true;
  }
  return false;
}

}  // namespace

void Arguments::check(std::string_view allowed) const {
  for (const auto& argument : operation_.items()) {
    if (argument.key() == "do" || lists(allowed, argument.key())) continue;
    std::vector<std::string_view> names;
    for (auto rest = allowed; !rest.empty();) names.push_back(takeName(rest).name);
    throw CommandFailure(fmt::format("it has no argument \"{}\"{}", argument.key(),
                                     didYouMean(argument.key(), names)));
  }
  for (auto rest = allowed; !rest.empty();) {
    const auto [name, isOptional] = takeName(rest);
    if (!isOptional && !has(name)) throw CommandFailure(fmt::format("\"{}\" is missing", name));
  }
}

bool Arguments::has(std::string_view name) const { return operation_.contains(name); }

const Json& Arguments::at(std::string_view name) const {
  const auto found = operation_.find(name);
  if (found == operation_.end()) throw CommandFailure(fmt::format("\"{}\" is missing", name));
  return *found;
}

std::string Arguments::text(std::string_view name) const { return readText(at(name), name); }

std::string Arguments::optionalText(std::string_view name) const {
  return has(name) ? text(name) : std::string();
}

String Arguments::textOrNil(std::string_view name) const {
  return has(name) ? readTextOrNil(at(name), name) : String();
}

bool Arguments::boolean(std::string_view name) const { return readBoolean(at(name), name); }

std::int32_t Arguments::integer(std::string_view name) const { return readInteger(at(name), name); }

std::int32_t Arguments::integer(std::string_view name, std::int32_t fallback) const {
  return has(name) ? integer(name) : fallback;
}

std::uint64_t Arguments::unsignedInteger(std::string_view name) const {
  return readUnsigned(at(name), name);
}

float Arguments::number(std::string_view name) const { return readFloat(at(name), name); }

HXPoint Arguments::point(std::string_view name) const { return readPoint(at(name), name); }

RGBA Arguments::color(std::string_view name) const { return readColor(at(name), name); }

Ref<PMRPrimitive> Arguments::primitive(std::string_view name) const {
  return readPrimitive(at(name), name);
}

Ref<PMRPrimitive> Arguments::primitiveOrNull(std::string_view name) const {
  return at(name).is_null() ? nullptr : primitive(name);
}

std::vector<String> Arguments::texts(std::string_view name) const {
  const Json& list = at(name);
  if (!list.is_array()) {
    throw CommandFailure(fmt::format("\"{}\" must be an array, not {}", name, kindOf(list)));
  }
  std::vector<String> texts;
  texts.reserve(list.size());
  for (const Json& element : list) texts.emplace_back(readText(element, name));
  return texts;
}

OrderedMap<String> Arguments::textsByKey(std::string_view name) const {
  OrderedMap<String> texts;
  if (!has(name)) return texts;
  const Json& object = at(name);
  if (!object.is_object()) {
    throw CommandFailure(fmt::format("\"{}\" must be an object, not {}", name, kindOf(object)));
  }
  for (const auto& [key, value] : object.items())
    texts.set(String(key), String(readText(value, name)));
  return texts;
}

std::int32_t Arguments::orientation(std::string_view name) const {
  const auto orientation = integer(name);
  if (orientation != HXOrientationInput && orientation != HXOrientationOutput) {
    throw CommandFailure(
        fmt::format("\"{}\" must be 1 (input) or 2 (output), not {}", name, orientation));
  }
  return orientation;
}

std::string Arguments::word(std::string_view name,
                            std::initializer_list<std::string_view> words) const {
  auto word = text(name);
  if (std::find(words.begin(), words.end(), word) != words.end()) return word;
  throw CommandFailure(
      fmt::format("\"{}\" must be one of {}, not \"{}\"", name, fmt::join(words, ", "), word));
}

const HXRNodeClass& patchClassGiven(std::string_view name) {
  if (const auto* const known = patchClassNamed(name)) return *known;
  std::map<std::string_view, std::string_view> classes;  // by either of their names
  std::vector<std::string_view> names;
  for (const HXRNodeClass* patch : catalogue()) {
    for (const std::string_view known : {patch->name(), patch->defaultName().view()}) {
      classes.emplace(known, patch->name());
      names.push_back(known);
    }
  }
  const auto shown = classes.find(name);
  const auto meant = shown != classes.end() ? name : nearestName(name, names);
  throw CommandFailure(
      fmt::format("there is no patch class \"{}\"{}", name,
                  meant.empty() ? "" : fmt::format("; did you mean \"{}\"?", classes.at(meant))));
}

}  // namespace tarnkit::tool
