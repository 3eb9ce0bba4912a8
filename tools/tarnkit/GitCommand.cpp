#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tarnkit/platform/system/File.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Output.h"

extern char** environ;

namespace tarnkit::tool {

namespace {

constexpr const char* kAttributes[] = {"*.document diff=tarnkit merge=tarnkit",
                                       "*.tarn diff=tarnkit merge=tarnkit",
                                       "*.tarn.json diff=tarnkit merge=tarnkit"};

struct GitOptions {
  bool enables = false;
  bool disables = false;
  bool global = false;
};

struct GitAnswer {
  int status = 0;
  std::string output;  // without the last line feed
};

GitAnswer git(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "git");
  std::vector<char*> argv;
  for (auto& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) throw CommandFailure(Status::ofSystem(errno));
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  pid_t child = 0;
  const int failure = ::posix_spawnp(&child, "git", &actions, nullptr, argv.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  ::close(ends[1]);
  GitAnswer answer;
  char piece[4096];
  for (ssize_t size = 0; failure == 0;) {
    size = ::read(ends[0], piece, sizeof(piece));
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) break;
    answer.output.append(piece, static_cast<std::size_t>(size));
  }
  ::close(ends[0]);
  if (failure != 0) throw CommandFailure("git", "git", Status::ofSystem(failure).sentence());
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  answer.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  if (answer.output.ends_with('\n')) answer.output.pop_back();
  return answer;
}

// As a word of the shell that git calls.
std::string shellWord(const std::string& text) {
  std::string word = "'";
  for (const char character : text) {
    if (character == '\'') {
      word += "'\\''";
    } else {
      word += character;
    }
  }
  return word + "'";
}

std::string attributesFile(bool global) {
  if (!global) {
    const auto answer = git({"rev-parse", "--git-path", "info/attributes"});
    if (answer.status != 0) throw CommandFailure("git: this folder is in no repository");
    return answer.output;
  }
  const auto answer = git({"config", "--global", "--type=path", "--get", "core.attributesFile"});
  if (answer.status == 0 && !answer.output.empty()) return answer.output;
  const char* const folder = std::getenv("XDG_CONFIG_HOME");
  if (folder && *folder != '\0') return std::string(folder) + "/git/attributes";
  const char* const home = std::getenv("HOME");
  if (!home || *home == '\0') throw CommandFailure("git: there is no home folder");
  return std::string(home) + "/.config/git/attributes";
}

// The lines of the file but for ours, each with its line feed.
std::string otherAttributes(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return {};
  const auto bytes = required(File::read(path));
  const std::string text(bytes.begin(), bytes.end());
  std::string others;
  for (std::size_t start = 0; start < text.size();) {
    const auto end = std::min(text.find('\n', start), text.size());
    const std::string line = text.substr(start, end - start);
    bool isOurs = false;
    for (const auto* attribute : kAttributes) isOurs = isOurs || line == attribute;
    if (!isOurs) others += line + "\n";
    start = end + 1;
  }
  return others;
}

void configure(const GitOptions& options) {
  const std::string path = attributesFile(options.global);
  const std::string before = otherAttributes(path);
  std::string attributes = before;
  if (options.enables) {
    for (const auto* attribute : kAttributes) attributes += std::string(attribute) + "\n";
  }
  const std::string scope = options.global ? "--global" : "--local";
  if (options.enables) {
    const auto host = shellWord(std::filesystem::read_symlink("/proc/self/exe").string());
    const std::pair<const char*, std::string> settings[] = {
        {"diff.tarnkit.command", host + " diff"},
        {"diff.tarnkit.textconv", host + " open --without-images"},
        {"merge.tarnkit.name", "documents of prototypes"},
        {"merge.tarnkit.driver", host + " merge %O %A %B -o %A --path %P"}};
    for (const auto& [key, value] : settings) {
      if (git({"config", scope, key, value}).status != 0) {
        throw CommandFailure(std::string("git: ") + key + " could not be set");
      }
    }
  } else {
    // 5: there was none of it. Git says so of a section, too.
    for (const auto* key : {"diff.tarnkit.command", "diff.tarnkit.textconv", "merge.tarnkit.name",
                            "merge.tarnkit.driver"}) {
      const auto status = git({"config", scope, "--unset-all", key}).status;
      if (status != 0 && status != 5) {
        throw CommandFailure(std::string("git: ") + key + " could not be taken out");
      }
    }
  }
  struct stat info {};
  const bool isThere = ::stat(path.c_str(), &info) == 0;
  if (!isThere && attributes.empty()) return;
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  const auto* data = reinterpret_cast<const std::uint8_t*>(attributes.data());
  require(File::write(path, ByteSpan(data, attributes.size())));
}

}  // namespace

void addGitCommand(CLI::App& app) {
  auto* command =
      app.add_subcommand("git", "Have git compare and merge documents, or have it no more");
  const auto options = std::make_shared<GitOptions>();
  auto* enable = command->add_flag("--enable", options->enables, "Write attributes and drivers");
  auto* disable = command->add_flag("--disable", options->disables, "Take them out again");
  enable->excludes(disable);
  command->add_flag("--global", options->global,
                    "Of all repositories of the user (default: of this one)");
  command->callback([options] {
    if (!options->enables && !options->disables) {
      endWithTrouble("git: --enable or --disable is needed");
    }
    configure(*options);
  });
}

}  // namespace tarnkit::tool
