#include "tools/tarnkit/reference/ExpressionsPage.h"

#include <fmt/format.h>

#include "tarnkit/math/MXLanguage.h"
#include "tarnkit/patches/HXRNodeClass.h"
#include "tools/tarnkit/reference/Html.h"
#include "tools/tarnkit/reference/PageFrame.h"
#include "tools/tarnkit/reference/ReferencePages.h"

namespace tarnkit::tool {

namespace {

constexpr std::string_view kRules[][2] = {
    {"2 + 3 * 4", "The usual order; parentheses group."},
    {"$width / 2", "A variable begins with $ and becomes an input of the patch."},
    {"'my value' + 1", "A name with blanks stands in quotes."},
    {"2pi", "Between a number and a name the multiplication may be left out."},
    {"2 ** 3", "The power is **, and ^ the exclusive or of bits: 2 ** 3 is 8, 2 ^ 3 is 1."},
    {"-2 ** 2", "The power binds more than the sign: -4."},
    {"sin(90\u00B0)", "Angles are in radians; the degree sign makes radians of degrees."},
    {"$a > 0 && $a < 10", "A comparison is 1 when it is true, otherwise 0."},
};

std::string codes(const std::vector<String>& names) {
  std::string html;
  for (const String& name : names) html += (html.empty() ? "" : " ") + codeHtml(name.view());
  return html;
}

std::string tableOf(std::string_view caption, std::string_view columns, const std::string& rows) {
  return fmt::format(
      "<div class=\"wide\">\n<table>\n<caption>{}</caption>\n<thead><tr>{}</tr></thead>\n"
      "<tbody>\n{}</tbody>\n</table>\n</div>\n",
      caption, columns, rows);
}

std::string columns(std::initializer_list<std::string_view> names) {
  std::string html;
  for (const auto name : names) html += fmt::format("<th scope=\"col\">{}</th>", name);
  return html;
}

std::string rules() {
  std::string html = "<section>\n<h2>How it is written</h2>\n<dl class=\"facts\">\n";
  for (const auto& [text, meaning] : kRules) {
    html += fmt::format("<dt>{}</dt><dd>{}</dd>\n", codeHtml(text), escaped(meaning));
  }
  return html + "</dl>\n</section>\n";
}

std::string operators() {
  std::string rows;
  for (const auto& described : operatorDescriptions()) {
    const bool isBinary = described.arity == MXOperatorArity::binary;
    const bool isRight = described.associativity == MXOperatorAssociativity::right;
    rows += fmt::format("<tr><th scope=\"row\">{}</th><td>{}</td><td>{}</td><td>{}</td></tr>\n",
                        codes(described.tokens), escaped(described.meaning),
                        isBinary  ? "between two values"
                        : isRight ? "before a value"
                                  : "behind a value",
                        isBinary ? (isRight ? "the right one" : "the left one") : "");
  }
  return "<section>\n<h2>Operators</h2>\n<p>Those that bind least stand first.</p>\n" +
         tableOf("Operators", columns({"Operator", "Value", "Where it stands", "First of two"}),
                 rows) +
         "</section>\n";
}

std::string functions() {
  std::string html;
  std::string rows;
  std::string_view subject;
  const auto endSubject = [&] {
    if (rows.empty()) return;
    html += fmt::format("<h3>{}</h3>\n{}", subject,
                        tableOf(subject, columns({"Function", "Value", "Also"}), rows));
    rows.clear();
  };
  for (const auto& function : functionDescriptions()) {
    if (function.subject != subject) endSubject();
    subject = function.subject;
    const auto call = function.arguments.empty()
                          ? std::string(function.name)
                          : fmt::format("{}({})", function.name, function.arguments);
    rows += fmt::format("<tr><th scope=\"row\">{}</th><td>{}</td><td>{}</td></tr>\n",
                        codeHtml(call), escaped(function.meaning), codes(function.aliases));
  }
  endSubject();
  return "<section>\n<h2>Functions</h2>\n" + html + "</section>\n";
}

}  // namespace

std::string expressionsPage() {
  const std::string body = fmt::format(
      "<nav class=\"top\" aria-label=\"Where this page stands\">\n<a href=\"{}\">Patch "
      "reference</a>\n</nav>\n<main>\n<h1>Expressions</h1>\n<p class=\"lead\">What is typed "
      "into the Math Expression patch.</p>\n{}{}{}</main>\n{}",
      ReferencePages::kIndex, rules(), operators(), functions(), pageFooter());
  return pageFrame("Expressions \u2013 Patch reference",
                   "The operators and functions of the Math Expression patch.", body);
}

std::string expressionsLink(const HXRNodeClass& patch) {
  if (patch.name() != "HXRMathExpressionNode") return {};
  return fmt::format("<p>What may stand in a formula: <a href=\"{}\">expressions</a>.</p>\n",
                     kExpressionsPage);
}

}  // namespace tarnkit::tool
