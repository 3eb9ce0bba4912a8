#pragma once

#include <string>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace tarnkit::tool {

/// What is wrong with a command line, in one line: the command or option that there is not, with
/// the nearest that there is, or what is missing.
std::string describeWrongCommandLine(const CLI::App& program, const CLI::ParseError& error);

}  // namespace tarnkit::tool
