#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "tarnkit/model/HXImageStoreEntry.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/platform/system/Result.h"
#include "tarnkit/text/HXTextFile.h"
#include "tarnkit/text/TextGraph.h"
#include "tarnkit/text/TextLines.h"

namespace tarnkit::detail {

/// Writes one document as text. Lives for one call of `write`.
class TextWriter {
 public:
  /// The files have to live as long as the writer.
  TextWriter(const HXDocument& document, const HXTextFile::ImageFiles& files);
  Result<std::string> write();

 private:
  using Node = TextGraph::Node;
  using Wire = TextGraph::Wire;

  Status check() const;
  void gatherOrder();
  void gatherViews(const HXGroup& group, const std::vector<std::uint32_t>& joined);
  bool hasSubnodes(std::uint32_t index) const;
  bool forceAllowsSubnodesByDefault(std::uint32_t index) const;
  bool holdsNodesByDefault(std::uint32_t index) const;
  bool isView(std::uint32_t index) const;
  void gatherImages();
  std::int32_t addImage(HXImageStoreEntry* entry);

  void writeNode(std::uint32_t index);
  void writePlace(std::uint32_t index);
  void writeKind(const Node& entry);
  void writeState(std::uint32_t index);
  void writeGroup(std::uint32_t index);
  void writeParameters(const Node& entry);
  void writeParameterOrder(const Node& entry);
  void writeParameterValue(const ParameterValue& value);
  ParameterValue valueOf(const HXParameter& parameter) const;
  void writePorts(const Node& entry);
  bool goesWithoutSaying(const Node& entry, const HXPatchPort& port);
  void writePortGroups(const Node& entry, std::int32_t orientation);
  void writePortGroupOrder(const Node& entry, std::int32_t orientation);
  void writeValues(const Node& entry);
  void writeValue(const Node& entry, const HXPatchPort& port);
  void writePublications(const Node& entry, std::int32_t orientation);
  void writePublication(const HXSymbolicPort& port, std::int32_t orientation);
  void writeArrayOutputs(const Node& entry);
  void writeWires(std::uint32_t index);
  void writePlaces(InlineObject& object, const Wire& wire);
  void writeOtherWires();
  void writeImages();
  void writeImage(std::int32_t index);
  /// Null for a port that is none of the document's.
  void writeAddress(const HXPort* port);
  /// Under which a port is published when nobody says more.
  String publishedName(const HXPort& port) const;

  const HXDocument& document_;
  const HXTextFile::ImageFiles& files_;
  PatchShapes shapes_;
  TextGraph graph_;
  TextLines lines_;
  std::string failure_;
  std::size_t nextWire_ = 0;
  // For each node: the one after which it joined its group, or stands among the views, where that
  // does not go without saying. kNone: at the beginning.
  std::unordered_map<std::uint32_t, std::uint32_t> after_;
  std::unordered_map<std::uint32_t, std::uint32_t> above_;
  std::vector<std::uint8_t> hasViews_;  // for each node: its group would be one of views
  std::unordered_map<std::uint32_t, bool> view_;
  std::vector<HXImageStoreEntry*> images_;
  std::unordered_map<const Object*, std::int32_t> imageIndexes_;
  std::size_t storedImages_ = 0;
  std::unordered_map<const PMRPrimitive*, const HXPatchPort*> values_;
  std::vector<ToldParameter> told_;  // of the node that is being written
};

}  // namespace tarnkit::detail
