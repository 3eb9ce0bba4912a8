#include "tarnkit/text/TextWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/platform/collections/MembersOf.h"
#include "tarnkit/platform/objects/Overloaded.h"
#include "tarnkit/platform/text/Base64.h"
#include "tarnkit/text/HXTextFile.h"
#include "tarnkit/text/TextFormat.h"
#include "tarnkit/text/TextOrder.h"

namespace tarnkit::detail {

namespace {

bool isAtOrigin(HXPoint point) {
  return point.x == 0 && point.y == 0 && !std::signbit(point.x) && !std::signbit(point.y);
}

}  // namespace

TextWriter::TextWriter(const HXDocument& document, const HXTextFile::ImageFiles& files)
    : document_(document), files_(files), graph_(document, shapes_) {}

Result<std::string> TextWriter::write() {
  if (auto status = check(); !status) return status;
  gatherOrder();
  gatherImages();
  lines_.open('{');
  lines_.member(text::kFormat);
  lines_.integer(text::kFormatVersion);
  writeNode(0);
  if (graph_.nodes().size() > 1) {
    lines_.member(text::kNodes);
    lines_.open('[');
    for (std::uint32_t i = 1; i < graph_.nodes().size(); ++i) {
      lines_.element();
      lines_.open('{');
      writeNode(i);
      lines_.close('}');
    }
    lines_.close(']');
  }
  writeOtherWires();
  writeImages();
  lines_.close('}');
  lines_.out() += '\n';
  if (!failure_.empty()) return Status::failure(StatusCode::refused, failure_);
  return std::move(lines_.out());
}

Status TextWriter::check() const {
  for (std::uint32_t i = 0; i < graph_.nodes().size(); ++i) {
    const HXNode& node = *graph_.nodes()[i].node;
    const std::string_view name = node.isa().name();
    const bool isKnown = i == 0 ? node.isMemberOf(HXDocument::kClass) : text::isNodeClass(name);
    if (isKnown) continue;
    return Status::failure(
        StatusCode::unsupported,
        fmt::format("{} is a {}, which no text can hold", node.uniqueKey().view(), name));
  }
  return {};
}

bool TextWriter::isView(std::uint32_t index) const {
  const Node& entry = graph_.nodes()[index];
  return (entry.shape && entry.shape->isView) ||
         as<HXSubviewGroup>(entry.node->subnodeGroup().get());
}

void TextWriter::gatherOrder() {
  hasViews_.assign(graph_.nodes().size(), 0);
  for (std::uint32_t i = 1; i < graph_.nodes().size(); ++i) {
    const auto parent = graph_.nodes()[i].parent;
    if (isView(i)) hasViews_[parent] = 1;
  }
  std::vector<std::uint32_t> joined;
  for (const Node& entry : graph_.nodes()) {
    const auto* group = entry.node->subnodeGroup().get();
    if (!group) continue;
    joined.clear();
    for (const auto& node : group->subnodesInForce()) {
      joined.push_back(graph_.indexOf(node.value.get()));
    }
    const auto kept = keptInOrder(joined);
    for (std::size_t i = 0; i < joined.size(); ++i) {
      if (!kept[i]) after_[joined[i]] = i == 0 ? TextGraph::kNone : joined[i - 1];
    }
    gatherViews(*group, joined);
  }
}

void TextWriter::gatherViews(const HXGroup& group, const std::vector<std::uint32_t>& joined) {
  const auto* views = as<HXSubviewGroup>(&group);
  if (!views) return;
  std::unordered_map<std::uint32_t, std::uint32_t> places;
  for (std::uint32_t i = 0; i < joined.size(); ++i) {
    places.emplace(joined[i], i);
    const bool isHere = views->subviewNodesInForce().contains(graph_.nodes()[joined[i]].node);
    if (isHere != isView(joined[i])) view_[joined[i]] = isHere;
  }
  std::vector<std::uint32_t> order;
  std::vector<std::uint32_t> sequence;
  for (const auto& view : membersOf<HXNode>(views->subviewNodesInForce())) {
    const auto place = places.find(graph_.indexOf(&view));
    if (place == places.end()) continue;  // opening a document drops it
    order.push_back(place->first);
    sequence.push_back(place->second);
  }
  const auto kept = keptInOrder(sequence);
  for (std::size_t i = 0; i < order.size(); ++i) {
    if (!kept[i]) above_[order[i]] = i == 0 ? TextGraph::kNone : order[i - 1];
  }
}

void TextWriter::writeNode(std::uint32_t index) {
  const Node& entry = graph_.nodes()[index];
  writePlace(index);
  writeKind(entry);
  writeState(index);
  writeGroup(index);
  writeParameters(entry);
  writePorts(entry);
  for (const auto orientation : kBothSides) writePortGroups(entry, orientation);
  writeValues(entry);
  for (const auto orientation : kBothSides) writePublications(entry, orientation);
  writeArrayOutputs(entry);
  writeWires(index);
}

void TextWriter::writePlace(std::uint32_t index) {
  const Node& entry = graph_.nodes()[index];
  const auto writeNeighbour = [&](std::string_view key, const auto& places) {
    const auto found = places.find(index);
    if (found == places.end()) return;
    lines_.member(key);
    const bool isFirst = found->second == TextGraph::kNone;
    lines_.textOrNull(isFirst, isFirst ? "" : graph_.nodes()[found->second].id);
  };
  lines_.member(text::kID);
  lines_.text(entry.id);
  if (entry.node->uniqueKey() != entry.id) {
    lines_.member(text::kKey);
    lines_.text(entry.node->uniqueKey());
  }
  if (entry.parent != TextGraph::kNone && entry.parent != 0) {
    lines_.member(text::kIn);
    lines_.text(graph_.nodes()[entry.parent].id);
  }
  writeNeighbour(text::kAfter, after_);
  if (const auto found = view_.find(index); found != view_.end()) {
    lines_.member(text::kView);
    lines_.boolean(found->second);
  }
  writeNeighbour(text::kAbove, above_);
}

void TextWriter::writeKind(const Node& entry) {
  const HXNode& node = *entry.node;
  const String expected = entry.shape ? entry.shape->patch->nodeClassName() : String("HXNode");
  if (node.isa().name() != expected.view() && !node.isMemberOf(HXDocument::kClass)) {
    lines_.member(text::kClass);
    lines_.text(node.isa().name());
  }
  if (entry.shape || entry.isExplicit) {
    lines_.member(text::kPatch);
    const auto patch = node.patch();
    lines_.text(patch ? patch->isa().name() : node.unknownPatchClass().view());
  }
  if (node.name() !=
      text::usualName(entry.shape ? entry.shape->patch : nullptr, entry.isExplicit)) {
    lines_.member(text::kName);
    lines_.textOrNull(node.name().isNil(), node.name());
  }
  if (!node.comment().isNil()) {
    lines_.member(text::kComment);
    lines_.text(node.comment());
  }
}

void TextWriter::writeState(std::uint32_t index) {
  const HXNode& node = *graph_.nodes()[index].node;
  if (!isAtOrigin(node.position())) {
    lines_.member(text::kPosition);
    lines_.numbers({node.position().x, node.position().y});
  }
  if (node.selected()) {
    lines_.member(text::kSelected);
    lines_.boolean(true);
  }
  if (const auto panel = static_cast<std::int32_t>(node.inspectorPanel()); panel != 0) {
    lines_.member(text::kInspectorPanel);
    lines_.integer(panel);
  }
  if (node.forceAllowsSubnodes() != forceAllowsSubnodesByDefault(index)) {
    lines_.member(text::kForceAllowsSubnodes);
    lines_.boolean(node.forceAllowsSubnodes());
  }
}

bool TextWriter::hasSubnodes(std::uint32_t index) const {
  const auto* group = graph_.nodes()[index].node->subnodeGroup().get();
  return group && !group->subnodesInForce().empty();
}

bool TextWriter::forceAllowsSubnodesByDefault(std::uint32_t index) const {
  const Node& entry = graph_.nodes()[index];
  const bool patchHoldsNodes =
      entry.isExplicit || (entry.shape && entry.shape->patch->allowsSubnodes());
  return index == 0 || (hasSubnodes(index) && !patchHoldsNodes);
}

// A node that others stand in has a group, whatever its patch says.
bool TextWriter::holdsNodesByDefault(std::uint32_t index) const {
  const Node& entry = graph_.nodes()[index];
  return index == 0 || entry.node->forceAllowsSubnodes() || hasSubnodes(index) ||
         (entry.shape && entry.shape->patch->allowsSubnodes());
}

void TextWriter::writeGroup(std::uint32_t index) {
  const auto* group = graph_.nodes()[index].node->subnodeGroup().get();
  const auto actual = !group                      ? text::kNoGroup
                      : as<HXSubviewGroup>(group) ? text::kViews
                                                  : text::kGroup;
  const auto expected = !holdsNodesByDefault(index) ? text::kNoGroup
                        : hasViews_[index] != 0     ? text::kViews
                                                    : text::kGroup;
  if (actual != expected) {
    lines_.member(text::kSubnodes);
    lines_.text(actual);
  }
  if (!group) return;
  if (!isAtOrigin(group->canvasCenter())) {
    lines_.member(text::kCanvasCenter);
    lines_.numbers({group->canvasCenter().x, group->canvasCenter().y});
  }
  if (group->isOpaque()) {
    lines_.member(text::kOpaque);
    lines_.boolean(true);
  }
}

ParameterValue TextWriter::valueOf(const HXParameter& parameter) const {
  ParameterValue value;
  value.kind = ParameterValue::kindOf(parameter.isa());
  std::visit(Overloaded{
                 [&](const HXBooleanParameter* p) { value.boolean = p->value(); },
                 [&](const HXNumberParameter* p) { value.number = p->value(); },
                 [&](const HXIndexParameter* p) { value.index = p->value(); },
                 [&](const HXStringParameter* p) { value.string = p->value(); },
                 [&](const HXColorParameter* p) { value.color = p->value(); },
                 [&](const HXImageParameter* p) {
                   const auto found = imageIndexes_.find(p->imageEntry());
                   value.index = found == imageIndexes_.end() ? -1 : found->second;
                 },
             },
             parameter.kind());
  return value;
}

void TextWriter::writeParameters(const Node& entry) {
  told_.clear();
  struct Told {
    ToldParameter parameter;
    bool isTyped;
  };
  std::vector<Told> declared;
  std::vector<Told> others;
  for (const auto& [key, parameter] : entry.node->parametersInForce()) {
    auto value = valueOf(*parameter);
    const auto* known = entry.shape ? entry.shape->parameterForKey(key) : nullptr;
    if (known && known->value.isSame(value)) continue;
    const bool isTyped = !known || known->value.kind != value.kind;
    (known ? declared : others).push_back({{key, std::move(value)}, isTyped});
  }
  std::sort(others.begin(), others.end(), [](const Told& a, const Told& b) {
    return a.parameter.key.view() < b.parameter.key.view();
  });
  if (entry.shape) {
    const auto place = [&](const Told& told) {
      return entry.shape->parameterForKey(told.parameter.key);
    };
    std::sort(declared.begin(), declared.end(),
              [&](const Told& a, const Told& b) { return place(a) < place(b); });
  }
  declared.insert(declared.end(), others.begin(), others.end());
  if (!declared.empty()) {
    lines_.member(text::kParameters);
    lines_.open('{');
    for (auto& [parameter, isTyped] : declared) {
      lines_.member(parameter.key);
      if (isTyped) {
        InlineObject object(lines_);
        object.member(text::kKind);
        lines_.text(ParameterValue::nameOf(parameter.value.kind));
        object.member(text::kValue);
        writeParameterValue(parameter.value);
        object.end();
      } else {
        writeParameterValue(parameter.value);
      }
      told_.push_back(std::move(parameter));
    }
    lines_.close('}');
  }
  writeParameterOrder(entry);
}

void TextWriter::writeParameterOrder(const Node& entry) {
  std::vector<String> expected;
  std::vector<String> others;
  std::vector<String> actual;
  if (entry.shape) {
    for (const auto& parameter : entry.shape->parameters) expected.push_back(parameter.key);
  }
  for (const auto& parameter : entry.node->parametersInForce()) {
    actual.push_back(parameter.key);
    if (!entry.shape || !entry.shape->parameterForKey(parameter.key)) {
      others.push_back(parameter.key);
    }
  }
  std::sort(others.begin(), others.end());
  expected.insert(expected.end(), others.begin(), others.end());
  if (expected == actual && !(entry.isExplicit && !actual.empty())) return;
  lines_.member(text::kParameterOrder);
  text::writeTexts(lines_, actual);
}

void TextWriter::writeParameterValue(const ParameterValue& value) {
  switch (value.kind) {
    case ParameterValue::Kind::boolean:
      return lines_.boolean(value.boolean);
    case ParameterValue::Kind::number:
      return lines_.number(value.number);
    case ParameterValue::Kind::index:
      return lines_.integer(value.index);
    case ParameterValue::Kind::string:
      return lines_.textOrNull(value.string.isNil(), value.string);
    case ParameterValue::Kind::color:
      return lines_.numbers(
          {value.color.red, value.color.green, value.color.blue, value.color.alpha});
    default:
      break;
  }
  const auto index = static_cast<std::size_t>(value.index);
  if (value.index < 0) {
    lines_.out() += "null";
  } else if (index < storedImages_) {
    lines_.text(images_[index]->key());
  } else {
    InlineObject object(lines_);
    object.member(text::kLoose);
    lines_.integer(static_cast<std::int64_t>(index - storedImages_));
    object.end();
  }
}

void TextWriter::gatherImages() {
  for (const auto& entry : document_.imageStore()->imageEntriesInForce()) {
    addImage(entry.value.get());
  }
  storedImages_ = images_.size();
  for (const Node& entry : graph_.nodes()) {
    for (const auto& parameter : entry.node->parametersInForce()) {
      if (const auto* image = as<HXImageParameter>(parameter.value.get())) {
        addImage(image->imageEntry());
      }
    }
  }
}

std::int32_t TextWriter::addImage(HXImageStoreEntry* entry) {
  if (!entry) return -1;
  const auto [found, isNew] =
      imageIndexes_.try_emplace(entry, static_cast<std::int32_t>(images_.size()));
  if (isNew) images_.push_back(entry);
  return found->second;
}

void TextWriter::writeImages() {
  const auto writeList = [&](std::string_view key, std::size_t from, std::size_t to) {
    if (from == to) return;
    lines_.member(key);
    lines_.open('[');
    for (auto i = from; i < to; ++i) {
      lines_.element();
      writeImage(static_cast<std::int32_t>(i));
    }
    lines_.close(']');
  };
  writeList(text::kImages, 0, storedImages_);
  writeList(text::kLooseImages, storedImages_, images_.size());
}

void TextWriter::writeImage(std::int32_t index) {
  const HXImageStoreEntry& entry = *images_[static_cast<std::size_t>(index)];
  InlineObject object(lines_);
  object.member(text::kKey);
  lines_.textOrNull(entry.key().isNil(), entry.key());
  const Image* const image = entry.image().get();
  const bool hasPicture = image && HXImageStoreEntry::canBeWritten(*image);
  const bool isStored = index < static_cast<std::int32_t>(storedImages_);
  const auto file = isStored ? files_.find(entry.key()) : files_.end();
  // Two entries may show one picture.
  const auto earlier = hasPicture ? imageIndexes_.try_emplace(image, index).first->second : index;
  if (earlier != index) {
    object.member(text::kPictureOf);
    lines_.integer(earlier);
  } else if (file != files_.end()) {
    object.member(text::kFile);
    lines_.text(file->second);
  } else if (hasPicture) {
    const auto png = image->PNGRepresentation();
    if (!png) {
      failure_ = fmt::format("the image {}: {}", entry.key().view(), png.status().sentence());
      return;
    }
    object.member(text::kPNG);
    lines_.out() += '"';
    appendBase64(lines_.out(), (*png)->bytes());
    lines_.out() += '"';
  }
  object.end();
}

}  // namespace tarnkit::detail
