#include "tarnkit/platform/coding/KeyedArchiver.h"

#include <stdexcept>
#include <utility>

#include "tarnkit/platform/coding/KeyedArchiveLayout.h"
#include "tarnkit/platform/system/File.h"

namespace tarnkit {

namespace {

Status tooLarge(const std::length_error& error) {
  return Status::failure(StatusCode::tooLarge, error.what());
}

}  // namespace

KeyedArchiver::KeyedArchiver(std::unique_ptr<detail::KeyedArchiveLayout> layout)
    : layout_(std::move(layout)) {
  layout_->setCoder(*this);
}
KeyedArchiver::~KeyedArchiver() = default;

// From inside of an object's encoding everything that is thrown goes to the outermost step.
template <class Step>
void KeyedArchiver::perform(Step step) {
  if (layout_->isEncoding()) {
    step();
    return;
  }
  if (!failure_.isOK()) return;
  try {
    step();
  } catch (const std::length_error& error) {
    failure_ = tooLarge(error);
    layout_->clear();
  } catch (...) {
    layout_->clear();
    throw;
  }
}

template <class Add>
void KeyedArchiver::putScalar(const Symbol& key, Add add) {
  perform([&] { layout_->put(key, add(layout_->writer())); });
}

void KeyedArchiver::putRoot(const Object* root) {
  perform([&] { layout_->putRoot(root); });
}

// Makes something of the finished list, of which the root is given.
template <class Use>
Status KeyedArchiver::finishWith(Use use) {
  Status status = std::exchange(failure_, Status());
  if (status.isOK()) {
    try {
      status = use(layout_->finish());
    } catch (const std::length_error& error) {
      status = tooLarge(error);
    }
  }
  layout_->clear();
  return status;
}

Result<std::vector<std::uint8_t>> KeyedArchiver::finish() {
  std::vector<std::uint8_t> bytes;
  auto status = finishWith([&](PropertyListWriter::Index root) {
    bytes = layout_->writer().finish(root);
    return Status();
  });
  if (!status.isOK()) return Result<std::vector<std::uint8_t>>(std::move(status));
  return Result<std::vector<std::uint8_t>>(std::move(bytes));
}

Status KeyedArchiver::finishInFile(const std::string& path) {
  return finishWith([&](PropertyListWriter::Index root) {
    return File::write(path,
                       [&](File::Piece write) { return layout_->writer().finish(root, write); });
  });
}

void KeyedArchiver::encodeBool(bool value, const Symbol& key) {
  putScalar(key, [&](auto& writer) { return writer.addBool(value); });
}

void KeyedArchiver::encodeInt(std::int32_t value, const Symbol& key) {
  putScalar(key, [&](auto& writer) { return writer.addInt(value); });
}

void KeyedArchiver::encodeInt64(std::int64_t value, const Symbol& key) {
  putScalar(key, [&](auto& writer) { return writer.addInt(value); });
}

void KeyedArchiver::encodeFloat(float value, const Symbol& key) {
  putScalar(key, [&](auto& writer) { return writer.addReal32(value); });
}

void KeyedArchiver::encodeDouble(double value, const Symbol& key) {
  putScalar(key, [&](auto& writer) { return writer.addReal64(value); });
}

void KeyedArchiver::encodeBytes(ByteSpan bytes, const Symbol& key) {
  putScalar(key, [&](auto& writer) { return writer.addData(bytes); });
}

void KeyedArchiver::encodeObject(const Object* object, const Symbol& key) {
  if (written(object)) perform([&] { layout_->putObject(key, *object, false); });
}

void KeyedArchiver::encodeConditionalObject(const Object* object, const Symbol& key) {
  if (written(object)) perform([&] { layout_->putObject(key, *object, true); });
}

void KeyedArchiver::encodeCollection(CodingKind kind, std::size_t count,
                                     FunctionRef<const Object*(std::size_t)> at,
                                     const Symbol& key) {
  if (!isWritten_) return perform([&] { layout_->putCollection(key, kind, count, at); });
  perform([&] {
    layout_->putCollection(key, kind, count, [&](std::size_t i) { return written(at(i)); });
  });
}

void KeyedArchiver::encodeMap(std::size_t count, FunctionRef<MapEntry(std::size_t)> at,
                              const Symbol& key) {
  perform([&] {
    const bool isPut = isWritten_
                           ? layout_->putMap(key, count,
                                             [&](std::size_t i) {
                                               const MapEntry entry = at(i);
                                               return MapEntry{entry.key, written(entry.value)};
                                             })
                           : layout_->putMap(key, count, at);
    if (isPut) return;
    failure_ = Status::failure(StatusCode::refused, "a key of a map is not a string");
  });
}

void KeyedArchiver::setClassName(const Symbol& name, const Class& forClass) {
  layout_->setClassName(name.string(), forClass);
}

}  // namespace tarnkit
