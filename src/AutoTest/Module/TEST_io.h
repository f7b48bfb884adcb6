// A suite of the module's own tests.
#ifndef OXACORE_AUTOTEST_MODULE_TEST_IO_H
#define OXACORE_AUTOTEST_MODULE_TEST_IO_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>

namespace Oxa::Core {

/// "I/O Tests": binary streams.
class TEST_io : public TestSuite {
 public:
  TEST_io();

 private:
  void BinaryFile(std::string& text);
  void FileOpenTypes(std::string& text);
  void DataWithBinaryFile(std::string& text);
  void BufferedWithBinaryFile(std::string& text);
  void BoundedWithBinaryFile(std::string& text);
  void Chain(std::string& text);
  void Pipe(std::string& text);
  void Base64Streams(std::string& text);
  void StreamAdapter(std::string& text);
};

}  // namespace Oxa::Core

#endif
