// What the fuzz targets share.
//
// A target is one function, LLVMFuzzerTestOneInput: it takes any bytes whatever, and ends the process if the library
// gives a result that is wrong. libFuzzer calls it with bytes of its own making; RunSeeds.cpp with those that are
// kept in seeds/.
#ifndef OXACORE_FUZZ_FUZZTARGET_H
#define OXACORE_FUZZ_FUZZTARGET_H

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace OxaFuzz {

/// Ends the process, with both texts on standard error, if `holds` is false.
void Check(bool holds, const char* promise, const std::string& found = std::string());

/// Ends the process, with the promise and both texts on standard error, if the texts aren't the same.
void CheckSame(const std::string& expected, const std::string& found, const char* promise);

/// Takes what the library logs, so that no log is written. To be called first; does its work once.
void StayQuiet();

}  // namespace OxaFuzz

#endif
