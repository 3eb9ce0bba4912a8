#include "tarnkit/patches/HXRNodeClass.h"

#include <algorithm>
#include <cassert>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/PatchDeclaration.h"

namespace tarnkit {

namespace {

HXRNodeClass::DocumentGraphBuilder documentGraphBuilder = nullptr;

// What a class shares is made at its first use, by whichever thread that is. Making one class's may
// ask for another's.
std::recursive_mutex& makingMutex() {
  static std::recursive_mutex mutex;
  return mutex;
}

String internedOrNil(const char* text) { return text ? String::interned(text) : String(); }

}  // namespace

void HXRNodeClass::fail(const char* why) const {
  throw std::logic_error("[" + std::string(name()) + "] " + why);
}

const HXRNodeClass::Resolved& HXRNodeClass::resolve() const {
  const std::lock_guard lock(makingMutex());
  if (const auto* made = resolved_.load(std::memory_order_relaxed)) return *made;
  if (!isKindOf(HXRNode::kClass)) fail("it derives from no patch definition");
  // What a record leaves out is its base's, all the way up.
  const auto inherited = [this](auto member) {
    const auto* from = this;
    while (from->base_ && from->descriptors_.*member == decltype(from->descriptors_.*member){}) {
      from = from->base_;
    }
    return from->descriptors_.*member;
  };
  auto* const resolved = new Resolved;
  const char* const defaultName = inherited(&Descriptors::defaultName);
  resolved->defaultName = defaultName ? String::interned(defaultName) : nameString();
  resolved->libraryCategory = internedOrNil(inherited(&Descriptors::libraryCategory));
  resolved->libraryDescription = String::interned(descriptors_.libraryDescription
                                                      ? std::string(descriptors_.libraryDescription)
                                                      : std::string(name()) + ".html");
  resolved->processClassName = internedOrNil(inherited(&Descriptors::processClassName));
  resolved->patchViewClassName = internedOrNil(inherited(&Descriptors::patchViewClassName));
  resolved->defaultColor = *inherited(&Descriptors::defaultColor);
  resolved->hiddenInLibrary = inherited(&Descriptors::hiddenInLibrary) == Flag::yes;
  resolved->secretInLibrary = inherited(&Descriptors::secretInLibrary) == Flag::yes;
  resolved->allowsSubnodes = inherited(&Descriptors::allowsSubnodes) == Flag::yes;
  resolved->hiddenPortGroupKeys = tarnkit::make<OrderedSet>();
  for (const auto* key = inherited(&Descriptors::hiddenPortGroupKeys); *key; ++key) {
    resolved->hiddenPortGroupKeys->add(String::interned(*key).object());
  }
  resolved_.store(resolved, std::memory_order_release);
  return *resolved;
}

Ref<HXRNode> HXRNodeClass::constructInstance() const {
  const auto* from = this;
  while (!from->construct_.make) {
    from = from->base_;
    assert(from);  // the root's record has one
  }
  return from->construct_.make(*this);
}

void HXRNodeClass::declareInto(PatchDeclaration& patch) const {
  if (base_) base_->declareInto(patch);
  if (!declare_) return;
  patch.group();
  declare_(patch);
}

const HXRNode& HXRNodeClass::prototype() const {
  if (auto* const made = resolved().prototype.load(std::memory_order_acquire)) return *made;
  const std::lock_guard lock(makingMutex());
  Resolved& shared = *resolved_.load(std::memory_order_relaxed);
  if (auto* const made = shared.prototype.load(std::memory_order_relaxed)) return *made;
  static std::vector<const HXRNodeClass*> underWay;  // under the lock
  if (std::find(underWay.begin(), underWay.end(), this) != underWay.end()) {
    fail("its declaration makes definitions of its own class");
  }
  underWay.push_back(this);
  const struct End {
    ~End() { underWay.pop_back(); }
  } end;
  const Ref<HXRNode> prototype = constructInstance();
  if (!prototype) fail("its record makes no definition");
  if (&prototype->patchClass() != this) fail("its record makes definitions of another class");
  for (const auto* from = this; from; from = from->base_) {
    if (from->construct_.fits && !from->construct_.fits(prototype.get())) {
      fail("its definitions are no objects of its base's C++ class");
    }
  }
  PatchDeclaration patch(*prototype);
  declareInto(patch);
  patch.finish();
  prototype->layout_->share();
  shared.owner = prototype;
  shared.prototype.store(prototype.get(), std::memory_order_release);
  return *prototype;
}

Ref<HXRNode> HXRNodeClass::makeDefinition() const {
  prototype();
  return constructInstance();
}

Ref<Object> HXRNodeClass::makeInstance(const Class& record) {
  return static_cast<const HXRNodeClass&>(record).makeDefinition();
}

String HXRNodeClass::nodeClassName() const {
  return String::interned(descriptors_.nodeClassName ? descriptors_.nodeClassName : "HXNode");
}

Ref<Object> HXRNodeClass::documentGraph() const {
  return documentGraphBuilder ? documentGraphBuilder(*this) : nullptr;
}

void HXRNodeClass::setDocumentGraphBuilder(DocumentGraphBuilder builder) {
  documentGraphBuilder = builder;
}

}  // namespace tarnkit
