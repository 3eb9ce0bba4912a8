#pragma once

#include <string>
#include <vector>

#include "tarnkit/compare/HXDocumentCheck.h"

namespace tarnkit::tool {

/// What was found in one file, and what was answered there.
struct CheckedFile {
  std::string file;
  HXCheckResult result;
  std::vector<HXFinding> fixed;
};

/// Keeps the worst so many findings of all files together; returns how many are left out, those
/// that the results have only counted included.
std::size_t keepWorst(std::vector<CheckedFile>& files, std::size_t limit);

// To standard output. Each throws CommandFailure when that cannot be written.

/// "FILE: ADDRESS: SEVERITY: SENTENCE [CODE]", the worst first; what was answered, and how many
/// lines were left out, is told on standard error.
void writeFindings(const std::vector<CheckedFile>& files, std::size_t hidden);
/// One object, of one shape for one file and for many.
void writeFindingsAsJSON(const std::vector<CheckedFile>& files);
/// As forges show it beside a change: SARIF 2.1.0, with the table of the codes as its rules.
void writeFindingsAsSARIF(const std::vector<CheckedFile>& files);

}  // namespace tarnkit::tool
