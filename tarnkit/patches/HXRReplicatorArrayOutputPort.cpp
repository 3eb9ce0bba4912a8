#include "tarnkit/patches/HXRReplicatorArrayOutputPort.h"

namespace tarnkit {

namespace {

String collectedName(const Object* port) {
  const auto* collected = dynamic_cast<const HXRCollectedPort*>(port);
  return collected ? collected->symbolicPortName() : String();
}

}  // namespace

HXRReplicatorArrayOutputPort::HXRReplicatorArrayOutputPort(Ref<Object> port, String uniqueKey)
    : PortOf(collectedName(port.get()), std::move(uniqueKey)), port_(std::move(port)) {}

}  // namespace tarnkit
