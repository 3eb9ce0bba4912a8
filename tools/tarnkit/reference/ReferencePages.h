#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tarnkit {
class HXRNodeClass;
}

namespace tarnkit::tool {

/// One help page: the patches that name it.
struct ReferencePage {
  std::string fileName;
  /// At least one. First the patch after which the page is named, when there is one; the others in
  /// the order of the index.
  std::vector<const HXRNodeClass*> patches;
};

/// Which patches there are and which page each stands on: what the pages and the index are written
/// from. Only refers to the class records, which live as long as the process.
class ReferencePages {
 public:
  static constexpr const char* kIndex = "index.html";

  /// Throws CommandFailure when a patch names a page that cannot be a file of its own beside the
  /// index.
  explicit ReferencePages(const std::vector<const HXRNodeClass*>& patches);

  /// In the order of the index: by category, those of none last; within one the hidden and the
  /// secret ones last; then by display name.
  const std::vector<const HXRNodeClass*>& patches() const noexcept { return patches_; }
  /// In the order of their first patches.
  const std::vector<ReferencePage>& pages() const noexcept { return pages_; }
  /// Null for a class that is not among the patches.
  const ReferencePage* pageOf(const HXRNodeClass& patch) const;
  /// A link from any page of the reference to where the patch is described.
  std::string linkToPatch(const HXRNodeClass& patch) const;

 private:
  std::vector<const HXRNodeClass*> patches_;
  std::vector<ReferencePage> pages_;
  std::unordered_map<const HXRNodeClass*, std::size_t> pageOfPatch_;
};

/// The name under which the reference shows a patch: the class's own when it gives none.
std::string_view titleOf(const HXRNodeClass& patch);
/// "No category" for a patch of none.
std::string_view categoryOf(const HXRNodeClass& patch);
/// Whether the library does not simply list the patch: it is hidden or secret.
bool standsApart(const HXRNodeClass& patch);
/// The id of a patch's part of its page.
std::string anchorOf(const HXRNodeClass& patch);

}  // namespace tarnkit::tool
