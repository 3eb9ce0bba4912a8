#include "tarnkit/archive/HXArchiveText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <vector>

#include "tarnkit/archive/HXArchiveReader.h"
#include "tarnkit/platform/NumberText.h"
#include "tarnkit/platform/UTF8.h"

namespace tarnkit {

namespace {

using Kind = PropertyList::Kind;
using Index = PropertyList::Index;
using ArchivedObject = HXArchiveReader::Object;

// Files hold anything, and are shown on terminals: no control character gets through, neither of
// the first set nor of the second, which are two bytes each.
void appendEscaped(std::string& out, std::string_view text) {
  constexpr unsigned char kHigh = 0xC2;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
    if (byte == '"' || byte == '\\') {
      out += '\\';
      out += text[i];
    } else if (byte == '\n') {
      out += "\\n";
    } else if (byte < 0x20 || byte == 0x7F) {
      fmt::format_to(std::back_inserter(out), "\\u{:04x}", byte);
    } else if (byte == kHigh && next >= 0x80 && next < 0xA0) {
      fmt::format_to(std::back_inserter(out), "\\u{:04x}", next);
      ++i;
    } else {
      out += text[i];
    }
  }
}

void appendQuoted(std::string& out, std::string_view text) {
  out += '"';
  appendEscaped(out, text);
  out += '"';
}

// What both forms share: the text so far, handed on in pieces, and the strings that it holds.
class TextWriter : public HXArchiveReader::Visitor {
 protected:
  TextWriter(const HXArchiveReader& archive, HXArchiveText::Sink sink)
      : archive_(archive), sink_(sink), written_(archive.list().count()) {}

  // The string at that place of the list, which must not be written whole again and again.
  std::string_view text(Index string) {
    constexpr std::size_t kPiece = 65536;
    if (out_.size() >= kPiece) flush();
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
  void flush() {
    sink_(out_);
    out_.clear();
  }

  const HXArchiveReader& archive_;
  std::string out_;

 private:
  static std::string_view brief(std::string_view whole) noexcept {
    return detail::beginningOf(whole, HXArchiveText::kLongText);
  }

  HXArchiveText::Sink sink_;
  std::string shortened_;
  std::vector<bool> written_;
};

std::string realText(const PropertyList& list, Index value) {
  const double real = list.real(value);
  return list.kind(value) == Kind::real32 ? shortestText(static_cast<float>(real))
                                          : shortestText(real);
}

// Most readers take "-0" for an integer, which has no sign.
std::string numberOfJSON(std::string text) { return text == "-0" ? "-0.0" : text; }

std::string integerText(const PropertyList& list, Index value) {
  if (list.kind(value) == Kind::unsignedInteger) {
    return std::to_string(static_cast<std::uint64_t>(list.integer(value)));
  }
  return std::to_string(list.integer(value));
}

class IndentedWriter final : public TextWriter {
 public:
  IndentedWriter(const HXArchiveReader& archive, HXArchiveText::Sink sink)
      : TextWriter(archive, sink) {
    out_ = archive.kind() == HXArchiveKind::imageArchive ? "image archive" : "device graph";
    out_ += ", version ";
    appendEscaped(out_, archive.version());
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
      appendEscaped(out_, idOf(object));
      out_ += ' ';
      appendEscaped(out_, name.empty() ? "map" : name);
      if (count == 0) out_ += ", empty";
    }
    open(false);
  }
  void key(Index key) override {
    indent();
    appendEscaped(out_, text(key));
    out_ += ": ";
    afterKey_ = true;
  }
  void endMap() override { inList_.pop_back(); }
  void beginList(ArchivedObject object, std::uint32_t count) override {
    begin();
    if (object != HXArchiveReader::kNoObject) {
      appendEscaped(out_, idOf(object));
      out_ += ' ';
    }
    out_ += count == 0 ? "empty list" : fmt::format("list of {}", count);
    open(true);
  }
  void endList() override { inList_.pop_back(); }
  void value(ArchivedObject object, Index value) override {
    begin();
    if (object != HXArchiveReader::kNoObject) {
      appendEscaped(out_, idOf(object));
      out_ += ' ';
    }
    appendValue(value);
    out_ += '\n';
  }
  void repeated(ArchivedObject object) override {
    begin();
    appendEscaped(out_, idOf(object));
    if (const auto name = classOf(object); !name.empty()) {
      out_ += ' ';
      appendEscaped(out_, name);
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
        return appendQuoted(out_, text(value));
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

  std::vector<bool> inList_;
  bool afterKey_ = false;
};

class JSONWriter final : public TextWriter {
 public:
  JSONWriter(const HXArchiveReader& archive, HXArchiveText::Sink sink) : TextWriter(archive, sink) {
    out_ = archive.kind() == HXArchiveKind::imageArchive ? R"({"kind":"imageArchive","version":)"
                                                         : R"({"kind":"deviceGraph","version":)";
    appendQuoted(out_, archive.version());
    fmt::format_to(std::back_inserter(out_), R"(,"objects":{},"root":)", archive.objectCount());
  }
  void finish() {
    out_ += "}\n";
    flush();
  }

  void beginMap(ArchivedObject object, std::uint32_t) override {
    separate();
    out_ += '{';
    if (object != HXArchiveReader::kNoObject) {
      appendID(object);
      if (const auto name = classOf(object); !name.empty()) {
        out_ += R"("class":)";
        appendQuoted(out_, name);
        out_ += ',';
      }
    }
    out_ += R"("values":{)";
    isFirst_ = true;
  }
  void key(Index key) override {
    separate();
    appendQuoted(out_, text(key));
    out_ += ':';
    isFirst_ = true;
  }
  void endMap() override {
    out_ += "}}";
    isFirst_ = false;
  }
  void beginList(ArchivedObject object, std::uint32_t) override {
    separate();
    out_ += '{';
    if (object != HXArchiveReader::kNoObject) appendID(object);
    out_ += R"("elements":[)";
    isFirst_ = true;
  }
  void endList() override {
    out_ += "]}";
    isFirst_ = false;
  }
  void value(ArchivedObject object, Index value) override {
    separate();
    if (object == HXArchiveReader::kNoObject) {
      appendValue(value);
    } else {
      out_ += '{';
      appendID(object);
      out_ += R"("value":)";
      appendValue(value);
      out_ += '}';
    }
    isFirst_ = false;
  }
  void repeated(ArchivedObject object) override {
    separate();
    out_ += R"({"reference":)";
    appendQuoted(out_, idOf(object));
    out_ += '}';
    isFirst_ = false;
  }
  void nil() override {
    separate();
    out_ += "null";
    isFirst_ = false;
  }

 private:
  void separate() {
    if (!isFirst_) out_ += ',';
  }
  void appendID(ArchivedObject object) {
    out_ += R"("id":)";
    appendQuoted(out_, idOf(object));
    out_ += ',';
  }
  void appendValue(Index value) {
    const PropertyList& list = archive_.list();
    switch (list.kind(value)) {
      case Kind::string:
        return appendQuoted(out_, text(value));
      case Kind::boolean:
        out_ += list.boolean(value) ? "true" : "false";
        return;
      case Kind::integer:
      case Kind::unsignedInteger:
        out_ += integerText(list, value);
        return;
      case Kind::data:
        fmt::format_to(std::back_inserter(out_), R"({{"data":{}}})", list.data(value).size());
        return;
      case Kind::uid:
        fmt::format_to(std::back_inserter(out_), R"({{"uid":{}}})", list.uid(value));
        return;
      case Kind::wideInteger:
      case Kind::real32:
      case Kind::real64:
      case Kind::date:
        if (std::isfinite(list.real(value))) {
          out_ += numberOfJSON(realText(list, value));
        } else {
          appendQuoted(out_, realText(list, value));
        }
        return;
      case Kind::array:
      case Kind::map:
        out_ += R"({"repeated":true})";
        return;
      default:
        out_ += "null";
    }
  }

  bool isFirst_ = true;  // nothing stands before the next value at its place
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
  write<JSONWriter>(archive, sink);
}

std::string HXArchiveText::json(const HXArchiveReader& archive) {
  return written<JSONWriter>(archive);
}

}  // namespace tarnkit
