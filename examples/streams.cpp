#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/io/BinaryFileStream.h>
#include <Infrastructure/OxaCore/io/BufferedStreams.h>
#include <Infrastructure/OxaCore/io/DataStreams.h>
#include <Infrastructure/OxaCore/io/IOErrors.h>

#include <cstdio>
#include <iostream>
#include <string>

using namespace Oxa::Core;

const std::string sFILE = "streams-example.dat";
const char cWHOLE = ';';  // behind each sample: a char is the one value that tells when the stream has ended

void Record(int samples) {
  BinaryFileStream file(sFILE, BinaryFileStream::WRITE_MODE, BinaryFileStream::eCREATE_ALWAYS);
  BufferedBinaryOutputStream buffered(file, BufferedBinaryOutputStream::DEFAULT_BUFFER_SIZE);
  DataOutputStream out(buffered);
  out << std::string("mV") << samples;
  for (int number = 0; number < samples; ++number) out << number << 0.5 * number << cWHOLE;
  out.Close();  // flushes what is buffered, and closes the file; a destructor wouldn't
}

// Gives how many samples could be read.
int Replay() {
  BinaryFileStream file(sFILE, BinaryFileStream::READ_MODE, BinaryFileStream::eOPEN_IF_EXISTS);
  BufferedBinaryInputStream buffered(file, BufferedBinaryInputStream::DEFAULT_BUFFER_SIZE);
  DataInputStream in(buffered);
  std::string unit;
  int promised = 0;
  int read = 0;
  in >> unit >> promised;
  try {
    for (double sum = 0; read < promised; ++read) {
      int number = 0;
      double value = 0;
      char whole = 0;
      in >> number >> value >> whole;
      sum += value;
      if (number == 99) std::cout << "the first 100 make " << sum << ' ' << unit << '\n';
    }
  } catch (const XIOEndOfStream&) {
    std::cout << "cut off after ";
  }
  return read;
}

int main() {
  InitializeOxaCore();
  Record(1000);
  std::cout << Replay() << " samples\n";
  BinaryFileStream file(sFILE, BinaryFileStream::WRITE_MODE, BinaryFileStream::eOPEN_IF_EXISTS);
  file.SetEndOfFile(10 + 13 * 600 + 5, BinaryFileStream::eFROM_BEGIN);
  file.Close();
  std::cout << Replay() << " samples\n";
  std::remove(sFILE.c_str());
  ShutdownOxaCore();
}
