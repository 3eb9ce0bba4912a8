#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "tarnkit/platform/File.h"

namespace tarnkit {
namespace {

namespace fs = std::filesystem;

class FileTest : public ::testing::Test {
 protected:
  FileTest() {
    std::string pattern = (fs::temp_directory_path() / "tarnkit-file-XXXXXX").string();
    folder_ = ::mkdtemp(pattern.data());
  }
  ~FileTest() override { fs::remove_all(folder_); }

  std::string path(const char* name) const { return (folder_ / name).string(); }
  std::string contents(const std::string& file) const {
    std::vector<std::uint8_t> bytes;
    std::string error;
    EXPECT_TRUE(File::read(file, bytes, &error)) << error;
    return {bytes.begin(), bytes.end()};
  }
  std::size_t fileCount() const {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
  }

  fs::path folder_;
};

TEST_F(FileTest, WritesAndReadsWholeFiles) {
  const std::string file = path("a.plist");
  for (const std::string& text : {std::string("first"), std::string(3000000, 'x'), std::string()}) {
    std::string error;
    ASSERT_TRUE(File::write(file, bytesOf(text), &error)) << error;
    EXPECT_EQ(contents(file), text);
  }
  EXPECT_EQ(fileCount(), 1U);
}

TEST_F(FileTest, KeepsPermissionsAndLinks) {
  const std::string file = path("a");
  ASSERT_TRUE(File::write(file, bytesOf("old")));
  ASSERT_EQ(::chmod(file.c_str(), 0640), 0);
  fs::create_symlink("a", path("link"));
  fs::create_symlink(path("link"), path("second"));
  ASSERT_TRUE(File::write(path("second"), bytesOf("new")));
  EXPECT_TRUE(fs::is_symlink(path("link")) && fs::is_symlink(path("second")));
  EXPECT_EQ(contents(file), "new");
  struct stat status {};
  ASSERT_EQ(::stat(file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST_F(FileTest, TellsPathAndCauseOfAFailure) {
  fs::create_directory(path("folder"));
  const struct {
    std::string target;
    const char* cause;
  } cases[] = {
      {path("folder"), "Is a directory"},
      {path("missing/a"), "No such file or directory"},
      {"/dev/full", "No space left on device"},
  };
  for (const auto& item : cases) {
    std::string error;
    EXPECT_FALSE(File::write(item.target, bytesOf("text"), &error));
    EXPECT_EQ(error, item.target + ": " + item.cause);
  }
  std::vector<std::uint8_t> bytes;
  std::string error;
  EXPECT_FALSE(File::read(path("folder"), bytes, &error));
  EXPECT_EQ(error, path("folder") + ": Is a directory");
  EXPECT_FALSE(File::read(path("none"), bytes, &error));
  EXPECT_EQ(error, path("none") + ": No such file or directory");
  ASSERT_TRUE(File::write(path("large"), bytesOf("123456")));
  EXPECT_FALSE(File::read(path("large"), bytes, &error, 5));
  EXPECT_EQ(error, path("large") + ": it is too large");
  EXPECT_TRUE(File::read(path("large"), bytes, &error, 6));
}

// A child process runs out of room in the middle of the file, as on a full disk.
TEST_F(FileTest, AFailureInTheMiddleLeavesTheOldFileAlone) {
  const std::string file = path("a");
  ASSERT_TRUE(File::write(file, bytesOf("old")));
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    std::signal(SIGXFSZ, SIG_IGN);
    const struct rlimit limit { 100000, 100000 };
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) ::_exit(3);
    std::string error;
    const bool done = File::write(file, bytesOf(std::string(200000, 'x')), &error);
    ::_exit(done ? 1 : error.empty() ? 2 : 0);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(contents(file), "old");
  EXPECT_EQ(fileCount(), 1U);
}

}  // namespace
}  // namespace tarnkit
