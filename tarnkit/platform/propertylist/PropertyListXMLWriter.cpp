#include "tarnkit/platform/propertylist/PropertyListXMLWriter.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <cmath>
#include <vector>

#include "tarnkit/platform/numbers/NumberText.h"
#include "tarnkit/platform/text/Base64.h"
#include "tarnkit/platform/text/UTF8.h"

namespace tarnkit {

namespace {

using Kind = PropertyList::Kind;
using Index = PropertyList::Index;

constexpr std::string_view kStart =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<plist version=\"1.0\">\n";
// Shared containers may make this many values of each.
constexpr std::size_t kSharingFactor = 8;
constexpr double kSecondsTo2001 = 978307200;

class Writer {
 public:
  explicit Writer(const PropertyList& list) : list_(list) {}

  Result<std::string> run() {
    out_ = kStart;
    left_ = kSharingFactor * (list_.count() + 1);
    value(list_.root());
    while (!open_.empty() && failure_.isOK()) step();
    if (!failure_.isOK()) return std::move(failure_);
    out_ += "</plist>\n";
    return std::move(out_);
  }

 private:
  struct Open {
    Index container;
    std::uint32_t next;
    bool isMap;
  };

  void indent() { out_.append(open_.size(), '\t'); }

  void step() {
    Open& innermost = open_.back();
    const Index container = innermost.container;
    const bool isMap = innermost.isMap;
    if (innermost.next == list_.count(container)) {
      open_.pop_back();
      indent();
      out_ += isMap ? "</dict>\n" : "</array>\n";
      return;
    }
    const std::uint32_t at = innermost.next++;
    if (!isMap) return value(list_.elements(container)[at]);
    indent();
    out_ += "<key>";
    text(list_.string(list_.keys(container)[at]));
    out_ += "</key>\n";
    value(list_.values(container)[at]);
  }

  void fail(StatusCode code, const char* why) {
    if (failure_.isOK()) failure_ = Status::failure(code, why);
  }

  void element(const char* name, std::string_view content) {
    out_ += fmt::format("<{}>{}</{}>\n", name, content, name);
  }

  void value(Index value) {
    if (left_-- == 0) return fail(StatusCode::tooLarge, "too large for the XML form");
    indent();
    switch (list_.kind(value)) {
      case Kind::boolean:
        out_ += list_.boolean(value) ? "<true/>\n" : "<false/>\n";
        return;
      case Kind::integer:
        return element("integer", fmt::format("{}", list_.integer(value)));
      case Kind::unsignedInteger:
        return element("integer",
                       fmt::format("{}", static_cast<std::uint64_t>(list_.integer(value))));
      case Kind::wideInteger:
      case Kind::real32:
      case Kind::real64:
        return element("real", shortestText(list_.real(value)));
      case Kind::uid:
        out_ +=
            fmt::format("<dict><key>CF$UID</key><integer>{}</integer></dict>\n", list_.uid(value));
        return;
      case Kind::date:
        return date(list_.real(value));
      case Kind::data:
        out_ += "<data>";
        detail::appendBase64(out_, list_.data(value));
        out_ += "</data>\n";
        return;
      case Kind::string:
        out_ += "<string>";
        text(list_.string(value));
        out_ += "</string>\n";
        return;
      case Kind::array:
      case Kind::map:
        return open(value, list_.kind(value) == Kind::map);
      case Kind::null:
        return fail(StatusCode::unsupported, "the XML form has no null");
    }
  }

  void open(Index container, bool isMap) {
    if (list_.count(container) == 0) {
      out_ += isMap ? "<dict/>\n" : "<array/>\n";
      return;
    }
    out_ += isMap ? "<dict>\n" : "<array>\n";
    open_.push_back({container, 0, isMap});
  }

  void date(double seconds) {
    const double since1970 = std::floor(seconds) + kSecondsTo2001;
    if (!(std::abs(since1970) < 6e10)) {
      return fail(StatusCode::unsupported, "the XML form has no such date");
    }
    element("date",
            fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(static_cast<std::time_t>(since1970))));
  }

  void text(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
      const auto point = detail::codePointAt(text, at);
      const auto c = point.value;
      if ((c < 0x20 && c != '\t' && c != '\n' && c != '\r') || c == 0xFFFE || c == 0xFFFF) {
        return fail(StatusCode::unsupported, "a text has a character that XML cannot hold");
      }
      switch (c) {
        case '<':
          out_ += "&lt;";
          break;
        case '>':
          out_ += "&gt;";
          break;
        case '&':
          out_ += "&amp;";
          break;
        case '\r':
          out_ += "&#13;";
          break;
        default:
          out_ += text.substr(at, point.size);
      }
      at += point.size;
    }
  }

  const PropertyList& list_;
  std::string out_;
  std::vector<Open> open_;
  std::size_t left_ = 0;
  Status failure_;
};

}  // namespace

Result<std::string> PropertyListXMLWriter::write(const PropertyList& list) {
  return Writer(list).run();
}

}  // namespace tarnkit
