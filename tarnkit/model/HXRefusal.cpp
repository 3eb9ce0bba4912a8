#include "tarnkit/model/HXRefusal.h"

#include <fmt/format.h>

#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/patches/BySide.h"
#include "tarnkit/patches/HXRPrimitiveInputPort.h"

namespace tarnkit {

namespace {

struct Kind {
  const Class* ports[2];
  std::string_view name;
  std::string_view phrase;
};

// A class that is not here is of its base's kind.
constexpr Kind kKinds[] = {
    {{&HXRValueInputPort::kClass, &HXRValueOutputPort::kClass}, "value", "any value"},
    {{&HXRPrimitiveInputPort::kClass, &HXRPrimitiveOutputPort::kClass},
     "primitive",
     "a number, text or colour"},
    {{&HXRAngleInputPort::kClass, nullptr}, "angle", "an angle"},
    {{&HXRArrayInputPort::kClass, &HXRArrayOutputPort::kClass}, "array", "an array"},
    {{&HXRDictionaryInputPort::kClass, &HXRDictionaryOutputPort::kClass},
     "dictionary",
     "a dictionary"},
    {{&HXRImageInputPort::kClass, &HXRImageOutputPort::kClass}, "image", "an image"},
    {{&HXRFilterInputPort::kClass, &HXRFilterOutputPort::kClass}, "filter", "a filter"},
    {{&HXRViewInputPort::kClass, &HXRViewOutputPort::kClass}, "view", "a view"},
    {{&HXRGestureInputPort::kClass, &HXRGestureOutputPort::kClass}, "gesture", "a gesture"},
    {{&HXRInteractionInputPort::kClass, &HXRInteractionOutputPort::kClass},
     "interaction",
     "an interaction"},
    {{&HXRFeedbackInputPort::kClass, &HXRFeedbackOutputPort::kClass}, "feedback", "feedback"},
};
constexpr Kind kUnknown{{nullptr, nullptr}, "unknown", "something unknown"};

// Null for a port that stands for nothing.
const HXPatchPort* resolved(const HXPort* port) {
  return port ? as<HXPatchPort>(port->resolvedPort()) : nullptr;
}

const Kind& kindOfPort(const HXPatchPort& port) {
  const Class* at = port.definition() ? &port.definition()->isa() : nullptr;
  for (; at; at = at->superclass()) {
    for (const Kind& kind : kKinds) {
      if (kind.ports[0] == at || kind.ports[1] == at) return kind;
    }
  }
  return kUnknown;
}

std::string_view nounOf(const HXPatchPort& port) {
  return port.orientation() == HXOrientationInput ? "input" : "output";
}

bool isOnASide(const HXPatchPort& port) {
  return port.orientation() == HXOrientationInput || port.orientation() == HXOrientationOutput;
}

HXRefusal missingPort(const HXPort& port, const HXPort* other, const HXPort* missing) {
  return HXRefusal(HXRefusal::Code::missingPort,
                   missing ? "the published port stands for a port that is gone"
                           : "there is no port to connect with",
                   &port, other);
}

}  // namespace

HXRefusal::HXRefusal() noexcept = default;
HXRefusal::HXRefusal(const HXRefusal&) = default;
HXRefusal::HXRefusal(HXRefusal&&) noexcept = default;
HXRefusal& HXRefusal::operator=(const HXRefusal&) = default;
HXRefusal& HXRefusal::operator=(HXRefusal&&) noexcept = default;
HXRefusal::~HXRefusal() = default;

HXRefusal::HXRefusal(Code code, String reason) : code_(code), reason_(std::move(reason)) {}

HXRefusal::HXRefusal(Code code, String reason, const HXPort* port, const HXPort* other)
    : code_(code),
      reason_(std::move(reason)),
      port_{Ref<const HXPort>(port), kindOf(port)},
      other_{Ref<const HXPort>(other), kindOf(other)} {}

std::string_view HXRefusal::kindOf(const HXPort* port) {
  if (!port) return "";
  const auto* end = resolved(port);
  return end ? kindOfPort(*end).name : kUnknown.name;
}

// The classes of the ports decide whether they fit; here is only told why they do not.
HXRefusal HXPort::whyNotConnectToPort(const HXPort* other) const {
  using Code = HXRefusal::Code;
  if (canConnectToPort(other)) return {};
  const auto* asked = resolved(this);
  const auto* partner = resolved(other);
  if (!asked) return missingPort(*this, other, this);
  if (!partner) return missingPort(*this, other, other);
  if (!isOnASide(*asked) || !isOnASide(*partner)) {
    return HXRefusal(Code::noSide, "a port is neither an input nor an output", this, other);
  }
  if (asked->orientation() == partner->orientation()) {
    return HXRefusal(Code::sameSide, String(fmt::format("both ports are {}s", nounOf(*asked))),
                     this, other);
  }
  for (const auto* port : {asked, partner}) {
    if (&kindOfPort(*port) != &kUnknown) continue;
    return HXRefusal(
        Code::unknownKind,
        String(fmt::format("nobody knows what the {} {}", nounOf(*port),
                           port->orientation() == HXOrientationInput ? "takes" : "gives")),
        this, other);
  }
  if (partner->orientation() == HXOrientationInput && partner->canConnectToPort(asked)) {
    return HXRefusal(Code::askedOfOutput, "the two fit, but it is the input that has to be asked",
                     this, other);
  }
  const bool isInput = asked->orientation() == HXOrientationInput;
  return HXRefusal(Code::kind,
                   String(fmt::format("the input takes {}, the output gives {}",
                                      kindOfPort(isInput ? *asked : *partner).phrase,
                                      kindOfPort(isInput ? *partner : *asked).phrase)),
                   this, other);
}

std::string_view nameOf(HXRefusal::Code code) noexcept {
  using Code = HXRefusal::Code;
  switch (code) {
    case Code::none:
      return "none";
    case Code::missingPort:
      return "missingPort";
    case Code::noSide:
      return "noSide";
    case Code::sameSide:
      return "sameSide";
    case Code::unknownKind:
      return "unknownKind";
    case Code::kind:
      return "kind";
    case Code::askedOfOutput:
      return "askedOfOutput";
    case Code::isDocument:
      return "isDocument";
    case Code::insideItself:
      return "insideItself";
    case Code::noParent:
      return "noParent";
    case Code::anotherDocument:
      return "anotherDocument";
  }
  return "none";
}

}  // namespace tarnkit
