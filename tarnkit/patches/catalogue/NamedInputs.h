#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/platform/collections/OrderedMap.h"

namespace tarnkit {

/// How the inputs of a definition are made of names.
struct NamedInputs {
  const char* group;
  /// With one "{}" for the name.
  const char* keyPattern;
  Ref<HXRPort> (*makePort)(String name, String uniqueKey);
};

/// A definition with one input for each name that a text of its mentions: the common part of the
/// expression patches.
class NamedInputsNode : public HXRNode {
 protected:
  std::unique_ptr<HXRBuiltState> builtState() const override;
  /// `inputs` lives as long as the process.
  NamedInputsNode(const HXRNodeClass& patchClass, const NamedInputs& inputs);

  /// Removes the inputs of names that are gone and appends those of new ones, in their order; the
  /// others keep their places and connections, and ports of others are not touched. A name given
  /// twice counts once. Of a refresh that an observer starts inside of another the names hold.
  /// Takes time linear in the names, and in what is added and removed.
  void refreshInputs(const std::vector<String>& names);
  /// This definition's own inputs, name to port, in the order in which they were made.
  OrderedMap<Ref<HXRPort>> inputsByName();

 private:
  String keyForName(const String& name) const;
  void removeInputsBut(const std::vector<String>& names, std::uint32_t refresh);

  const NamedInputs& inputs_;
  OrderedMap<String> keysByName_;  // of the inputs built
  std::uint32_t refreshes_ = 0;
};

}  // namespace tarnkit
