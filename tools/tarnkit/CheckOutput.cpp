#include "tools/tarnkit/CheckOutput.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>

#include "tarnkit/foundation/MD5.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Terminal.h"

namespace tarnkit::tool {

namespace {

struct Told {
  const CheckedFile* file;
  const HXFinding* finding;
};

// Of all files together the worst first, then as the files were given.
std::vector<Told> inOrder(const std::vector<CheckedFile>& files) {
  std::vector<Told> all;
  for (const CheckedFile& file : files) {
    for (const HXFinding& finding : file.result.findings) all.push_back({&file, &finding});
  }
  std::stable_sort(all.begin(), all.end(), [](const Told& a, const Told& b) {
    return a.finding->severity() < b.finding->severity();
  });
  return all;
}

void writeTextOrNull(JSONWriter& json, std::string_view key, const std::string& text) {
  json.key(key);
  if (text.empty()) {
    json.null();
  } else {
    json.value(text);
  }
}

void writeFinding(JSONWriter& json, const HXFinding& finding) {
  const HXFindingKind& kind = finding.kind();
  json.beginObject().key("code").value(kind.name);
  json.key("severity").value(nameOf(kind.severity));
  json.key("address").value(finding.address);
  writeTextOrNull(json, "key", finding.key);
  json.key("sentence").value(finding.sentence);
  writeTextOrNull(json, "suggestion", finding.suggestion);
  json.key("fixable").value(kind.isFixable);
  if (finding.offset != HXFinding::kNoOffset) {
    json.key("offset").value(std::uint64_t{finding.offset});
  }
  json.endObject();
}

void writeList(JSONWriter& json, std::string_view key, const std::vector<HXFinding>& findings) {
  json.key(key).beginArray();
  for (const HXFinding& finding : findings) writeFinding(json, finding);
  json.endArray();
}

std::string sentenceOf(const HXFinding& finding) {
  return finding.suggestion.empty() ? finding.sentence
                                    : finding.sentence + "; " + finding.suggestion;
}

// A path as a reference of a URI: what is neither letter, digit nor one of a few marks is escaped.
std::string uriOf(const std::string& path) {
  constexpr std::string_view kKept = "-._~/";
  std::string uri;
  // What stands before a colon would be read as a scheme; it is escaped like the rest.
  for (const char c : path) {
    const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                         (c >= '0' && c <= '9') || kKept.find(c) != std::string_view::npos;
    uri += isPlain ? std::string(1, c) : fmt::format("%{:02X}", static_cast<unsigned char>(c));
  }
  return path.starts_with('/') ? "file://" + uri : uri;
}

void writeText(JSONWriter& json, std::string_view key, std::string_view text) {
  json.key(key).beginObject().key("text").value(text).endObject();
}

void writeRules(JSONWriter& json) {
  json.key("rules").beginArray();
  for (const HXFindingKind& kind : findingKinds()) {
    json.beginObject().key("id").value(kind.name);
    writeText(json, "shortDescription", fmt::format("{}.", kind.title));
    writeText(json, "fullDescription", kind.text);
    writeText(json, "help", kind.text);
    json.key("defaultConfiguration").beginObject();
    json.key("level").value(nameOf(kind.severity)).endObject();
    json.endObject();
  }
  json.endArray();
}

// The same finding has the same fingerprint in the next version of the file.
std::string fingerprintOf(const Told& told) {
  const auto text =
      fmt::format("{}\n{}\n{}", told.finding->kind().name, told.file->file, told.finding->address);
  return md5StringRepresentation(bytesOf(text)).toStdString();
}

void writeResult(JSONWriter& json, const Told& told) {
  const HXFinding& finding = *told.finding;
  json.beginObject().key("ruleId").value(finding.kind().name);
  json.key("ruleIndex").value(static_cast<std::uint32_t>(finding.code));
  json.key("level").value(nameOf(finding.severity()));
  writeText(json, "message", fmt::format("{}: {}", finding.address, sentenceOf(finding)));
  json.key("locations").beginArray().beginObject();
  json.key("physicalLocation").beginObject();
  json.key("artifactLocation").beginObject().key("uri").value(uriOf(told.file->file)).endObject();
  // A document has no lines; forges show only what has one.
  json.key("region").beginObject().key("startLine").value(1).endObject().endObject();
  json.key("logicalLocations").beginArray().beginObject();
  json.key("fullyQualifiedName").value(finding.address).endObject().endArray();
  json.endObject().endArray();
  json.key("partialFingerprints").beginObject();
  json.key("place/v1").value(fingerprintOf(told)).endObject();
  json.endObject();
}

}  // namespace

std::size_t keepWorst(std::vector<CheckedFile>& files, std::size_t limit) {
  std::size_t total = 0;
  for (const CheckedFile& file : files) total += file.result.total();
  const std::vector<Told> all = inOrder(files);
  std::vector<std::size_t> kept(files.size());
  for (std::size_t i = 0; i < std::min(limit, all.size()); ++i) {
    ++kept[static_cast<std::size_t>(all[i].file - files.data())];
  }
  for (std::size_t i = 0; i < files.size(); ++i) {
    auto& findings = files[i].result.findings;
    findings.erase(findings.begin() + static_cast<std::ptrdiff_t>(kept[i]), findings.end());
  }
  return total - std::min(limit, all.size());
}

namespace {
const char* styleOf(HXFindingSeverity severity) {
  switch (severity) {
    case HXFindingSeverity::error:
      return "1;31";
    case HXFindingSeverity::warning:
      return "33";
    case HXFindingSeverity::note:
      break;
  }
  return "36";
}
}  // namespace

void writeFindings(const std::vector<CheckedFile>& files, std::size_t hidden) {
  std::string lines;
  for (const Told& told : inOrder(files)) {
    const HXFinding& finding = *told.finding;
    lines += oneLine(fmt::format("{}: {}: ", told.file->file, finding.address));
    lines += styled(STDOUT_FILENO, styleOf(finding.severity()), nameOf(finding.severity()));
    lines += oneLine(fmt::format(": {} [{}]", sentenceOf(finding), finding.kind().name));
    lines += '\n';
  }
  writeToStandardOutput(lines);
  for (const CheckedFile& file : files) {
    if (file.fixed.empty()) continue;
    complain(fmt::format("check, {}, {} {} fixed", file.file, file.fixed.size(),
                         file.fixed.size() == 1 ? "finding was" : "findings were"));
  }
  if (hidden == 1) complain("check, 1 more finding is not shown");
  if (hidden > 1) complain(fmt::format("check, {} more findings are not shown", hidden));
}

void writeFindingsAsJSON(const std::vector<CheckedFile>& files) {
  JSONWriter json([](std::string_view text) { writeToStandardOutput(text); });
  HXCheckResult all;
  json.beginObject().key("files").beginArray();
  for (const CheckedFile& file : files) {
    json.beginObject().key("file").value(file.file);
    writeList(json, "findings", file.result.findings);
    writeList(json, "fixed", file.fixed);
    json.endObject();
    for (std::size_t i = 0; i < all.counts.size(); ++i) all.counts[i] += file.result.counts[i];
  }
  json.endArray().key("counts").beginObject();
  for (const auto severity :
       {HXFindingSeverity::error, HXFindingSeverity::warning, HXFindingSeverity::note}) {
    json.key(nameOf(severity)).value(std::uint64_t{all.count(severity)});
  }
  json.endObject().endObject();
  json.endLine();
  json.flush();
}

void writeFindingsAsSARIF(const std::vector<CheckedFile>& files) {
  JSONWriter json([](std::string_view text) { writeToStandardOutput(text); });
  json.beginObject();
  json.key("$schema").value("https://json.schemastore.org/sarif-2.1.0.json");
  json.key("version").value("2.1.0");
  json.key("runs").beginArray().beginObject();
  json.key("tool").beginObject().key("driver").beginObject();
  json.key("name").value("tarnkit check");
  json.key("version").value(TARNKIT_VERSION);
  writeRules(json);
  json.endObject().endObject();
  json.key("columnKind").value("utf16CodeUnits");
  json.key("results").beginArray();
  for (const Told& told : inOrder(files)) writeResult(json, told);
  json.endArray().endObject().endArray().endObject();
  json.endLine();
  json.flush();
}

}  // namespace tarnkit::tool
