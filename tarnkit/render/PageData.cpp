#include "tarnkit/render/PageData.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "tarnkit/model/HXImageStoreEntry.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/images/Image.h"
#include "tarnkit/platform/objects/Overloaded.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tarnkit/render/Markup.h"
#include "tarnkit/render/PageRows.h"
#include "tarnkit/render/SceneWriter.h"

namespace tarnkit::detail {

namespace {

std::string parameterText(const HXParameter& parameter) {
  const auto imageText = [](const HXImageStoreEntry* entry) -> std::string {
    if (!entry) return "no image";
    if (!entry->image()) return "an image that could not be read";
    return fmt::format("image, {} × {}", entry->image()->width(), entry->image()->height());
  };
  return std::visit(
      Overloaded{
          [](const HXIndexParameter* index) { return std::to_string(index->value()); },
          [](const HXNumberParameter* number) { return numberText(number->value()); },
          [](const HXBooleanParameter* boolean) {
            return std::string(boolean->value() ? "on" : "off");
          },
          [](const HXStringParameter* string) { return string->value().toStdString(); },
          [](const HXColorParameter* color) { return colorText(color->value()); },
          [&](const HXImageParameter* image) { return imageText(image->imageEntry()); },
      },
      parameter.kind());
}

/// An array of JSON that grows at its end.
class Column {
 public:
  Column& add(std::int64_t number) {
    appendInteger(next(), number);
    return *this;
  }
  Column& addSize(double size) {
    appendNumber(next(), size);
    return *this;
  }
  Column& addText(std::string_view text) {
    JSONWriter::appendQuoted(next(), text, JSONWriter::Escapes::script);
    return *this;
  }
  Column& add(const Column& inner) {
    next().append("[").append(inner.text_) += ']';
    return *this;
  }
  bool isEmpty() const noexcept { return text_.empty(); }
  const std::string& text() const noexcept { return text_; }

 private:
  std::string& next() {
    if (!text_.empty()) text_ += ',';
    return text_;
  }
  std::string text_;
};

/// Keys, most of which count on.
class KeyColumn {
 public:
  void add(std::string_view key) {
    const std::size_t digits = key.size() - digitsAtTheEnd(key);
    const std::string_view before = key.substr(0, digits);
    const std::string_view number = key.substr(digits);
    // What counts on reads back as it was: no zeros before it, and no more digits than a number
    // has.
    const bool counts =
        !number.empty() && number.size() <= 15 && (number.size() == 1 || number.front() != '0');
    std::int64_t value = 0;
    if (counts) std::from_chars(number.data(), number.data() + number.size(), value);
    if (counts && count_ > 0 && before == before_ && value == first_ + count_) {
      ++count_;
      return;
    }
    end();
    if (counts) {
      before_ = before;
      first_ = value;
      count_ = 1;
    } else {
      column_.addText(key);
    }
  }
  const Column& ended() {
    end();
    return column_;
  }

 private:
  static std::size_t digitsAtTheEnd(std::string_view key) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    return static_cast<std::size_t>(std::find_if_not(key.rbegin(), key.rend(), isDigit) -
                                    key.rbegin());
  }
  void end() {
    if (count_ == 0) return;
    column_.add(Column().addText(before_).add(first_).add(count_));
    count_ = 0;
  }
  Column column_;
  std::string before_;
  std::int64_t first_ = 0;
  std::int64_t count_ = 0;
};

class GroupData {
 public:
  GroupData(std::string& out, const GroupScene& scene, PageTables& tables)
      : out_(out), scene_(scene), tables_(tables), rows_(scene, tables) {}

  void append() {
    out_ += "{\"title\":";
    appendInteger(out_, tables_.text(titleOfGroup(scene_.group)));
    Column notes;
    for (const std::string& note : scene_.notes) notes.addText(note);
    field("notes", notes);
    frame();
    nodes();
    wires();
    out_ += '}';
  }

 private:
  void field(const char* name, const Column& column) {
    if (column.isEmpty()) return;
    out_.append(",\"").append(name).append("\":[").append(column.text()) += ']';
  }

  void frame() {
    HXPictureOptions options;
    options.embedded = true;
    options.caption = false;
    std::string unused;
    const SceneWriter picture(scene_, options, unused);
    field("frame", Column()
                       .addSize(picture.left())
                       .addSize(picture.top())
                       .addSize(picture.width())
                       .addSize(picture.height()));
    if (scene_.boxes.empty()) {
      out_ += ",\"emptyAt\":";
      appendNumber(out_, (scene_.top + scene_.bottom) / 2);
    }
    if (!scene_.hasEdge()) return;
    field("edge", Column()
                      .addSize(scene_.leftEdge)
                      .addSize(scene_.top)
                      .addSize(scene_.rightEdge - scene_.leftEdge)
                      .addSize(scene_.bottom - scene_.top));
    Column ports;
    for (const EdgePort& port : scene_.edgePorts) {
      Column record;
      record.add(tables_.label(port.label))
          .add(tables_.textUnlessNil(port.port->uniqueKey()))
          .add(tables_.color(port.color))
          .add(port.isInput ? 1 : 0)
          .add(static_cast<std::int64_t>(port.mark))
          .addSize(port.label.width)
          .addSize(port.y);
      if (port.hasInner) record.addSize(port.inner.x).addSize(port.inner.y);
      ports.add(record);
    }
    field("edgePorts", ports);
  }

  void nodes() {
    KeyColumn keys;
    Column titles;
    Column forms;
    Column groups;
    Column marks;
    for (std::size_t i = 0; i < scene_.boxes.size(); ++i) {
      const NodeBox& box = scene_.boxes[i];
      const auto index = static_cast<std::int64_t>(i);
      keys.add(scene_.keyOf(*box.node));
      titles.add(tables_.label(box.title));
      forms.add(formOf(i));
      if (const auto& group = box.node->subnodeGroup()) {
        groups.add(Column()
                       .add(index)
                       .add(tables_.text(scene_.keyOf(*group)))
                       .add(static_cast<std::int64_t>(group->subnodesInForce().size()))
                       .addSize(box.hasBadge() ? box.badgeWidth() : 0));
      }
      if (box.mark != SceneMark::none || box.holdsChanges) {
        marks.add(Column()
                      .add(index)
                      .add(static_cast<std::int64_t>(box.mark))
                      .add(box.holdsChanges ? 1 : 0));
      }
    }
    field("keys", keys.ended());
    field("titles", titles);
    field("forms", forms);
    places();
    field("groups", groups);
    field("marks", marks);
  }

  void places() {
    const bool isWhole =
        std::all_of(scene_.boxes.begin(), scene_.boxes.end(), [](const NodeBox& box) {
          return hundredthsOf(box.x) % 100 == 0 && hundredthsOf(box.y) % 100 == 0;
        });
    const std::int64_t unit = isWhole ? 100 : 1;  // in hundredths
    Column x;
    Column y;
    std::int64_t lastX = 0;
    std::int64_t lastY = 0;
    for (const NodeBox& box : scene_.boxes) {
      x.add(hundredthsOf(box.x) / unit - lastX);
      y.add(hundredthsOf(box.y) / unit - lastY);
      lastX = hundredthsOf(box.x) / unit;
      lastY = hundredthsOf(box.y) / unit;
    }
    out_ += isWhole ? ",\"unit\":1" : ",\"unit\":100";
    field("x", x);
    field("y", y);
  }

  std::int64_t formOf(std::size_t index) {
    const NodeBox& box = scene_.boxes[index];
    const HXNode& node = *box.node;
    std::int64_t name = -1;
    std::int64_t category = -1;
    if (node.patch()) {
      name = tables_.text(node.patchClass().defaultName());
      category = tables_.textUnlessNil(node.patchClass().libraryCategory());
    }
    Column form;
    form.add(
        tables_.kinds.numberOf({tables_.textUnlessNil(patchNameOfNode(node)), name, category}));
    form.add(tables_.color(node.defaultColor()));
    form.add(rows_.sideOf(index, HXOrientationInput));
    form.add(rows_.sideOf(index, HXOrientationOutput));
    form.add(parametersOf(node));
    form.addSize(box.width).addSize(box.valueX);
    if (!box.complaint.full.isNil()) form.add(tables_.label(box.complaint));
    return tables_.forms.numberOf('[' + form.text() + ']');
  }

  std::int64_t parametersOf(const HXNode& node) {
    Column parameters;
    for (const auto& entry : node.parameters()) {
      const HXParameter& parameter = *entry.value;
      const String name = parameter.name();
      const auto* color = as<HXColorParameter>(&parameter);
      parameters.add(tables_.text(name ? name : entry.key))
          .add(tables_.text(parameterText(parameter)))
          .add(color ? tables_.color(color->value()) : -1);
    }
    return tables_.parameters.numberOf('[' + parameters.text() + ']');
  }

  void wires() {
    Column simple;
    Column odd;
    Column via;
    std::int64_t last = 0;
    for (std::size_t i = 0; i < scene_.wires.size(); ++i) {
      const Wire& wire = scene_.wires[i];
      if (!wire.via.empty()) {
        Column pieces;
        pieces.add(static_cast<std::int64_t>(i));
        for (std::size_t at = 0; at + 1 < wire.via.size(); at += 2) {
          pieces.addSize(wire.via[at].x).addSize(wire.via[at].y).addSize(wire.via[at + 1].x);
        }
        via.add(pieces);
      }
      if (!isSimple(wire)) {
        simple.add(0).add(-1).add(0).add(0);
        addOdd(odd, wire);
        continue;
      }
      const PortPlace& from = *rows_.placeOf(wire.output);
      const PortPlace& to = *rows_.placeOf(wire.input);
      simple.add(from.box - last).add(from.row).add(to.box - from.box).add(to.row);
      last = from.box;
    }
    field("wires", simple);
    field("odd", odd);
    field("via", via);
  }

  // Between two ports that are drawn, in the color of the one at the output.
  bool isSimple(const Wire& wire) const {
    const PortPlace* const from = rows_.placeOf(wire.output);
    const PortPlace* const to = rows_.placeOf(wire.input);
    return from && to && from->isDrawn && to->isDrawn && from->box == wire.fromBox &&
           to->box == wire.toBox && wire.mark == SceneMark::none &&
           wire.output->orientation() == HXOrientationOutput &&
           wire.input->orientation() == HXOrientationInput &&
           wire.color == wire.output->defaultColor();
  }

  void addOdd(Column& odd, const Wire& wire) {
    Column record;
    record.add(wire.fromBox).addSize(wire.from.x).addSize(wire.from.y);
    record.add(wire.toBox).addSize(wire.to.x).addSize(wire.to.y);
    record.add(tables_.color(wire.color)).add(static_cast<std::int64_t>(wire.mark));
    addEnd(record, wire.output);
    addEnd(record, wire.input);
    odd.add(record);
  }

  void addEnd(Column& record, const HXPort* port) {
    const HXNode* const node = port ? port->node() : nullptr;
    if (!node) {
      record.add(0);
    } else if (const PortPlace* const place = rows_.placeOf(port)) {
      record.add(Column().add(place->box).add(place->row));
    } else {
      record.add(Column()
                     .add(tables_.text(scene_.keyOf(*node)))
                     .add(tables_.textUnlessNil(port->uniqueKey()))
                     .add(tables_.text(titleOfNode(*node)))
                     .add(tables_.text(titleOfPort(*port))));
    }
  }

  std::string& out_;
  const GroupScene& scene_;
  PageTables& tables_;
  PageRows rows_;
};

}  // namespace

void appendPageData(std::string& out, const GroupScene& scene, PageTables& tables) {
  GroupData(out, scene, tables).append();
}

}  // namespace tarnkit::detail
