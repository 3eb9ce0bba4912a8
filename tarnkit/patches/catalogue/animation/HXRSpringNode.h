#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/HXRPrimitiveInputPort.h"
#include "tarnkit/patches/HXRValueParameters.h"

namespace tarnkit {

/// Springs from position to position in one to ten dimensions, as its parameter says: a rest input
/// and a position output for each. Spring (1D) and Spring (2D) start with one and two.
/// Made by its record; owned by its editor node. For one thread; a change of the dimensions costs
/// what it adds, removes and renames.
class HXRSpringNode final : public HXRNode {
 public:
  static const HXRNodeClass kClass;
  explicit HXRSpringNode(const HXRNodeClass& patchClass);

  /// The parameter's value, which may lie outside its bounds.
  std::int32_t numberOfDimensions() const;
  /// Sets the parameter's value and builds the ports at once.
  void setNumberOfDimensions(std::int32_t numberOfDimensions);
  /// The name of the rest input of a dimension, counted from 0.
  static String hx_inputNameForIndex(std::int32_t index, std::int32_t numberOfDimensions);
  /// The name of the position output of a dimension, counted from 0.
  static String hx_outputNameForIndex(std::int32_t index, std::int32_t numberOfDimensions);

  /// This definition's own rest inputs and position outputs, by dimension.
  std::vector<Ref<HXRPrimitiveInputPort>> restPositionInputs();
  std::vector<Ref<HXRPrimitiveOutputPort>> positionOutputs();

  /// Adds or removes ports at the end until each dimension has its two, and renames those that
  /// stay, because the name of the first tells whether it is the only one.
  void hxr_buildPorts();
  void parameterValueDidChange(HXRParameter& parameter) override;

 protected:
  std::unique_ptr<HXRBuiltState> builtState() const override;

 private:
  HXRIndexParameter* dimensions() const;

  std::int32_t rests_ = 0;
  std::int32_t positions_ = 0;
};

}  // namespace tarnkit
