#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "tarnkit/patches/BySide.h"
#include "tarnkit/patches/HXRNodeClass.h"
#include "tarnkit/patches/HXRParameter.h"
#include "tarnkit/patches/RGBA.h"

namespace tarnkit::detail {

/// The value of an editor's parameter as a text has it.
struct ParameterValue {
  enum class Kind : std::uint8_t { none, boolean, number, index, string, color, image };
  Kind kind = Kind::none;
  bool boolean = false;
  float number = 0;
  std::int32_t index = 0;  // of an image: its place among those of the text, -1 for none
  RGBA color{};
  String string;

  /// To the bit.
  bool isSame(const ParameterValue& other) const noexcept;
  static Kind kindNamed(std::string_view name) noexcept;
  static const char* nameOf(Kind kind) noexcept;
  /// The editor's class of the kind.
  static const Class& classOf(Kind kind) noexcept;
  static Kind kindOf(const Class& parameterClass) noexcept;
};

struct ToldParameter {
  String key;
  ParameterValue value;
};

/// What a node of a patch is before anybody has changed it: what a text leaves out.
struct PatchShape {
  struct Port {
    String key;
    String name;
    std::int32_t orientation;
    std::int32_t relationship;
    std::int64_t valueKind;  // of its default value
  };
  struct Parameter {
    String key;
    String name;
    ParameterValue value;
  };

  const HXRNodeClass* patch = nullptr;
  bool isView = false;
  std::vector<Port> ports;
  std::vector<Parameter> parameters;
  BySide<std::vector<String>> groupKeys;

  const Port* portForKey(std::string_view key) const;
  const Parameter* parameterForKey(std::string_view key) const;

  void addPort(Port port);

 private:
  std::unordered_map<std::string_view, std::uint32_t> byKey_;
};

/// The shapes of the patches that one text is about, each made once. For one thread.
class PatchShapes {
 public:
  /// As its class declares it.
  const PatchShape& of(const HXRNodeClass& patch);
  /// With the ports that it has under those values of its parameters.
  const PatchShape& of(const HXRNodeClass& patch, const std::vector<ToldParameter>& parameters);

 private:
  std::unordered_map<const HXRNodeClass*, std::unique_ptr<PatchShape>> declared_;
  std::unordered_map<std::string, std::unique_ptr<PatchShape>> withParameters_;
};

}  // namespace tarnkit::detail
