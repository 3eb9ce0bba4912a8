#include "tarnkit/math/PreparedTree.h"

#include <algorithm>
#include <cassert>
#include <typeinfo>

#include "tarnkit/math/ProgramCompiler.h"
#include "tarnkit/math/TreeEvaluation.h"

namespace tarnkit::detail {

std::unique_ptr<const PreparedTree> PreparedTree::prepare(const ExpressionTree& tree,
                                                          const MXMathEvaluator& evaluator) {
  if (tree.nodeCount > kMaximumNodes) return nullptr;
  std::unique_ptr<PreparedTree> prepared(new PreparedTree);
  const TreeView view = tree.view(tree.nodeCount - 1);
  for (std::uint32_t i = 0; i < tree.nodeCount; ++i) {
    if (view.nodes[i].kind != NodeKind::variable) continue;
    const auto name = view.slice(view.nodes[i]);
    auto& known = prepared->variables_;
    if (std::any_of(known.begin(), known.end(),
                    [name](const String& each) { return each.view() == name; })) {
      continue;
    }
    if (known.size() == kMaximumVariables) return nullptr;
    known.emplace_back(name);
  }
  Program& program = prepared->program_;
  if (!ProgramCompiler(view, evaluator, prepared->variables_, program).compile() ||
      program.segments.size() != 1 || program.temporaries > kMaximumTemporaries) {
    return nullptr;
  }
  assert(program.hosts.empty());
  prepared->code_ = program.instructions.data();
  return prepared;
}

// Substitutions mostly stand in the order in which the variables appear, so each search begins
// behind the one that was found last.
bool PreparedTree::readValues(const MXSubstitutions& substitutions, double* values) const {
  const bool searches = substitutions.size() <= kSearchedInPlace;
  const auto end = substitutions.end();
  auto next = substitutions.begin();
  for (const String& name : variables_) {
    const Ref<Object>* found = nullptr;
    if (searches) {
      const std::string_view wanted = name.view();
      for (std::uint32_t left = substitutions.size(); left > 0 && !found; --left) {
        if (next == end) next = substitutions.begin();
        if (sameName(next->key.view(), wanted)) found = &next->value;
        ++next;
      }
    } else {
      found = substitutions.find(name);
    }
    if (!found || !*found) return false;
    const Object& value = **found;
    if (typeid(value) != typeid(Number)) return false;
    *values++ = static_cast<const Number&>(value).doubleValue();
  }
  return true;
}

}  // namespace tarnkit::detail
