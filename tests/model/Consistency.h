#pragma once

#include <string>
#include <vector>

#include "tarnkit/model/HXDocument.h"

namespace tarnkit::test {

/// What a document cannot promise any more after what was done to it, and is not looked at then.
struct Leniency {
  /// A port was published twice, or an observer did so in between: the earlier publication stays.
  bool doublePublications = false;
  /// Ports were connected that did not take the connection, which the other end keeps.
  bool refusedConnections = false;
  /// Collections were handed keys of groups that the node does not have.
  bool foreignGroupKeys = false;
};

/// One sentence for everything in the document that contradicts something else: nodes and groups
/// that do not hold each other, ports, groups and parameters that do not follow the patch in force,
/// publications and connections that one side does not know of.
std::vector<std::string> faultsOf(const HXDocument& document, const Leniency& leniency = {});

}  // namespace tarnkit::test
