#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tarnkit/render/GroupScene.h"
#include "tarnkit/render/PageTables.h"

namespace tarnkit::detail {

/// Where a port stands in the data of a group.
struct PortPlace {
  std::int32_t box = 0;
  std::int32_t row = 0;  // of its side
  bool isDrawn = false;  // in a line of its own
};

/// Enters the rows of a group's nodes into the tables of its page: the lines that the picture shows
/// and, among them, the ports that only the panel tells of.
class PageRows {
 public:
  PageRows(const GroupScene& scene, PageTables& tables);

  /// The side's number (sides).
  std::int64_t sideOf(std::size_t box, std::int32_t orientation);
  /// Of a port of the sides so far; null for another.
  const PortPlace* placeOf(const HXPort* port) const;

 private:
  struct Told {
    const HXPort* port;
    const HXPortGroup* group;
  };

  void collectTold(const HXNode& node, std::int32_t orientation);
  void addRow(std::int64_t row);
  void addPort(const HXPort& port, const HXPortGroup* group, const PortLine* line, bool isTold);
  void addLine(const PortLine& line);
  std::int64_t descriptionOf(const HXPort& port, const HXPortGroup* group, const PortLine* line);

  const GroupScene& scene_;
  PageTables& tables_;
  std::unordered_map<const HXPort*, PortPlace> places_;
  // Of the side that is being entered.
  std::int32_t box_ = 0;
  std::int32_t count_ = 0;
  std::vector<Told> told_;
  std::unordered_set<const HXPort*> met_;
  std::unordered_map<const HXPort*, const PortLine*> drawn_;
  std::string json_;
};

}  // namespace tarnkit::detail
