#include "Units/UnitTable.h"

#include <array>
#include <cstdlib>
#include <sstream>

namespace UnitTable {
namespace {

// clang-format off
const std::vector<Row> sROWS = {
    // Base units
    {"", "", 0x1p+0, "1", "1", eBASE, ""},
    {"Unitless", "", 0x1p+0, "1", "1", eBASE, ""},
    {"Arb", "Arb", 0x1p+0, "1", "m", eBASE, "Arb|arb|arbs|Arbs"},
    {"Meter", "m", 0x1p+0, "1", "m", eBASE, "m|meter|meters|Meters"},
    {"Meter Approx", "m\261", 0x1p+0, "1", "m", eBASE, "m\261|meter approx|meter approxs|Meter Approxs"},
    {"Kilogram", "kg", 0x1p+0, "1", "kg", eBASE, "kg|kilogram|kilograms|Kilograms"},
    {"Second", "s", 0x1p+0, "1", "s", eBASE, "sec|s|second|seconds|Seconds"},
    {"Second (2)", "sec.", 0x1p+0, "1", "s", eBASE, "sec.|second (2)"},
    {"Ampere", "A", 0x1p+0, "1", "A", eBASE, "Amp|amp|Amps|amps|A|ampere|amperes|Amperes"},
    {"Kelvin", "K", 0x1p+0, "1", "K", eBASE, "K|kelvin"},
    {"Mole", "mol", 0x1p+0, "1", "mol", eBASE, "mol|mole|moles|Moles"},
    {"Candela", "cd", 0x1p+0, "1", "cd", eBASE, "cd|candela|candelas|Candelas"},
    {"Radian", "rad", 0x1p+0, "1", "rad", eBASE, "rads|rad|radian|radians|Radians"},
    // Angular
    {"Degree", "deg", 0x1.ca5dc1a579bbap+5, "0.017453292521666667", "rad", eDEFAULT, "\260|deg|degree|degrees|Degrees"},
    {"Steradian", "sr", 0x1p+0, "1", "rad", eDEFAULT, "sr|steradian|steradians|Steradians"},
    {"Arcminute", "arcmin", 0x1.adb7e58b221ffp+11, "0.0002908882086944444", "rad", eDEFAULT, "arcmin|arcminute|arcminutes|Arcminutes"},
    {"Arcsecond", "arcsec", 0x1.92dc67326ffdfp+17, "4.848136811574074e-6", "rad", eDEFAULT, "arcsec|arcsecond|arcseconds|Arcseconds"},
    // Length
    {"Kilometer", "km", 0x1.0624dd2f1a9fcp-10, "1000", "m", eDEFAULT, "km|kilometer|kilometers|Kilometers"},
    {"Centimeter", "cm", 0x1.9p+6, "0.01", "m", eDEFAULT, "cm|centimeter|centimeters|Centimeters"},
    {"Millimeter", "mm", 0x1.f4p+9, "0.001", "m", eDEFAULT, "mm|millimeter|millimeters|Millimeters"},
    {"Micrometer", "\265m", 0x1.e848p+19, "1e-6", "m", eDEFAULT, "Micron|micron|Microns|microns|um|\265m|micrometer|micrometers|Micrometers"},
    {"Nanometer", "nm", 0x1.dcd64ffffffffp+29, "1e-9", "m", eDEFAULT, "nm|nanometer|nanometers|Nanometers"},
    {"Kilometer Approx", "km\261", 0x1.0624dd2f1a9fcp-10, "1000", "m", eDEFAULT, "km\261|kilometer approx|kilometer approxs|Kilometer Approxs"},
    {"Centimeter Approx", "cm\261", 0x1.9p+6, "0.01", "m", eDEFAULT, "cm\261|centimeter approx|centimeter approxs|Centimeter Approxs"},
    {"Millimeter Approx", "mm\261", 0x1.f4p+9, "0.001", "m", eDEFAULT, "mm\261|millimeter approx|millimeter approxs|Millimeter Approxs"},
    {"Micrometer Approx", "\265m\261", 0x1.e848p+19, "1e-6", "m", eDEFAULT, "\265m\261|micrometer approx|micrometer approxs|Micrometer Approxs"},
    {"Nanometer Approx", "nm\261", 0x1.dcd64ffffffffp+29, "1e-9", "m", eDEFAULT, "nm\261|nanometer approx|nanometer approxs|Nanometer Approxs"},
    {"Angstrom", "Ang", 0x1.2a05f2p+33, "1e-10", "m", eDEFAULT, "Ang|angstrom|angstroms|Angstroms"},
    {"Picometer", "pm", 0x1.d1a94a2p+39, "1e-12", "m", eDEFAULT, "pm|picometer|picometers|Picometers"},
    {"Femtometer", "fm", 0x1.c6bf52633ffffp+49, "1e-15", "m", eDEFAULT, "fm|femtometer|femtometers|Femtometers"},
    {"Mile", "mi.", 0x1.45c707983d68bp-11, "1609.344", "m", eDEFAULT, "mi|mi.|mile|miles|Miles"},
    {"Yard", "yd.", 0x1.17f70a86d4c6p+0, "0.9144", "m", eDEFAULT, "yd|yd.|yard|yards|Yards"},
    {"Foot", "ft.", 0x1.a3f28fca3f28fp+1, "0.3048", "m", eDEFAULT, "ft|Feet|feet|ft.|foot"},
    {"Inch", "in.", 0x1.3af5ebd7af5ecp+5, "0.0254", "m", eDEFAULT, "in|in.|inch|inches|Inches"},
    {"Milliinch", "mil.", 0x1.33942850a1428p+15, "2.54e-5", "m", eDEFAULT, "mil|mils|mil.|milliinch|milliinches|Milliinches"},
    {"Microinch", "uin.", 0x1.2c5eaf5ebd7bp+25, "2.54e-8", "m", eDEFAULT, "uin.|microinch|microinches|Microinches"},
    {"Yottameter", "Ym", 0x1.357c299a88ea8p-80, "1e24", "m", eKNOWN, "Ym|yottameter|yottameters|Yottameters"},
    {"Zetameter", "Zm", 0x1.2e3b40a0e9b4fp-70, "1e21", "m", eKNOWN, "Zm|zetameter|zetameters|Zetameters"},
    {"Exameter", "Em", 0x1.2725dd1d243acp-60, "1e18", "m", eKNOWN, "Em|exameter|exameters|Exameters"},
    {"Petameter", "Pm", 0x1.203af9ee75616p-50, "1e15", "m", eKNOWN, "Pm|petameter|petameters|Petameters"},
    {"Terameter", "Tm", 0x1.19799812dea11p-40, "1e12", "m", eKNOWN, "Tm|terameter|terameters|Terameters"},
    {"Gigameter", "Gm", 0x1.12e0be826d695p-30, "1e9", "m", eKNOWN, "Gm|gigameter|gigameters|Gigameters"},
    {"Megameter", "Mm", 0x1.0c6f7a0b5ed8dp-20, "1000000", "m", eKNOWN, "Mm|megameter|megameters|Megameters"},
    {"Hectometer", "hm", 0x1.47ae147ae147bp-7, "100", "m", eKNOWN, "hm|hectometer|hectometers|Hectometers"},
    {"Decameter", "dam", 0x1.999999999999ap-4, "10", "m", eKNOWN, "dam|decameter|decameters|Decameters"},
    {"Decimeter", "dm", 0x1.4p+3, "0.1", "m", eKNOWN, "dm|decimeter|decimeters|Decimeters"},
    {"Attometer", "am", 0x1.bc16d674ec7ffp+59, "1e-18", "m", eKNOWN, "am|attometer|attometers|Attometers"},
    {"Zeptometer", "zm", 0x1.b1ae4d6e2ef51p+69, "1e-21", "m", eKNOWN, "zm|zeptometer|zeptometers|Zeptometers"},
    {"Yoctoometer", "ym", 0x1.a784379d99db5p+79, "1e-24", "m", eKNOWN, "ym|yoctoometer|yoctoometers|Yoctoometers"},
    // Mass
    {"Gram", "g", 0x1.f4p+9, "0.001", "kg", eDEFAULT, "g|gram|grams|Grams"},
    {"Milligram", "mg", 0x1.e848p+19, "1e-6", "kg", eDEFAULT, "mg|milligram|milligrams|Milligrams"},
    {"Pound", "lb.", 0x1.1a3111bd4e069p+1, "0.4535924", "kg", eDEFAULT, "lb|lbs|lbs.|lb.|pound|pounds|Pounds"},
    {"Ounce", "oz.", 0x1.1a3115004ef7ep+5, "0.02834952", "kg", eDEFAULT, "oz|oz.|ounce|ounces|Ounces"},
    // Time
    {"Week", "w", 0x1.bbd779334ef0bp-20, "604800", "s", eDEFAULT, "wk|wks|Weeks|w|week"},
    {"Week (2)", "weeks", 0x1.bbd779334ef0bp-20, "604800", "s", eDEFAULT, "weeks|week (2)"},
    {"Day", "d", 0x1.845c8a0ce5129p-17, "86400", "s", eDEFAULT, "Days|d.|d|day"},
    {"Day (2)", "days", 0x1.845c8a0ce5129p-17, "86400", "s", eDEFAULT, "days|day (2)"},
    {"Hour", "h", 0x1.23456789abcdfp-12, "3600", "s", eDEFAULT, "hr|hrs|h|hour|hours|Hours"},
    {"Hour (2)", "hr.", 0x1.23456789abcdfp-12, "3600", "s", eDEFAULT, "hr.|hour (2)"},
    {"Minute", "m", 0x1.1111111111111p-6, "60", "s", eDEFAULT, "min|m|minute|minutes|Minutes"},
    {"Minute (2)", "min.", 0x1.1111111111111p-6, "60", "s", eDEFAULT, "min.|minute (2)"},
    {"Millisecond", "msec", 0x1.f4p+9, "0.001", "s", eDEFAULT, "ms|MilliSecond|MilliSeconds|msec|millisecond|milliseconds|Milliseconds"},
    {"Microsecond", "\265sec", 0x1.e848p+19, "1e-6", "s", eDEFAULT, "us|\265s|usec|MicroSecond|MicroSeconds|\265sec|microsecond|microseconds|Microseconds"},
    {"Nanosecond", "nsec", 0x1.dcd64ffffffffp+29, "1e-9", "s", eDEFAULT, "ns|NanoSecond|NanoSeconds|nsec|nanosecond|nanoseconds|Nanoseconds"},
    // Temperature
    {"Celsius", "C", 0x1p+0, "1", "K", eDEFAULT, "C|celsius"},
    {"Fahrenheit", "F", 0x1p+0, "1", "K", eDEFAULT, "F|fahrenheit"},
    {"Rankine", "Rk", 0x1p+0, "1", "K", eKNOWN, "Rk|rankine"},
    // Amount
    {"Dozen", "doz.", 0x1.816f12fbb5e7ep-76, "5.018451658333334e22", "mol", eDEFAULT, "doz|doz.|dozen"},
    // Area
    {"Square Meter", "m*m", 0x1p+0, "1", "m2", eDEFAULT, "sq m|m^2|m^|m*m|square meter|square meters|Square Meters"},
    {"Square Kilometer", "km*km", 0x1.0c6f7a0b5ed8dp-20, "1000000", "m2", eDEFAULT, "sq km|km^2|km^|km*km|square kilometer|square kilometers|Square Kilometers"},
    {"Square Centimeter", "cm*cm", 0x1.388p+13, "1e-4", "m2", eDEFAULT, "sq cm|cm^2|cm^|cm*cm|square centimeter|square centimeters|Square Centimeters"},
    {"Square Millimeter", "mm*mm", 0x1.e848p+19, "1e-6", "m2", eDEFAULT, "sq mm|mm^2|mm^|mm*mm|square millimeter|square millimeters|Square Millimeters"},
    {"Square Micrometer", "um*um", 0x1.d1a94a2p+39, "1e-12", "m2", eDEFAULT, "sq um|um^2|um^|Square Micron|square micron|Square Microns|square microns|um*um|square micrometer|square micrometers|Square Micrometers"},
    {"Square Nanometer", "nm*nm", 0x1.bc16d674ec7ffp+59, "1e-18", "m2", eDEFAULT, "sq nm|nm^2|nm^|nm*nm|square nanometer|square nanometers|Square Nanometers"},
    {"Square Angstrom", "Ang*Ang", 0x1.5af1d78b58c4p+66, "1e-20", "m2", eDEFAULT, "sq A|A^2|A^|Ang*Ang|square angstrom|square angstroms|Square Angstroms"},
    {"Square Mile", "mi.*mi.", 0x1.9e92f52da9594p-22, "2589988", "m2", eDEFAULT, "sq mi.|sq mi|mi^2|mi.^2|mi.*mi.|square mile|square miles|Square Miles"},
    {"Square Yard", "yd.*yd.", 0x1.322c666177156p+0, "0.8361274", "m2", eDEFAULT, "sq yd.|sq yd|yd^2|yd.^2|yd.*yd.|square yard|square yards|Square Yards"},
    {"Square Foot", "ft.*ft.", 0x1.5871f4421af19p+3, "0.09290304", "m2", eDEFAULT, "sq ft.|sq ft|ft^2|ft.^2|Square Feet|square feet|ft.*ft.|square foot"},
    {"Square Inch", "in.*in.", 0x1.838032ca5e4fdp+10, "0.00064516", "m2", eDEFAULT, "sq in.|sq in|in^2|in.^2|in.*in.|square inch|square inches|Square Inches"},
    {"Square Milliinch", "mil.*mil.", 0x1.718cae7006595p+30, "6.4516e-10", "m2", eDEFAULT, "sq mil.|sq mil|mil^2|mil.^2|Square Mil|square mil|Square Mils|square mils|mil.*mil.|square milliinch|square milliinches|Square Milliinches"},
    // Volume
    {"Cubic Meter", "m^3", 0x1p+0, "1", "m3", eDEFAULT, "m^3|cubic meter|cubic meters|Cubic Meters"},
    {"Cubic Kilometer", "km^3", 0x1.12e0be826d695p-30, "1e9", "m3", eDEFAULT, "km^3|cubic kilometer|cubic kilometers|Cubic Kilometers"},
    {"Cubic Centimeter", "cm^3", 0x1.e848p+19, "1e-6", "m3", eDEFAULT, "cc|cm^3|cubic centimeter|cubic centimeters|Cubic Centimeters"},
    {"Cubic Millimeter", "mm^3", 0x1.dcd64ffffffffp+29, "1e-9", "m3", eDEFAULT, "mm^3|cubic millimeter|cubic millimeters|Cubic Millimeters"},
    {"Cubic Micrometer", "um^3", 0x1.bc16d674ec7ffp+59, "1e-18", "m3", eDEFAULT, "Cubic Micron|Cubic Microns|cubic micron|cubic microns|um^3|cubic micrometer|cubic micrometers|Cubic Micrometers"},
    {"Cubic Nanometer", "nm^3", 0x1.9d971e4fe8402p+89, "1e-27", "m3", eDEFAULT, "nm^3|cubic nanometer|cubic nanometers|Cubic Nanometers"},
    {"Cubic Angstrom", "A^3", 0x1.93e5939a08ce9p+99, "1e-30", "m3", eDEFAULT, "A^3|cubic angstrom|cubic angstroms|Cubic Angstroms"},
    {"Cubic Mile", "mi.^3", 0x1.07c96f702ed3ep-32, "4.168182e9", "m3", eDEFAULT, "mi^3|mi.^3|cubic mile|cubic miles|Cubic Miles"},
    {"Cubic Yard", "yd.^3", 0x1.4ed5d8da060b7p+0, "0.7645549", "m3", eDEFAULT, "yd^3|yd.^3|cubic yard|cubic yards|Cubic Yards"},
    {"Cubic Foot", "ft.^3", 0x1.1a846dc1fb92ap+5, "0.02831685", "m3", eDEFAULT, "ft^3|Cubic Feet|cubic feet|ft.^3|cubic foot"},
    {"Cubic Inch", "in.^3", 0x1.dcbf849a61423p+15, "1.638706e-5", "m3", eDEFAULT, "in^3|in.^3|cubic inch|cubic inches|Cubic Inches"},
    {"Cubic Milliinch", "mil.^3", 0x1.bc019bd1dfaa6p+45, "1.638706e-14", "m3", eDEFAULT, "mil^3|mils^3|Cubic Mil|cubic mil|Cubic Mils|cubic mils|mil.^3|cubic milliinch|cubic milliinches|Cubic Milliinches"},
    {"Liter", "L", 0x1.f4p+9, "0.001", "m3", eDEFAULT, "L|liter|liters|Liters"},
    {"Milliliter", "mL", 0x1.e848p+19, "1e-6", "m3", eDEFAULT, "mL|milliliter|milliliters|Milliliters"},
    {"Gallon", "gal.", 0x1.082c0aa2ad44p+8, "0.003785412", "m3", eDEFAULT, "gal|gal.|gallon|gallons|Gallons"},
    {"Fluid Ounce", "oz.", 0x1.082c0b5e026fcp+15, "2.957353e-5", "m3", eDEFAULT, "oz|oz.|fluid ounce|fluid ounces|Fluid Ounces"},
    // Electricity and magnetism
    {"Coulomb", "C", 0x1p+0, "1", "s A", eDEFAULT, "C|coulomb|coulombs|Coulombs"},
    {"Volt", "V", 0x1p+0, "1", "m2 kg s-3 A-1", eDEFAULT, "V|volt|volts|Volts"},
    {"Farad", "F", 0x1p+0, "1", "m-2 kg-1 s4 A2", eDEFAULT, "F|farad|farads|Farads"},
    {"Ohm", "ohms", 0x1p+0, "1", "m2 kg s-3 A-2", eDEFAULT, "Ohms|ohm|ohms|ohm"},
    {"Kilohm", "kOhms", 0x1.0624dd2f1a9fcp-10, "1000", "m2 kg s-3 A-2", eDEFAULT, "KOhms|Kohm|kOhm|kOhms|kilohm"},
    {"Megaohm", "MOhms", 0x1.0c6f7a0b5ed8dp-20, "1000000", "m2 kg s-3 A-2", eDEFAULT, "mOhms|Mohm|MOhm|MOhms|megaohm"},
    {"Siemens", "S", 0x1p+0, "1", "m-2 kg-1 s3 A2", eDEFAULT, "S|siemens"},
    {"Weber", "Wb", 0x1p+0, "1", "m2 kg s-2 A-1", eDEFAULT, "Wb|weber|webers|Webers"},
    {"Tesla", "T", 0x1p+0, "1", "kg s-2 A-1", eDEFAULT, "T|tesla|teslas|Teslas"},
    {"Henry", "H", 0x1p+0, "1", "m2 kg2 s-2 A-2", eDEFAULT, "H|henry"},
    {"Kiloampere", "kA", 0x1.0624dd2f1a9fcp-10, "1000", "A", eDEFAULT, "kA|kiloampere|kiloamperes|Kiloamperes"},
    {"Milliampere", "mA", 0x1.f4p+9, "0.001", "A", eDEFAULT, "mA|milliampere|milliamperes|Milliamperes"},
    {"Microampere", "\265A", 0x1.e848p+19, "1e-6", "A", eDEFAULT, "\265A|microampere|microamperes|Microamperes"},
    {"Nanoampere", "nA", 0x1.dcd64ffffffffp+29, "1e-9", "A", eDEFAULT, "nA|nanoampere|nanoamperes|Nanoamperes"},
    {"Picoampere", "pA", 0x1.d1a94a2p+39, "1e-12", "A", eDEFAULT, "pA|picoampere|picoamperes|Picoamperes"},
    {"Femtoampere", "fA", 0x1.c6bf52633ffffp+49, "1e-15", "A", eDEFAULT, "fA|femtoampere|femtoamperes|Femtoamperes"},
    // Volt
    {"Kilovolt", "kV", 0x1.0624dd2f1a9fcp-10, "1000", "m2 kg s-3 A-1", eDEFAULT, "kV|kilovolt|kilovolts|Kilovolts"},
    {"Millivolt", "mV", 0x1.f4p+9, "0.001", "m2 kg s-3 A-1", eDEFAULT, "mV|millivolt|millivolts|Millivolts"},
    {"Microvolt", "\265V", 0x1.e848p+19, "1e-6", "m2 kg s-3 A-1", eDEFAULT, "\265V|microvolt|microvolts|Microvolts"},
    {"Nanovolt", "nV", 0x1.dcd64ffffffffp+29, "1e-9", "m2 kg s-3 A-1", eDEFAULT, "nV|nanovolt|nanovolts|Nanovolts"},
    {"Picovolt", "pV", 0x1.d1a94a2p+39, "1e-12", "m2 kg s-3 A-1", eDEFAULT, "pV|picovolt|picovolts|Picovolts"},
    // The rest
    {"Meter per Second", "m/s", 0x1p+0, "1", "m s-1", eDEFAULT, "Meters per Second|meters per second|Meters/Second|Meter/Second|meter/second|meters/second|m/s|meter per second"},
    {"Mile per Hour", "mph", 0x1.1e53edaccdf9p+1, "0.44704", "m s-1", eDEFAULT, "miles per hour|Miles per Hour|Miles/Hour|miles per hour|miles/hour|mi/hr|mi./hr.|mph|mile per hour"},
    {"Micrometer per Second", "um/s", 0x1.e848p+19, "1e-6", "m s-1", eDEFAULT, "Micrometers per Second|micrometers per second|Micrometers/Second|Micrometer/Second|micrometer/second|micrometers/second|Microns/Second|Microns per Second|Micron/Second|Micron per Second|microns/second|microns per second|micron/second|micron per second|\265m/s|\265m/sec|um/s|micrometer per second"},
    {"Meter per Second Squared", "m/(s*s)", 0x1p+0, "1", "m s-2", eDEFAULT, "meter per second squared|meters per second squared|Meters per Second Squared|Meter/Second Squared|meter/second squared|Meters/Second Squared|meters/second squared|m/(s^2)|m/(s*s)|meter per second squared"},
    {"Micrometer per Second Squared", "um/s*s", 0x1.e848p+19, "1e-6", "m s-2", eDEFAULT, "Micrometers per Second Squared|micrometers per second squared|Micrometers/Second Squared|Micrometer/Second Squared|micrometer/second squared|micrometers/second squared|Microns/Second Squared|Microns per Second Squared|Micron/Second Squared|Micron per Second Squared|microns/second squared|microns per second squared|micron/second squared|micron per second squared|um/(s^2)|um/s*s|micrometer per second squared"},
    {"Kilogram per Cubic Meter", "kg/(m^3)", 0x1p+0, "1", "kg s-3", eDEFAULT, "kilogram per cubic meter|kilogram/cubic meter|Kilogram/Cubic Meter|Kilograms per Cubic Meter|Kilograms/Cubic Meter|kilograms per cubic meter|kilograms/cubic meter|kg/(m^3)|kilogram per cubic meter"},
    {"Newton", "N", 0x1p+0, "1", "m kg s-2", eDEFAULT, "N|newton|newtons|Newtons"},
    {"Newton per meter", "N/m", 0x1p+0, "1", "kg s-2", eDEFAULT, "N/m|newton per meter|newton per meters|Newton per meters"},
    {"Piconewton", "pN", 0x1.d1a94a2p+39, "1e-12", "m kg s-2", eDEFAULT, "pN|piconewton|piconewtons|Piconewtons"},
    {"Nanonewton", "nN", 0x1.dcd64ffffffffp+29, "1e-9", "m kg s-2", eDEFAULT, "nN|nanonewton|nanonewtons|Nanonewtons"},
    {"Micronewton", "\265N", 0x1.e848p+19, "1e-6", "m kg s-2", eDEFAULT, "uN|\265N|micronewton"},
    {"Hertz", "Hz", 0x1p+0, "1", "s-1", eDEFAULT, "Hz|hertz"},
    {"Kilohertz", "kHz", 0x1.0624dd2f1a9fcp-10, "1000", "s-1", eDEFAULT, "kHz|kilohertz"},
    {"Pascal", "Pa", 0x1p+0, "1", "m-1 kg s-2", eDEFAULT, "Pa|pascal"},
    {"Gigapascal", "GPa", 0x1.12e0be826d695p-30, "1e9", "m-1 kg s-2", eDEFAULT, "GPa|gigapascal"},
    {"Megapascal", "MPa", 0x1.0c6f7a0b5ed8dp-20, "1000000", "m-1 kg s-2", eDEFAULT, "MPa|megapascal"},
    {"Pascal Approx", "Pa\261", 0x1p+0, "1", "m-1 kg s-2", eDEFAULT, "Pa\261|pascal approx"},
    {"GigaPascal Approx", "GPa\261", 0x1.12e0be826d695p-30, "1e9", "m-1 kg s-2", eDEFAULT, "GPa\261|gigapascal approx"},
    {"MegaPascal Approx", "MPa\261", 0x1.0c6f7a0b5ed8dp-20, "1000000", "m-1 kg s-2", eDEFAULT, "MPa\261|megapascal approx"},
    {"Joule", "J", 0x1p+0, "1", "m2 kg s-2", eDEFAULT, "J|joule|joules|Joules"},
    {"Electronvolt", "eV", 0x1p+0, "1", "m2 kg s-2", eDEFAULT, "eV|electronvolt|electronvolts|Electronvolts"},
    {"Electronvolt Approx", "eV\261", 0x1p+0, "1", "m2 kg s-2", eDEFAULT, "eV\261|electronvolt approx|electronvolt approxs|Electronvolt Approxs"},
    {"Watt", "W", 0x1p+0, "1", "m2 kg s-3", eDEFAULT, "W|watt|watts|Watts"},
    {"Lux", "lx", 0x1p+0, "1", "m-2 cd", eDEFAULT, "lx|lux"},
    {"Gray", "Gy", 0x1p+0, "1", "m2 s-2", eDEFAULT, "Gy|gray|grays|Grays"},
    {"Lumen", "lm", 0x1p+0, "1", "cd", eKNOWN, "lm|lumen|lumens|Lumens"},
    {"Becquerel", "Bq", 0x1p+0, "1", "s-1", eKNOWN, "Bq|becquerel|becquerels|Becquerels"},
    {"Sievert", "Sv", 0x1p+0, "1", "m2 s-2", eKNOWN, "Sv|sievert|sieverts|Sieverts"},
    {"Nanometers per Volt", "nm/V", 0x1.dcd64ffffffffp+29, "1e-9", "m-1 kg-1 s3 A", eDEFAULT, "Nanometer per Volt|nm/V|nanometers per volt"},
    {"Nanometers Approx per Volt", "nm\261/V", 0x1.dcd64ffffffffp+29, "1e-9", "m-1 kg-1 s3 A", eDEFAULT, "Nanometers Approx per Volt|nm\261/V|nanometers approx per volt"},
    {"Nanometers per Volt squared", "nm/V^", 0x1.dcd64ffffffffp+29, "1e-9", "m-3 kg-2 s6 A2", eDEFAULT, "Nanometer per Volt squared|nm/V^|nanometers per volt squared"},
    {"Picometers per Volt", "pm/V", 0x1.d1a94a2p+39, "1e-12", "m-1 kg-1 s3 A", eDEFAULT, "Picometer per Volt|pm/V|picometers per volt"},
    {"Microns per Volt", "um/V", 0x1.e848p+19, "1e-6", "m-1 kg-1 s3 A", eDEFAULT, "\265m/V|um/V|microns per volt"},
    {"Milliarb", "mArb", 0x1p+0, "1", "1", eDEFAULT, "mArb|milliarb"},
    {"log(Arb)", "log(Arb)", 0x1p+0, "1", "1", eDEFAULT, "log(Arb)|log(arb)"},
    {"log(Pa)", "log(Pa)", 0x1p+0, "1", "1", eDEFAULT, "log(Pa)|log(pa)"},
    {"log(Pa) Approx", "log(Pa)\261", 0x1p+0, "1", "1", eDEFAULT, "log(Pa)\261|log(pa) approx"},
    {"log(Ohm)", "log(Ohm)", 0x1p+0, "1", "1", eDEFAULT, "log(Ohm)|log(ohm)"},
    {"log(nA)", "log(nA)", 0x1p+0, "1", "1", eDEFAULT, "log(nA)|log(na)"},
    {"Count", "Count", 0x1p+0, "1", "1", eDEFAULT, "Count|count"},
    {"Ampere per Volt", "A/V", 0x1p+0, "1", "m-2 kg-1 s3 A2", eDEFAULT, "A/V|ampere per volt"},
    {"Nanoampere per Volt", "nA/V", 0x1.dcd64ffffffffp+29, "1e-9", "m-2 kg-1 s3 A2", eDEFAULT, "nA/V|nanoampere per volt"},
    {"Picoampere per Volt", "pA/V", 0x1.d1a94a2p+39, "1e-12", "m-2 kg-1 s3 A2", eDEFAULT, "pA/V|picoampere per volt"},
    {"Millivolt per Nanoampere", "mV/nA", 0x1.0c6f7a0b5ed8ep-20, "1000000", "m2 kg s-3 A-2", eDEFAULT, "mV/nA|millivolt per nanoampere"},
    {"Newton per Arb", "N/Arb", 0x1p+0, "1", "kg s-2", eDEFAULT, "N/Arb|newton per arb"},
    {"Nanonewton per Arb", "nN/Arb", 0x1.dcd64ffffffffp+29, "1e-9", "kg s-2", eDEFAULT, "nN/Arb|nanonewton per arb"},
    {"Piconewton per Arb", "pN/Arb", 0x1.d1a94a2p+39, "1e-12", "kg s-2", eDEFAULT, "pN/Arb|piconewton per arb"},
    {"Micronewton per Arb", "\265N/Arb", 0x1.e848p+19, "1e-6", "kg s-2", eDEFAULT, "uN/Arb|\265N/Arb|micronewton per arb"},
};
// clang-format on

constexpr std::array<const char*, 8> sSYMBOLS = {"m", "kg", "s", "A", "K", "mol", "cd", "rad"};

// Adds one factor, such as "s-3"; nothing for the "1" of a unit without dimensions.
void AddFactor(const std::string& factor, Oxa::Core::Dimensions& dimensions) {
  const std::string symbol = factor.substr(0, factor.find_first_of("-0123456789"));
  const std::string exponent = factor.substr(symbol.size());
  for (std::size_t index = 0; index < sSYMBOLS.size(); ++index) {
    if (symbol != sSYMBOLS[index]) continue;
    dimensions[static_cast<Oxa::Core::EDimension>(index)] =
        exponent.empty() ? 1 : std::atol(exponent.c_str());
  }
}

}  // namespace

const std::vector<Row>& Rows() { return sROWS; }

Oxa::Core::Dimensions DimensionsOf(const Row& row) {
  Oxa::Core::Dimensions dimensions;
  std::istringstream factors(row.dimensions);
  for (std::string factor; factors >> factor;) AddFactor(factor, dimensions);
  return dimensions;
}

std::vector<std::string> AlternatesOf(const Row& row) {
  std::vector<std::string> alternates;
  std::istringstream names(row.alternates);
  for (std::string name; std::getline(names, name, '|');) alternates.push_back(name);
  return alternates;
}

}  // namespace UnitTable
