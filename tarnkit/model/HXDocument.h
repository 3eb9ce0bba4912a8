#pragma once

#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXImageStore.h"
#include "tarnkit/model/HXNode.h"

namespace tarnkit {

class HXChangeRecorder;

/// Posted by the document with "Graph" (the document) and "Connection".
inline constinit const Symbol HXDocumentAddConnectionNotification{
    "HXDocumentAddConnectionNotification"};
inline constinit const Symbol HXDocumentRemoveConnectionNotification{
    "HXDocumentRemoveConnectionNotification"};

/// The editor document: the outermost node, which always has a subnode group (the top-level
/// canvas), owns the image store, and is the only place where connections are made and broken.
///
/// Owned by whoever made or opened it; owns everything below. The document key identifies an open
/// document in this process, never a file. For one thread.
class HXDocument final : public HXNode {
  TARNKIT_CLASS
 public:
  HXDocument();

  /// "document_%i".
  String documentKey() const override { return documentKey_; }
  const Ref<HXImageStore>& imageStore() const noexcept { return imageStore_; }
  HXDocument* asDocument() noexcept override { return this; }
  bool hx_forceAllowsSubnodes() const override { return true; }

  /// Joins an output port and an input port, given in any order; published ports stand for what
  /// they resolve to. Null, with one line logged, when the two are not one input and one output, or
  /// when a published port resolves to nothing.
  ///
  /// It is not asked whether the ports take the connection, and nothing is broken first: that is
  /// the caller's. An input that is taken refuses silently while the connection is made all the
  /// same.
  Ref<HXConnection> connectPort(HXPort& first, HXPort& toPort);
  void breakConnection(HXConnection& connection);
  /// Breaks every connection that the port holds itself. Deliberately not resolved: of a published
  /// port nothing is broken; callers pass patch ports.
  void breakAllConnectionsToPort(HXPort& port);
  /// Joins the ports of an earlier connection again: the same object, with its key.
  void restoreConnection(HXConnection& connection);

  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;
  void awakeAfterDecoding(Decoder& coder) override;

  static String hx_newDocumentKey();

  /// Who records the changes of the document; null while nobody does.
  HXChangeRecorder* recorder() const noexcept { return recorder_; }

 protected:
  const Symbol& deviceClassName() const override;

 private:
  explicit HXDocument(Decoding) noexcept;
  static Ref<Object> makeForDecoding(const Class&);
  template <class T, class... Args>
  friend Ref<T> make(Args&&... args);
  friend struct HXPatchPortFields;
  void hx_addConnection(HXConnection& connection);
  void announceConnection(HXConnection& connection, bool isNew);
  void checkTree(Decoder& coder);

  friend class HXChangeRecorder;

  String documentKey_;
  Ref<HXImageStore> imageStore_;
  HXChangeRecorder* recorder_ = nullptr;
};

}  // namespace tarnkit
