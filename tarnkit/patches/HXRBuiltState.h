#pragma once

#include <memory>
#include <tuple>
#include <utility>

namespace tarnkit {

class HXRNode;

/// What a definition remembers, beside its ports, groups and parameters, of what it has built of
/// them: as it was at one moment, so that an undo can bring it back.
class HXRBuiltState {
 public:
  virtual ~HXRBuiltState() = default;
  HXRBuiltState(const HXRBuiltState&) = delete;
  HXRBuiltState& operator=(const HXRBuiltState&) = delete;
  /// Puts what is held into the definition it was taken of, and holds what was there.
  virtual void exchange(HXRNode& definition) = 0;
  /// Whether that would change nothing.
  virtual bool isNeutral(const HXRNode& definition) const = 0;

 protected:
  HXRBuiltState() noexcept = default;
};

namespace detail {

template <class Node, class... Members>
class MembersState final : public HXRBuiltState {
 public:
  explicit MembersState(const Node& node, Members Node::*... members)
      : members_(members...), held_(inForce(node)) {}

  void exchange(HXRNode& definition) override {
    auto& node = static_cast<Node&>(definition);
    auto present = inForce(node);
    putInForce(node, std::index_sequence_for<Members...>());
    held_ = std::move(present);
  }
  bool isNeutral(const HXRNode& definition) const override {
    return inForce(static_cast<const Node&>(definition)) == held_;
  }

 private:
  std::tuple<Members...> inForce(const Node& node) const {
    return std::apply([&](auto... members) { return std::tuple<Members...>(node.*members...); },
                      members_);
  }
  template <std::size_t... I>
  void putInForce(Node& node, std::index_sequence<I...>) {
    ((node.*std::get<I>(members_) = std::move(std::get<I>(held_))), ...);
  }

  std::tuple<Members Node::*...> members_;
  std::tuple<Members...> held_;
};

}  // namespace detail

/// For `HXRNode::builtState`: the state that stands in these members, which can be copied and
/// compared.
///
///   return builtStateOf(*this, &StaircaseNode::steps_);
template <class Node, class... Members>
std::unique_ptr<HXRBuiltState> builtStateOf(const Node& definition, Members Node::*... members) {
  return std::make_unique<detail::MembersState<Node, Members...>>(definition, members...);
}

}  // namespace tarnkit
