// What docs/building-an-editor.md shows of Qt. With Qt the two lines in front are
//
//     #include <QObject>
//     #include <QString>
//
// This program brings the little of them that the bridge needs, so that it is compiled and run with
// every build.
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/patches/PatchRegistry.h"

namespace {

class QString {
 public:
  static QString fromUtf8(const char* text, std::size_t size) { return QString({text, size}); }
  const char* text() const { return text_.c_str(); }

 private:
  explicit QString(std::string text) : text_(std::move(text)) {}
  std::string text_;
};

class QObject {
 public:
  explicit QObject(QObject* = nullptr) {}
  virtual ~QObject() = default;
};

// Qt makes the bodies of signals; here each hands on to what is connected to it.
std::vector<std::function<void(const QString&)>> connected;

}  // namespace

#define Q_OBJECT
#define signals public
#define emit

// region bridge
// The names of Tarnkit are plain; QT_NO_KEYWORDS is not needed.
class DocumentSignals : public QObject {
  Q_OBJECT
 public:
  explicit DocumentSignals(tarnkit::Ref<tarnkit::HXDocument> document, QObject* parent = nullptr)
      : QObject(parent),
        document_(std::move(document)),
        observation_([this](const tarnkit::Notification& notice) { forward(notice); }) {}

 signals:
  void nodeAdded(const QString& key);
  void nodeRemoved(const QString& key);
  void nodeChanged(const QString& key);
  void wireAdded(const QString& key);
  void wireRemoved(const QString& key);

 private:
  static QString text(const tarnkit::String& string) {
    return QString::fromUtf8(string.view().data(), string.view().size());
  }

  void forward(const tarnkit::Notification& notice) {
    using namespace tarnkit;
    const auto* key = notice.userInfo[HXDocumentKeyInfo];
    if (!key || !key->isEqual(*document_->documentKey().object())) return;
    if (const auto* wire = as<HXConnection>(notice.userInfo[HXConnectionInfo])) {
      // The document tells of a wire once, its two ports each for themselves.
      if (notice.name == HXDocumentAddConnectionNotification)
        emit wireAdded(text(wire->uniqueKey()));
      if (notice.name == HXDocumentRemoveConnectionNotification) {
        emit wireRemoved(text(wire->uniqueKey()));
      }
    } else if (const auto* node = as<HXNode>(notice.userInfo[HXNodeInfo])) {
      if (notice.name == HXGroupAddNodeNotification)
        emit nodeAdded(text(node->uniqueKey()));
      else if (notice.name == HXGroupRemoveNodeNotification)
        emit nodeRemoved(text(node->uniqueKey()));
      else
        emit nodeChanged(text(node->uniqueKey()));
    }
  }

  tarnkit::Ref<tarnkit::HXDocument> document_;
  tarnkit::NotificationCenter::Observation observation_;  // ends with this object
};
// end bridge

void DocumentSignals::nodeAdded(const QString& key) { connected[0](key); }
void DocumentSignals::nodeRemoved(const QString& key) { connected[1](key); }
void DocumentSignals::nodeChanged(const QString& key) { connected[2](key); }
void DocumentSignals::wireAdded(const QString& key) { connected[3](key); }
void DocumentSignals::wireRemoved(const QString& key) { connected[4](key); }

int main() {
  using namespace tarnkit;
  std::vector<std::string> heard;
  for (const char* name : {"nodeAdded", "nodeRemoved", "nodeChanged", "wireAdded", "wireRemoved"}) {
    connected.emplace_back([&heard, name](const QString& key) {
      heard.push_back(std::string(name) + (*key.text() ? "" : " of nothing"));
    });
  }
  const auto document = make<HXDocument>();
  {
    const DocumentSignals bridge(document);
    const auto touch = HXNode::makeForPatch(*patchClassNamed("HXRTouchInteractionNode"));
    const auto toggle = HXNode::makeForPatch(*patchClassNamed("HXRSwitchNode"));
    document->subnodeGroup()->addNode(*touch);
    document->subnodeGroup()->addNode(*toggle);
    toggle->setName("Opened");
    document->connectPort(*touch->portForKey("Tarn.downOutput"),
                          *toggle->portForKey("Tarn.toggleInput"));
    document->subnodeGroup()->removeNode(touch.get());
  }
  make<HXDocument>()->setName("another");
  const std::vector<std::string> wanted = {"nodeAdded", "nodeAdded",   "nodeChanged",
                                           "wireAdded", "wireRemoved", "nodeRemoved"};
  for (const auto& name : heard) std::puts(name.c_str());
  return heard == wanted ? 0 : 1;
}
