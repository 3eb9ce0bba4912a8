#include "tarnkit/compare/HXFinding.h"

#include <fmt/format.h>

#include <array>

#include "tarnkit/platform/objects/Object.h"

namespace tarnkit {

namespace {

using Code = HXFindingCode;
constexpr auto kError = HXFindingSeverity::error;
constexpr auto kWarning = HXFindingSeverity::warning;
constexpr auto kNote = HXFindingSeverity::note;
constexpr bool kFixed = true;
constexpr bool kTold = false;

constexpr HXFindingKind kKinds[] = {
    // The file.
    {Code::fileUnreadable, "file-unreadable", kError, kTold, "A file cannot be read",
     "The file is missing, damaged, or no document at all. The sentence is what opening it says."},
    {Code::openingMended, "opening-mended", kWarning, kTold,
     "Something in the file contradicted itself",
     "Opening the file left out what could not be true: wires that end at other ports, nodes that "
     "stand in no group, images without a key. The document is whole; saving it keeps it so, and "
     "what was left out is gone then."},
    {Code::lostValue, "lost-value", kWarning, kTold, "A value of the file has no place any more",
     "The patch of the node has changed since the file was written, and has no such port or "
     "parameter now. Saving the document loses the value."},
    {Code::lostWire, "lost-wire", kError, kTold, "A wire of the file has no place any more",
     "The patch of the node has changed since the file was written, and has no such port now. "
     "Saving the document loses the wire."},
    {Code::lostPublication, "lost-publication", kError, kTold,
     "A published port of the file has no place any more",
     "The patch of the node has changed since the file was written, and has no such port now. "
     "Saving the document loses the publication, and what was joined to it."},
    {Code::lostNode, "lost-node", kError, kTold, "A node of the file has no place any more",
     "The patch of the node that held it holds no nodes now. Saving the document loses it, with "
     "all that stood in it."},

    // Wires.
    {Code::wireKind, "wire-kind", kError, kTold, "A wire joins kinds that do not fit",
     "The input does not take what the output gives, so nothing arrives on the device. The editor "
     "refuses such a wire; a script or another program has made it."},
    {Code::wireHalf, "wire-half", kError, kFixed, "A wire is known at one of its ends only",
     "One end lists the wire and the other does not, so the editor shows it or not depending on "
     "where one looks. The answer takes it away; join the ports again if it was meant."},
    {Code::wireNowhere, "wire-nowhere", kError, kFixed, "A wire leads nowhere",
     "The port at one end is gone, or its node stands in no group of the document. The answer "
     "takes the wire away."},
    {Code::wireUnseen, "wire-unseen", kWarning, kFixed, "A wire is shown nowhere",
     "The published port that the wire was joined to is gone: values still flow, and nobody sees "
     "why. The answer takes the wire away, as the editor does when it prunes a document."},
    {Code::wireElsewhere, "wire-elsewhere", kWarning, kTold,
     "A wire is shown at another port than it ends at",
     "The published port that the wire was joined to stands for another port by now. Join the "
     "ports again."},
    {Code::wireAcrossGroups, "wire-across-groups", kWarning, kTold,
     "A wire skips the border of a group",
     "The wire joins nodes of two groups directly, where the canvas of neither can show it. "
     "Publish the inner port, and join the published one."},
    {Code::wireCircle, "wire-circle", kWarning, kTold, "Wires run in a circle",
     "Each of the nodes waits for the value of another one. A value that is to come back goes "
     "through State Output and State Input, whose wire runs backward."},
    {Code::inputJoinedTwice, "input-joined-twice", kError, kTold,
     "An input that takes one wire has another",
     "The input takes the first wire only; the second one hangs at its output and is shown there. "
     "Which of the two was meant nobody can say: break the other one."},
    {Code::outputJoinedTwice, "output-joined-twice", kWarning, kTold,
     "An output that gives to one input is joined to another",
     "A gesture, an interaction or a state leads to one place. The output keeps its first wire; "
     "the second one is known at its input only. Use a node for each."},

    // Published ports.
    {Code::publicationNowhere, "publication-nowhere", kError, kFixed,
     "A published port leads nowhere",
     "The port that it stood for is gone. The answer ends the publication."},
    {Code::publicationForeign, "publication-foreign", kError, kTold,
     "A group publishes a port of another group",
     "The port that it stands for belongs to no node of the group. Publish it where its node "
     "stands."},
    {Code::publicationTwice, "publication-twice", kWarning, kTold, "A port is published twice",
     "Two published ports of one group stand for one port, which knows one of them only. End the "
     "publication of the other one."},
    {Code::publicationSameName, "publication-same-name", kWarning, kTold,
     "Two published ports of a node have one name",
     "Nobody can tell them apart on the canvas. Rename one of them."},
    {Code::publicationNoName, "publication-no-name", kNote, kTold, "A published port has no name",
     "It is shown without one. Give it a name."},
    {Code::publicationAtTop, "publication-at-top", kNote, kTold,
     "A port is published from the outermost group",
     "Nothing stands around the outermost group that could be joined to it."},
    {Code::publicationUnused, "publication-unused", kNote, kTold,
     "Nothing reads a published output",
     "No wire begins at it, and no group further out publishes "
     "it."},

    // Values.
    {Code::parameterBounds, "parameter-bounds", kWarning, kTold,
     "A parameter is outside its bounds",
     "The editor offers no such value; what the device makes of it is not said anywhere."},
    {Code::valueNoChoice, "value-no-choice", kWarning, kTold,
     "A value is none of the choices of its port",
     "The port offers a list of values and no other one. The editor shows an empty menu."},
    {Code::valueNoNumber, "value-no-number", kWarning, kTold,
     "A value is not a number, or infinite", "Whatever is computed from it is of no use either."},
    {Code::valueNoNumberText, "value-no-number-text", kWarning, kTold,
     "A number's port holds a text that is none", "The text reads as 0."},
    {Code::valueColor, "value-color", kNote, kTold, "A colour is outside what can be shown",
     "The parts of a colour lie between 0 and 1."},

    // Expressions.
    {Code::expressionSyntax, "expression-syntax", kError, kTold, "An expression does not parse",
     "The patch has no inputs and no value as long as the text is no expression."},
    {Code::expressionFunction, "expression-function", kError, kTold,
     "An expression calls a function that is not there",
     "`tarnkit functions` lists those that are. The name of a variable begins with \"$\"."},
    {Code::expressionArguments, "expression-arguments", kError, kTold,
     "A function of an expression has too few arguments, or too many",
     "The expression has no value."},
    {Code::expressionNames, "expression-names", kWarning, kTold,
     "An expression uses a name for two things",
     "Two variables that differ in case only are two inputs, and a variable that is called like a "
     "function is easily mistaken for it."},
    {Code::expressionEmpty, "expression-empty", kWarning, kTold, "An expression is empty",
     "The patch has no value."},
    {Code::expressionConstant, "expression-constant", kNote, kTold,
     "An expression has no variables",
     "Its value is always the same, and could be typed where it is read."},
    {Code::scriptFunction, "script-function", kError, kTold,
     "A script has no function \"expression\"",
     "The device calls the function of this name, and no other one."},
    {Code::scriptNames, "script-names", kWarning, kTold, "A script names an argument twice",
     "There is one input for both, and the script sees the last "
     "one only."},

    // Structure.
    {Code::patchUnknown, "patch-unknown", kError, kTold, "A patch is known to nobody",
     "The node keeps all that it was read with and writes it back, but what its ports take cannot "
     "be checked, and the device is told of a patch that does nothing. Load the plug-in that "
     "brings the patch (`--plugin FILE` before the command), or replace it."},
    {Code::patchMissing, "patch-missing", kWarning, kTold, "A node has no patch",
     "It holds no nodes either, and does nothing."},
    {Code::patchRetired, "patch-retired", kNote, kTold, "A patch is not offered any more",
     "The library leaves it out; documents that hold it work as before."},
    {Code::groupEmpty, "group-empty", kWarning, kFixed, "A group is empty",
     "It has no patch and no published ports, and does nothing. The answer takes it away, and the "
     "group around it when nothing is left there either."},
    {Code::containerEmpty, "container-empty", kNote, kTold, "A container has nothing to run",
     "A replicator, a loop or a remote group does something with the nodes in it."},
    {Code::documentEmpty, "document-empty", kNote, kTold, "The document is empty",
     "There is not one node in it."},
    {Code::nodeUnread, "node-unread", kWarning, kTold, "Nothing reads a node",
     "None of its outputs is joined or published, and the patch does nothing by itself."},
    {Code::inputMissing, "input-missing", kWarning, kTold,
     "An input that has no value of its own is not joined",
     "An image, an array, a dictionary or a group comes from a wire only. Without it the node "
     "has nothing to work on."},
    {Code::variablesOutside, "variables-outside", kWarning, kTold,
     "The variables of a container are asked for outside of it",
     "Replicator Variables tell of the replicator around them, Loop Variables and Loop Control of "
     "the loop. There is none."},
    {Code::stateUnpaired, "state-unpaired", kWarning, kTold, "One half of a state stands alone",
     "State Input keeps a value for the State Output that is joined to it. Alone, either of them "
     "does nothing."},
    {Code::viewNeverShown, "view-never-shown", kWarning, kTold, "A view is never shown",
     "It is switched off or fully transparent, and no wire changes that; or it stands in a remote "
     "group that no group processor shows."},
    {Code::viewUnlisted, "view-unlisted", kError, kFixed,
     "A view is missing in the order of the views",
     "The device shows the views that the group lists, in their order. The answer lists it last."},
    {Code::keyTwice, "key-twice", kError, kTold, "Two nodes have one key",
     "Wires are told to the device by the keys of the nodes on their way, and cannot be told "
     "apart. Saving the document without keys and opening it again draws new ones."},
    {Code::nameUnreadable, "name-unreadable", kNote, kTold, "A name cannot be read",
     "It is empty, blank, or holds control characters."},
    {Code::positionNoNumber, "position-no-number", kWarning, kFixed,
     "A position is not a number, or infinite",
     "The editor cannot show the node, or the group's canvas. The answer puts it at 0."},
    {Code::positionFar, "position-far", kNote, kTold, "A node stands far outside",
     "It is more than 100,000 units away from the middle of its canvas, where nobody finds it."},
    {Code::positionShared, "position-shared", kNote, kTold, "Nodes stand upon each other",
     "They have one position; all but one of them are hidden."},

    // Images.
    {Code::imageAbsent, "image-absent", kError, kFixed, "An image is used, and not in the document",
     "The device is told the key of the image only, and gets the images of the document's store. "
     "The answer puts the image that the node still holds into the store."},
    {Code::imageUnused, "image-unused", kWarning, kFixed, "An image is not used",
     "It makes the document larger, and is sent to the device. The answer takes it out of the "
     "store."},
    {Code::imageUnchosen, "image-unchosen", kWarning, kTold, "No image is chosen",
     "The patch gives none."},
    {Code::imageEmpty, "image-empty", kError, kTold, "An image has no picture",
     "Its picture was empty or could not be read. The device gets none."},
    {Code::imageLarge, "image-large", kNote, kTold, "An image is larger than a device shows",
     "It is wider or higher than 4096 pixels, which many devices cannot draw."},
    {Code::imageKey, "image-key", kError, kTold, "The key of an image cannot name a file",
     "The images cannot be sent to the device: there each is a file of that name."},

    // The device.
    {Code::devicePlugIn, "device-plug-in", kNote, kTold, "A patch comes from a plug-in",
     "The device runs it only if it has the class of the patch, too."},
    {Code::deviceValue, "device-value", kWarning, kTold, "A value does not reach the device",
     "The device is told the values of ports for plain values only; this port gets its value from "
     "a wire."},
    {Code::deviceParameter, "device-parameter", kWarning, kTold,
     "A parameter is one of another patch",
     "The patch has no parameter of this key any more. The node keeps the value, and the device, "
     "whose patch has none either, does not look at it."},
};

constexpr bool isInOrder() {
  std::size_t at = 0;
  for (const HXFindingKind& kind : kKinds) {
    if (static_cast<std::size_t>(kind.code) != at++) return false;
  }
  return at == static_cast<std::size_t>(Code::deviceParameter) + 1;
}
static_assert(isInOrder(), "the table has one row for each code, in the order of the codes");

// The subjects of the manual, each with the first code of it.
struct Subject {
  Code first;
  std::string_view title;
};
constexpr Subject kSubjects[] = {
    {Code::fileUnreadable, "Files"},
    {Code::wireKind, "Wires"},
    {Code::publicationNowhere, "Published ports"},
    {Code::parameterBounds, "Values"},
    {Code::expressionSyntax, "Expressions"},
    {Code::patchUnknown, "Structure"},
    {Code::imageAbsent, "Images"},
    {Code::devicePlugIn, "The device"},
};

}  // namespace

std::string_view nameOf(HXFindingSeverity severity) noexcept {
  switch (severity) {
    case HXFindingSeverity::error:
      return "error";
    case HXFindingSeverity::warning:
      return "warning";
    case HXFindingSeverity::note:
      return "note";
  }
  return "note";
}

std::span<const HXFindingKind> findingKinds() noexcept { return kKinds; }

const HXFindingKind& kindOf(HXFindingCode code) noexcept {
  return kKinds[static_cast<std::size_t>(code)];
}

const HXFindingKind* findingKindNamed(std::string_view name) noexcept {
  for (const HXFindingKind& kind : kKinds) {
    if (kind.name == name) return &kind;
  }
  return nullptr;
}

std::string findingsManual() {
  std::string text =
      "# What `tarnkit check` finds\n\n"
      "One line a finding, the worst first: `FILE: ADDRESS: SEVERITY: SENTENCE [CODE]`. An address "
      "names\nthe nodes from the outermost group inward, and the port behind a colon: "
      "`Album / Page: Input Max`.\n\n"
      "- An **error** is what the device cannot do, or what the document loses; the exit status is "
      "1 then.\n- A **warning** is what was most likely not meant; with `--strict` it counts as "
      "an error.\n- A **note** is worth knowing.\n\n"
      "`--only CODE` and `--ignore CODE` choose, each as often as needed; `--limit N` shows the "
      "worst N;\n`--json` and `--sarif` (2.1.0) are for programs. `--fix` gives the one safe "
      "answer to the codes\nthat are marked so below, and writes the file again; in the library "
      "that is one step that can be\nundone (`HXDocumentRepair`).\n\n"
      "This page is made from the table of the codes (`findingsManual`).\n";
  const Subject* subject = kSubjects;
  for (const HXFindingKind& kind : kKinds) {
    if (subject != std::end(kSubjects) && subject->first == kind.code) {
      text += fmt::format("\n## {}\n", subject->title);
      ++subject;
    }
    text += fmt::format("\n### {}\n\n**{}**{}: {}.\n\n{}\n", kind.name, nameOf(kind.severity),
                        kind.isFixable ? ", answered by `--fix`" : "", kind.title, kind.text);
  }
  return text;
}

}  // namespace tarnkit
