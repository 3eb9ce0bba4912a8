#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tarnkit/math/ExpressionTree.h"

namespace tarnkit::detail {

/// What can be said of trees without evaluating them. None recurses; each is linear in the smaller
/// tree at most.

/// Equality of whole trees: kinds, numbers, names (of functions in lower case), arguments.
bool treesEqual(const TreeView& a, const TreeView& b);
/// Equality of the roots alone: for functions, their names and numbers of arguments.
bool nodesEqual(const TreeView& a, const TreeView& b);
bool functionNamesEqual(const TreeView& a, const TreeView& b);
/// The root's hash, see `MXExpression::hash`.
std::uint64_t nodeHash(const TreeView& tree);
/// See `MXExpression::description`.
std::string treeDescription(const TreeView& tree);
/// A function's name in lower case.
std::string functionName(const TreeView& tree);

}  // namespace tarnkit::detail
