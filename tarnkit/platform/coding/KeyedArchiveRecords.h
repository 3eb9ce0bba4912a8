#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tarnkit/platform/objects/FunctionRef.h"
#include "tarnkit/platform/objects/Object.h"
#include "tarnkit/platform/propertylist/PropertyList.h"
#include "tarnkit/platform/propertylist/RawBuffer.h"
#include "tarnkit/platform/system/Status.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit::detail {

/// The objects behind the records of a standard keyed archive: makes each when it is first referred
/// to (values whole, others as shells of their class), reads the platform's containers, and keeps
/// the first failure. The part of `StandardKeyedUnarchiver` that knows the layout of the file.
class KeyedArchiveRecords {
 public:
  using Index = PropertyList::Index;

  explicit KeyedArchiveRecords(const PropertyList& list) : list_(list) {}

  /// Checks the frame of the archive.
  bool open();
  /// The object under "root"; null is a failure.
  Ref<Object> root();
  const PropertyList& list() const noexcept { return list_; }

  /// Keeps the first failure.
  void fail(Status failure);
  void fail(std::string sentence) { fail(Status::damaged(std::move(sentence))); }
  bool failed() const noexcept { return !failure_.isOK(); }
  Status takeFailure() noexcept { return std::move(failure_); }
  void eachMade(FunctionRef<void(Object&)> visit) const;
  /// One line about the objects of the archive that nothing asked for, by class; empty when there
  /// are none. The platform's own values and containers do not count.
  std::string unreadObjects() const;
  /// Tells every object made to let go of what it owns.
  void abandon();

  /// The object that a UID value refers to. One that is still a shell is noted as referred to.
  Ref<Object> referredObject(Index reference);
  const Ref<Object>& object(Index value) const noexcept { return objects_[value]; }
  bool isInitialised(Index value) const noexcept { return (marks_[value] & kInitialised) != 0; }
  void setInitialised(Index value) noexcept { marks_[value] |= kInitialised; }
  /// The shells referred to since the last `clearReferred`, in order, repeated ones too.
  const std::vector<Index>& referred() const noexcept { return referred_; }
  void clearReferred() noexcept { referred_.clear(); }

  /// Fills the object when it is one of the platform's containers; false when it is not.
  bool fillContainer(Index value);
  /// Visit what stands in the container that a UID value refers to; false when it is nil or wrong.
  /// `key` is named in failures.
  bool visitCollection(Index reference, std::string_view key,
                       FunctionRef<void(const Ref<Object>&)> visit);
  bool visitMap(Index reference, std::string_view key,
                FunctionRef<void(const String&, const Ref<Object>&)> visit);
  /// Count bytes that were copied, and elements that were visited or made; false, and a failure,
  /// when they are too many.
  bool spendBytes(std::uint64_t bytes);
  bool spend(std::uint64_t elements);
  /// The number that stands inline, as a real; false when it is none.
  bool realValue(Index value, double& real) const noexcept;
  /// What `StandardKeyedUnarchiver::reserveClassNames` does.
  static void reserveClassNames();

 private:
  enum class Form : std::uint8_t {
    none,
    string,
    data,
    null,
    list,
    set,
    orderedSet,
    map,
    registered,
  };
  struct PlatformClass {
    std::string_view name;
    Form form;
  };
  static constexpr PlatformClass kPlatformClasses[] = {
      {"NSString", Form::string},
      {"NSMutableString", Form::string},
      {"NSData", Form::data},
      {"NSMutableData", Form::data},
      {"NSArray", Form::list},
      {"NSMutableArray", Form::list},
      {"NSSet", Form::set},
      {"NSMutableSet", Form::set},
      {"NSOrderedSet", Form::orderedSet},
      {"NSMutableOrderedSet", Form::orderedSet},
      {"NSDictionary", Form::map},
      {"NSMutableDictionary", Form::map},
      {"NSNull", Form::null},
  };
  struct ClassRecord {
    Form form;
    const Class* made;
    std::string name;
  };
  // Of each value: whether its object was initialised, what the search for containers that hold
  // themselves knows about it, and the number of a class, counted from 1: that of its object, or,
  // of a class record, its own.
  using Marks = std::uint16_t;
  static constexpr Marks kInitialised = 1;
  static constexpr Marks kOnPath = 2;
  static constexpr Marks kSearched = 4;
  static constexpr Marks kIsClass = 8;
  static constexpr unsigned kClassShift = 4;
  /// Far more than there are classes that can be made.
  static constexpr std::size_t kMaximumClasses = 0xFFF;

  Index referredValue(Index reference);
  Ref<Object> objectOf(Index value);
  Ref<Object> makeObject(Index value);
  Ref<Object> makeNumber(Index value);
  Ref<Object> makeFromRecord(Index record);
  Ref<Object> makeString(Index record);
  Ref<Object> makeData(Index record);
  Ref<Object> stringOf(Index text);
  const ClassRecord* classOf(Index record);
  /// The class whose number stands among the marks; null for none.
  const ClassRecord* knownClass(Index value) const noexcept {
    const unsigned number = marks_[value] >> kClassShift;
    return number == 0 ? nullptr : &classes_[number - 1];
  }
  void setClassNumber(Index value, std::size_t number) noexcept {
    marks_[value] = static_cast<Marks>(marks_[value] | number << kClassShift);
  }
  bool isClass(Index value) const noexcept { return (marks_[value] & kIsClass) != 0; }
  /// A failure: nobody writes a record that is both, and its two classes would have one place.
  const ClassRecord* refuseClassAsObject();
  const ClassRecord* findClass(Index record);
  const ClassRecord* readClass(Index value);
  const ClassRecord* numberClass(Index value, std::size_t number);
  /// Empty when it is no class.
  std::string_view nameOfClass(Index classRecord) const noexcept;
  /// `none` for a class that is not the platform's.
  static Form platformForm(std::string_view className) noexcept;
  bool refuseSharing();
  bool visitElements(Index record, Form form, FunctionRef<void(const Ref<Object>&)> visit);
  bool visitNumberedElements(Index record, FunctionRef<void(const Ref<Object>&)> visit);
  bool visitEntries(Index record, FunctionRef<void(const String&, const Ref<Object>&)> visit);
  bool visitElement(Index element, FunctionRef<void(const Ref<Object>&)> visit);
  bool isContainer(Index value);
  void refuseCycles(Index container);
  std::vector<Index> containersIn(Index record);

  const PropertyList& list_;
  PropertyList::Elements archived_;  // "$objects"
  PropertyList::Key classKey_ = PropertyList::kNoKey;
  PropertyList::Key classNameKey_ = PropertyList::kNoKey;
  PropertyList::Key membersKey_ = PropertyList::kNoKey;
  PropertyList::Key keysKey_ = PropertyList::kNoKey;
  Index rootReference_ = PropertyList::kNone;
  std::vector<Ref<Object>> objects_;  // of each value
  std::vector<Marks> marks_;          // of each value
  RawBuffer<Index> made_;
  std::vector<Index> referred_;
  std::vector<ClassRecord> classes_;
  std::unordered_map<std::string, std::size_t> classNumbers_;  // by name, counted from 1
  std::uint64_t visits_ = 0;
  std::uint64_t bytes_ = 0;
  Status failure_;
};

}  // namespace tarnkit::detail
