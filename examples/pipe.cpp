#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/io/Base64Streams.h>
#include <Infrastructure/OxaCore/io/BinaryPipe.h>
#include <Infrastructure/OxaCore/io/DataStreams.h>
#include <Infrastructure/OxaCore/io/StreamAdapters.h>

#include <boost/iostreams/stream.hpp>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>

using namespace Oxa::Core;

// One thread writes values, another reads them: for two seconds at most it waits for the next one.
void ThroughAPipe() {
  BinaryPipe pipe(BinaryPipe::DEFAULT_BUFFER_SIZE, Elapse(2), IMutex::sINFINITE);
  std::thread writer([&pipe] {
    DataOutputStream out(pipe);
    for (int sample = 1; sample <= 100; ++sample) out << sample;
    out.Close();
  });
  DataInputStream in(pipe);
  int sum = 0;
  for (int sample = 0; sample < 100; sum += sample) in >> sample;
  writer.join();
  std::cout << "1 to 100 make " << sum << ", and then the pipe says " << pipe.Read() << '\n';
}

// A stream of the standard library below, Base64 on it, and typed values on top; and all the way back.
void AsText() {
  std::stringstream text;
  BinaryStreamAdapter<std::stringstream> ours(text);
  Base64EncoderStream encoder(ours, false, 0, "");
  DataOutputStream(encoder) << 3 << 0.5;
  encoder.Flush();
  std::cout << text.str() << '\n';

  Base64DecoderStream decoder(ours);
  int channel = 0;
  double value = 0;
  DataInputStream(decoder) >> channel >> value;
  std::cout << "channel " << channel << ": " << value << '\n';
}

// The other way round: what reads a std::istream can read any of our streams.
void LineByLine() {
  const std::string bytes = "first\nsecond\n";
  IteratorBinaryInputAdapter<std::string::const_iterator> ours(bytes.begin(), bytes.end());
  boost::iostreams::stream<BinaryInputStream::Source<char>> standard(ours);
  for (std::string line; std::getline(standard, line);) std::cout << "line: " << line << '\n';
}

int main() {
  InitializeOxaCore();
  ThroughAPipe();
  AsText();
  LineByLine();
  ShutdownOxaCore();
}
