#pragma once

#include <string>
#include <string_view>

namespace tarnkit::tool {

/// The text as it stands in an HTML page, between tags or in a quoted attribute. Control
/// characters, which a page must not hold, become U+FFFD, except for line ends and tabs.
std::string escaped(std::string_view text);

/// A name, or "unnamed" where it is blank.
std::string nameHtml(std::string_view name);

/// A class, a key or a text as code, of several lines at need; "empty" where it is.
std::string codeHtml(std::string_view text);

/// A file name as a relative link to it.
std::string linkTo(std::string_view fileName);

}  // namespace tarnkit::tool
