#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/patches/BySide.h"
#include "tarnkit/platform/coding/Coder.h"
#include "tarnkit/text/PatchShape.h"

namespace tarnkit::detail {

// What a text says of a document, object by object, as an editor's archive has it: each of these
// goes under the class of the model whose keys it writes. So a text takes the road of every other
// document from there on, and whatever that road checks is checked. Nothing here owns another: the
// reader keeps all of them.

class TextRecord : public Object {
 public:
  explicit TextRecord(const Class& writtenAs) noexcept : class_(&writtenAs) {}
  const Class& isa() const noexcept override { return *class_; }

 private:
  const Class* class_;
};

struct NodeRecord;
struct ConnectionRecord;

struct ValueRecord final : TextRecord {
  ValueRecord();
  void encodeWithCoder(Encoder& coder) const override;

  std::int64_t kind = 0;
  bool boolean = false;
  std::int32_t index = 0;
  float number = 0;
  RGBA color{};
  String string;
};

/// A port of a patch, or a published one.
struct PortRecord final : TextRecord {
  explicit PortRecord(bool published);
  void encodeWithCoder(Encoder& coder) const override;

  bool isPublished;
  // While a text is read.
  bool isPublishedAlready = false;
  bool hasSameValue = false;
  const PortRecord* sameValueAs = nullptr;
  std::string_view publishedKey;  // of a published one, empty where it has none
  std::int32_t publishedSide = 0;
  std::size_t publishedPlace = 0;

  std::int32_t orientation = 0;
  std::int32_t relationship = 0;
  const PortRecord* symbolicPort = nullptr;
  const PortRecord* inner = nullptr;  // of a published one
  String name;                        // likewise
  Ref<ValueRecord> value;
  std::vector<const ConnectionRecord*> connections;
};

struct ConnectionRecord final : TextRecord {
  ConnectionRecord();
  void encodeWithCoder(Encoder& coder) const override;

  const PortRecord* output = nullptr;
  const PortRecord* input = nullptr;
  const PortRecord* shownOutput = nullptr;
  const PortRecord* shownInput = nullptr;
};

struct PortGroupRecord final : TextRecord {
  explicit PortGroupRecord(bool published);
  void encodeWithCoder(Encoder& coder) const override;

  String key;
  String groupKey;
  const NodeRecord* node = nullptr;
  std::int32_t orientation = 0;
  bool hidden = false;
  bool collapsedCanvas = false;
  bool collapsedSidebar = false;
};

struct PortGroupOrderRecord final : TextRecord {
  PortGroupOrderRecord();
  void encodeWithCoder(Encoder& coder) const override;

  const NodeRecord* node = nullptr;
  std::int32_t orientation = 0;
  std::vector<String> keys;
};

struct ParameterRecord final : TextRecord {
  ParameterRecord(const NodeRecord& ofNode, String ofKey, ParameterValue ofValue);
  void encodeWithCoder(Encoder& coder) const override;

  const NodeRecord* node;
  String key;
  ParameterValue value;
  const TextRecord* image = nullptr;
};

struct GroupRecord final : TextRecord {
  explicit GroupRecord(bool isOfViews);
  void encodeWithCoder(Encoder& coder) const override;

  bool ofViews;
  const NodeRecord* node = nullptr;
  std::vector<const NodeRecord*> subnodes;
  std::vector<const NodeRecord*> views;
  BySide<std::vector<PortRecord*>> published{};
  float centerX = 0;
  float centerY = 0;
  bool opaque = false;
};

struct ImageRecord final : TextRecord {
  ImageRecord();
  void encodeWithCoder(Encoder& coder) const override;

  std::vector<std::uint8_t> png;
};

struct ImageEntryRecord final : TextRecord {
  ImageEntryRecord();
  void encodeWithCoder(Encoder& coder) const override;

  String key;
  const ImageRecord* image = nullptr;
};

struct ImageStoreRecord final : TextRecord {
  ImageStoreRecord();
  void encodeWithCoder(Encoder& coder) const override;

  std::vector<const ImageEntryRecord*> entries;
};

struct NodeRecord final : TextRecord {
  explicit NodeRecord(const Class& nodeClass) : TextRecord(nodeClass) {}
  void encodeWithCoder(Encoder& coder) const override;

  struct KeyedPort {
    String key;
    PortRecord* port;
  };
  String key;
  String patchClass;
  String name;
  String comment;
  const GroupRecord* parentGroup = nullptr;
  GroupRecord* group = nullptr;
  float x = 0;
  float y = 0;
  std::int32_t inspectorPanel = 0;
  bool forceAllowsSubnodes = false;
  bool selected = false;
  BySide<const PortGroupOrderRecord*> groupOrder{};
  BySide<std::vector<const PortGroupRecord*>> portGroups{};
  std::vector<KeyedPort> ports;
  std::vector<const ParameterRecord*> parameters;
  bool isReplicator = false;
  std::vector<KeyedPort> arrayOutputs;
  const ImageStoreRecord* images = nullptr;  // of the document
};

}  // namespace tarnkit::detail
