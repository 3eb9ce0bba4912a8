#include "tarnkit/platform/coding/StandardKeyedUnarchiver.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>

#include "tarnkit/platform/coding/KeyedArchiveNames.h"
#include "tarnkit/platform/coding/KeyedArchiveRecords.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

using Kind = PropertyList::Kind;
using Index = PropertyList::Index;

namespace {

// What a class throws while it reads its keys, for whatever reason, ends the reading.
Status failureOf(const std::exception& thrown) {
  if (dynamic_cast<const std::bad_alloc*>(&thrown)) {
    return Status::failure(StatusCode::outOfMemory, "there is not enough memory to read it");
  }
  return Status::damaged(thrown.what());
}

}  // namespace

/// The work list beside the records: what waits to be initialised or awoken, and whose keys are
/// being read just now.
struct StandardKeyedUnarchiver::State {
  struct Task {
    Index value;
    std::int32_t codingType;  // of the decoder when the object was first referred to
    bool isInitialised;
  };
  struct TypeChange {
    std::size_t from;  // the first object referred to under the type
    std::int32_t codingType;
  };

  State(const PropertyList& list, const Coder& owner) : coder(owner), records(list) {}

  const Coder& coder;

  detail::KeyedArchiveRecords records;
  std::vector<Task> tasks;  // the next stands last
  Index record = PropertyList::kNone;
  std::uint32_t cursor = 0;
  std::vector<TypeChange> typeChanges;  // made by the object whose record is read
  std::int32_t openType = 0;            // before all changes
  std::int32_t lastType = 0;
  std::vector<PropertyList::Key> symbolKeys;
  std::vector<void (*)(Decoder&)> checks;

  const PropertyList& list() const noexcept { return records.list(); }

  void openRecord(Index value) {
    record = value;
    cursor = 0;
    records.clearReferred();
    typeChanges.clear();
    lastType = coder.codingType();
    openType = lastType;
  }

  // What is referred to from now on is decoded under the type that the decoder has now.
  void noteType() {
    if (coder.codingType() == lastType) return;
    lastType = coder.codingType();
    typeChanges.push_back({records.referred().size(), lastType});
  }

  // What the record's object refers to comes next, in the order of its decode calls, each object
  // followed by what it refers to itself.
  void pushReferred() {
    const auto& referred = records.referred();
    auto change = typeChanges.rbegin();
    for (std::size_t i = referred.size(); i > 0; --i) {
      while (change != typeChanges.rend() && change->from >= i) ++change;
      tasks.push_back(
          {referred[i - 1], change == typeChanges.rend() ? openType : change->codingType, false});
    }
  }

  PropertyList::Key keyFor(const Symbol& symbol) {
    constexpr PropertyList::Key kUnknown = 0xFFFFFFFFU;
    static_assert(kUnknown != PropertyList::kNoKey);
    const auto number = symbol.number();
    if (number >= symbolKeys.size()) {
      symbolKeys.resize(std::max<std::size_t>(Symbol::count(), number + std::size_t{1}), kUnknown);
    }
    auto& key = symbolKeys[number];
    if (key == kUnknown) key = list().keyNamed(detail::archive::keyOfObject(symbol.text()));
    return key;
  }

  // Objects mostly ask for their keys in the order in which they wrote them, so the search goes on
  // where the last one ended.
  Index find(const Symbol& symbol) {
    const auto wanted = keyFor(symbol);
    if (wanted == PropertyList::kNoKey || record == PropertyList::kNone) {
      return PropertyList::kNone;
    }
    const auto keys = list().keys(record);
    const auto count = static_cast<std::uint32_t>(keys.size());
    for (std::uint32_t i = 0, at = cursor; i < count; ++i, ++at) {
      if (at >= count) at = 0;
      if (list().keyOf(keys[at]) == wanted) {
        cursor = at + 1;
        return list().values(record)[at];
      }
    }
    return PropertyList::kNone;
  }

  void failForKind(const Symbol& key, Index value, const char* wanted) {
    records.fail(fmt::format("{}: {} where {} is expected", key.text(),
                             PropertyList::nameOf(list().kind(value)), wanted));
  }

  std::int64_t decodeInteger(const Symbol& key, std::int64_t least, std::int64_t most) {
    const Index value = find(key);
    if (value == PropertyList::kNone) return 0;
    bool fits = false;
    std::int64_t integer = 0;
    switch (list().kind(value)) {
      case Kind::boolean:
      case Kind::integer:
        integer = list().integer(value);
        fits = integer >= least && integer <= most;
        break;
      case Kind::real32:
      case Kind::real64: {
        const double real = list().real(value);
        if (std::abs(real) < 0x1p62 && real == std::trunc(real)) {
          integer = static_cast<std::int64_t>(real);
          fits = integer >= least && integer <= most;
        }
        break;
      }
      case Kind::unsignedInteger:
      case Kind::wideInteger:
        break;
      default:
        failForKind(key, value, "a number");
        return 0;
    }
    if (fits) return integer;
    records.fail(fmt::format("{}: a number that is no integer of {} bits", key.text(),
                             most > std::numeric_limits<std::int32_t>::max() ? 64 : 32));
    return 0;
  }

  double decodeReal(const Symbol& key) {
    const Index value = find(key);
    if (value == PropertyList::kNone) return 0;
    double real = 0;
    if (!records.realValue(value, real)) failForKind(key, value, "a number");
    return real;
  }

  // The value under the key that refers to an object; `kNone` when it is absent or wrong.
  Index findReference(const Symbol& key) {
    noteType();
    const Index value = find(key);
    if (value == PropertyList::kNone || list().kind(value) == Kind::uid) return value;
    failForKind(key, value, "a reference to an object");
    return PropertyList::kNone;
  }
};

StandardKeyedUnarchiver::StandardKeyedUnarchiver(const PropertyList& list)
    : state_(std::make_unique<State>(list, *this)) {}
StandardKeyedUnarchiver::~StandardKeyedUnarchiver() = default;

Result<Ref<Object>> StandardKeyedUnarchiver::unarchive(ByteSpan bytes, std::int32_t codingType) {
  auto list = PropertyListReader::read(bytes);
  if (!list) return std::move(list).status();
  return unarchive(*list, codingType);
}

Result<Ref<Object>> StandardKeyedUnarchiver::unarchive(const PropertyList& list,
                                                       std::int32_t codingType) {
  try {
    StandardKeyedUnarchiver decoder(list);
    decoder.setCodingType(codingType);
    Ref<Object> root = decoder.run();
    auto& records = decoder.state_->records;
    if (!decoder.failed()) {
      const std::string unread = records.unreadObjects();
      if (!unread.empty()) Log::warning("StandardKeyedUnarchiver", unread);
      return root;
    }
    root = nullptr;
    records.abandon();
    return records.takeFailure();
  } catch (const std::exception& thrown) {
    return failureOf(thrown);
  }
}

Ref<Object> StandardKeyedUnarchiver::run() {
  State& state = *state_;
  Ref<Object> root;
  try {
    if (!state.records.open()) return nullptr;
    state.openType = codingType();
    root = state.records.root();
    state.pushReferred();
    while (!state.tasks.empty() && !failed()) {
      State::Task& task = state.tasks.back();
      const Index value = task.value;
      if (!task.isInitialised) {
        if (state.records.isInitialised(value)) {
          state.tasks.pop_back();
          continue;
        }
        task.isInitialised = true;
        state.records.setInitialised(value);
        setCodingType(task.codingType);
        state.openRecord(value);
        if (!state.records.fillContainer(value)) {
          state.records.object(value)->initWithCoder(*this);
        }
      } else {
        setCodingType(task.codingType);
        state.tasks.pop_back();
        state.openRecord(value);
        state.records.object(value)->awakeAfterDecoding(*this);
      }
      state.pushReferred();
    }
    for (const auto check : state.checks) {
      if (!failed()) check(*this);
    }
  } catch (const std::exception& thrown) {
    fail(failureOf(thrown));
  }
  return root;
}

void StandardKeyedUnarchiver::reserveClassNames() {
  detail::KeyedArchiveRecords::reserveClassNames();
}

bool StandardKeyedUnarchiver::containsValue(const Symbol& key) {
  return state_->find(key) != PropertyList::kNone;
}

bool StandardKeyedUnarchiver::decodeBool(const Symbol& key) { return state_->decodeReal(key) != 0; }

std::int32_t StandardKeyedUnarchiver::decodeInt(const Symbol& key) {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(state_->decodeInteger(key, Limits::min(), Limits::max()));
}

std::int64_t StandardKeyedUnarchiver::decodeInt64(const Symbol& key) {
  using Limits = std::numeric_limits<std::int64_t>;
  return state_->decodeInteger(key, Limits::min(), Limits::max());
}

float StandardKeyedUnarchiver::decodeFloat(const Symbol& key) {
  return static_cast<float>(state_->decodeReal(key));
}

double StandardKeyedUnarchiver::decodeDouble(const Symbol& key) { return state_->decodeReal(key); }

std::vector<std::uint8_t> StandardKeyedUnarchiver::decodeBytes(const Symbol& key) {
  State& state = *state_;
  const Index value = state.find(key);
  if (value == PropertyList::kNone) return {};
  if (state.list().kind(value) != Kind::data) {
    state.failForKind(key, value, "data");
    return {};
  }
  const ByteSpan bytes = state.list().data(value);
  if (!state.records.spendBytes(bytes.size())) return {};
  return {bytes.begin(), bytes.end()};
}

Ref<Object> StandardKeyedUnarchiver::decodeObject(const Symbol& key) {
  const Index reference = state_->findReference(key);
  return reference == PropertyList::kNone ? nullptr : state_->records.referredObject(reference);
}

bool StandardKeyedUnarchiver::decodeCollection(const Symbol& key,
                                               FunctionRef<void(const Ref<Object>&)> visit) {
  const Index reference = state_->findReference(key);
  return reference != PropertyList::kNone &&
         state_->records.visitCollection(reference, key.text(), visit);
}

bool StandardKeyedUnarchiver::decodeMap(
    const Symbol& key, FunctionRef<void(const String&, const Ref<Object>&)> visit) {
  const Index reference = state_->findReference(key);
  return reference != PropertyList::kNone && state_->records.visitMap(reference, key.text(), visit);
}

void StandardKeyedUnarchiver::fail(Status failure) { state_->records.fail(std::move(failure)); }

bool StandardKeyedUnarchiver::failed() const { return state_->records.failed(); }

bool StandardKeyedUnarchiver::countMade(std::uint64_t things) {
  return state_->records.spend(things);
}

void StandardKeyedUnarchiver::eachDecoded(FunctionRef<void(Object&)> visit) const {
  state_->records.eachMade(visit);
}

void StandardKeyedUnarchiver::checkAtEnd(void (*check)(Decoder&)) {
  auto& checks = state_->checks;
  if (std::find(checks.begin(), checks.end(), check) == checks.end()) checks.push_back(check);
}

}  // namespace tarnkit
