#pragma once

#include <type_traits>
#include <utility>

#include "tarnkit/model/HXChangeNotices.h"
#include "tarnkit/model/HXChangeRecorder.h"

namespace tarnkit::detail {

/// What the description of a field is made of, with what most fields say.
template <class T>
struct FieldOf {
  using Owner = T;
  /// Set again and again, as by dragging or typing: steps that set it may become one.
  static constexpr bool kIsSimple = false;
  /// How the editor looks at the document, and not what the document says.
  static constexpr bool kIsViewState = false;
  /// Brings in line what follows from the field, right after it was exchanged.
  static void follow(T&) {}
  /// Adds what is to be told of it. `earlier` is the value before.
  template <class Value>
  static void addNotices(T&, const Value&, HXChangeNotices&) {}
};

/// The change of one field of one object. `Field` derives from `FieldOf` and tells of it:
///
///   static constexpr const char* kName = "name";     // its address stands for the property
///   static String get(const HXNode& node);
///   static void set(HXNode& node, String name);      // the field itself, and nothing else
///
/// and, where the field is a table whose entries change one by one as well, `kTable`, its name.
template <class Field>
class FieldChange final : public HXChange {
 public:
  using Owner = typename Field::Owner;
  using Value = std::decay_t<decltype(Field::get(std::declval<const Owner&>()))>;

  explicit FieldChange(Owner& owner) : HXChange(kKind, owner), held_(Field::get(owner)) {}

  void exchange() override {
    Value present = Field::get(ofOwner());
    Field::set(ofOwner(), std::move(held_));
    held_ = std::move(present);
    Field::follow(ofOwner());
  }
  void addNotices(HXChangeNotices& notices) const override {
    Field::addNotices(ofOwner(), held_, notices);
  }
  bool isNeutral() const override { return held_ == Field::get(ofOwner()); }
  std::size_t byteCount() const noexcept override { return sizeof(*this); }

 private:
  static constexpr const char* tableName() noexcept {
    if constexpr (requires { Field::kTable; }) return Field::kTable;
    return nullptr;
  }
  static constexpr Kind kKind{Field::kName, tableName(), Field::kIsSimple, Field::kIsViewState};
  Owner& ofOwner() const noexcept { return static_cast<Owner&>(owner()); }

  Value held_;
};

template <class Field>
[[gnu::noinline]] void recordField(HXChangeRecorder& recorder, typename Field::Owner& owner) {
  recorder.record(std::make_unique<FieldChange<Field>>(owner));
}

/// The field of the owner is about to be set, on behalf of `source`, which stands in the document.
template <class Field, class Source>
[[gnu::always_inline]] inline void willSet(const Source& source, typename Field::Owner& owner) {
  if (auto* const recorder = recorderOf(source)) recordField<Field>(*recorder, owner);
}
template <class Field>
[[gnu::always_inline]] inline void willSet(typename Field::Owner& owner) {
  willSet<Field>(owner, owner);
}

}  // namespace tarnkit::detail
