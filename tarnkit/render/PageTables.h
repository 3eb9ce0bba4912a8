#pragma once

#include <cstdint>
#include <deque>
#include <initializer_list>
#include <string>
#include <string_view>
#include <unordered_map>

#include "tarnkit/platform/objects/FunctionRef.h"
#include "tarnkit/render/Label.h"
#include "tarnkit/render/NodeBox.h"

namespace tarnkit::detail {

/// What the nodes of a page have in common, each thing written once and known by its number within
/// its table; so that what a node costs in the page is what it has of its own. For one page.
///
/// The script reads one JSON object of these tables. What is in parentheses is the table of which a
/// number is an entry's, -1 for none; square brackets are arrays.
/// - texts: a text; or, of one that is shortened or runs from right to left, [full (texts), shown
///   (texts) or -1 for all of it, 1 when it runs from right to left]
/// - colors: "#rrggbb"; and "light": 1 where light text is to stand on the color
/// - kinds, of nodes: [patch (texts), its name (texts), its category (texts)]
/// - ports: [key (texts), name (texts), color (colors), port group (texts), 1 when that is hidden]
/// - values: [kind, text (texts), 1 when set, …] with, for a boolean, 1 when it is on; for a color
///   it (colors) and its opacity; for a text the width of its chip
/// - rows, of a node's side: [flags, port (ports), value (values), …] with the name (texts) of a
///   port that is published; or [flags, label (texts)] for a line that is no port's
/// - sides, of nodes: [row (rows)…]
/// - parameters, of nodes: [name (texts), value (texts), color (colors)…]
/// - forms, of nodes: [kind (kinds), color (colors), inputs (sides), outputs (sides), parameters
///   (parameters), width, where the values begin, …] with what is wrong (texts), if anything is
///
/// "measures" are the sizes that pictures are drawn with.
class PageTables {
 public:
  // Flags of rows.
  static constexpr std::int64_t kTold = 1;   // a port that the panel tells of
  static constexpr std::int64_t kDrawn = 2;  // one with a line in the picture
  static constexpr std::int64_t kConnected = 4;
  static constexpr std::int64_t kChanged = 8;
  static constexpr std::int64_t kHeading = 16;
  static constexpr std::int64_t kCollapsed = 32;

  /// Entries as JSON, in the order in which they were first asked for.
  class Table {
   public:
    std::int64_t numberOf(std::string_view json);
    std::int64_t numberOf(std::initializer_list<std::int64_t> numbers);

   private:
    friend class PageTables;
    std::deque<std::string> entries_;
    std::unordered_map<std::string_view, std::int64_t> numbers_;
  };

  std::int64_t text(std::string_view plain);
  std::int64_t textUnlessNil(const String& plain) { return plain.isNil() ? -1 : text(plain); }
  /// A text as it is shown.
  std::int64_t label(const Label& label);
  std::int64_t color(RGBA color);
  /// -1 for none.
  std::int64_t value(const PortValue& value);

  Table kinds;
  Table ports;
  Table rows;
  Table sides;
  Table parameters;
  Table forms;

  void write(FunctionRef<void(std::string_view)> sink) const;

 private:
  Table texts_;
  Table colors_;
  Table values_;
  std::string light_;
  std::string quoted_;
};

}  // namespace tarnkit::detail
