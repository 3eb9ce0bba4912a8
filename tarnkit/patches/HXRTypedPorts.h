#pragma once

#include <span>

#include "tarnkit/patches/HXRPort.h"

namespace tarnkit {

namespace detail {

/// What every concrete port class repeats: its own class record, and copies of its own kind.
template <class Self, class Base>
class PortOf : public Base {
 public:
  using Base::Base;
  const Class& isa() const noexcept override { return Self::kClass; }
  Ref<HXRPort> copy() const override { return make<Self>(static_cast<const Self&>(*this)); }
};

}  // namespace detail

/// The kinds of port descriptions. What tells them apart (process class, colour, accepted outputs)
/// stands in their class records, in one table in the source.
///
/// Value-carrying inputs take one connection and their outputs fan out to many; gesture,
/// interaction and feedback inputs take many and their outputs only one. Owned as `HXRPort` says;
/// for one thread.
class HXRInputPort : public detail::PortOf<HXRInputPort, HXRPort> {
 public:
  static const HXRPortClass kClass;
  HXRInputPort(String name, String uniqueKey, std::int32_t connectionRelationship)
      : PortOf(std::move(name), std::move(uniqueKey), HXOrientationInput, connectionRelationship) {}
};

/// An output; the typed ones say what they carry, and leave to the input what it takes.
class HXROutputPort : public detail::PortOf<HXROutputPort, HXRPort> {
 public:
  static const HXRPortClass kClass;
  HXROutputPort(String name, String uniqueKey, std::int32_t connectionRelationship)
      : PortOf(std::move(name), std::move(uniqueKey), HXOrientationOutput, connectionRelationship) {
  }
};

/// An input that takes any value output, whatever it carries.
class HXRValueInputPort : public detail::PortOf<HXRValueInputPort, HXRInputPort> {
 public:
  static const HXRPortClass kClass;
  HXRValueInputPort(String name, String uniqueKey)
      : PortOf(std::move(name), std::move(uniqueKey), HXConnectionRelationshipOne) {}
};

/// An output of any value. Of all outputs only exactly this class accepts ports itself: every value
/// input; the typed outputs leave the answer to the input.
class HXRValueOutputPort : public detail::PortOf<HXRValueOutputPort, HXROutputPort> {
 public:
  static const HXRPortClass kClass;
  HXRValueOutputPort(String name, String uniqueKey)
      : PortOf(std::move(name), std::move(uniqueKey), HXConnectionRelationshipMany) {}
  bool canConnectToPort(const HXRPort* other) const override;
};

/// An output of a `PMRPrimitive`: a boolean, an index, a number, an angle, a colour or a string.
class HXRPrimitiveOutputPort final
    : public detail::PortOf<HXRPrimitiveOutputPort, HXRValueOutputPort> {
 public:
  static const HXRPortClass kClass;
  using PortOf::PortOf;
};

/// An input that takes array outputs only, and those of subclasses.
class HXRArrayInputPort final : public detail::PortOf<HXRArrayInputPort, HXRValueInputPort> {
 public:
  static const HXRPortClass kClass;
  using PortOf::PortOf;
};

/// An output of an array. The outputs that a replicator gathers are of a class of their own below
/// it.
class HXRArrayOutputPort : public detail::PortOf<HXRArrayOutputPort, HXRValueOutputPort> {
 public:
  static const HXRPortClass kClass;
  using PortOf::PortOf;
};

/// An input that takes dictionary outputs only.
class HXRDictionaryInputPort final
    : public detail::PortOf<HXRDictionaryInputPort, HXRValueInputPort> {
 public:
  static const HXRPortClass kClass;
  using PortOf::PortOf;
};

/// An output of a dictionary.
class HXRDictionaryOutputPort final
    : public detail::PortOf<HXRDictionaryOutputPort, HXRValueOutputPort> {
 public:
  static const HXRPortClass kClass;
  using PortOf::PortOf;
};

/// An input that takes image outputs only.
class HXRImageInputPort final : public detail::PortOf<HXRImageInputPort, HXRValueInputPort> {
 public:
  static const HXRPortClass kClass;
  using PortOf::PortOf;
};

/// An output of an image.
class HXRImageOutputPort final : public detail::PortOf<HXRImageOutputPort, HXRValueOutputPort> {
 public:
  static const HXRPortClass kClass;
  using PortOf::PortOf;
};

/// An input that takes filter outputs only.
class HXRFilterInputPort final : public detail::PortOf<HXRFilterInputPort, HXRValueInputPort> {
 public:
  static const HXRPortClass kClass;
  using PortOf::PortOf;
};

/// An output of a filter for images.
class HXRFilterOutputPort final : public detail::PortOf<HXRFilterOutputPort, HXRValueOutputPort> {
 public:
  static const HXRPortClass kClass;
  using PortOf::PortOf;
};

/// An input that takes view outputs only.
class HXRViewInputPort final : public detail::PortOf<HXRViewInputPort, HXRValueInputPort> {
 public:
  static const HXRPortClass kClass;
  using PortOf::PortOf;
};

/// An output of a view, or of a group of views.
class HXRViewOutputPort final : public detail::PortOf<HXRViewOutputPort, HXRValueOutputPort> {
 public:
  static const HXRPortClass kClass;
  using PortOf::PortOf;
};

/// An input that takes gesture outputs only, several at a time.
class HXRGestureInputPort final : public detail::PortOf<HXRGestureInputPort, HXRInputPort> {
 public:
  static const HXRPortClass kClass;
  HXRGestureInputPort(String name, String uniqueKey)
      : PortOf(std::move(name), std::move(uniqueKey), HXConnectionRelationshipMany) {}
};

/// An output of a gesture, joined to one input.
class HXRGestureOutputPort final : public detail::PortOf<HXRGestureOutputPort, HXROutputPort> {
 public:
  static const HXRPortClass kClass;
  HXRGestureOutputPort(String name, String uniqueKey)
      : PortOf(std::move(name), std::move(uniqueKey), HXConnectionRelationshipOne) {}
};

/// An input that takes interaction outputs only, several at a time.
class HXRInteractionInputPort final : public detail::PortOf<HXRInteractionInputPort, HXRInputPort> {
 public:
  static const HXRPortClass kClass;
  HXRInteractionInputPort(String name, String uniqueKey)
      : PortOf(std::move(name), std::move(uniqueKey), HXConnectionRelationshipMany) {}
};

/// An output of an interaction, joined to one input.
class HXRInteractionOutputPort final
    : public detail::PortOf<HXRInteractionOutputPort, HXROutputPort> {
 public:
  static const HXRPortClass kClass;
  HXRInteractionOutputPort(String name, String uniqueKey)
      : PortOf(std::move(name), std::move(uniqueKey), HXConnectionRelationshipOne) {}
};

/// The input end of a state pair: takes feedback outputs only, several at a time.
class HXRFeedbackInputPort final : public detail::PortOf<HXRFeedbackInputPort, HXRInputPort> {
 public:
  static const HXRPortClass kClass;
  HXRFeedbackInputPort(String name, String uniqueKey)
      : PortOf(std::move(name), std::move(uniqueKey), HXConnectionRelationshipMany) {}
};

/// The output end of a state pair, joined to one feedback input.
class HXRFeedbackOutputPort final : public detail::PortOf<HXRFeedbackOutputPort, HXROutputPort> {
 public:
  static const HXRPortClass kClass;
  HXRFeedbackOutputPort(String name, String uniqueKey)
      : PortOf(std::move(name), std::move(uniqueKey), HXConnectionRelationshipOne) {}
};

/// Every class of port descriptions, `HXRPort` and those with headers of their own included.
std::span<const HXRPortClass* const> portClasses();

}  // namespace tarnkit
