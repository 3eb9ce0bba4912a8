#include <expat.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tarnkit/platform/propertylist/PropertyListBuilder.h"
#include "tarnkit/platform/propertylist/PropertyListForms.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tarnkit/platform/propertylist/PropertyListText.h"

namespace tarnkit::detail {

namespace {

using Kind = PropertyList::Kind;
using Index = PropertyList::Index;

enum class Element : std::uint8_t {
  plist,
  dict,
  array,
  key,
  string,
  integer,
  real,
  isTrue,
  isFalse,
  data,
  date,
  unknown,
};

Element elementNamed(std::string_view name) noexcept {
  struct Name {
    std::string_view text;
    Element element;
  };
  static constexpr Name kNames[] = {
      {"plist", Element::plist}, {"dict", Element::dict},     {"array", Element::array},
      {"key", Element::key},     {"string", Element::string}, {"integer", Element::integer},
      {"real", Element::real},   {"true", Element::isTrue},   {"false", Element::isFalse},
      {"data", Element::data},   {"date", Element::date},
  };
  for (const Name& known : kNames) {
    if (known.text == name) return known.element;
  }
  return Element::unknown;
}

bool isWhiteSpace(std::string_view text) noexcept {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

// Takes the parser's events. Open containers stand on a stack of their own, and what they hold so
// far on another, so that nesting costs no recursion and each element is moved once. Its steps tell
// by false that one of them has failed; the reason stands in `failure_`.
class XMLParser {
 public:
  explicit XMLParser(PropertyListBuilder& builder)
      : builder_(builder), parser_(XML_ParserCreate(nullptr), &XML_ParserFree) {}

  Status parse(ByteSpan bytes) {
    XML_Parser parser = parser_.get();
    if (!parser) return outOfMemory();
    XML_SetUserData(parser, this);
    XML_SetElementHandler(
        parser,
        [](void* self, const XML_Char* name, const XML_Char**) {
          static_cast<XMLParser*>(self)->guard([&](XMLParser& p) { return p.start(name); });
        },
        [](void* self, const XML_Char*) {
          static_cast<XMLParser*>(self)->guard([](XMLParser& p) { return p.end(); });
        });
    XML_SetCharacterDataHandler(parser, [](void* self, const XML_Char* text, int size) {
      static_cast<XMLParser*>(self)->guard([&](XMLParser& p) {
        return p.characters({text, static_cast<std::size_t>(size)});
      });
    });
    XML_SetEntityDeclHandler(
        parser, [](void* self, const XML_Char*, int, const XML_Char*, int, const XML_Char*,
                   const XML_Char*, const XML_Char*, const XML_Char*) {
          static_cast<XMLParser*>(self)->guard(
              [](XMLParser& p) { return p.refuse("it declares entities of its own"); });
        });
    // A reference to an entity that only a DTD elsewhere could declare arrives here.
    XML_SetSkippedEntityHandler(parser, [](void* self, const XML_Char*, int) {
      static_cast<XMLParser*>(self)->guard(
          [](XMLParser& p) { return p.refuse("it uses an unknown entity"); });
    });
    if (feed(bytes) && finish()) return {};
    return std::move(failure_);
  }

 private:
  struct Open {
    Element element;
    Index container;
    std::size_t firstChild;
  };

  static Status outOfMemory() {
    return Status::failure(StatusCode::outOfMemory, "there is not enough memory to read it");
  }

  bool refuse(std::string reason) { return refuse(Status::damaged(std::move(reason))); }
  bool refuse(Status failure) {
    failure_ = std::move(failure);
    return false;
  }

  // Nothing may be thrown through the parser's C code.
  template <class Step>
  void guard(Step step) noexcept {
    if (stopped_) return;
    bool goOn = false;
    try {
      goOn = step(*this);
    } catch (...) {
      outOfMemory_ = true;
    }
    if (!goOn) {
      stopped_ = true;
      XML_StopParser(parser_.get(), XML_FALSE);
    }
  }

  bool feed(ByteSpan bytes) {
    constexpr std::size_t kPiece = std::size_t{1} << 20;
    const auto* at = reinterpret_cast<const char*>(bytes.data());
    std::size_t left = bytes.size();
    for (;;) {
      const std::size_t piece = std::min(left, kPiece);
      const bool isLast = piece == left;
      if (XML_Parse(parser_.get(), at, static_cast<int>(piece), isLast) == XML_STATUS_ERROR) {
        const auto code = XML_GetErrorCode(parser_.get());
        if (outOfMemory_ || code == XML_ERROR_NO_MEMORY) return refuse(outOfMemory());
        if (!stopped_) refuse(XML_ErrorString(code));
        const auto line = XML_GetCurrentLineNumber(parser_.get());
        return refuse(Status::failure(
            failure_.code(), failure_.sentence() + " (line " + std::to_string(line) + ")"));
      }
      if (isLast) return true;
      at += piece;
      left -= piece;
    }
  }

  bool finish() {
    if (root_ == PropertyList::kNone) return refuse("it holds no value");
    builder_.setRoot(root_);
    return true;
  }

  bool start(std::string_view name) {
    const Element element = elementNamed(name);
    if (element == Element::unknown) {
      return refuse("the element <" + std::string(name.substr(0, 100)) + "> is unknown");
    }
    if (depth_ >= PropertyListReader::kMaximumXMLDepth) {
      return refuse(Status::failure(StatusCode::tooLarge, "it is nested too deep"));
    }
    if ((element == Element::plist) != (depth_ == 0)) {
      return refuse("<plist> is not the outermost element");
    }
    if (leaf_ != Element::unknown) {
      return refuse("an element stands inside of a text");
    }
    ++depth_;
    if (element == Element::plist) return true;
    if (!mayStandHere(element)) return false;
    if (element == Element::dict || element == Element::array) {
      const Kind kind = element == Element::dict ? Kind::map : Kind::array;
      open_.push_back({element, builder_.reserveContainer(kind), children_.size()});
    } else {
      leaf_ = element;
      text_.clear();
    }
    return true;
  }

  bool mayStandHere(Element element) {
    const bool inDict = !open_.empty() && open_.back().element == Element::dict;
    if (inDict) {
      const bool keyIsDue = (children_.size() - open_.back().firstChild) % 2 == 0;
      if (keyIsDue == (element == Element::key)) return true;
      return refuse(keyIsDue ? "a value stands in a map without a key"
                             : "two keys follow each other in a map");
    }
    if (element == Element::key) return refuse("a key stands outside of a map");
    if (open_.empty() && root_ != PropertyList::kNone) return refuse("it holds two values");
    return true;
  }

  bool characters(std::string_view text) {
    if (leaf_ != Element::unknown) {
      text_.append(text);
      return true;
    }
    return isWhiteSpace(text) || refuse("a text stands between the elements");
  }

  bool end() {
    --depth_;
    if (depth_ == 0) return true;
    if (leaf_ != Element::unknown) {
      const Element element = leaf_;
      leaf_ = Element::unknown;
      return addLeaf(element);
    }
    return closeContainer();
  }

  bool addValue(Index index) {
    if (open_.empty()) {
      root_ = index;
    } else {
      children_.push_back(index);
    }
    return true;
  }

  bool addLeaf(Element element) {
    switch (element) {
      case Element::key:
      case Element::string:
        return addValue(builder_.addText(text_));
      case Element::isTrue:
      case Element::isFalse:
        if (!isWhiteSpace(text_)) return refuse("a boolean holds a text");
        return addValue(builder_.addBoolean(element == Element::isTrue));
      case Element::integer:
        return addInteger();
      case Element::real: {
        double value = 0;
        if (!readPropertyListReal(text_, value)) return refuse("a real number is malformed");
        return addValue(builder_.addReal(Kind::real64, value));
      }
      case Element::date: {
        double value = 0;
        if (!readPropertyListDate(text_, value)) return refuse("a date is malformed");
        return addValue(builder_.addReal(Kind::date, value));
      }
      default: {
        std::string bytes;
        if (!readBase64(text_, bytes)) return refuse("data is not base64");
        return addValue(builder_.addData(bytes));
      }
    }
  }

  bool addInteger() {
    PropertyListInteger value;
    if (!readPropertyListInteger(text_, value)) return refuse("an integer is malformed");
    switch (value.kind) {
      case Kind::wideInteger:
        return addValue(builder_.addReal(value.kind, value.wide));
      case Kind::unsignedInteger:
        return addValue(builder_.addUnsigned(static_cast<std::uint64_t>(value.bits)));
      default:
        return addValue(builder_.addInteger(value.bits));
    }
  }

  bool closeContainer() {
    const Open open = open_.back();
    open_.pop_back();
    const auto first = children_.begin() + static_cast<std::ptrdiff_t>(open.firstChild);
    references_.assign(first, children_.end());
    if (open.element == Element::dict) {
      if (references_.size() % 2 != 0) return refuse("a map ends with a key");
      const std::size_t count = references_.size() / 2;
      for (std::size_t i = 0; i < count; ++i) {
        references_[i] = first[static_cast<std::ptrdiff_t>(2 * i)];
        references_[count + i] = first[static_cast<std::ptrdiff_t>(2 * i + 1)];
      }
    }
    children_.erase(first, children_.end());
    if (!replaceUID(open)) {
      auto status = builder_.fillContainer(open.container, references_);
      if (!status) return refuse(std::move(status));
    }
    return addValue(open.container);
  }

  // The XML form has no UIDs: a map with the one key "CF$UID" stands for one.
  bool replaceUID(const Open& open) {
    const PropertyList& list = builder_.list();
    if (open.element != Element::dict || references_.size() != 2) return false;
    const Index value = references_[1];
    if (list.string(references_[0]) != "CF$UID" || list.kind(value) != Kind::integer ||
        list.integer(value) < 0) {
      return false;
    }
    builder_.replaceByUID(open.container, static_cast<std::uint64_t>(list.integer(value)));
    return true;
  }

  PropertyListBuilder& builder_;
  Status failure_;
  std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser_;
  std::vector<Open> open_;
  std::vector<Index> children_;
  std::vector<Index> references_;
  std::string text_;
  Element leaf_ = Element::unknown;
  std::size_t depth_ = 0;
  Index root_ = PropertyList::kNone;
  bool stopped_ = false;
  bool outOfMemory_ = false;
};

}  // namespace

Status parseXMLPropertyList(ByteSpan bytes, PropertyListBuilder& builder) {
  return XMLParser(builder).parse(bytes);
}

}  // namespace tarnkit::detail
