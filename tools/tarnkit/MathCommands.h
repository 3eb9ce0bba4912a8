#pragma once

namespace CLI {
class App;
}

namespace tarnkit::tool {

// The commands of the expression engine. Each function enters its command into the program.

/// `tarnkit eval`: the value of one expression.
void addEvalCommand(CLI::App& program);
/// `tarnkit tokens`, `parse`, `simplify`, `rewrite`: what the engine makes of one expression.
void addExpressionCommands(CLI::App& program);
/// `tarnkit functions`: what may stand in an expression.
void addFunctionsCommand(CLI::App& program);
/// `tarnkit math`: the batch form, JSON lines in and out.
void addMathBatchCommand(CLI::App& program);

}  // namespace tarnkit::tool
