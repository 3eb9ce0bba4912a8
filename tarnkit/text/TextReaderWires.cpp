#include <fmt/format.h>

#include <algorithm>

#include "tarnkit/platform/images/ImageLimits.h"
#include "tarnkit/platform/propertylist/PropertyListText.h"
#include "tarnkit/platform/system/File.h"
#include "tarnkit/text/TextGraph.h"
#include "tarnkit/text/TextMembers.h"
#include "tarnkit/text/TextReader.h"

// What a text says of connections, and of images.

namespace tarnkit::detail {

namespace {

// Below the folder of the text, and nowhere else.
bool isBelow(std::string_view path) {
  if (path.empty() || path.front() == '/' || path.find('\0') != path.npos) return false;
  while (!path.empty()) {
    const auto part = path.substr(0, path.find('/'));
    if (part.empty() || part == "." || part == "..") return false;
    path.remove_prefix(std::min(part.size() + 1, path.size()));
  }
  return true;
}

}  // namespace

bool TextReader::readWires() {
  for (std::uint32_t i = 0; i < nodes_.size(); ++i) {
    const Index list = nodes_[i].members[m::kConnections];
    if (list == kNone) continue;
    if (!expect(list, Kind::object)) return false;
    for (const Index value : tree_->children(list)) {
      Address input;
      const Mention mention{i, value, list, HXOrientationInput};
      if (!resolveMember(mention, tree_->key(value), input)) return false;
      if (input.port->orientation != HXOrientationInput) {
        return failFor(value, list, "connections stand at their inputs, and this is an output");
      }
      if (tree_->kind(value) != Kind::array) {
        if (!readWire(i, input, value)) return false;
        continue;
      }
      for (const Index element : tree_->children(value)) {
        if (!readWire(i, input, element)) return false;
      }
    }
  }
  std::stable_sort(wires_.begin(), wires_.end(), [](const Wire& a, const Wire& b) {
    return a.node != b.node ? a.node < b.node : a.member < b.member;
  });
  const Index list = top_[text::placeIn(text::kTopMembers, text::kOtherConnections)];
  if (list != kNone) {
    if (!expect(list, Kind::array)) return false;
    for (const Index value : tree_->children(list)) {
      if (!readOtherWire(value)) return false;
    }
  }
  joinWires();
  return true;
}

bool TextReader::readWire(std::uint32_t node, const Address& input, Index value) {
  static constexpr std::array<std::string_view, 3> kMembers{text::kFrom, text::kOutputPlace,
                                                            text::kInputPlace};
  Wire wire;
  wire.node = node;
  wire.member = memberOf(input);
  Index from = value;
  if (tree_->kind(value) == Kind::object) {
    std::array<Index, 3> members;
    if (!readMembers(value, kMembers, members)) return false;
    if (members[0] == kNone) return fail(value, "a connection needs a \"from\"");
    from = members[0];
    if (!readPlace(members[1], wire.outputPlace) || !readPlace(members[2], wire.inputPlace)) {
      return false;
    }
  }
  Address output;
  if (!resolveAddress(from, from, HXOrientationOutput, output)) return false;
  if (output.port->orientation != HXOrientationOutput) {
    return fail(from, "a connection comes from an output, and this is an input");
  }
  wire.record = makeRecord<ConnectionRecord>();
  wire.record->shownInput = input.port;
  wire.record->shownOutput = output.port;
  wire.record->input = resolved(input.port);
  wire.record->output = resolved(output.port);
  if (!wire.record->input || !wire.record->output) {
    return fail(value, "a published port that stands for none cannot be connected");
  }
  wires_.push_back(std::move(wire));
  return true;
}

// As a text that was written calls the port, whatever it is called here.
std::string TextReader::memberOf(const Address& address) {
  if (!address.isPublished || !address.key.empty()) return portMember(address.key, false);
  return portNumber(address.port->publishedSide, address.port->publishedPlace);
}

bool TextReader::readPlace(Index value, std::int64_t& into) {
  if (value == kNone) return true;
  if (!readInt64(value, into)) return false;
  return into >= 0 || fail(value, "a place is not below 0");
}

bool TextReader::readOtherWire(Index value) {
  static constexpr std::array<std::string_view, 7> kMembers{
      text::kOutput, text::kInput,       text::kShownOutput, text::kShownInput,
      text::kHeldBy, text::kOutputPlace, text::kInputPlace};
  std::array<Index, 7> members;
  if (!readMembers(value, kMembers, members)) return false;
  const PortRecord* ends[4] = {};
  for (std::size_t i = 0; i < 4; ++i) {
    if (members[i] == kNone) {
      return fail(value, fmt::format("\"{}\" is missing", kMembers[i]));
    }
    if (tree_->kind(members[i]) == Kind::null) continue;
    Address address;
    if (!resolveAddress(members[i], members[i],
                        i % 2 == 0 ? HXOrientationOutput : HXOrientationInput, address)) {
      return false;
    }
    ends[i] = address.port;
    if (i < 2 && address.isPublished) return fail(members[i], "a published port is no end");
  }
  Wire wire;
  if (const Index held = members[4]; held != kNone) {
    if (!expect(held, Kind::string)) return false;
    const auto word = tree_->text(held);
    if (word != text::kBoth && word != text::kInput && word != text::kOutput) {
      return fail(held, "none of \"both\", \"input\", \"output\"");
    }
    wire.heldByInput = word != text::kOutput;
    wire.heldByOutput = word != text::kInput;
  }
  if (!readPlace(members[5], wire.outputPlace) || !readPlace(members[6], wire.inputPlace)) {
    return false;
  }
  wire.record = makeRecord<ConnectionRecord>();
  wire.record->output = ends[0];
  wire.record->input = ends[1];
  wire.record->shownOutput = ends[2];
  wire.record->shownInput = ends[3];
  wires_.push_back(std::move(wire));
  return true;
}

// The connections of a port stand in the order of the text, but for those whose place is told.
void TextReader::joinWires() {
  struct Placed {
    std::int64_t place;
    const ConnectionRecord* connection;
  };
  std::unordered_map<PortRecord*, std::vector<Placed>> placed;
  const auto hold = [&](const PortRecord* end, const ConnectionRecord* connection,
                        std::int64_t place) {
    auto* port = const_cast<PortRecord*>(end);
    if (!port) return;
    if (place < 0) {
      port->connections.push_back(connection);
    } else {
      placed[port].push_back({place, connection});
    }
  };
  for (const Wire& wire : wires_) {
    const auto& record = *wire.record;
    if (wire.heldByOutput) hold(record.output, &record, wire.outputPlace);
    if (wire.heldByInput && (record.input != record.output || !wire.heldByOutput)) {
      hold(record.input, &record, wire.inputPlace);
    }
  }
  for (auto& [port, told] : placed) {
    std::stable_sort(told.begin(), told.end(),
                     [](const Placed& a, const Placed& b) { return a.place < b.place; });
    const auto base = std::exchange(port->connections, {});
    auto next = base.begin();
    for (const auto& connection : told) {
      while (next != base.end() &&
             static_cast<std::int64_t>(port->connections.size()) < connection.place) {
        port->connections.push_back(*next++);
      }
      port->connections.push_back(connection.connection);
    }
    port->connections.insert(port->connections.end(), next, base.end());
  }
}

bool TextReader::readImages() {
  const Index stored = top_[text::placeIn(text::kTopMembers, text::kImages)];
  const Index loose = top_[text::placeIn(text::kTopMembers, text::kLooseImages)];
  if (stored != kNone && !readImageList(stored, true)) return false;
  storedImages_ = images_.size();
  if (loose != kNone && !readImageList(loose, false)) return false;
  return true;
}

bool TextReader::readImageList(Index list, bool isStored) {
  if (!expect(list, Kind::array)) return false;
  for (const Index value : tree_->children(list)) {
    auto* entry = makeRecord<ImageEntryRecord>();
    if (!readImage(value, *entry)) return false;
    if (isStored) {
      if (entry->key.isNil()) return fail(value, "an image needs a \"key\"");
      const auto place = static_cast<std::int32_t>(images_.size());
      if (!imagesByKey_.emplace(entry->key.view(), place).second) {
        return fail(value, fmt::format("the image \"{}\" stands twice", entry->key.view()));
      }
    }
    images_.push_back(entry);
  }
  return true;
}

bool TextReader::readImage(Index value, ImageEntryRecord& entry) {
  static constexpr std::array<std::string_view, 4> kMembers{text::kKey, text::kPNG, text::kFile,
                                                            text::kPictureOf};
  std::array<Index, 4> members;
  if (!readMembers(value, kMembers, members)) return false;
  if (members[0] != kNone && !readText(members[0], entry.key, true)) return false;
  const auto given = std::count_if(members.begin() + 1, members.end(),
                                   [](Index member) { return member != kNone; });
  if (given > 1) return fail(value, "an image has one of \"png\", \"file\" and \"pictureOf\"");
  if (members[3] != kNone) {
    std::int32_t place = 0;
    if (!readInt(members[3], place)) return false;
    if (place < 0 || static_cast<std::size_t>(place) >= images_.size()) {
      return fail(members[3], fmt::format("no image {} stands before this one", place));
    }
    entry.image = images_[static_cast<std::size_t>(place)]->image;
    return true;
  }
  if (given == 0) return true;
  if (members[2] != kNone) return readImageFile(members[2], entry);
  if (!expect(members[1], Kind::string)) return false;
  std::string bytes;
  if (!readBase64(tree_->text(members[1]), bytes)) return fail(members[1], "this is no base64");
  auto* image = makeRecord<ImageRecord>();
  image->png.assign(bytes.begin(), bytes.end());
  entry.image = image;
  return true;
}

bool TextReader::readImageFile(Index value, ImageEntryRecord& entry) {
  if (!expect(value, Kind::string)) return false;
  const auto path = tree_->text(value);
  if (!isBelow(path)) {
    return fail(value, "the path of an image leads from the text's folder downward");
  }
  // The loose ones, which are read behind those of the store, are none of its.
  if (storedImages_ == 0) imageFiles_.emplace(entry.key, path);
  const bool isLeftOut = absentImages_ == HXTextFile::AbsentImages::leftOut;
  if (folder_.empty()) {
    if (isLeftOut) return true;
    return fail(value, "the text does not come out of a file beside which images could stand");
  }
  auto bytes = File::read(folder_ + "/" + std::string(path), ImageLimits().inputBytes);
  if (!bytes) {
    if (isLeftOut && bytes.status().code() == StatusCode::notFound) return true;
    failureCode_ = bytes.status().code();
    return fail(value, bytes.status().message());
  }
  auto* image = makeRecord<ImageRecord>();
  image->png = *std::move(bytes);
  entry.image = image;
  return true;
}

}  // namespace tarnkit::detail
