#pragma once

#include "tarnkit/model/HXGroup.h"

namespace tarnkit {

/// Posted by a subview group with "Node" (the group itself, deliberately: the editor's views read
/// it there) and "SubviewNodes", the group's live ordered set.
inline constinit const Symbol HXSubviewGroupSubviewOrderDidChangeNotification{
    "HXSubviewGroupSubviewOrderDidChangeNotification"};

/// A group some of whose subnodes are view nodes: keeps those in the order of the views on screen.
class HXSubviewGroup final : public HXGroup {
  TARNKIT_CLASS
 public:
  HXSubviewGroup();
  /// Also takes over the other group's view order, or collects its view nodes in their order.
  static Ref<HXSubviewGroup> initWithGroup(HXGroup* group);

  /// The view nodes in screen order, as they are now.
  std::vector<Ref<HXNode>> subviewNodes() const;
  /// The same (`HXNode`), for reading by who changes nothing meanwhile.
  const OrderedSet& subviewNodesInForce() const noexcept { return *subviewNodes_; }
  /// `kNotFoundIndex` when the node is none of the view nodes.
  std::int64_t indexOfSubviewNode(const HXNode* node) const;
  /// Moves a view node; an index past the end means the end. Another node is ignored.
  void moveSubviewNode(HXNode& node, std::uint64_t toIndex);

  /// Makes these the view nodes, in this order, as a document says that they are: of a node of an
  /// unknown patch only this tells whether it is one. Others than subnodes are passed over. Linear.
  void setSubviewNodes(const std::vector<Ref<HXNode>>& views);

  const Symbol& processClassName() const override;
  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;
  void awakeAfterDecoding(Decoder& coder) override;
  void abandonDecoding() override;

 protected:
  bool isSubviewGroup() const noexcept override { return true; }
  bool hasViewNode() const override;
  void didAddNode(HXNode& node) override;
  void forgetNode(HXNode& node) override;
  void viewTypeDidChange(HXNode& node) override;

 private:
  explicit HXSubviewGroup(Decoding) noexcept;
  static Ref<Object> makeForDecoding(const Class&);
  template <class T, class... Args>
  friend Ref<T> make(Args&&... args);
  friend struct HXSubviewGroupFields;
  void announceOrder();

  // All changes of the order, but for what is read from an archive; false when nothing changed.
  bool insertView(HXNode& node);
  bool removeView(const HXNode& node);
  void moveView(HXNode& node, std::uint32_t from, std::uint32_t to);
  void storeViews(const OrderedSet& views) { subviewNodes_ = make<OrderedSet>(views); }

  Ref<OrderedSet> subviewNodes_;
};

}  // namespace tarnkit
