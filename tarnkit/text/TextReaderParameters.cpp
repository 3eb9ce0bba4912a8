#include <fmt/format.h>

#include <algorithm>

#include "tarnkit/text/TextMembers.h"
#include "tarnkit/text/TextReader.h"
#include "tarnkit/text/TextWords.h"

// What a text says of parameters: their values, and the order in which they stand.

namespace tarnkit::detail {

bool TextReader::readParameters(Node& node) {
  const Index list = node.members[m::kParameters];
  std::vector<ToldParameter> others;
  std::vector<ToldParameter> all;
  std::vector<bool> isTold;
  if (node.shape) {
    for (const auto& parameter : node.shape->parameters) {
      all.push_back({parameter.key, parameter.value});
    }
  }
  isTold.assign(all.size(), false);
  if (list != kNone) {
    if (!expect(list, Kind::object)) return false;
    for (const Index value : tree_->children(list)) {
      const auto key = tree_->key(value);
      const auto* known = node.shape ? node.shape->parameterForKey(key) : nullptr;
      const bool isTyped = tree_->kind(value) == Kind::object;
      if (!known && node.shape) {
        for (const auto& parameter : node.shape->parameters) {
          if (parameter.name != key) continue;
          if (known) {
            return failFor(value, list,
                           fmt::format("several parameters are called {}", shown(key)));
          }
          known = &parameter;
        }
      }
      ToldParameter told{known ? known->key : shared(key), {}};
      if (!known && !isTyped) {
        NearestName near(key);
        if (node.shape) {
          for (const auto& parameter : node.shape->parameters) {
            near.consider(parameter.key);
            near.consider(parameter.name);
          }
        }
        return failFor(value, list,
                       fmt::format("{} has no parameter {}{}", patchNameOf(node), shown(key),
                                   near.suggestion()));
      }
      if (!readParameter(value, known, told.value)) return false;
      if (!known) {
        others.push_back(std::move(told));
        continue;
      }
      const auto place = static_cast<std::size_t>(known - node.shape->parameters.data());
      if (isTold[place]) {
        return failFor(value, list,
                       fmt::format("the parameter {} stands twice", shown(known->key)));
      }
      isTold[place] = true;
      all[place] = std::move(told);
    }
  }
  for (std::size_t i = 0; i < isTold.size(); ++i) {
    if (isTold[i] && !all[i].value.isSame(node.shape->parameters[i].value)) {
      node.told.push_back(all[i]);
    }
  }
  std::sort(others.begin(), others.end(), [](const ToldParameter& a, const ToldParameter& b) {
    return a.key.view() < b.key.view();
  });
  node.told.insert(node.told.end(), others.begin(), others.end());
  all.insert(all.end(), others.begin(), others.end());
  if (!readParameterOrder(node, all)) return false;
  for (auto& parameter : all) {
    auto* record = makeRecord<ParameterRecord>(*node.record, std::move(parameter.key),
                                               std::move(parameter.value));
    if (record->value.kind == ParameterValue::Kind::image && record->value.index >= 0) {
      record->image = images_[static_cast<std::size_t>(record->value.index)];
    }
    node.record->parameters.push_back(record);
  }
  return true;
}

// A value alone is of the kind that the patch says; with its kind, of any.
bool TextReader::readParameter(Index value, const PatchShape::Parameter* known,
                               ParameterValue& into) {
  static constexpr std::array<std::string_view, 3> kMembers{text::kKind, text::kValue,
                                                            text::kLoose};
  if (known) into.kind = known->value.kind;
  if (tree_->kind(value) != Kind::object) return readParameterValue(value, into);
  std::array<Index, 3> members;
  if (!readMembers(value, kMembers, members)) return false;
  if (members[2] != kNone && members[0] == kNone && members[1] == kNone && known) {
    return readParameterValue(value, into);
  }
  if (members[0] == kNone || members[1] == kNone) {
    return fail(value, "a \"kind\" and a \"value\" are expected");
  }
  if (!expect(members[0], Kind::string)) return false;
  into.kind = ParameterValue::kindNamed(tree_->text(members[0]));
  if (into.kind == ParameterValue::Kind::none) {
    return fail(members[0],
                fmt::format("{} is no kind of parameter", shown(tree_->text(members[0]))));
  }
  return readParameterValue(members[1], into);
}

bool TextReader::readParameterValue(Index value, ParameterValue& into) {
  switch (into.kind) {
    case ParameterValue::Kind::boolean:
      return readBool(value, into.boolean);
    case ParameterValue::Kind::number:
      return readFloat(value, into.number);
    case ParameterValue::Kind::index:
      return readInt(value, into.index);
    case ParameterValue::Kind::string:
      return readText(value, into.string, true);
    case ParameterValue::Kind::color:
      return readColor(value, into.color);
    default:
      return readImageValue(value, into.index);
  }
}

bool TextReader::readImageValue(Index value, std::int32_t& into) {
  static constexpr std::array<std::string_view, 2> kMembers{text::kLoose, text::kKind};
  into = -1;
  if (tree_->kind(value) == Kind::null) return true;
  if (tree_->kind(value) == Kind::object) {
    std::array<Index, 2> members;
    std::int32_t place = 0;
    if (!readMembers(value, kMembers, members)) return false;
    if (members[0] == kNone) return fail(value, "a \"loose\" image is expected");
    if (!readInt(members[0], place)) return false;
    if (place < 0 || static_cast<std::size_t>(place) >= images_.size() - storedImages_) {
      return fail(members[0], fmt::format("there is no loose image {}", place));
    }
    into = place + static_cast<std::int32_t>(storedImages_);
    return true;
  }
  if (!expect(value, Kind::string)) return false;
  const auto found = imagesByKey_.find(tree_->text(value));
  if (found == imagesByKey_.end()) {
    return fail(value, fmt::format("there is no image {}", shown(tree_->text(value))));
  }
  into = found->second;
  return true;
}

bool TextReader::readParameterOrder(Node& node, std::vector<ToldParameter>& all) {
  const Index list = node.members[m::kParameterOrder];
  if (list == kNone) return true;
  if (!expect(list, Kind::array)) return false;
  Table<ToldParameter*> byKey;
  for (auto& parameter : all) byKey.emplace(parameter.key.view(), &parameter);
  std::vector<ToldParameter> ordered;
  for (const Index value : tree_->children(list)) {
    if (!expect(value, Kind::string)) return false;
    const auto found = byKey.find(tree_->text(value));
    if (found == byKey.end()) {
      return fail(value, fmt::format("there is no parameter {}, or it stands twice",
                                     shown(tree_->text(value))));
    }
    ordered.push_back(*found->second);
    byKey.erase(found);
  }
  for (const auto& told : node.told) {
    if (byKey.contains(told.key.view())) {
      return fail(list, fmt::format("the parameter {} is left out", shown(told.key)));
    }
  }
  all = std::move(ordered);
  return true;
}

}  // namespace tarnkit::detail
