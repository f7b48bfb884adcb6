#include <Infrastructure/OxaCore/UnitDictionary.h>

#include "Units/UnitRows.h"

namespace Oxa::Core {

void UnitDictionary::registerLengthUnits(bool aAllKnown) {
  AddDerived(*this, "Kilometer", "km", 1000.0, "Meter", "s");
  AddDerived(*this, "Centimeter", "cm", 0.01, "Meter", "s");
  AddDerived(*this, "Millimeter", "mm", 0.001, "Meter", "s");
  AddDerived(*this, "Micrometer", "\xB5m", 1e-06, "Meter", "s",
             {"Micron", "micron", "Microns", "microns", "um"});
  AddDerived(*this, "Nanometer", "nm", 1e-09, "Meter", "s");
  AddDerived(*this, "Kilometer Approx", "km\xB1", 1000.0, "Meter Approx", "s");
  AddDerived(*this, "Centimeter Approx", "cm\xB1", 0.01, "Meter Approx", "s");
  AddDerived(*this, "Millimeter Approx", "mm\xB1", 0.001, "Meter Approx", "s");
  AddDerived(*this, "Micrometer Approx", "\xB5m\xB1", 1e-06, "Meter Approx", "s");
  AddDerived(*this, "Nanometer Approx", "nm\xB1", 1e-09, "Meter Approx", "s");
  AddDerived(*this, "Angstrom", "Ang", 1e-10, "Meter", "s");
  AddDerived(*this, "Picometer", "pm", 1e-12, "Meter", "s");
  AddDerived(*this, "Femtometer", "fm", 1e-15, "Meter", "s");
  AddDerived(*this, "Mile", "mi.", 1609.344, "Meter", "s", {"mi"});
  AddDerived(*this, "Yard", "yd.", 0.9144, "Meter", "s", {"yd"});
  AddDerived(*this, "Foot", "ft.", 0.3048, "Meter", "", {"ft", "Feet", "feet"});
  AddDerived(*this, "Inch", "in.", 0.0254, "Meter", "es", {"in"});
  AddDerived(*this, "Milliinch", "mil.", 2.54e-05, "Meter", "es", {"mil", "mils"});
  AddDerived(*this, "Microinch", "uin.", 2.54e-08, "Meter", "es");
  if (aAllKnown) {
    AddDerived(*this, "Yottameter", "Ym", 1e+24, "Meter", "s");
    AddDerived(*this, "Zetameter", "Zm", 1e+21, "Meter", "s");
    AddDerived(*this, "Exameter", "Em", 1e+18, "Meter", "s");
    AddDerived(*this, "Petameter", "Pm", 1000000000000000.0, "Meter", "s");
    AddDerived(*this, "Terameter", "Tm", 1000000000000.0, "Meter", "s");
    AddDerived(*this, "Gigameter", "Gm", 1000000000.0, "Meter", "s");
    AddDerived(*this, "Megameter", "Mm", 1000000.0, "Meter", "s");
    AddDerived(*this, "Hectometer", "hm", 100.0, "Meter", "s");
    AddDerived(*this, "Decameter", "dam", 10.0, "Meter", "s");
    AddDerived(*this, "Decimeter", "dm", 0.1, "Meter", "s");
    AddDerived(*this, "Attometer", "am", 1e-18, "Meter", "s");
    AddDerived(*this, "Zeptometer", "zm", 1e-21, "Meter", "s");
    AddDerived(*this, "Yoctoometer", "ym", 1e-24, "Meter", "s");
  }
}

void UnitDictionary::registerAreaUnits(bool /*aAllKnown*/) {
  AddRenamed(*this, "Square Meter", "m*m", "Meter * Meter", "s", {"sq m", "m^2", "m^"});
  AddDerived(*this, "Square Kilometer", "km*km", 1000000.0, "Meter * Meter", "s", {"sq km", "km^2", "km^"});
  AddDerived(*this, "Square Centimeter", "cm*cm", 0.0001, "Meter * Meter", "s", {"sq cm", "cm^2", "cm^"});
  AddDerived(*this, "Square Millimeter", "mm*mm", 1e-06, "Meter * Meter", "s", {"sq mm", "mm^2", "mm^"});
  AddDerived(*this, "Square Micrometer", "um*um", 1e-12, "Meter * Meter", "s",
             {"sq um", "um^2", "um^", "Square Micron", "square micron", "Square Microns", "square microns"});
  AddDerived(*this, "Square Nanometer", "nm*nm", 1e-18, "Meter * Meter", "s", {"sq nm", "nm^2", "nm^"});
  AddDerived(*this, "Square Angstrom", "Ang*Ang", 1e-20, "Meter * Meter", "s", {"sq A", "A^2", "A^"});
  AddDerived(*this, "Square Mile", "mi.*mi.", 2589988.0, "Meter * Meter", "s",
             {"sq mi.", "sq mi", "mi^2", "mi.^2"});
  AddDerived(*this, "Square Yard", "yd.*yd.", 0.8361274, "Meter * Meter", "s",
             {"sq yd.", "sq yd", "yd^2", "yd.^2"});
  AddDerived(*this, "Square Foot", "ft.*ft.", 0.09290304, "Meter * Meter", "",
             {"sq ft.", "sq ft", "ft^2", "ft.^2", "Square Feet", "square feet"});
  AddDerived(*this, "Square Inch", "in.*in.", 0.00064516, "Meter * Meter", "es",
             {"sq in.", "sq in", "in^2", "in.^2"});
  AddDerived(
      *this, "Square Milliinch", "mil.*mil.", 6.4516e-10, "Meter * Meter", "es",
      {"sq mil.", "sq mil", "mil^2", "mil.^2", "Square Mil", "square mil", "Square Mils", "square mils"});
}

void UnitDictionary::registerVolumeUnits(bool /*aAllKnown*/) {
  AddRenamed(*this, "Cubic Meter", "m^3", "Meter * Meter * Meter", "s");
  AddDerived(*this, "Cubic Kilometer", "km^3", 1000000000.0, "Meter * Meter * Meter", "s");
  AddDerived(*this, "Cubic Centimeter", "cm^3", 1e-06, "Meter * Meter * Meter", "s", {"cc"});
  AddDerived(*this, "Cubic Millimeter", "mm^3", 1e-09, "Meter * Meter * Meter", "s");
  AddDerived(*this, "Cubic Micrometer", "um^3", 1e-18, "Meter * Meter * Meter", "s",
             {"Cubic Micron", "Cubic Microns", "cubic micron", "cubic microns"});
  AddDerived(*this, "Cubic Nanometer", "nm^3", 1e-27, "Meter * Meter * Meter", "s");
  AddDerived(*this, "Cubic Angstrom", "A^3", 1e-30, "Meter * Meter * Meter", "s");
  AddDerived(*this, "Cubic Mile", "mi.^3", 4168182000.0, "Meter * Meter * Meter", "s", {"mi^3"});
  AddDerived(*this, "Cubic Yard", "yd.^3", 0.7645549, "Meter * Meter * Meter", "s", {"yd^3"});
  AddDerived(*this, "Cubic Foot", "ft.^3", 0.02831685, "Meter * Meter * Meter", "",
             {"ft^3", "Cubic Feet", "cubic feet"});
  AddDerived(*this, "Cubic Inch", "in.^3", 1.638706e-05, "Meter * Meter * Meter", "es", {"in^3"});
  AddDerived(*this, "Cubic Milliinch", "mil.^3", 1.638706e-14, "Meter * Meter * Meter", "es",
             {"mil^3", "mils^3", "Cubic Mil", "cubic mil", "Cubic Mils", "cubic mils"});
  AddDerived(*this, "Liter", "L", 0.001, "Meter * Meter * Meter", "s");
  AddDerived(*this, "Milliliter", "mL", 1e-06, "Meter * Meter * Meter", "s");
  AddDerived(*this, "Gallon", "gal.", 0.003785412, "Meter * Meter * Meter", "s", {"gal"});
  AddDerived(*this, "Fluid Ounce", "oz.", 2.957353e-05, "Meter * Meter * Meter", "s", {"oz"});
}

}  // namespace Oxa::Core
