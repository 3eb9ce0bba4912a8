#include "tarnkit/render/PageTables.h"

#include <algorithm>

#include "tarnkit/platform/text/JSONWriter.h"
#include "tarnkit/render/GroupScene.h"
#include "tarnkit/render/Markup.h"
#include "tarnkit/render/PictureColors.h"
#include "tarnkit/render/SceneWriter.h"

namespace tarnkit::detail {

namespace {

constexpr std::size_t kPiece = std::size_t{1} << 16;

struct Measure {
  const char* name;
  double size;
};
constexpr Measure kMeasures[] = {
    {"titleHeight", NodeBox::kTitleHeight},   {"lineHeight", NodeBox::kLineHeight},
    {"padding", NodeBox::kPadding},           {"inset", NodeBox::kInset},
    {"chipPadding", NodeBox::kChipPadding},   {"badgePadding", NodeBox::kBadgePadding},
    {"chevron", NodeBox::kChevronWidth},      {"swatch", NodeBox::kSwatchWidth},
    {"radius", SceneWriter::kRadius},         {"dot", SceneWriter::kDotRadius},
    {"edgeHeight", EdgePort::kHeight},        {"edgePadding", EdgePort::kPadding},
    {"noteHeight", SceneWriter::kNoteHeight}, {"margin", GroupScene::kMargin},
};

}  // namespace

std::int64_t PageTables::Table::numberOf(std::string_view json) {
  if (const auto known = numbers_.find(json); known != numbers_.end()) return known->second;
  const auto number = static_cast<std::int64_t>(entries_.size());
  numbers_.emplace(entries_.emplace_back(json), number);
  return number;
}

std::int64_t PageTables::Table::numberOf(std::initializer_list<std::int64_t> numbers) {
  std::string json = "[";
  for (const std::int64_t number : numbers) {
    appendInteger(json, number);
    json += ',';
  }
  json.back() = ']';
  return numberOf(json);
}

std::int64_t PageTables::text(std::string_view plain) {
  quoted_.clear();
  JSONWriter::appendQuoted(quoted_, plain, JSONWriter::Escapes::script);
  return texts_.numberOf(quoted_);
}

std::int64_t PageTables::label(const Label& label) {
  const bool rightToLeft = isRightToLeft(label.full);
  const std::int64_t full = text(label.full);
  if (!label.shortened && !rightToLeft) return full;
  const std::int64_t shown = label.shortened ? text(label.shown()) : -1;
  return texts_.numberOf({full, shown, rightToLeft ? 1 : 0});
}

std::int64_t PageTables::color(RGBA color) {
  std::string json = "\"";
  appendColor(json, color);
  json += '"';
  const std::int64_t number = colors_.numberOf(json);
  if (static_cast<std::size_t>(number) * 2 == light_.size()) {
    light_ += wantsLightText(color) ? "1," : "0,";
  }
  return number;
}

std::int64_t PageTables::value(const PortValue& value) {
  if (value.kind == PortValue::Kind::none) return -1;
  std::string json = "[";
  for (const std::int64_t number : {static_cast<std::int64_t>(value.kind), label(value.text),
                                    std::int64_t{value.isSet ? 1 : 0}}) {
    appendInteger(json, number);
    json += ',';
  }
  switch (value.kind) {
    case PortValue::Kind::none:
      break;
    case PortValue::Kind::boolean:
      json += value.boolean ? '1' : '0';
      break;
    case PortValue::Kind::color:
      appendInteger(json, color(value.color));
      json += ',';
      appendNumber(json, std::clamp(static_cast<double>(value.color.alpha), 0.0, 1.0));
      break;
    case PortValue::Kind::text:
      appendNumber(json, value.text.width + 2 * NodeBox::kChipPadding);
      break;
  }
  json += ']';
  return values_.numberOf(json);
}

void PageTables::write(FunctionRef<void(std::string_view)> sink) const {
  std::string piece = "{\"measures\":{";
  for (const Measure& measure : kMeasures) {
    if (piece.back() != '{') piece += ',';
    piece.append("\"").append(measure.name).append("\":");
    appendNumber(piece, measure.size);
  }
  piece += "},\"light\":[";
  piece.append(light_, 0, light_.empty() ? 0 : light_.size() - 1) += ']';
  const std::pair<const char*, const Table&> tables[] = {
      {"texts", texts_}, {"colors", colors_}, {"kinds", kinds},
      {"ports", ports},  {"values", values_}, {"rows", rows},
      {"sides", sides},  {"forms", forms},    {"parameters", parameters}};
  for (const auto& [name, table] : tables) {
    piece.append(",\"").append(name).append("\":[");
    bool first = true;
    for (const std::string& entry : table.entries_) {
      if (!first) piece += ',';
      first = false;
      piece += entry;
      if (piece.size() < kPiece) continue;
      sink(piece);
      piece.clear();
    }
    piece += ']';
  }
  piece += '}';
  sink(piece);
}

}  // namespace tarnkit::detail
