#include "tarnkit/compare/HXDocumentChange.h"

#include <fmt/format.h>

#include <iterator>

namespace tarnkit {

namespace {

struct Words {
  std::string_view name;
  char sign;
  // Subject, old and new text stand for {0}, {1} and {2}.
  const char* sentence;
};

constexpr Words kWords[] = {
    {"nodeAdded", '+', "added {2}"},
    {"nodeRemoved", '-', "removed {1}"},
    {"nodeMoved", '~', "moved from {1} to {2}"},
    {"nodeRenamed", '~', "renamed from {1} to {2}"},
    {"commentChanged", '~', "comment {1} → {2}"},
    {"patchReplaced", '~', "patch {1} → {2}"},
    {"parameterChanged", '~', "{0} {1} → {2}"},
    {"valueChanged", '~', "{0} {1} → {2}"},
    {"connectionMade", '+', "connected {2}"},
    {"connectionBroken", '-', "disconnected {1}"},
    {"connectionRewired", '~', "{0} connected to {2}, was {1}"},
    {"portPublished", '+', "published {2}"},
    {"portUnpublished", '-', "unpublished {1}"},
    {"publicationRenamed", '~', "published as {2}, was {1}"},
    {"arrayOutputReplaced", '~', "{0} is collected anew"},
    {"portGroupHidden", '~', "port group {0} {2}"},
    {"portGroupOrder", '~', "port groups ordered {2}, were {1}"},
    {"subnodesForced", '~', "{2}"},
    {"groupOpacity", '~', "{2}"},
    {"groupKind", '~', "{2}"},
    {"nodeOrder", '~', "nodes in another order"},
    {"viewOrder", '~', "views ordered {2}, were {1}"},
    {"publicationOrder", '~', "published {0} in another order"},
    {"connectionOrder", '~', "connections of {0} in another order"},
    {"imageAdded", '+', "image {0} added, {2}"},
    {"imageRemoved", '-', "image {0} removed, {1}"},
    {"imageChanged", '~', "image {0} {1} → {2}"},
    {"imageCount", '~', "image {0} used {2} times, was {1}"},
    {"imageOrder", '~', "images in another order"},
    {"position", '~', "position {1} → {2}"},
    {"selection", '~', "{2}"},
    {"inspectorPanel", '~', "inspector panel {1} → {2}"},
    {"canvasCenter", '~', "canvas centre {1} → {2}"},
    {"portGroupCollapsed", '~', "port group {0} {2}"},
};
static_assert(std::size(kWords) ==
              static_cast<std::size_t>(HXDocumentChange::Kind::portGroupCollapsed) + 1);

const Words& wordsOf(HXDocumentChange::Kind kind) { return kWords[static_cast<std::size_t>(kind)]; }

}  // namespace

char HXDocumentChange::sign() const noexcept { return wordsOf(kind).sign; }

std::string HXDocumentChange::description() const {
  return fmt::format(fmt::runtime(wordsOf(kind).sentence), subject, oldText, newText);
}

std::string_view nameOf(HXDocumentChange::Kind kind) noexcept { return wordsOf(kind).name; }

}  // namespace tarnkit
