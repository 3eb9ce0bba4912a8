#include "tools/tarnkit/reference/Html.h"

#include <fmt/format.h>

#include <iterator>

namespace tarnkit::tool {

namespace {

bool isPlainInLink(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '_' || c == '.' || c == '~';
}

bool isControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return (byte < 0x20 && c != '\n' && c != '\t') || byte == 0x7F;
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string html;
  html.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '&') {
      html += "&amp;";
    } else if (c == '<') {
      html += "&lt;";
    } else if (c == '>') {
      html += "&gt;";
    } else if (c == '"') {
      html += "&quot;";
    } else if (isControl(c)) {
      html += "\uFFFD";
    } else if (c == '\xC2' && i + 1 < text.size() &&
               static_cast<unsigned char>(text[i + 1]) < 0xA0) {
      html += "\uFFFD";  // U+0080 to U+009F
      ++i;
    } else {
      html += c;
    }
  }
  return html;
}

std::string nameHtml(std::string_view name) {
  const bool isBlank = name.find_first_not_of(" \t\n\r") == std::string_view::npos;
  return isBlank ? "<span class=\"none\">unnamed</span>" : escaped(name);
}

std::string codeHtml(std::string_view text) {
  if (text.empty()) return "<span class=\"none\">empty</span>";
  const char* const element = text.find('\n') == std::string_view::npos ? "code" : "pre";
  return fmt::format("<{0}>{1}</{0}>", element, escaped(text));
}

std::string linkTo(std::string_view fileName) {
  std::string link;
  for (const char c : fileName) {
    if (isPlainInLink(c)) {
      link += c;
    } else {
      fmt::format_to(std::back_inserter(link), "%{:02X}", static_cast<unsigned char>(c));
    }
  }
  return link;
}

}  // namespace tarnkit::tool
