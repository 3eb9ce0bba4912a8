#include "tools/tarnkit/reference/PatchTexts.h"

#include <algorithm>
#include <iterator>

namespace tarnkit::tool {

namespace {

struct PatchText {
  std::string_view className;
  std::string_view text;
};

constexpr bool standsBefore(const PatchText& a, const PatchText& b) {
  return a.className < b.className;
}

// By class name, which is how they are found.
constexpr PatchText kTexts[] = {
    {"HXR9PatchImageViewNode",
     "Shows an image that stretches in the middle and keeps its edges, as speech bubbles and "
     "buttons need it. The cap insets mark the strips along the edges that are not stretched."},
    {"HXRAccumulatorNode",
     "Adds its value up as time goes on and gives the sum so far. Reset starts the sum again."},
    {"HXRAlignLayoutNode",
     "Gives the position and the anchor point with which a view lines up within an area of the "
     "given width, height and depth. X, Y and Z Align choose the side or the middle."},
    {"HXRArcMotionNode",
     "Moves a point from one position to another on an arc instead of a straight line, while "
     "Progress runs from 0 to 1. Min Angle and Max Angle limit how far the arc bends, Flipped "
     "bends it the other way."},
    {"HXRArrayCountNode", "Tells how many values an array holds."},
    {"HXRArrayNode",
     "Collects values of any kind in one array, in the order of its inputs. The Values parameter "
     "sets how many inputs there are."},
    {"HXRArrayValueNode", "Picks one value out of an array by its index."},
    {"HXRArrayValuesNode",
     "Spreads an array over outputs of its own, one for each of its first values. The Values "
     "parameter sets how many outputs there are."},
    {"HXRCameraPreviewNode",
     "Gives the live picture of the device’s front or back camera, with its width and height. "
     "Connect Image to an Image View to show it."},
    {"HXRCircleViewNode",
     "A view in the form of a circle, filled with one color. Divisions sets how many straight "
     "pieces make up its outline."},
    {"HXRClampNode",
     "Keeps a value between Minimum and Maximum: what lies outside becomes the nearer of the two."},
    {"HXRColorMixerNode", "Blends two colors. Mix runs from 0, all Color A, to 1, all Color B."},
    {"HXRColorToHSBANode",
     "Takes a color apart into hue, saturation, brightness and alpha, so that one of them can be "
     "changed by itself."},
    {"HXRColorToRGBANode",
     "Takes a color apart into red, green, blue and alpha, so that one of them can be changed by "
     "itself."},
    {"HXRColorViewNode", "A rectangular view filled with one color."},
    {"HXRColorizerFilterNode",
     "Recolors an image with the shades between Color A and Color B, as in a duotone print."},
    {"HXRConditionalNode",
     "Compares two operands (equal, unequal, greater, less) and tells whether the comparison "
     "holds."},
    {"HXRConsoleLogNode",
     "Writes its value to the console, so that you can watch what arrives at a point of the "
     "graph."},
    {"HXRCounterNode",
     "Counts up with Increment and down with Decrement. Reset takes it back to Reset Value."},
    {"HXRCubicBezierNode",
     "Bends a progress of 0 to 1 along a curve that you shape with two control points, so that a "
     "movement starts gently, overshoots or comes to rest softly."},
    {"HXRDateFormatterNode",
     "Writes date and time as text, in a pattern of your own such as yyyy-MM-dd."},
    {"HXRDebugNode",
     "Has an input and an output of every primitive kind, with and without named values, and a "
     "parameter of every kind. For trying out an editor and a device, not for prototypes."},
    {"HXRDelayNode",
     "Passes its value on later. Give several of them different delays to let movements start one "
     "after another."},
    {"HXRDeltaNode", "Tells how much a value has changed since the frame before."},
    {"HXRDemultiplexerNode",
     "Sends its input to one of several destinations, chosen by Index; the others get Default. "
     "The counterpart of Multiplexer."},
    {"HXRDeviceLocationNode",
     "Finds out where the device is when Locate asks for it, and gives latitude and longitude. "
     "Accuracy says how exact the answer should be, Locked whether there is one."},
    {"HXRDeviceMotionNode",
     "Tells how the device is held, as pitch, roll and yaw: for parallax, or for anything steered "
     "by tilting."},
    {"HXRDeviceOrientationNode",
     "Chooses the orientations to which the prototype may turn: upright, upside down, and on "
     "either side. Set puts the choice into effect."},
    {"HXRDeviceVibrationNode", "Makes the device vibrate when Vibrate turns on."},
    {"HXRDictionaryKeysAndValuesNode",
     "Gives the keys and the values of a dictionary as two arrays."},
    {"HXRDictionaryNode",
     "Collects values under keys in one dictionary. Each entry is a pair of inputs; the Entries "
     "parameter sets how many there are."},
    {"HXRDictionaryValueForKeyNode",
     "Looks up what a dictionary holds under a key, such as one field of imported JSON."},
    {"HXREaseInNode",
     "Bends a progress so that it starts slowly and arrives at full speed: for things that leave "
     "the screen."},
    {"HXREaseInOutNode",
     "Bends a progress so that it starts slowly and comes to rest slowly: for things that move "
     "from one place on the screen to another."},
    {"HXREaseNode",
     "Bends a progress so that it picks up speed at once and then comes to rest over a long "
     "stretch. The curve to take when no other is called for."},
    {"HXREaseOutNode",
     "Bends a progress so that it starts at full speed and comes to rest slowly: for things that "
     "enter the screen."},
    {"HXREmbossFilterNode",
     "Makes an image look pressed into relief. Filters form a chain, from the Filter output of one "
     "to the Filter input of the next."},
    {"HXRFamousNode",
     "A view for content made with a web framework, which it loads from URL. Documents that use it "
     "still open; new ones do better without."},
    {"HXRFastOutLinearInNode",
     "Bends a progress so that it picks up speed and keeps it to the end: the material curve for "
     "things that leave the screen for good."},
    {"HXRFastOutSlowInNode",
     "Bends a progress so that it picks up speed quickly and comes to rest slowly: the material "
     "curve for things that move within the screen."},
    {"HXRFilterViewNode",
     "A view whose content is drawn through a filter, for example blurred as a whole."},
    {"HXRFrameInfoNode",
     "Tells how much time has passed since the frame before, as Delta Time, and follows the "
     "display’s refresh with Video Sync. For calculations that must not depend on the frame rate."},
    {"HXRGaussianBlurFilterNode",
     "Blurs an image evenly. The Blur Radius parameter sets how strongly."},
    {"HXRGridLayoutNode",
     "Gives the position and the size of the item with number Index in a grid with a fixed number "
     "of columns. Made for replicated views: feed it the index of the copy."},
    {"HXRHSBAToColorNode",
     "Makes a color from hue, saturation, brightness and alpha. Change the hue alone to run "
     "through the rainbow."},
    {"HXRImageControlsFilterNode",
     "Adjusts an image’s brightness, contrast and saturation, its highlights and its shadows."},
    {"HXRImageImportNode",
     "Loads an image from a URL when Load asks for it, and gives it with its width and height. "
     "Done and Error tell how the loading went."},
    {"HXRImageInfoNode", "Tells the width, the height and the scale of an image."},
    {"HXRImageNode",
     "Brings one of the document’s pictures into the graph, with its width and height. Choose the "
     "picture with the Image parameter."},
    {"HXRImageViewNode", "A view that shows an image, through a filter if one is connected."},
    {"HXRIndexSwitchNode",
     "Remembers which one of several choices is made, as a tab bar does. Turn on one of its index "
     "inputs, or step with Next and Previous; Index tells which it is."},
    {"HXRInputSplitterNode",
     "Passes its input on unchanged. Inside a group, publish its one input to feed several patches "
     "at a time."},
    {"HXRInterpolationNode",
     "Maps a value from one range to another, such as a scroll position to an opacity. Repeat Mode "
     "says what happens to values beyond the input range."},
    {"HXRInvertFilterNode", "Turns an image into its negative."},
    {"HXRJSONImportNode",
     "Loads JSON from a URL when Load asks for it. Reach into Data with the dictionary and array "
     "patches; Done and Error tell how the loading went."},
    {"HXRJavascriptExpressionNode",
     "Evaluates a JavaScript function named expression that you write yourself. The names in its "
     "signature become inputs, what it returns is Result."},
    {"HXRLFO01Node",
     "Swings to and fro forever, for values between 0 and 1 such as an opacity or a progress: an "
     "LFO whose amplitude starts out at one half."},
    {"HXRLFONode",
     "Swings to and fro around Offset forever, in the form that Wave chooses. Period is the length "
     "of one swing, Amplitude its reach, Phase its start."},
    {"HXRLinearGradientViewNode",
     "A view filled with a gradient from Color 1 to Color 2 in the direction of Angle. The stops "
     "say where between 0 and 1 each color stands."},
    {"HXRLinearOutSlowInNode",
     "Bends a progress so that it starts at full speed and comes to rest slowly: the material "
     "curve for things that enter the screen."},
    {"HXRLogicNode",
     "Combines values that are on or off with AND, OR, XOR, NAND, NOR, NXOR and NOT, in a chain of "
     "as many operations as you set."},
    {"HXRLoopControlNode", "Ends the loop that it stands in before its time, once Break is on."},
    {"HXRLoopNode", "Runs the patches inside it over and over, as many times as Loops says."},
    {"HXRLoopVariablesNode",
     "Tells the patches inside a loop which round they are in, how far along the loop that is, and "
     "how many rounds there are."},
    {"HXRMaterialCardNode",
     "A view in the form of a material card, which holds what belongs together on one raised "
     "sheet."},
    {"HXRMaterialColorNode",
     "Picks a color of the material palette by name and weight, from 50, the lightest, to 900, the "
     "darkest."},
    {"HXRMaterialViewNode",
     "A view in the form of a sheet of material, raised above what lies behind it. Holds other "
     "views as every view does."},
    {"HXRMathExpressionNode",
     "Evaluates a formula that you type, such as $a + $b. Every variable of the formula becomes an "
     "input."},
    {"HXRMathNode",
     "Calculates with its operands: +, -, *, /, %, power, minimum and maximum, in a chain of as "
     "many operations as you set."},
    {"HXRMultiplexerNode",
     "Passes on one of several sources, chosen by Index: a selector for values of any kind."},
    {"HXRPanGestureNode",
     "Recognizes a finger that drags a view. X Pan and Y Pan tell how far it has come, X Delta and "
     "Y Delta its latest step; connect Gesture to the view."},
    {"HXRPanInteractionNode",
     "Follows a finger across a view from the moment it touches down, and tells how far it has "
     "moved. Connect Interaction to the view; Down tells whether it is being touched."},
    {"HXRPanToggleGestureNode",
     "Lets a view be dragged to and fro between two positions, A and B, like a drawer or a sheet. "
     "Tap To Toggle lets a tap do the same; A/B tells where the view is."},
    {"HXRPinNode",
     "A fixed point on a connection’s way across the canvas: passes its input on unchanged and "
     "keeps long connections tidy."},
    {"HXRPinchGestureNode",
     "Recognizes two fingers that pinch a view and gives the scale they bring it to. Connect "
     "Gesture to the view."},
    {"HXRPinchToggleGestureNode",
     "Lets a view be pinched to and fro between two states, each with its own position, rotation "
     "and scale: from a thumbnail to the full screen, for example."},
    {"HXRPixelateFilterNode",
     "Rebuilds an image from square blocks. Pixel Size sets how coarse they are."},
    {"HXRPulseNode",
     "Gives one short pulse when its signal turns on, turns off, or either, as Mode chooses: for "
     "starting something exactly once."},
    {"HXRRGBAToColorNode", "Makes a color from red, green, blue and alpha, each from 0 to 1."},
    {"HXRRandomNode", "Gives a random number between Minimum and Maximum."},
    {"HXRRemoteGroupNode",
     "Holds views that are not shown where they are built. Its Group output hands them to a Group "
     "Processor."},
    {"HXRRemoteGroupProcessorNode",
     "Shows the views of a Remote Group that is connected to it, so that they can be built in one "
     "place of the graph and appear in another."},
    {"HXRReplicatorNode",
     "Makes copies of the views and patches inside it, as many as Copies says. An output that is "
     "published from inside comes out as an array, with one value for each copy."},
    {"HXRReplicatorVariablesNode",
     "Tells the patches inside a replicator which copy they belong to, so that each can have its "
     "own place, color or delay."},
    {"HXRReverseTransitionNode",
     "Turns a value back into a progress: 0 at Input Min, 1 at Input Max. The counterpart of "
     "Transition."},
    {"HXRRotationGestureNode",
     "Recognizes two fingers that turn a view and gives the rotation they bring it to. Connect "
     "Gesture to the view."},
    {"HXRRotationSpringNode",
     "A spring for rotations. Strength sets how hard it pulls, Damping how soon it comes to rest, "
     "Dimensions how many axes it has."},
    {"HXRRoundedRectangleViewNode",
     "A rectangular view with rounded corners, filled with one color."},
    {"HXRSampleAndHoldNode",
     "Lets its value through while Sampling is on, and holds the last one from then on. Reset puts "
     "Reset Value in its place."},
    {"HXRScrollGestureNode",
     "Scrolls content that is larger than its bounds, page by page if you like. Gives the position "
     "and the page, and tells whether a finger is dragging or the content is gliding on."},
    {"HXRScrollPhysicsNode",
     "Carries a position on with its velocity and keeps it between Min and Max, as scrolled "
     "content glides and stops at its ends."},
    {"HXRShadowViewNode",
     "A view that casts a soft shadow. Shadow Size sets how far it reaches, Spread how much it "
     "widens, Border Radius how round its corners are."},
    {"HXRSpring1DNode",
     "Lets one value follow Rest as if held by a spring: a scale, an opacity or a coordinate that "
     "swings into place."},
    {"HXRSpring2DNode",
     "Lets a point follow X Rest and Y Rest as if held by a spring, so that a view swings into "
     "place when its rest position moves."},
    {"HXRSpringNode",
     "Follows its rest position as if held by a spring, along as many axes as Dimensions says. "
     "Strength sets how hard it pulls, Damping how soon it comes to rest."},
    {"HXRStateInputNode",
     "Hands its value to the State Output that it is connected to, as long as Enabled is on. The "
     "pair lets a graph feed a result back into what it was computed from."},
    {"HXRStateOutputNode",
     "Gives the value that its State Input has handed over, and Initial until there is one."},
    {"HXRStatusBarNode",
     "Hides and shows the device’s status bar, with the animation that you choose, and makes it "
     "dark or light. Hidden and Style tell how it stands."},
    {"HXRStopwatchNode",
     "Measures time. Start sets it going, Stop halts it, Reset takes it back to zero."},
    {"HXRSuperviewVariablesNode",
     "Tells the patches inside a view the position, size, rotation and anchor point of that view, "
     "so that content can follow what holds it."},
    {"HXRSwitchNode",
     "Remembers whether something is on or off. Turn On, Turn Off and Toggle change it."},
    {"HXRTestSubviewGroupNode",
     "Holds views and has no ports of its own. For trying out how groups of views behave, not for "
     "prototypes."},
    {"HXRTextImageNode",
     "Draws text as an image in the font, size and color that you give. Bounds Width and Bounds "
     "Height limit the room it takes."},
    {"HXRTextInputViewNode",
     "A text field: whoever holds the device types into it, and Text gives what was typed. Dismiss "
     "puts the keyboard away."},
    {"HXRTimedAnimationNode",
     "Runs a progress from 0 to 1 when On/Off turns on, and back when it turns off, in the time "
     "that Duration gives and along the chosen curve."},
    {"HXRTouchInteractionNode",
     "Tells whether a finger is down on a view, and where. Connect Interaction to the view: the "
     "beginning of every button."},
    {"HXRTouchRippleViewNode",
     "A view that answers every touch with a ripple spreading from the finger."},
    {"HXRTransitionNode",
     "Turns a progress into a value: 0 gives Value Min, 1 gives Value Max, and everything between "
     "lies evenly spread. Take one for each property that an animation changes."},
    {"HXRTurnDownForNode", "A view that asks one question, what. The library keeps it a secret."},
    {"HXRViewNode",
     "The base of everything that can be seen: a rectangle with a place, a size, a rotation and an "
     "opacity, which holds other views. Gestures and interactions connected to it say what touch "
     "does."},
};

static_assert(std::is_sorted(std::begin(kTexts), std::end(kTexts), standsBefore));

}  // namespace

std::string_view patchText(std::string_view className) {
  const auto* const found = std::lower_bound(std::begin(kTexts), std::end(kTexts),
                                             PatchText{className, {}}, standsBefore);
  return found != std::end(kTexts) && found->className == className ? found->text
                                                                    : std::string_view{};
}

}  // namespace tarnkit::tool
