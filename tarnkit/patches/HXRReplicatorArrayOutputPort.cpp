#include "tarnkit/patches/HXRReplicatorArrayOutputPort.h"

namespace tarnkit {

HXRReplicatorArrayOutputPort::HXRReplicatorArrayOutputPort(Ref<HXRCollectedPort> port,
                                                           String uniqueKey)
    : PortOf(port ? port->symbolicPortName() : String(), std::move(uniqueKey)),
      port_(std::move(port)) {}

}  // namespace tarnkit
