#include "ModelFixture.h"

#include <fmt/format.h>

#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/platform/collections/Array.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/objects/Null.h"

namespace tarnkit::test {

namespace {

std::string nameOf(const Object* object) {
  const auto text = [](std::string_view key) { return std::string(key); };
  if (const auto* node = as<HXNode>(object)) return text(node->name());
  if (as<HXGroup>(object)) return text(object->isa().name());
  if (const auto* port = as<HXPort>(object)) return text(port->name());
  if (const auto* group = as<HXPortGroup>(object)) return text(group->groupKey());
  if (const auto* parameter = as<HXParameter>(object)) return text(parameter->uniqueKey());
  if (as<HXConnection>(object)) return "connection";
  if (const auto* primitive = as<PMRPrimitive>(object)) return text(primitive->stringValue());
  if (const auto* set = as<OrderedSet>(object)) {
    std::string members;
    for (const auto& member : *set) members += (members.empty() ? "" : "+") + nameOf(member.get());
    return members;
  }
  if (const auto* array = as<Array>(object)) {
    std::string elements;
    for (const auto& element : *array)
      elements += (elements.empty() ? "" : " ") + nameOf(element.get());
    return "(" + elements + ")";
  }
  if (as<Null>(object)) return "null";
  return text(object->description());
}

}  // namespace

Recorder::Recorder()
    : observation_([this](const Notification& notification) {
        std::string line(notification.name.text());
        line += fmt::format(" {}", nameOf(&notification.object));
        for (const auto& entry : notification.userInfo) {
          if (*entry.key == HXDocumentKeyInfo) continue;
          line += fmt::format(" {}={}", entry.key->text(), nameOf(entry.value.get()));
        }
        EXPECT_TRUE(notification.userInfo.contains(HXDocumentKeyInfo)) << line;
        lines_.push_back(line);
      }) {
  earlier_ = Log::setSink([this](std::string_view line) { log_.emplace_back(line); });
}

Recorder::~Recorder() { Log::setSink(earlier_); }

Ref<HXNode> ModelTest::nodeOf(const char* patchClass) {
  auto node = make<HXNode>();
  if (*patchClass == '\0') {
    node->setForceAllowsSubnodes(true);
    node->setName("Group");
    node->setPatch(nullptr);
  } else {
    const auto* record = patchClassNamed(patchClass);
    EXPECT_TRUE(record) << patchClass;
    node->setPatch(record->makeDefinition());
  }
  return node;
}

Ref<HXNode> ModelTest::add(const char* patchClass, HXNode* to) {
  auto node = nodeOf(patchClass);
  (to ? to : document.get())->subnodeGroup()->addNode(*node);
  return node;
}

HXPatchPort& ModelTest::port(HXNode& node, const char* key) {
  auto* port = as<HXPatchPort>(node.portForKey(key));
  EXPECT_TRUE(port) << key;
  return *port;
}

Ref<HXConnection> ModelTest::connect(HXNode& from, const char* output, HXNode& to,
                                     const char* input) {
  return document->connectPort(port(from, output), port(to, input));
}

Ref<HXDocument> ModelTest::reopened(const HXDocument& document, std::int32_t codingType) {
  return openedDocument(savedBytes(document, codingType), codingType);
}

Ref<HXNode> ModelTest::named(const HXNode& parent, const char* name) {
  for (const auto& node : parent.subnodeGroup()->subnodes()) {
    if (node->name() == name) return node;
  }
  ADD_FAILURE() << name;
  return nullptr;
}

std::vector<std::string> ModelTest::keys(const std::vector<Ref<HXPort>>& ports) {
  std::vector<std::string> keys;
  for (const auto& port : ports) keys.push_back(port->uniqueKey().toStdString());
  return keys;
}

std::vector<std::uint8_t> savedBytes(const HXDocument& document, std::int32_t codingType) {
  auto bytes = HXDocumentFile::dataWithDocument(document, codingType);
  EXPECT_TRUE(bytes) << bytes.status().message();
  return std::move(bytes).valueOr({});
}

Ref<HXDocument> openedDocument(ByteSpan bytes, std::int32_t codingType) {
  auto opened = HXDocumentFile::document(bytes, codingType);
  EXPECT_TRUE(opened) << opened.status().message();
  return std::move(opened).valueOr(nullptr);
}

}  // namespace tarnkit::test
