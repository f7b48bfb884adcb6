#include "AutoTest/Module/TEST_io.h"

#include <Infrastructure/OxaCore/io/BinaryFileStream.h>
#include <Infrastructure/OxaCore/io/BoundedStreams.h>
#include <Infrastructure/OxaCore/io/BufferedStreams.h>
#include <Infrastructure/OxaCore/io/DataStreams.h>
#include <Infrastructure/OxaCore/io/IOErrors.h>

#include <atomic>
#include <boost/make_shared.hpp>

#include "AutoTest/Module/Patience.h"
#include "AutoTest/Module/RaisedMessage.h"
#include "AutoTest/Module/StreamValues.h"
#include "AutoTest/Module/TEST_XML.h"
#include "AutoTest/Module/TestFolder.h"
#include "AutoTest/Module/TestMethods.h"
#include "AutoTest/Module/TestThreads.h"

namespace Oxa::Core {

namespace {

constexpr char sFILE[] = "file";
constexpr char sTEXT[] = "The quick brown fox jumps over the lazy dog, twice.";
constexpr int iSIZE = 51;
static_assert(sizeof sTEXT == iSIZE + 1);

constexpr char sNOT_OPEN[] = "Attempted to perform an operation on an unopened file";
constexpr char sREAD_ONLY[] = "Write operation attempted on file opened for read only";
constexpr char sWRITE_ONLY[] = "Read operation attempted on file opened without read permission";
constexpr char sEXCEEDED[] = "Attempted write operation exceeded the allowed number of output bytes";
constexpr char sEND_OF_STREAM[] = "Hit end-of-stream after reading 0 bytes of a 1 byte read";

using File = BinaryFileStream;

// All that `in` has left, up to a limit that no test comes near.
std::string ReadAll(BinaryInputStream& in) {
  char buffer[4096];
  std::string text;
  long long got;
  while ((got = in.Read(buffer, sizeof buffer)) > 0) text.append(buffer, static_cast<std::size_t>(got));
  return text;
}

std::string ContentOf(const std::string& name) {
  File file(name, File::READ_MODE, File::eOPEN_IF_EXISTS);
  OXA_TEST_ASSERT(file.IsOpen());
  return ReadAll(file);
}

std::string MakeTextFile(const TestFolder& folder) { return folder.MakeFile(sFILE, sTEXT); }

std::string BadPosition(int position) {
  return "Invalid file position of " + std::to_string(position) + " for file of size " +
         std::to_string(iSIZE);
}

void CheckNewFile(File& file) {
  OXA_TEST_ASSERT(file.IsOpen());
  OXA_TEST_ASSERT(file.GetFileSize() == 0);
  OXA_TEST_ASSERT(file.AvailableBytes() == 0);
  OXA_TEST_ASSERT(file.Read() == -1);
  file.Write(sTEXT, iSIZE);
  OXA_TEST_ASSERT(file.GetFileSize() == iSIZE);
  OXA_TEST_ASSERT(file.GetInputPos() == 0);
  OXA_TEST_ASSERT(file.GetOutputPos() == iSIZE);
}

void CheckRefusedPositions(File& file) {
  const auto output = [&file](long long offset, File::EMoveMethod method) {
    return MessageOf<XIOBadFilePosition>([&] { file.SetOutputPos(offset, method); });
  };
  const auto input = [&file](long long offset, File::EMoveMethod method) {
    return MessageOf<XIOBadFilePosition>([&] { file.SetInputPos(offset, method); });
  };
  OXA_TEST_ASSERT(output(5, File::eFROM_END) == BadPosition(iSIZE + 5));
  OXA_TEST_ASSERT(output(-5, File::eFROM_BEGIN) == BadPosition(-5));
  OXA_TEST_ASSERT(input(5, File::eFROM_END) == BadPosition(iSIZE + 5));
  OXA_TEST_ASSERT(input(-5, File::eFROM_BEGIN) == BadPosition(-5));
  OXA_TEST_ASSERT(file.GetInputPos() == 0);
  OXA_TEST_ASSERT(file.GetOutputPos() == iSIZE);
}

void CheckReading(File& file) {
  char buffer[iSIZE];
  OXA_TEST_ASSERT(file.Read(buffer, iSIZE) == iSIZE && std::string(buffer, iSIZE) == sTEXT);
  OXA_TEST_ASSERT(file.Read() == -1);
  OXA_TEST_ASSERT(file.AvailableBytes() == 0);
  OXA_TEST_ASSERT(file.SetInputPos(-5, File::eFROM_END) == iSIZE - 5);
  OXA_TEST_ASSERT(file.AvailableBytes() == 5);
  OXA_TEST_ASSERT(file.Read(buffer, 0) == -1);
  OXA_TEST_ASSERT(file.Skip(4));
  OXA_TEST_ASSERT(file.Read() == '.');
  file.SetInputPos(0, File::eFROM_BEGIN);
  OXA_TEST_ASSERT(!file.Skip(iSIZE + 1));
  OXA_TEST_ASSERT(file.AvailableBytes() == 0);
}

void CheckTwoPositions(File& file) {
  file.SetInputPos(7, File::eFROM_BEGIN);
  file.SetOutputPos(3, File::eFROM_BEGIN);
  for (int i = 0; i < 4; ++i) {
    file.Write('#');
    OXA_TEST_ASSERT(file.Read() == sTEXT[7 + i]);
    OXA_TEST_ASSERT(file.GetInputPos() == 8 + i);
    OXA_TEST_ASSERT(file.GetOutputPos() == 4 + i);
  }
  file.SetInputPos(0, File::eFROM_BEGIN);
  OXA_TEST_ASSERT(ReadAll(file) == "The####ck brown fox jumps over the lazy dog, twice.");
}

void CheckShortening(File& file) {
  file.SetInputPos(40, File::eFROM_BEGIN);
  file.SetOutputPos(0, File::eFROM_END);
  OXA_TEST_ASSERT(MessageOf<XIOBadFilePosition>([&] { file.SetEndOfFile(1, File::eFROM_END); }) ==
                  BadPosition(iSIZE + 1));
  file.SetEndOfFile(iSIZE, File::eFROM_BEGIN);
  OXA_TEST_ASSERT(file.GetInputPos() == 40 && file.GetOutputPos() == iSIZE);
  file.SetEndOfFile(30, File::eFROM_BEGIN);
  OXA_TEST_ASSERT(file.GetFileSize() == 30);
  OXA_TEST_ASSERT(file.GetInputPos() == 30 && file.GetOutputPos() == 30);
}

void CheckClosed(File& file) {
  file.Close();
  OXA_TEST_ASSERT(!file.IsOpen());
  OXA_TEST_ASSERT(MessageOf<XIOFileNotOpen>([&] { file.Flush(); }) == sNOT_OPEN);
  OXA_TEST_ASSERT(MessageOf<XIOFileNotOpen>([&] { file.Read(); }) == sNOT_OPEN);
  OXA_TEST_ASSERT(MessageOf<XIOFileNotOpen>([&] { file.Write('x'); }) == sNOT_OPEN);
  OXA_TEST_ASSERT(MessageOf<XIOFileNotOpen>([&] { file.SetInputPos(0, File::eFROM_BEGIN); }) == sNOT_OPEN);
}

void CheckBytes(const std::string& name) {
  const std::string bytes = ContentOf(name);
  OXA_TEST_ASSERT(bytes.size() == iSTREAM_VALUES_SIZE);
  OXA_TEST_ASSERT(bytes.substr(4, 2) == "\xF0\xFF");
  OXA_TEST_ASSERT(bytes.substr(8, 4) == "\xE0\xFF\xFF\xFF");
  OXA_TEST_ASSERT(bytes.substr(32, 8) == std::string("\x40\0\0\0\0\0\0\0", 8));
  OXA_TEST_ASSERT(bytes.substr(40, 4) == std::string("\0\0\x80\x3F", 4));
  OXA_TEST_ASSERT(bytes.substr(44, 8) == std::string("\0\0\0\0\0\0\0\x40", 8));
  OXA_TEST_ASSERT(bytes.substr(52, 9) == std::string("\5\0\0\0value", 9));
  OXA_TEST_ASSERT(bytes.substr(61, 14) == std::string("\5\0\0\0v\0a\0l\0u\0e\0", 14));
}

// There is nothing left, and not every type complains.
void CheckDataAtTheEnd(DataInputStream& in) {
  char byte = 'x';
  OXA_TEST_ASSERT(MessageOf<XIOEndOfStream>([&] { in >> byte; }) == sEND_OF_STREAM);
  int number = 7;
  in >> number;
  OXA_TEST_ASSERT(number == 7);
  std::string text = "before";
  in >> text;
  OXA_TEST_ASSERT(text.empty());
}

void CheckBufferedOutput(const std::string& name) {
  File file(name, File::READ_WRITE_MODE, File::eCREATE_ALWAYS);
  BufferedBinaryOutputStream buffered(file, 10);
  buffered.Write(sTEXT, 6);
  OXA_TEST_ASSERT(file.GetFileSize() == 0);
  buffered.Write(sTEXT + 6, 4);  // just fills the room: what was there goes, and the new bytes stay
  OXA_TEST_ASSERT(file.GetFileSize() == 6);
  buffered.Write(sTEXT + 10, 30);
  OXA_TEST_ASSERT(file.GetFileSize() == 40);
  for (int i = 40; i < iSIZE; ++i) buffered.Write(static_cast<unsigned char>(sTEXT[i]));
  OXA_TEST_ASSERT(file.GetFileSize() == 50);
  file.SetOutputPos(0, File::eFROM_END);  // has the filters above write out what they hold
  OXA_TEST_ASSERT(file.GetFileSize() == iSIZE);
  buffered.Close();
  OXA_TEST_ASSERT(!file.IsOpen());
  OXA_TEST_ASSERT(ContentOf(name) == sTEXT);
}

void CheckBufferedInput(const std::string& name) {
  File file(name, File::READ_MODE, File::eOPEN_IF_EXISTS);
  BufferedBinaryInputStream buffered(file, BufferedBinaryInputStream::DEFAULT_BUFFER_SIZE);
  char buffer[iSIZE];
  OXA_TEST_ASSERT(buffered.AvailableBytes() == iSIZE);
  OXA_TEST_ASSERT(buffered.Read() == 'T');
  OXA_TEST_ASSERT(file.AvailableBytes() == 0 && buffered.AvailableBytes() == iSIZE - 1);
  OXA_TEST_ASSERT(buffered.Skip(3) && buffered.Read(buffer, 5) == 5 && std::string(buffer, 5) == "quick");
  file.SetInputPos(10, File::eFROM_BEGIN);  // drops what is buffered above
  OXA_TEST_ASSERT(buffered.Read(buffer, 5) == 5 && std::string(buffer, 5) == "brown");
  OXA_TEST_ASSERT(buffered.Read(buffer, iSIZE) == iSIZE - 15);
  OXA_TEST_ASSERT(buffered.Read() == -1 && buffered.Read(buffer, 1) == -1);
}

void CheckBoundedOutput(const std::string& name) {
  File file(name, File::WRITE_MODE, File::eCREATE_ALWAYS);
  BoundedBinaryOutputStream bounded(file, 30);
  bounded.Write(sTEXT, 20);
  OXA_TEST_ASSERT(bounded.NumBytesOutput() == 20);
  OXA_TEST_ASSERT(MessageOf<XIOExceededOutputLimit>([&] { bounded.Write(sTEXT + 20, 20); }) == sEXCEEDED);
  OXA_TEST_ASSERT(bounded.NumBytesOutput() == 30);
  OXA_TEST_ASSERT(MessageOf<XIOExceededOutputLimit>([&] { bounded.Write('x'); }) == sEXCEEDED);
  bounded.Close();
  OXA_TEST_ASSERT(ContentOf(name) == std::string(sTEXT, 30));
}

void CheckBoundedInput(const std::string& name) {
  File file(name, File::READ_MODE, File::eOPEN_IF_EXISTS);
  BoundedBinaryInputStream bounded(file, 30);
  char buffer[iSIZE];
  OXA_TEST_ASSERT(bounded.AvailableBytes() == 30);
  OXA_TEST_ASSERT(bounded.Read(buffer, 20) == 20 && std::string(buffer, 20) == std::string(sTEXT, 20));
  OXA_TEST_ASSERT(bounded.AvailableBytes() == 10);
  OXA_TEST_ASSERT(bounded.Read(buffer, 20) == 10);
  OXA_TEST_ASSERT(bounded.AvailableBytes() == 0 && bounded.Read() == -1);
  OXA_TEST_ASSERT(bounded.NumBytesInput() == 30);
  OXA_TEST_ASSERT(file.AvailableBytes() == iSIZE - 30);
}

void CheckBoundedSkip(const std::string& name) {
  File file(name, File::READ_MODE, File::eOPEN_IF_EXISTS);
  BoundedBinaryInputStream bounded(file, 30);
  OXA_TEST_ASSERT(bounded.Skip(0) && bounded.Skip(4) && bounded.Read() == 'q');
  OXA_TEST_ASSERT(!bounded.Skip(26));
  OXA_TEST_ASSERT(bounded.NumBytesInput() == 5);  // what is skipped in vain still counts as ahead
  OXA_TEST_ASSERT(file.GetInputPos() == 30);
}

// Who moves the file's position has the locks of all filters that keep something.
void CheckLocksOfAChain(const std::string& name) {
  File file(name, File::READ_WRITE_MODE, File::eOPEN_IF_EXISTS);
  BufferedBinaryInputStream bufferedIn(file, 10);
  const BoundedBinaryInputStream boundedIn(bufferedIn, 30);
  BufferedBinaryOutputStream bufferedOut(file, 10);
  LockSet locks;
  file.InvalidateAllBufferedInput(locks);
  OXA_TEST_ASSERT(locks.size() == 2);
  file.FlushAllBufferedOutput(locks);
  OXA_TEST_ASSERT(locks.size() == 2);
  bufferedOut.FlushAllBufferedOutput(locks);
  OXA_TEST_ASSERT(locks.size() == 1);
}

// Writes its name down when it is to drop what it holds.
class NamedFilter : public BinaryInputStreamFilter {
 public:
  NamedFilter(BinaryInputStream& source, char name, std::string& dropped)
      : BinaryInputStreamFilter(source), m_cName(name), m_sDropped(dropped) {}

 protected:
  void DoBufferedInputInvalidation() override { m_sDropped += m_cName; }

 private:
  const char m_cName;
  std::string& m_sDropped;
};

// The furthest from the source is served first.
void CheckOrderOfAChain(const std::string& name) {
  File file(name, File::READ_MODE, File::eOPEN_IF_EXISTS);
  std::string dropped;
  NamedFilter low(file, 'l', dropped);
  NamedFilter middle(low, 'm', dropped);
  const NamedFilter high(middle, 'h', dropped);
  LockSet locks;
  file.InvalidateAllBufferedInput(locks);
  OXA_TEST_ASSERT(dropped == "hml");
  low.InvalidateAllBufferedInput(locks);
  OXA_TEST_ASSERT(dropped == "hmlhm");
}

// Nobody else reads through a filter before its lock is given back.
void CheckLockUntilGivenBack(const std::string& name) {
  File file(name, File::READ_MODE, File::eOPEN_IF_EXISTS);
  BufferedBinaryInputStream buffered(file, 10);
  LockSet locks;
  file.InvalidateAllBufferedInput(locks);
  std::atomic<bool> begun{false};
  std::atomic<int> byte{-1};
  TestThreads reader(1, [&](int) {
    begun = true;
    byte = buffered.Read();
  });
  const bool hasBegun = Becomes([&] { return begun.load(); });
  OxaSleep(20, Elapse::MilliSeconds, false);
  const int early = byte;
  locks.clear();  // whatever was seen, so that the thread can end
  reader.Join();
  OXA_TEST_ASSERT(hasBegun && early == -1 && byte == static_cast<unsigned char>(sTEXT[0]));
}

// What can't be flushed any more is a warning, and no reason to stay open.
void CheckClosingAfterAFailure(const std::string& name) {
  File file(name, File::WRITE_MODE, File::eCREATE_ALWAYS);
  BoundedBinaryOutputStream bounded(file, 5);
  BufferedBinaryOutputStream buffered(bounded, 100);
  buffered.Write(sTEXT, 10);
  buffered.Close();
  OXA_TEST_ASSERT(!file.IsOpen());
  OXA_TEST_ASSERT(ContentOf(name) == std::string(sTEXT, 5));
}

}  // namespace

TEST_io::TEST_io() : TestSuite("I/O Tests") {
  AddTestMethods(*this, {{"I/O With Binary File Test", &TEST_io::BinaryFile},
                         {"File Open Types Test", &TEST_io::FileOpenTypes},
                         {"Data I/O with Binary File Test", &TEST_io::DataWithBinaryFile},
                         {"Buffered I/O with Binary File", &TEST_io::BufferedWithBinaryFile},
                         {"Bounded I/O with Binary File Test", &TEST_io::BoundedWithBinaryFile},
                         {"I/O Chain Test", &TEST_io::Chain},
                         {"BinaryPipe Test", &TEST_io::Pipe},
                         {"Base64 Streams Test", &TEST_io::Base64Streams},
                         {"Binary Stream Adapter Test", &TEST_io::StreamAdapter}});
  AddTest(boost::make_shared<TEST_XML>());
}

void TEST_io::BinaryFile(std::string&) {
  const TestFolder folder;
  File file(folder.File(sFILE), File::READ_WRITE_MODE, File::eCREATE_NEW);
  CheckNewFile(file);
  CheckRefusedPositions(file);
  CheckReading(file);
  CheckTwoPositions(file);
  CheckShortening(file);
  CheckClosed(file);
}

void TEST_io::FileOpenTypes(std::string&) {
  const TestFolder folder;
  const std::string name = folder.File(sFILE);
  File file;
  OXA_TEST_ASSERT(!file.Open(name, File::READ_MODE, File::eOPEN_IF_EXISTS) && !file.IsOpen());
  OXA_TEST_ASSERT(file.Open(name, File::WRITE_MODE, File::eCREATE_NEW) && file.GetFileName() == name);
  file.Write(sTEXT, iSIZE);
  OXA_TEST_ASSERT(MessageOf<XIOWriteOnlyFile>([&] { file.Read(); }) == sWRITE_ONLY);
  OXA_TEST_ASSERT(!file.Open(name, File::WRITE_MODE, File::eCREATE_NEW) && !file.IsOpen());
  OXA_TEST_ASSERT(file.Open(name, File::READ_MODE, File::eOPEN_IF_EXISTS) && ReadAll(file) == sTEXT);
  OXA_TEST_ASSERT(MessageOf<XIOReadOnlyFile>([&] { file.Write('x'); }) == sREAD_ONLY);
  OXA_TEST_ASSERT(file.Open(name, File::READ_WRITE_MODE, File::eOPEN_ALWAYS));
  file.Write('+');
  OXA_TEST_ASSERT(ReadAll(file) == std::string(sTEXT) + '+');
  OXA_TEST_ASSERT(file.Open(name, File::READ_WRITE_MODE, File::eCREATE_ALWAYS) && file.GetFileSize() == 0);
  OXA_TEST_ASSERT(file.Open(folder.File("other"), File::WRITE_MODE, File::eOPEN_ALWAYS));
}

void TEST_io::DataWithBinaryFile(std::string&) {
  const TestFolder folder;
  const std::string name = folder.File(sFILE);
  {
    File file(name, File::WRITE_MODE, File::eCREATE_NEW);
    DataOutputStream out(file);
    WriteStreamValues(out);
  }
  CheckBytes(name);
  File file(name, File::READ_MODE, File::eOPEN_IF_EXISTS);
  DataInputStream in(file);
  CheckStreamValues(in);
  CheckDataAtTheEnd(in);
}

void TEST_io::BufferedWithBinaryFile(std::string&) {
  const TestFolder folder;
  const std::string name = folder.File(sFILE);
  CheckBufferedOutput(name);
  CheckBufferedInput(name);
}

void TEST_io::BoundedWithBinaryFile(std::string&) {
  const TestFolder folder;
  const std::string name = MakeTextFile(folder);
  CheckBoundedInput(name);
  CheckBoundedSkip(name);
  CheckBoundedOutput(folder.File("other"));
}

void TEST_io::Chain(std::string&) {
  const TestFolder folder;
  File file(folder.File(sFILE), File::READ_WRITE_MODE, File::eCREATE_NEW);
  BufferedBinaryOutputStream bufferedOut(file, BufferedBinaryOutputStream::DEFAULT_BUFFER_SIZE);
  BoundedBinaryOutputStream boundedOut(bufferedOut, iSTREAM_VALUES_SIZE);
  DataOutputStream out(boundedOut);
  WriteStreamValues(out);
  OXA_TEST_ASSERT(MessageOf<XIOExceededOutputLimit>([&] { out << 'x'; }) == sEXCEEDED);
  out.Flush();
  OXA_TEST_ASSERT(file.GetFileSize() == iSTREAM_VALUES_SIZE);
  BufferedBinaryInputStream bufferedIn(file, 100);
  BoundedBinaryInputStream boundedIn(bufferedIn, iSTREAM_VALUES_SIZE);
  DataInputStream in(boundedIn);
  CheckStreamValues(in);
  CheckDataAtTheEnd(in);
  out.Close();
  OXA_TEST_ASSERT(!file.IsOpen());
  CheckLocksOfAChain(folder.File(sFILE));
  const std::string name = folder.MakeFile("text", sTEXT);
  CheckOrderOfAChain(name);
  CheckLockUntilGivenBack(name);
  CheckClosingAfterAFailure(folder.File("other"));
}

}  // namespace Oxa::Core
