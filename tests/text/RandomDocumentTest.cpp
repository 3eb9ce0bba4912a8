#include <fmt/format.h>

#include <fstream>
#include <random>

#include "fuzz/model/ModelEditor.h"
#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/text/HXTextFile.h"
#include "tests/model/ModelFixture.h"

// Documents as nobody would make them by hand: a text holds all of each that a file holds.

namespace tarnkit::test {

namespace {

std::vector<std::uint8_t> randomBytes(std::uint32_t seed, std::size_t size) {
  std::mt19937 random(seed);
  std::vector<std::uint8_t> bytes(size);
  for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
  return bytes;
}

std::string textOf(const HXDocument& document) {
  auto text = HXTextFile::textWithDocument(document);
  EXPECT_TRUE(text) << text.status().message();
  return text ? *text : std::string();
}

Ref<HXDocument> readText(const std::string& text) {
  auto document = HXTextFile::document(text);
  EXPECT_TRUE(document) << document.status().message();
  return document ? *document : nullptr;
}

class Quiet {
 public:
  Quiet() : earlier_(Log::setSink([](std::string_view) {})) {}
  ~Quiet() { Log::setSink(earlier_); }

 private:
  Log::Sink earlier_;
};

void keep(const char* name, std::uint32_t seed, const std::string& text) {
  if (!std::getenv("TARNKIT_KEEP_TEXTS")) return;
  std::ofstream(fmt::format("{}/{}-{}.json", std::getenv("TARNKIT_KEEP_TEXTS"), name, seed))
      << text;
}

}  // namespace

TEST(RandomDocumentTest, ATextHoldsWhatAFileHolds) {
  const Quiet quiet;
  std::size_t textSize = 0;
  std::size_t fileSize = 0;
  for (std::uint32_t seed = 0; seed < 400; ++seed) {
    const auto bytes = randomBytes(seed, 100 + seed % 400);
    fuzz::ModelEditor editor(bytes.data(), bytes.size());
    editor.run();
    const Ref<HXDocument> document = editor.document();
    if (!document) continue;
    const auto opened = openedDocument(savedBytes(*document, 3), 3);
    const auto file = savedBytes(*opened, 3);
    const std::string text = textOf(*document);
    const auto read = readText(text);
    ASSERT_TRUE(read) << "seed " << seed;
    if (savedBytes(*read, 3) != file) {
      keep("first", seed, text);
      keep("opened", seed, textOf(*opened));
      keep("read", seed, textOf(*read));
      FAIL() << "seed " << seed;
    }
    const std::string again = textOf(*read);
    ASSERT_EQ(textOf(*opened), again) << "seed " << seed;
    const auto reread = readText(again);
    ASSERT_TRUE(reread);
    ASSERT_EQ(savedBytes(*reread, 3), savedBytes(*openedDocument(file, 3), 3)) << "seed " << seed;
    textSize += again.size();
    fileSize += file.size();
  }
  EXPECT_LT(2 * textSize, fileSize);
}

}  // namespace tarnkit::test
