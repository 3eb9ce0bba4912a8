#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit {

namespace {

/// Every kind of input, without and with named values, so that an editor can be tried on one patch.
void declareInputs(PatchDeclaration& patch) {
  patch.in("Boolean", "Tarn.booleanInput", value::boolean(false));
  patch.in("Index", "Tarn.indexInput", value::index(1));
  patch.in("Number", "Tarn.numberInput", value::number(0));
  patch.in("Angle", "Tarn.angleInput", value::radians(0));
  patch.in("Color", "Tarn.colorInput", value::color(OIColorWhiteRGBA));
  patch.in("String", "Tarn.stringInput");
}

void declareMappedInputs(PatchDeclaration& patch) {
  auto& boolean = patch.in("Boolean", "Tarn.mappedBooleanInput", value::boolean(false));
  boolean.mapValue(value::boolean(false), "Off");
  boolean.mapValue(value::boolean(true), "On");
  auto& index = patch.in("Index", "Tarn.mappedIndexInput", value::index(100));
  index.mapValue(value::index(1), "One");
  index.mapValue(value::index(10), "Ten");
  index.mapValue(value::index(100), "Hundred");
  auto& number = patch.in("Number", "Tarn.mappedNumberInput", value::number(5.1F));
  number.mapValue(value::number(0.1F), "Small");
  number.mapValue(value::number(5.1F), "Medium");
  number.mapValue(value::number(10.1F), "Large");
  auto& angle = patch.in("Angle", "Tarn.mappedAngleInput", value::degrees(90));
  angle.mapValue(value::degrees(0).value, "None");
  angle.mapValue(value::degrees(90).value, "Quarter Turn");
  angle.mapValue(value::degrees(180).value, "Half Turn");
  auto& color = patch.in("Color", "Tarn.mappedColorInput", value::color(OIColorWhiteRGBA));
  color.mapValue(value::color(OIColorBlackRGBA), "Black");
  color.mapValue(value::color(OIColorWhiteRGBA), "White");
  auto& string = patch.in("String", "Tarn.mappedStringInput", value::string("Moe"));
  string.mapValue(value::string("Moe"), "First");
  string.mapValue(value::string("Joe"), "Second");
}

void declareOutputs(PatchDeclaration& patch) {
  patch.out("Boolean", "Tarn.booleanOutput");
  patch.out("Index", "Tarn.indexOutput");
  patch.out("Number", "Tarn.numberOutput");
  patch.out("Angle", "Tarn.angleOutput");
  patch.out("Color", "Tarn.colorOutput");
  patch.out("String", "Tarn.stringOutput");
  patch.out("Boolean", "Tarn.mappedBooleanOutput");
  patch.out("Index", "Tarn.mappedIndexOutput");
  patch.out("Number", "Tarn.mappedNumberOutput");
  patch.out("Angle", "Tarn.mappedAngleOutput");
  patch.out("Color", "Tarn.mappedColorOutput");
  patch.out("String", "Tarn.mappedStringOutput");
}

void declareParameters(PatchDeclaration& patch) {
  patch.parameter("Boolean", "Tarn.booleanParameter", false);
  patch.parameter("Integer", "Tarn.integerParameter", 0, -100, 100);
  patch.parameter("Float", "Tarn.floatParameter", 0.0F, -100.0F, 100.0F);
  patch.parameter("Color", "Tarn.colorParameter", OIColorWhiteRGBA);
  patch.parameter("Single Line String", "Tarn.singleLineStringParameter", "", 0);
  patch.parameter("Multi-Line String", "Tarn.multipleLineStringParameter", "", 1);
  patch.imageParameter("Image", "Tarn.imageParameter");
}

}  // namespace

const HXRNodeClass HXRDebugNode{"HXRDebugNode",
                                &HXRNode::kClass,
                                {.libraryCategory = "Utility",
                                 .processClassName = "PMRDebugPatch",
                                 .hiddenInLibrary = HXRNodeClass::Flag::yes},
                                [](PatchDeclaration& patch) {
                                  declareInputs(patch);
                                  declareMappedInputs(patch);
                                  declareOutputs(patch);
                                  declareParameters(patch);
                                }};

}  // namespace tarnkit
