#include "tools/tarnkit/reference/PageFrame.h"

#include <fmt/format.h>

#include "tools/tarnkit/reference/Html.h"

namespace tarnkit::tool {

std::string pageFrame(std::string_view title, std::string_view description, std::string_view body) {
  return fmt::format(
      "<!DOCTYPE html>\n"
      "<html lang=\"en\">\n"
      "<head>\n"
      "<meta charset=\"utf-8\">\n"
      "<meta name=\"generator\" content=\"{}\">\n"
      "<title>{}</title>\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<meta name=\"description\" content=\"{}\">\n"
      "<link rel=\"stylesheet\" href=\"{}\">\n"
      "</head>\n"
      "<body>\n{}</body>\n"
      "</html>\n",
      kReferenceMark, escaped(title), escaped(description), kStylesheet, body);
}

std::string pageFooter() {
  return fmt::format("<p class=\"colophon\">Tarnkit {} patch reference</p>\n", TARNKIT_VERSION);
}

}  // namespace tarnkit::tool
