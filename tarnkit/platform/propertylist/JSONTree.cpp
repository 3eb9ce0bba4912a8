#include "tarnkit/platform/propertylist/JSONTree.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "tarnkit/platform/text/UTF8.h"

namespace tarnkit {

namespace {

// Up to this many keys are compared with each other in place.
constexpr std::uint32_t kComparedInPlace = 8;
constexpr std::size_t kShownKey = 60;

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

std::size_t lineAt(std::string_view text, std::size_t position) noexcept {
  const auto before = text.substr(0, position);
  return 1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
}

}  // namespace

/// One pass over the text, without recursion: what is open stands on a stack.
class JSONTree::Parser {
 public:
  Parser(JSONTree& tree, std::string_view text) : tree_(tree), text_(text) {}

  Status run() {
    if (text_.size() >= kMaximumSize) {
      return Status::failure(
          StatusCode::tooLarge,
          fmt::format("the text has {} bytes, at most {} are read", text_.size(), kMaximumSize));
    }
    tree_.source_ = text_;
    if (text_.starts_with("\xEF\xBB\xBF")) at_ = 3;
    skipSpace();
    if (!value({})) return fail();
    while (!open_.empty()) {
      if (!step()) return fail();
    }
    if (at_ != text_.size()) {
      why_ = "something stands after the end";
      return fail();
    }
    return {};
  }

 private:
  Status fail() const {
    return Status::damaged(fmt::format("line {}: {}", lineAt(text_, at_), why_));
  }
  bool refuse(std::string why) {
    why_ = std::move(why);
    return false;
  }
  char peek() const noexcept { return at_ < text_.size() ? text_[at_] : '\0'; }

  void skipSpace() noexcept {
    while (at_ < text_.size()) {
      const char c = text_[at_];
      if (c != ' ' && c != '\n' && c != '\t' && c != '\r') return;
      ++at_;
    }
  }

  // The next member or element of the innermost container, or its end.
  bool step() {
    const Index container = open_.back();
    const bool isObject = tree_.values_[container].kind == Kind::object;
    const char closing = isObject ? '}' : ']';
    const bool isFirst = tree_.values_[container].count == 0;
    if (peek() == closing) {
      ++at_;
      return close(container);
    }
    if (!isFirst) {
      if (peek() != ',') {
        return refuse(fmt::format("\",\" or \"{}\" is missing{}", closing,
                                  at_ >= text_.size() ? " at the end" : ""));
      }
      ++at_;
      skipSpace();
    }
    ++tree_.values_[container].count;
    std::string_view key;
    if (isObject) {
      if (peek() != '"') return refuse("a key in quotation marks is missing");
      if (!string(key)) return false;
      skipSpace();
      if (peek() != ':') return refuse("\":\" is missing after a key");
      ++at_;
      skipSpace();
    }
    return value(key);
  }

  bool close(Index container) {
    auto& record = tree_.values_[container];
    record.end = static_cast<Index>(tree_.values_.size());
    open_.pop_back();
    if (record.kind == Kind::object && !checkKeys(container)) return false;
    skipSpace();
    return true;
  }

  bool checkKeys(Index object) {
    const auto count = tree_.count(object);
    if (count <= kComparedInPlace) {
      for (const Index member : tree_.children(object)) {
        for (const Index other : tree_.children(object)) {
          if (other == member) break;
          if (tree_.key(other) == tree_.key(member)) return refuseTwice(member);
        }
      }
      return true;
    }
    keys_.clear();
    for (const Index member : tree_.children(object)) keys_.push_back(member);
    std::sort(keys_.begin(), keys_.end(), [&](Index a, Index b) {
      return tree_.key(a) != tree_.key(b) ? tree_.key(a) < tree_.key(b) : a < b;
    });
    for (std::size_t i = 1; i < keys_.size(); ++i) {
      if (tree_.key(keys_[i - 1]) == tree_.key(keys_[i])) return refuseTwice(keys_[i]);
    }
    return true;
  }
  bool refuseTwice(Index member) {
    at_ = tree_.values_[member].position;
    return refuse(fmt::format("the key \"{}\" stands twice in one object",
                              detail::beginningOf(tree_.key(member), kShownKey)));
  }

  Value& add(Kind kind, std::string_view key) {
    const auto index = static_cast<Index>(tree_.values_.size());
    return tree_.values_.emplace_back(
        Value{key, {}, static_cast<std::uint32_t>(at_), index + 1, 0, kind});
  }

  bool value(std::string_view key) {
    const char c = peek();
    switch (c) {
      case '{':
      case '[':
        if (open_.size() >= kMaximumDepth) {
          return refuse(fmt::format("nested more than {} levels deep", kMaximumDepth));
        }
        open_.push_back(static_cast<Index>(tree_.values_.size()));
        add(c == '{' ? Kind::object : Kind::array, key);
        ++at_;
        break;
      case '"': {
        const Index index = static_cast<Index>(tree_.values_.size());
        add(Kind::string, key);
        std::string_view characters;
        if (!string(characters)) return false;
        tree_.values_[index].text = characters;
        break;
      }
      case 't':
        if (!word("true", Kind::boolean, key)) return false;
        break;
      case 'f':
        if (!word("false", Kind::boolean, key)) return false;
        break;
      case 'n':
        if (!word("null", Kind::null, key)) return false;
        break;
      default:
        if (c != '-' && !isDigit(c)) {
          return refuse(at_ >= text_.size() ? "the text ends where a value is expected"
                                            : "a value is expected here");
        }
        if (!number(key)) return false;
    }
    skipSpace();
    return true;
  }

  bool word(std::string_view word, Kind kind, std::string_view key) {
    if (text_.substr(at_, word.size()) != word) return refuse("a value is expected here");
    add(kind, key).text = text_.substr(at_, word.size());
    at_ += word.size();
    return true;
  }

  bool number(std::string_view key) {
    const std::size_t start = at_;
    Value& record = add(Kind::number, key);
    const auto digits = [&] {
      const std::size_t first = at_;
      while (isDigit(peek())) ++at_;
      return at_ != first;
    };
    if (peek() == '-') ++at_;
    if (peek() == '0') {
      ++at_;
    } else if (!digits()) {
      return refuse("a number is not well formed");
    }
    if (peek() == '.') {
      ++at_;
      if (!digits()) return refuse("a number is not well formed");
    }
    if (peek() == 'e' || peek() == 'E') {
      ++at_;
      if (peek() == '+' || peek() == '-') ++at_;
      if (!digits()) return refuse("a number is not well formed");
    }
    record.text = text_.substr(start, at_ - start);
    return true;
  }

  // At the quotation mark; `at_` stands after the other one.
  bool string(std::string_view& characters) {
    const std::size_t start = ++at_;
    while (at_ < text_.size()) {
      const auto c = static_cast<unsigned char>(text_[at_]);
      if (c == '"') {
        characters = text_.substr(start, at_++ - start);
        return true;
      }
      if (c == '\\') return escaped(start, characters);
      if (!character(c)) return false;
    }
    return refuse("a text has no end");
  }

  // Moves over one character.
  bool character(unsigned char c) {
    if (c < 0x20) return refuse("a control character stands in a text unescaped");
    if (c < 0x80) {
      ++at_;
      return true;
    }
    const auto point = detail::codePointAt(text_, at_);
    if (point.size == 1) return refuse("a text is not UTF-8");
    at_ += point.size;
    return true;
  }

  bool escaped(std::size_t start, std::string_view& characters) {
    scratch_.assign(text_.substr(start, at_ - start));
    while (at_ < text_.size()) {
      const char c = text_[at_];
      if (c == '"') {
        ++at_;
        auto kept = std::make_unique<char[]>(scratch_.size() + 1);
        std::copy(scratch_.begin(), scratch_.end(), kept.get());
        characters = {kept.get(), scratch_.size()};
        tree_.unescaped_.push_back(std::move(kept));
        return true;
      }
      if (c == '\\') {
        ++at_;
        if (!escape()) return false;
        continue;
      }
      const std::size_t from = at_;
      if (!character(static_cast<unsigned char>(c))) return false;
      scratch_.append(text_.substr(from, at_ - from));
    }
    return refuse("a text has no end");
  }

  bool escape() {
    const char c = peek();
    ++at_;
    switch (c) {
      case '"':
      case '\\':
      case '/':
        scratch_ += c;
        return true;
      case 'b':
        scratch_ += '\b';
        return true;
      case 'f':
        scratch_ += '\f';
        return true;
      case 'n':
        scratch_ += '\n';
        return true;
      case 'r':
        scratch_ += '\r';
        return true;
      case 't':
        scratch_ += '\t';
        return true;
      case 'u':
        return codePoint();
      default:
        --at_;
        return refuse("an unknown escape stands in a text");
    }
  }

  bool codePoint() {
    std::uint32_t value = 0;
    if (!hexadecimal(value)) return false;
    if (value >= 0xDC00 && value < 0xE000) return refuse("half a character is escaped in a text");
    if (value >= 0xD800 && value < 0xDC00) {
      std::uint32_t low = 0;
      if (text_.substr(at_, 2) != "\\u") return refuse("half a character is escaped in a text");
      at_ += 2;
      if (!hexadecimal(low)) return false;
      if (low < 0xDC00 || low >= 0xE000) return refuse("half a character is escaped in a text");
      value = 0x10000 + ((value - 0xD800) << 10) + (low - 0xDC00);
    }
    char bytes[4];
    scratch_.append(bytes, detail::writeUTF8(value, bytes));
    return true;
  }

  bool hexadecimal(std::uint32_t& value) {
    const auto digits = text_.substr(at_, 4);
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (digits.size() != 4 || error != std::errc() || end != digits.data() + 4) {
      return refuse("an escape in a text lacks its four digits");
    }
    at_ += 4;
    return true;
  }

  JSONTree& tree_;
  std::string_view text_;
  std::size_t at_ = 0;
  std::vector<Index> open_;
  std::vector<Index> keys_;
  std::string scratch_;
  std::string why_;
};

const char* JSONTree::nameOf(Kind kind) noexcept {
  switch (kind) {
    case Kind::null:
      return "null";
    case Kind::boolean:
      return "a boolean";
    case Kind::number:
      return "a number";
    case Kind::string:
      return "a text";
    case Kind::array:
      return "a list";
    default:
      return "an object";
  }
}

Result<JSONTree> JSONTree::read(std::string_view text) {
  JSONTree tree;
  try {
    if (auto status = Parser(tree, text).run(); !status) return status;
  } catch (const std::bad_alloc&) {
    return Status::failure(StatusCode::outOfMemory, "there is not enough memory to read it");
  }
  return tree;
}

std::size_t JSONTree::line(Index value) const noexcept {
  return lineAt(source_, values_[value].position);
}

}  // namespace tarnkit
