#pragma once

#include <cstdint>

namespace tarnkit {

/// The coding types: which vocabulary the model's classes write and read through a coder
/// (`Coder::codingType`). At any other type they write nothing.
inline constexpr std::int32_t HXCodingTypeEditor = 0;
/// Treated exactly like `HXCodingTypeEditor`.
inline constexpr std::int32_t HXCodingTypeEditorAlternate = 1;
/// The device graph.
inline constexpr std::int32_t HXCodingTypeDevice = 2;
/// The editor format with the objects' unique keys, so that identity survives the round trip.
inline constexpr std::int32_t HXCodingTypeEditorWithKeys = 3;

/// Whether the type stands for the editor's vocabulary.
constexpr bool isEditorCodingType(std::int32_t codingType) noexcept {
  return codingType == HXCodingTypeEditor || codingType == HXCodingTypeEditorAlternate ||
         codingType == HXCodingTypeEditorWithKeys;
}

}  // namespace tarnkit
