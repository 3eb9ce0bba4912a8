#pragma once

namespace tarnkit {

/// What only `Owner` can make: an operation that takes one is `Owner`'s alone, though it is public.
///
/// The links between owners and what they own are kept so. A link upward (a node's parent group, a
/// group's node, a port's node, a description's definition, ...) is set by its owner only, in the
/// same step that enters the object in the owner's table or takes it out, through a `link…` that
/// takes the owner's key. Where an interface names a public setter of such a link, it either does
/// what the owner would do, or leaves alone, with one line logged, what somebody holds; what
/// nobody holds yet may be given any link, as constructors give it.
template <class Owner>
class PassKey {
  friend Owner;
  // Not an aggregate, which everybody could make.
  constexpr PassKey() noexcept {}
};

}  // namespace tarnkit
