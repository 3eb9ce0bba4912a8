#include "tarnkit/archive/HXKeyedArchiver.h"

#include <utility>

#include "tarnkit/archive/HXArchiveWalk.h"
#include "tarnkit/platform/coding/KeyedArchiveNames.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

namespace {
constexpr std::string_view kClassName = "HXKeyedArchiver";

const detail::HXArchiveWalk& walkOf(const detail::KeyedArchiveLayout& layout) noexcept {
  return static_cast<const detail::HXArchiveWalk&>(layout);
}
}  // namespace

HXKeyedArchiver::HXKeyedArchiver(Ref<Data> data)
    : KeyedArchiver(std::make_unique<detail::HXArchiveWalk>()), data_(std::move(data)) {}
HXKeyedArchiver::~HXKeyedArchiver() = default;

String HXKeyedArchiver::versionKey() { return detail::archive::kVersion.string(); }

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
  return writeArchive(rootObject, 0, toFile).at(toFile);
}

Status HXKeyedArchiver::writeArchive(const Object* rootObject, std::int32_t codingType,
                                     const std::string& toFile) {
  HXKeyedArchiver archiver(make<Data>());
  archiver.setCodingType(codingType);
  archiver.encodeRootObject(rootObject);
  return archiver.finishInFile(toFile);
}

void HXKeyedArchiver::encodeRootObject(const Object* rootObject) { putRoot(rootObject); }

String HXKeyedArchiver::classNameForClass(const Class& forClass) const {
  return walkOf(layout()).classNameForClass(forClass);
}

std::size_t HXKeyedArchiver::stackDepth() const noexcept {
  return walkOf(layout()).openContainers() + 1;
}

void HXKeyedArchiver::finishEncoding() {
  if (const auto status = endEncoding(); !status) Log::warning(kClassName, status.sentence());
}

Status HXKeyedArchiver::endEncoding() {
  auto bytes = finish();
  data_->setBytes(bytes ? *std::move(bytes) : std::vector<std::uint8_t>());
  return std::move(bytes).status();
}

}  // namespace tarnkit
