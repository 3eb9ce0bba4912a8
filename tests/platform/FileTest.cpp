#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tarnkit/platform/system/File.h"
#include "tarnkit/platform/system/FileReplacement.h"

namespace tarnkit {
namespace {

namespace fs = std::filesystem;
using detail::Naming;

Status replaceWith(const std::string& file, ByteSpan bytes, const struct stat* old, Naming naming) {
  const auto contents = [&](File::Piece write) { return write(bytes); };
  return detail::replaceFile(file, contents, old, naming);
}

class FileTest : public ::testing::Test {
 protected:
  FileTest() {
    std::string pattern = (fs::temp_directory_path() / "tarnkit-file-XXXXXX").string();
    folder_ = ::mkdtemp(pattern.data());
  }
  ~FileTest() override { fs::remove_all(folder_); }

  std::string path(const char* name) const { return (folder_ / name).string(); }
  std::string contents(const std::string& file) const {
    const auto bytes = File::read(file);
    EXPECT_TRUE(bytes) << bytes.status().message();
    return bytes ? std::string(bytes->begin(), bytes->end()) : "";
  }
  std::size_t fileCount() const {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
  }

  // How a process that does this ends, with something done to it meanwhile.
  template <class Work, class Meanwhile>
  static int statusOfChild(Work work, Meanwhile meanwhile) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(work());
    meanwhile(child);
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return status;
  }
  template <class Work>
  static int statusOfChild(Work work) {
    return statusOfChild(work, [](pid_t) {});
  }

  fs::path folder_;
};

TEST_F(FileTest, WritesAndReadsWholeFiles) {
  const std::string file = path("a.plist");
  for (const std::string& text : {std::string("first"), std::string(3000000, 'x'), std::string()}) {
    const auto status = File::write(file, bytesOf(text));
    ASSERT_TRUE(status) << status.message();
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

TEST_F(FileTest, TellsKindPathAndCauseOfAFailure) {
  fs::create_directory(path("folder"));
  ASSERT_TRUE(File::write(path("large"), bytesOf("123456")));
  const auto written = [](const std::string& to) { return File::write(to, bytesOf("text")); };
  const auto read = [](const std::string& from) { return File::read(from, 5).status(); };
  const struct {
    std::function<Status(const std::string&)> operation;
    std::string path;
    StatusCode code;
    const char* cause;
  } cases[] = {
      {written, path("folder"), StatusCode::notAFile, "Is a directory"},
      {written, path("large/a"), StatusCode::notAFile, "Not a directory"},
      {written, path("missing/a"), StatusCode::notFound, "No such file or directory"},
      {written, "/dev/full", StatusCode::noSpace, "No space left on device"},
      {read, path("folder"), StatusCode::notAFile, "Is a directory"},
      {read, path("none"), StatusCode::notFound, "No such file or directory"},
      {read, path("large"), StatusCode::tooLarge, "it is too large"},
      {&File::makeDirectory, path("large"), StatusCode::notAFile, "Not a directory"},
      {&File::makeDirectory, path("large/a"), StatusCode::notAFile, "Not a directory"},
      {&File::makeDirectory, "/proc/a", StatusCode::notFound, "No such file or directory"},
  };
  for (const auto& item : cases) {
    const auto status = item.operation(item.path);
    EXPECT_EQ(nameOf(status.code()), nameOf(item.code)) << item.path;
    EXPECT_EQ(status.path(), item.path);
    EXPECT_EQ(status.sentence(), item.cause) << item.path;
  }
  EXPECT_TRUE(File::read(path("large"), 6));
  EXPECT_TRUE(File::makeDirectory(path("one/two/")));
  EXPECT_TRUE(File::makeDirectory(path("one/two/"))) << "it is there already";
}

TEST_F(FileTest, AFileMayComeInPieces) {
  const std::string file = path("a");
  ASSERT_TRUE(File::write(file, bytesOf("old")));
  const std::string large(3'000'000, 'x');
  const auto write = [&](bool isWhole) {
    return File::write(file, [&](File::Piece piece) {
      return piece(bytesOf("be")) && piece(bytesOf(large)) && piece({}) && isWhole &&
             piece(bytesOf("gun"));
    });
  };
  EXPECT_FALSE(write(false)) << "whoever hands it over has given up";
  EXPECT_EQ(contents(file), "old");
  ASSERT_TRUE(write(true));
  EXPECT_EQ(contents(file), "be" + large + "gun");
  EXPECT_EQ(fileCount(), 1U);
}

// A child process runs out of room in the middle of the file, as on a full disk.
TEST_F(FileTest, AFailureInTheMiddleLeavesTheOldFileAlone) {
  const std::string file = path("a");
  ASSERT_TRUE(File::write(file, bytesOf("old")));
  const int status = statusOfChild([&] {
    const struct rlimit limit { 100000, 100000 };
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return 3;
    const auto written = File::write(file, bytesOf(std::string(200000, 'x')));
    if (written.code() != StatusCode::noSpace) return 1;
    return written.message() == file + ": File too large" ? 0 : 2;
  });
  ASSERT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(contents(file), "old");
  EXPECT_EQ(fileCount(), 1U);
}

TEST_F(FileTest, KeepsTheBitsThatLendRights) {
  const std::string file = path("a");
  ASSERT_TRUE(File::write(file, bytesOf("old")));
  for (const auto naming : {Naming::whenWhole, Naming::fromTheStart}) {
    ASSERT_EQ(::chmod(file.c_str(), 06751), 0);
    struct stat status {};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    ASSERT_TRUE(replaceWith(file, bytesOf("new"), &status, naming));
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 06751U);
  }
  // Those of somebody else would lend our own.
  if (::getuid() == 0) {
    ASSERT_EQ(::chown(file.c_str(), 4711, 4712), 0);
    ASSERT_EQ(::chmod(file.c_str(), 06757), 0);
    const int child = statusOfChild([&] {
      // The folder is ours, the file may be written by anybody.
      if (::chmod(folder_.c_str(), 0777) != 0 || ::setgid(4713) != 0 || ::setuid(4713) != 0) {
        return 2;
      }
      return File::write(file, bytesOf("newer")) ? 0 : 1;
    });
    EXPECT_EQ(child, 0);
    struct stat status {};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 4713U);
    EXPECT_EQ(status.st_mode & 07777U, 0757U);
  }
}

// However a writer ends, the old file or the new one stands there whole, and nothing stays beside
// it when another write was done.
TEST_F(FileTest, AnEndInTheMiddleLeavesNothingBehind) {
  const std::string file = path("a");
  const std::string large(std::size_t{24} << 20, 'x');
  const std::string small = "old";
  for (const auto naming : {Naming::whenWhole, Naming::fromTheStart}) {
    for (const int signal : {SIGKILL, SIGINT, SIGTERM, SIGHUP}) {
      // Whoever runs the tests may ignore it, and the child with them.
      const auto handler = std::signal(signal, SIG_DFL);
      for (int delay = 1000; delay <= 5000; delay += 1000) {
        ASSERT_TRUE(File::write(file, bytesOf(small)));
        ASSERT_EQ(fileCount(), 1U) << "after signal " << signal;
        const int status = statusOfChild(
            [&] {
              struct stat old {};
              if (::stat(file.c_str(), &old) != 0) return 2;
              for (;;) {
                if (!replaceWith(file, bytesOf(large), &old, naming)) return 1;
              }
            },
            [&](pid_t child) {
              ::usleep(static_cast<useconds_t>(delay));
              ::kill(child, signal);
            });
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
        const std::string now = contents(file);
        EXPECT_TRUE(now == small || now == large) << now.size();
        if (signal == SIGKILL) continue;
        EXPECT_EQ(fileCount(), 1U) << "after signal " << signal;
      }
      if (handler != SIG_ERR) std::signal(signal, handler);
    }
  }
}

TEST_F(FileTest, ATemporaryFileInUseIsNobodysToRemove) {
  const std::string file = path("a");
  const std::string first(300000, '1');
  const std::string second(200000, '2');
  std::vector<std::thread> writers;
  std::atomic<int> failures{0};
  for (const auto* text : {&first, &second, &first, &second}) {
    writers.emplace_back([&, text] {
      for (int i = 0; i < 50; ++i) {
        const auto naming = i % 2 == 0 ? Naming::whenWhole : Naming::fromTheStart;
        if (!replaceWith(file, bytesOf(*text), nullptr, naming)) ++failures;
      }
    });
  }
  for (auto& writer : writers) writer.join();
  EXPECT_EQ(failures, 0);
  const std::string now = contents(file);
  EXPECT_TRUE(now == first || now == second);
  EXPECT_EQ(fileCount(), 1U);
}

TEST_F(FileTest, WaitsForStreamsThatDoNotBlockAndOutlivesTheirReaders) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_NONBLOCK | O_CLOEXEC), 0);
  const std::string text(1000000, 'x');
  std::thread writer([&] {
    ::usleep(10000);  // the reader finds nothing first
    const auto status = File::writeStream(ends[1], bytesOf(text));
    EXPECT_TRUE(status) << status.message();
    ::close(ends[1]);
  });
  const auto bytes = File::readStream(ends[0]);
  writer.join();
  ::close(ends[0]);
  ASSERT_TRUE(bytes) << bytes.status().message();
  EXPECT_EQ(bytes->size(), text.size());

  const std::string pipe = path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  std::thread reader([&] { ::close(::open(pipe.c_str(), O_RDONLY)); });
  const auto status = File::write(pipe, bytesOf(text));
  EXPECT_EQ(status.code(), StatusCode::systemFailure);
  EXPECT_EQ(status.message(), pipe + ": Broken pipe");
  reader.join();
}

}  // namespace
}  // namespace tarnkit
