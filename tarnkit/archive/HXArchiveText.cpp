#include "tarnkit/archive/HXArchiveText.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <vector>

#include "tarnkit/archive/HXArchiveReader.h"
#include "tarnkit/platform/numbers/NumberText.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tarnkit/platform/text/UTF8.h"

namespace tarnkit {

namespace {

using Kind = PropertyList::Kind;
using Index = PropertyList::Index;
using ArchivedObject = HXArchiveReader::Object;

// What both forms share: the strings of the archive.
class TextWriter : public HXArchiveReader::Visitor {
 protected:
  explicit TextWriter(const HXArchiveReader& archive)
      : archive_(archive), written_(archive.list().count()) {}

  // The string at that place of the list, which must not be written whole again and again.
  std::string_view text(Index string) {
    const auto whole = archive_.list().string(string);
    if (whole.size() <= HXArchiveText::kLongText) return whole;
    if (!written_[string]) {
      written_[string] = true;
      return whole;
    }
    shortened_.assign(brief(whole));
    shortened_ += "…";
    return shortened_;
  }
  // Names that stand wherever their object does, so they are never written whole when they are
  // long.
  std::string_view idOf(ArchivedObject object) const { return brief(archive_.idOf(object)); }
  std::string_view classOf(ArchivedObject object) const { return brief(archive_.classOf(object)); }

  const HXArchiveReader& archive_;

 private:
  static std::string_view brief(std::string_view whole) noexcept {
    return detail::beginningOf(whole, HXArchiveText::kLongText);
  }

  std::string shortened_;
  std::vector<bool> written_;
};

std::string realText(const PropertyList& list, Index value) {
  const double real = list.real(value);
  return list.kind(value) == Kind::real32 ? shortestText(static_cast<float>(real))
                                          : shortestText(real);
}

std::string integerText(const PropertyList& list, Index value) {
  if (list.kind(value) == Kind::unsignedInteger) {
    return std::to_string(static_cast<std::uint64_t>(list.integer(value)));
  }
  return std::to_string(list.integer(value));
}

class IndentedWriter final : public TextWriter {
 public:
  IndentedWriter(const HXArchiveReader& archive, HXArchiveText::Sink sink)
      : TextWriter(archive), sink_(sink) {
    out_ = archive.kind() == HXArchiveKind::imageArchive ? "image archive" : "device graph";
    out_ += ", version ";
    JSONWriter::appendEscaped(out_, archive.version());
    fmt::format_to(std::back_inserter(out_), ", {} object{}\n", archive.objectCount(),
                   archive.objectCount() == 1 ? "" : "s");
  }
  void finish() { flush(); }

  void beginMap(ArchivedObject object, std::uint32_t count) override {
    begin();
    if (object == HXArchiveReader::kNoObject) {
      out_ += count == 0 ? "{}" : "{…}";
    } else {
      const auto name = classOf(object);
      JSONWriter::appendEscaped(out_, idOf(object));
      out_ += ' ';
      JSONWriter::appendEscaped(out_, name.empty() ? "map" : name);
      if (count == 0) out_ += ", empty";
    }
    open(false);
  }
  void key(Index key) override {
    indent();
    JSONWriter::appendEscaped(out_, text(key));
    out_ += ": ";
    afterKey_ = true;
  }
  void endMap() override { inList_.pop_back(); }
  void beginList(ArchivedObject object, std::uint32_t count) override {
    begin();
    if (object != HXArchiveReader::kNoObject) {
      JSONWriter::appendEscaped(out_, idOf(object));
      out_ += ' ';
    }
    out_ += count == 0 ? "empty list" : fmt::format("list of {}", count);
    open(true);
  }
  void endList() override { inList_.pop_back(); }
  void value(ArchivedObject object, Index value) override {
    begin();
    if (object != HXArchiveReader::kNoObject) {
      JSONWriter::appendEscaped(out_, idOf(object));
      out_ += ' ';
    }
    appendValue(value);
    out_ += '\n';
  }
  void repeated(ArchivedObject object) override {
    begin();
    JSONWriter::appendEscaped(out_, idOf(object));
    if (const auto name = classOf(object); !name.empty()) {
      out_ += ' ';
      JSONWriter::appendEscaped(out_, name);
    }
    out_ += " (above)\n";
  }
  void nil() override {
    begin();
    out_ += "nil\n";
  }

 private:
  void begin() {
    if (!afterKey_) indent();
    if (!afterKey_ && !inList_.empty() && inList_.back()) out_ += "- ";
    afterKey_ = false;
  }
  void indent() {
    constexpr std::size_t kPiece = 65536;
    if (out_.size() >= kPiece) flush();
    out_.append(2 * std::min(inList_.size(), HXArchiveText::kMaximumIndentation), ' ');
  }
  void open(bool isList) {
    out_ += '\n';
    inList_.push_back(isList);
  }
  void appendValue(Index value) {
    const PropertyList& list = archive_.list();
    switch (list.kind(value)) {
      case Kind::string:
        return JSONWriter::appendQuoted(out_, text(value));
      case Kind::boolean:
        out_ += list.boolean(value) ? "true" : "false";
        return;
      case Kind::integer:
      case Kind::unsignedInteger:
        out_ += integerText(list, value);
        return;
      case Kind::data:
        fmt::format_to(std::back_inserter(out_), "<{} bytes>", list.data(value).size());
        return;
      case Kind::wideInteger:
      case Kind::real32:
      case Kind::real64:
      case Kind::date:
        out_ += realText(list, value);
        return;
      default:
        out_ += '<';
        out_ += PropertyList::nameOf(list.kind(value));
        out_ += '>';
    }
  }

  void flush() {
    sink_(out_);
    out_.clear();
  }

  HXArchiveText::Sink sink_;
  std::string out_;
  std::vector<bool> inList_;
  bool afterKey_ = false;
};

class TreeWriter final : public TextWriter {
 public:
  TreeWriter(const HXArchiveReader& archive, HXArchiveText::Sink sink)
      : TextWriter(archive), json_(sink) {
    const bool isImage = archive.kind() == HXArchiveKind::imageArchive;
    json_.beginObject().key("kind").value(isImage ? "imageArchive" : "deviceGraph");
    json_.key("version").value(archive.version());
    json_.key("objects").value(std::uint64_t{archive.objectCount()});
    json_.key("root");
  }
  void finish() {
    json_.endObject().endLine();
    json_.flush();
  }

  void beginMap(ArchivedObject object, std::uint32_t) override {
    beginObject(object);
    if (object != HXArchiveReader::kNoObject) {
      if (const auto name = classOf(object); !name.empty()) json_.key("class").value(name);
    }
    json_.key("values").beginObject();
  }
  void key(Index key) override { json_.key(text(key)); }
  void endMap() override { json_.endObject().endObject(); }
  void beginList(ArchivedObject object, std::uint32_t) override {
    beginObject(object);
    json_.key("elements").beginArray();
  }
  void endList() override { json_.endArray().endObject(); }
  void value(ArchivedObject object, Index value) override {
    if (object == HXArchiveReader::kNoObject) return writeValue(value);
    beginObject(object);
    json_.key("value");
    writeValue(value);
    json_.endObject();
  }
  void repeated(ArchivedObject object) override {
    json_.beginObject().key("reference").value(idOf(object)).endObject();
  }
  void nil() override { json_.null(); }

 private:
  void beginObject(ArchivedObject object) {
    json_.beginObject();
    if (object != HXArchiveReader::kNoObject) json_.key("id").value(idOf(object));
  }
  void writeCount(std::string_view name, std::uint64_t count) {
    json_.beginObject().key(name).value(count).endObject();
  }
  void writeValue(Index value) {
    const PropertyList& list = archive_.list();
    switch (list.kind(value)) {
      case Kind::string:
        json_.value(text(value));
        return;
      case Kind::boolean:
        json_.value(list.boolean(value));
        return;
      case Kind::integer:
      case Kind::unsignedInteger:
        json_.number(integerText(list, value));
        return;
      case Kind::data:
        return writeCount("data", list.data(value).size());
      case Kind::uid:
        return writeCount("uid", list.uid(value));
      case Kind::real32:
        json_.value(static_cast<float>(list.real(value)));
        return;
      case Kind::wideInteger:
      case Kind::real64:
      case Kind::date:
        json_.value(list.real(value));
        return;
      case Kind::array:
      case Kind::map:
        json_.beginObject().key("repeated").value(true).endObject();
        return;
      default:
        json_.null();
    }
  }

  JSONWriter json_;
};

template <class Writer>
void write(const HXArchiveReader& archive, HXArchiveText::Sink sink) {
  Writer writer(archive, sink);
  archive.walk(writer);
  writer.finish();
}

template <class Writer>
std::string written(const HXArchiveReader& archive) {
  std::string text;
  write<Writer>(archive, [&](std::string_view piece) { text += piece; });
  return text;
}

}  // namespace

void HXArchiveText::writeIndented(const HXArchiveReader& archive, Sink sink) {
  write<IndentedWriter>(archive, sink);
}

std::string HXArchiveText::indented(const HXArchiveReader& archive) {
  return written<IndentedWriter>(archive);
}

void HXArchiveText::writeJSON(const HXArchiveReader& archive, Sink sink) {
  write<TreeWriter>(archive, sink);
}

std::string HXArchiveText::json(const HXArchiveReader& archive) {
  return written<TreeWriter>(archive);
}

}  // namespace tarnkit
