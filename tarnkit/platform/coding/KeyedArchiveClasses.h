#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "tarnkit/platform/collections/IdentityTable.h"
#include "tarnkit/platform/objects/Class.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit::detail {

/// The classes that an archive has met, with the names that were substituted for theirs. A
/// substitution is for a class's name, so records of one name share it. Belongs to one writer; a
/// look-up costs as much as one of `IdentityTable`.
class KeyedArchiveClasses {
 public:
  struct Entry {
    const Class* record;
    String substitute;  // nil: the class's own name is written
    /// Where the archive has written the class under its present name; 0 while it has not. Of the
    /// writer's own numbering.
    std::uint32_t written = 0;
    /// The next record of the same name, around in a circle; mostly the record itself.
    std::uint32_t next;

    std::string_view name() const noexcept {
      return substitute.isNil() ? record->name() : substitute.view();
    }
  };

  /// Numbers classes in the order in which they are met.
  std::uint32_t numberOf(const Class& record);
  Entry& operator[](std::uint32_t number) noexcept { return entries_[number]; }
  const Entry& operator[](std::uint32_t number) const noexcept { return entries_[number]; }
  /// Valid until the next class is met.
  Entry& of(const Class& record) { return entries_[numberOf(record)]; }

  /// What is written from now on has the name. Costs the records of the class's name.
  void substitute(const Class& record, const String& name);
  /// Nil when there is none.
  String substituteFor(const Class& record) const noexcept;
  /// The next archive begins; the substitutions stay.
  void forgetWritten() noexcept;

 private:
  /// Null when none of the name has been met.
  const Entry* firstNamed(std::string_view name) const noexcept;

  std::vector<Entry> entries_;
  IdentityTable numbers_;
};

}  // namespace tarnkit::detail
