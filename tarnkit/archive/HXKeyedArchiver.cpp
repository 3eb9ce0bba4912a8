#include "tarnkit/archive/HXKeyedArchiver.h"

#include <utility>

#include "tarnkit/archive/HXArchiveWalk.h"
#include "tarnkit/platform/system/File.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

namespace {
const Symbol kVersionKey{"$version"};
constexpr std::string_view kClassName = "HXKeyedArchiver";
}  // namespace

struct HXKeyedArchiver::State {
  detail::HXArchiveWalk walk;
  Status failure;  // why the serialization will fail

  // What outgrows the format fails when the encoding is finished; any other exception goes to the
  // caller and leaves the archiver empty. From inside of an object's encoding everything goes to
  // the outermost step.
  template <class Step>
  void perform(Step step) {
    if (walk.isEncoding()) {
      step();
      return;
    }
    if (!failure) return;
    try {
      step();
    } catch (const std::length_error& tooLarge) {
      failure = Status::failure(StatusCode::tooLarge, tooLarge.what());
      walk.clear();
    } catch (...) {
      walk.clear();
      throw;
    }
  }
  template <class Add>
  void putScalar(const Symbol& key, Add add) {
    perform([&] { walk.put(key, add(walk.writer())); });
  }
};

HXKeyedArchiver::HXKeyedArchiver(Ref<Data> data)
    : data_(std::move(data)), state_(std::make_unique<State>()) {}
HXKeyedArchiver::~HXKeyedArchiver() = default;

String HXKeyedArchiver::versionKey() { return kVersionKey.string(); }

Ref<Data> HXKeyedArchiver::archivedDataWithRootObject(const Object* rootObject) {
  auto data = make<Data>();
  HXKeyedArchiver archiver(data);
  archiver.encodeRootObject(rootObject);
  archiver.finishEncoding();
  return data;
}

Result<Ref<Data>> HXKeyedArchiver::dataWithRootObject(const Object* rootObject,
                                                      std::int32_t codingType) {
  auto data = make<Data>();
  HXKeyedArchiver archiver(data);
  archiver.setCodingType(codingType);
  archiver.encodeRootObject(rootObject);
  if (auto status = archiver.endEncoding(); !status) return status;
  return data;
}

bool HXKeyedArchiver::archiveRootObject(const Object* rootObject, const std::string& toFile) {
  const auto status = writeRootObject(rootObject, toFile);
  if (!status) Log::warning(kClassName, status.sentence());
  return status.isOK();
}

Status HXKeyedArchiver::writeRootObject(const Object* rootObject, const std::string& toFile) {
  if (!rootObject) {
    return Status::failure(StatusCode::refused, "there is no object to be written", toFile);
  }
  auto data = dataWithRootObject(rootObject);
  return data ? File::write(toFile, data->bytes()) : std::move(data).status().at(toFile);
}

void HXKeyedArchiver::encodeRootObject(const Object* rootObject) {
  if (!rootObject) return;
  if (state_->walk.isEncoding()) {
    throw std::logic_error("a root object is written from inside the encoding of another object");
  }
  state_->perform([&] { state_->walk.encodeRoot(*rootObject, *this); });
}

void HXKeyedArchiver::encodeBool(bool value, const Symbol& key) {
  state_->putScalar(key, [&](auto& writer) { return writer.addBool(value); });
}

void HXKeyedArchiver::encodeInt(std::int32_t value, const Symbol& key) {
  state_->putScalar(key, [&](auto& writer) { return writer.addInt(value); });
}

void HXKeyedArchiver::encodeInt64(std::int64_t value, const Symbol& key) {
  state_->putScalar(key, [&](auto& writer) { return writer.addInt(value); });
}

void HXKeyedArchiver::encodeFloat(float value, const Symbol& key) {
  state_->putScalar(key, [&](auto& writer) { return writer.addReal32(value); });
}

void HXKeyedArchiver::encodeDouble(double value, const Symbol& key) {
  state_->putScalar(key, [&](auto& writer) { return writer.addReal64(value); });
}

void HXKeyedArchiver::encodeBytes(ByteSpan bytes, const Symbol& key) {
  state_->putScalar(key, [&](auto& writer) { return writer.addData(bytes); });
}

void HXKeyedArchiver::encodeObject(const Object* object, const Symbol& key) {
  if (!object) return;
  state_->perform([&] { state_->walk.putObject(key, *object, true, *this); });
}

void HXKeyedArchiver::encodeConditionalObject(const Object* object, const Symbol& key) {
  if (!object) return;
  state_->perform([&] { state_->walk.putObject(key, *object, false, *this); });
}

void HXKeyedArchiver::encodeCollection(CodingKind kind, std::size_t count,
                                       FunctionRef<const Object*(std::size_t)> at,
                                       const Symbol& key) {
  state_->perform([&] { state_->walk.putCollection(key, kind, count, at, *this); });
}

void HXKeyedArchiver::encodeMap(std::size_t count, FunctionRef<MapEntry(std::size_t)> at,
                                const Symbol& key) {
  state_->perform([&] {
    if (state_->walk.putMap(key, count, at, *this)) return;
    state_->failure = Status::failure(StatusCode::refused, "a key of a map is not a string");
  });
}

void HXKeyedArchiver::setClassName(const Symbol& name, const Class& forClass) {
  state_->walk.setClassName(name.string(), forClass);
}

String HXKeyedArchiver::classNameForClass(const Class& forClass) const {
  return state_->walk.classNameForClass(forClass);
}

std::size_t HXKeyedArchiver::stackDepth() const noexcept {
  return state_->walk.openContainers() + 1;
}

void HXKeyedArchiver::finishEncoding() {
  if (const auto status = endEncoding(); !status) Log::warning(kClassName, status.sentence());
}

Status HXKeyedArchiver::endEncoding() {
  State& state = *state_;
  std::vector<std::uint8_t> bytes;
  if (state.failure) {
    try {
      bytes = state.walk.finish(kVersionKey);
    } catch (const std::length_error& tooLarge) {
      state.failure = Status::failure(StatusCode::tooLarge, tooLarge.what());
    }
  }
  state.walk.clear();
  data_->setBytes(std::move(bytes));
  return std::exchange(state.failure, Status());
}

}  // namespace tarnkit
