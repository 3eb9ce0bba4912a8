#pragma once

#include <array>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tarnkit/platform/collections/KeyedHash.h"
#include "tarnkit/platform/propertylist/JSONTree.h"
#include "tarnkit/platform/system/Result.h"
#include "tarnkit/text/HXTextFile.h"
#include "tarnkit/text/PatchShape.h"
#include "tarnkit/text/TextFormat.h"
#include "tarnkit/text/TextRecords.h"

namespace tarnkit::detail {

/// Makes of a text the records of the document that it says. Lives for one call of `read`; the
/// records live as long as the reader, and the text must.
///
/// What members refer to may stand before or after them, so everything is read in steps, each for
/// all nodes: what they are called, what they are, what is published, what is joined, in which
/// order all of it stands. The first thing that does not fit is kept, and every step answers false
/// from then on.
class TextReader {
 public:
  TextReader(std::string_view text, std::string folder, HXTextFile::AbsentImages absent);
  ~TextReader();
  TextReader(const TextReader&) = delete;
  TextReader& operator=(const TextReader&) = delete;

  /// The record of the document.
  Result<const NodeRecord*> read();
  /// Which of the store's images stood in files.
  const HXTextFile::ImageFiles& imageFiles() const noexcept { return imageFiles_; }

 private:
  using Index = JSONTree::Index;
  using Kind = JSONTree::Kind;
  using Words = std::vector<std::string_view>;
  static constexpr Index kNone = JSONTree::kNone;

  struct Hash {
    std::size_t operator()(std::string_view text) const { return keyedHash(text); }
  };
  template <class Value>
  using Table = std::unordered_map<std::string_view, Value, Hash>;

  /// What people see as a port of that name.
  struct Named {
    std::string_view key;             // of a port of the patch
    PortRecord* published = nullptr;  // or else this
    bool isAmbiguous = false;
  };
  struct Node {
    Index json = kNone;
    std::array<Index, text::kNodeMembers.size()> members;
    std::string_view id;
    NodeRecord* record = nullptr;
    std::uint32_t parent = 0;
    std::uint32_t depth = 0;
    std::uint32_t childCount = 0;
    const PatchShape* shape = nullptr;
    const PatchShape* fullShape = nullptr;  // with the parameters told; made when it is asked for
    bool isExplicit = false;
    bool hasViews = false;
    std::string_view groupKind;
    std::vector<ToldParameter> told;
    std::vector<PortRecord*> shapePorts;  // as those of the shape
    std::unique_ptr<Table<PortRecord*>> morePorts;
    BySide<std::vector<PortRecord*>> published{};
    std::unique_ptr<Table<PortRecord*>> publishedByKey;
    BySide<std::unique_ptr<Table<Named>>> portsByName{};
  };
  struct Publication {
    std::uint32_t node;
    std::int32_t side;
    Index json;
    Index port = kNone;
    Index name = kNone;
    Index relationship = kNone;
    Index linked = kNone;
    PortRecord* record;
    bool isSettled = false;
  };
  struct Wire {
    std::uint32_t node = 0;
    std::string member;  // at which it stands in a text that was written
    ConnectionRecord* record = nullptr;
    bool heldByOutput = true;
    bool heldByInput = true;
    std::int64_t outputPlace = -1;
    std::int64_t inputPlace = -1;
  };
  struct Address {
    PortRecord* port = nullptr;
    std::uint32_t node = 0;
    /// The key of the port, for the key of one that publishes it; empty where there is none.
    std::string key;
    bool isPublished = false;
  };

  bool fail(Index at, std::string sentence);
  bool failFor(Index at, Index path, std::string sentence);
  std::string pathOf(Index value) const;

  // Values.
  bool expect(Index value, Kind kind);
  bool readText(Index value, String& into, bool mayBeNull = false);
  bool readBool(Index value, bool& into);
  bool readInt(Index value, std::int32_t& into);
  bool readInt64(Index value, std::int64_t& into);
  bool readFloat(Index value, float& into);
  bool readFloats(Index value, float* into, std::size_t count);
  bool readColor(Index value, RGBA& into);
  bool readCode(Index value, std::string_view one, std::string_view two, std::int32_t& into);
  template <std::size_t count>
  bool readMembers(Index object, const std::array<std::string_view, count>& names,
                   std::array<Index, count>& members);
  String shared(std::string_view text);

  // The steps.
  bool readTop();
  bool readNodeMembers(Node& node, bool isDocument);
  bool readNodes();
  bool sortNodes();
  bool readPlaces();
  bool readKinds();
  bool readKind(Node& node, bool isDocument);
  bool readPatch(Node& node);
  const HXRNodeClass* patchNamed(std::string_view name, bool& isAmbiguous);
  bool readState(Node& node, bool isDocument);
  bool readParameters(Node& node);
  bool readParameter(Index value, const PatchShape::Parameter* known, ParameterValue& into);
  bool readParameterValue(Index value, ParameterValue& into);
  bool readImageValue(Index value, std::int32_t& into);
  bool readParameterOrder(Node& node, std::vector<ToldParameter>& all);
  bool readPorts(Node& node);
  bool readPort(Node& node, Index value);
  bool makeGroups();
  bool makeGroup(Node& node);
  bool orderSubnodes();
  bool orderViews(Node& node, const std::vector<std::uint32_t>& joined);
  bool readPublications();
  bool readPublication(std::uint32_t index, std::int32_t side, Index value);
  bool settlePublication(Publication& publication, bool isLast);
  bool finishPublications();
  bool readArrayOutputKeys(Node& node);
  bool readArrayOutputs(Node& node);
  bool readValues();
  bool readValue(Node& node, Index value, const Address& address);
  bool readPlainValue(Index value, std::int64_t usualNumber, ValueRecord& into);
  bool readTypedValue(Index kind, Index value, ValueRecord& into);
  bool readPayload(Index value, ValueRecord& into);
  bool readSameValues();
  bool readWires();
  bool readWire(std::uint32_t node, const Address& input, Index value);
  bool readPlace(Index value, std::int64_t& into);
  bool readOtherWire(Index value);
  void joinWires();
  static std::string memberOf(const Address& address);
  bool readPortGroups();
  bool readPortGroupsOf(Node& node, std::int32_t side);
  bool readPortGroup(Node& node, std::int32_t side, Index value, const Table<bool>& published,
                     Table<bool>& told);
  PortGroupRecord* makePortGroup(Node& node, std::int32_t side, const String& key,
                                 bool isPublished);
  bool readPortGroupOrder(Node& node, std::int32_t side, const std::vector<String>& published);
  bool readImages();
  bool readImageList(Index list, bool isStored);
  bool readImage(Index value, ImageEntryRecord& entry);
  bool readImageFile(Index value, ImageEntryRecord& entry);

  // What is referred to.
  bool nodeNamed(Index value, std::uint32_t& into);
  PortRecord* patchPort(Node& node, std::string_view key);
  PortRecord* addPort(Node& node, const String& key, std::int32_t orientation,
                      std::int32_t relationship);
  const PatchShape& fullShape(Node& node);
  /// A port as a text calls it: where that stands, and which side a name is one of (0: either).
  struct Mention {
    std::uint32_t node;
    Index at;
    Index path;
    std::int32_t side;
  };
  bool resolveMember(const Mention& mention, std::string_view member, Address& into);
  bool resolveKey(const Mention& mention, std::string_view key, Address& into);
  bool resolveNumber(const Mention& mention, std::string_view number, Address& into);
  bool resolveName(const Mention& mention, std::string_view name, Address& into);
  bool resolveAddress(Index value, Index path, std::int32_t side, Address& into);
  const Table<Named>& namedPorts(Node& node, std::int32_t side);
  const PortRecord* resolved(const PortRecord* port) const;
  /// The nodes in the order given, but for those that say after which of them they stand.
  bool orderBy(std::size_t member, const std::vector<std::uint32_t>& base,
               std::vector<std::uint32_t>& into);
  std::string patchNameOf(const Node& node) const;

  template <class Record, class... Args>
  Record* makeRecord(Args&&... args) {
    auto record = make<Record>(std::forward<Args>(args)...);
    Record* const made = record.get();
    records_.push_back(std::move(record));
    return made;
  }

  std::string_view text_;
  std::string folder_;
  HXTextFile::AbsentImages absentImages_;
  std::unique_ptr<JSONTree> tree_;
  std::string failure_;
  StatusCode failureCode_ = StatusCode::damaged;
  std::vector<Ref<Object>> records_;
  std::array<Index, text::kTopMembers.size()> top_;
  std::vector<Node> nodes_;  // the document, then the others in their order
  Table<std::uint32_t> byID_;
  std::deque<std::string> keptTexts_;
  PatchShapes shapes_;
  Table<String> shared_;
  std::vector<Publication> publications_;
  std::vector<Wire> wires_;
  struct SameValue {
    Index json;
    PortRecord* port;
  };
  std::vector<SameValue> sameValues_;
  std::vector<ImageEntryRecord*> images_;
  std::size_t storedImages_ = 0;
  HXTextFile::ImageFiles imageFiles_;
  Table<std::int32_t> imagesByKey_;
  std::unique_ptr<Table<const HXRNodeClass*>> patchesByName_;  // null where several have the name
};

}  // namespace tarnkit::detail
