// A suite of the module's own tests.
#ifndef OXACORE_AUTOTEST_MODULE_TEST_STRINGTOOLS_H
#define OXACORE_AUTOTEST_MODULE_TEST_STRINGTOOLS_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>

namespace Oxa::Core {

/// "StringTools Tests": the tools for texts.
class TEST_StringTools : public TestSuite {
 public:
  TEST_StringTools();

 private:
  void TrimWS(std::string& text);
  void UpCase(std::string& text);
  void DownCase(std::string& text);
  void LineBreaks(std::string& text);
  void Escape(std::string& text);
  void UnEscape(std::string& text);
  void Array2Str(std::string& text);
  void Str2Array(std::string& text);
  void Conversion(std::string& text);
  void SplitJoin(std::string& text);
};

}  // namespace Oxa::Core

#endif
