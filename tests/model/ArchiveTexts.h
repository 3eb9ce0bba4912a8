#pragma once

#include <string>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/platform/objects/Data.h"

namespace tarnkit::test {

// Documents and their archives as texts that can be kept and compared: one line an object, its keys
// in their order. Reals end in "f" when they are 32 bits wide.

/// An editor document: "#3 HXPatchPort .orientation=1 …"; a key that begins with the object's class
/// goes without it. Strings and numbers stand where they are referred to, nil is "nil".
std::string editorText(ByteSpan archive);
/// A device graph, its first line left out.
std::string deviceText(ByteSpan archive);
/// What the public getters of a document and of all that is in it say, one line a thing.
std::string propertyText(const HXDocument& document);

/// The text with the unique keys of nodes, groups, connections and array outputs numbered in the
/// order in which they stand there: two runs draw different ones.
std::string withOwnKeys(const std::string& text);
/// Gives the next 5,000 keys that are drawn as many digits, so that their order is that of drawing.
void drawKeysOfOneLength();

/// Expects the text to be that of tests/model/golden/NAME. With TARNKIT_REGENERATE set in the
/// environment it writes the file instead.
void expectGolden(const std::string& text, const std::string& name);
/// Expects two texts to be equal; shows where they begin to differ and no more.
void expectSameText(const std::string& actual, const std::string& expected,
                    const std::string& what);

}  // namespace tarnkit::test
