// Readers and writers on threads of their own, whose results the model still knows: a pipe that waits gives each
// block whole, and a file whose bytes tell their place shows whether a block was torn.
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/io/BinaryFileStream.h>
#include <Infrastructure/OxaCore/io/BinaryPipe.h>
#include <Infrastructure/OxaCore/io/BufferedStreams.h>
#include <Infrastructure/OxaCore/io/DataStreams.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Generator.h"
#include "Reference.h"
#include "Subject.h"
#include "Support/TemporaryFolder.h"
#include "Support/Together.h"

namespace {

using namespace Model;
using namespace Oxa::Core;

#if defined(OXACORE_SOAK)
constexpr unsigned long long s_ulSEQUENCES = 20000;
constexpr int s_iBLOCKS = 200000;
#elif defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr unsigned long long s_ulSEQUENCES = 1000;
constexpr int s_iBLOCKS = 6000;
#else
constexpr unsigned long long s_ulSEQUENCES = 2000;
constexpr int s_iBLOCKS = 20000;
#endif

class ModelThreadTest : public ::testing::Test {
 protected:
  ModelThreadTest() { CollectAlerts(); }
};

bool ReadsOnly(What what) {
  return what == What::eREAD || what == What::eREAD_BYTE || what == What::eSKIP || what == What::eGET;
}

bool WritesOnly(What what) {
  return what == What::eWRITE || what == What::eWRITE_BYTE || what == What::ePUT || what == What::eFLUSH;
}

// One stack on each end of a pipe, and what is to be done to either.
struct Plan {
  explicit Plan(unsigned long long seed) {
    Generator generator(seed);
    m_pipe.m_bPipe = m_pipe.m_bReaderWaits = m_pipe.m_bWriterWaits = true;
    m_pipe.m_ulPipeSize = 1 + generator.Below(40);
    for (const Operation& operation : generator.Begin(m_pipe)) {
      if (operation.m_eWhat == What::ePUSH_INPUT) m_input.push_back(operation.m_layer);
      if (operation.m_eWhat == What::ePUSH_OUTPUT) m_output.push_back(operation.m_layer);
    }
    while (m_reading.size() + m_writing.size() < 60) {
      const Operation operation = generator.Next(m_pipe);
      const What what = operation.m_eWhat;
      if (what == What::ePUSH_INPUT || what == What::ePUSH_OUTPUT || what == What::ePOP_INPUT ||
          what == What::ePOP_OUTPUT)
        break;
      if (ReadsOnly(what)) m_reading.push_back(operation);
      if (WritesOnly(what)) m_writing.push_back(operation);
    }
    Drain();
  }

  // The reader takes everything, or the writer never ends.
  void Drain() {
    Operation read;
    read.m_eWhat = What::eREAD;
    read.m_iNumber = 100000;
    read.m_iLevel = static_cast<int>(m_input.size());
    m_reading.push_back(read);
    read.m_iLevel = 0;
    m_reading.push_back(read);
    Operation close;
    close.m_eWhat = What::eCLOSE_OUTPUT;
    close.m_iLevel = static_cast<int>(m_output.size());
    m_writing.push_back(close);
  }

  Store m_pipe;
  std::vector<Layer> m_input, m_output;
  std::vector<Operation> m_reading, m_writing;
};

void Build(Side& side, const Plan& plan) {
  for (const Layer& layer : plan.m_input) side.PushInput(layer);
  for (const Layer& layer : plan.m_output) side.PushOutput(layer);
}

std::string Told(Operation& operation, const Bytes& outcome) {
  return Describe(operation) + " -> " + Printable(outcome) + "\n";
}

// What the model tells, and the operations that can be asked for.
std::string Expect(Reference& reference, std::vector<Operation>& operations) {
  std::string history;
  std::vector<Operation> asked;
  for (Operation operation : operations) {
    const Reference before = reference;
    try {
      history += Told(operation, Perform(reference, operation));
      asked.push_back(operation);
    } catch (const NotToBeAsked&) {
      reference = before;
    }
  }
  operations.swap(asked);
  return history;
}

std::string Observe(Side& side, std::vector<Operation>& operations) {
  std::string history;
  for (Operation& operation : operations) history += Told(operation, Perform(side, operation));
  return history;
}

void ComparePipe(unsigned long long seed) {
  Plan plan(seed);
  Store endless = plan.m_pipe;
  endless.m_ulPipeSize = ~0ULL;
  Reference reference(endless);
  Build(reference, plan);
  const std::string written = Expect(reference, plan.m_writing);
  const std::string read = Expect(reference, plan.m_reading);  // of a closed pipe that holds it all

  Subject subject(plan.m_pipe, "");
  subject.WaitForEver();
  Build(subject, plan);
  std::string writtenIndeed;
  std::string readIndeed;
  std::thread writer([&] { writtenIndeed = Observe(subject, plan.m_writing); });
  readIndeed = Observe(subject, plan.m_reading);
  writer.join();
  ASSERT_EQ(writtenIndeed, written) << "OXACORE_MODEL_SEED=" << seed;
  ASSERT_EQ(readIndeed, read) << "OXACORE_MODEL_SEED=" << seed;
}

TEST_F(ModelThreadTest, PipeBetweenTwoThreads) {
  if (const char* const seed = std::getenv("OXACORE_MODEL_SEED"))
    return ComparePipe(std::strtoull(seed, nullptr, 10));
  for (unsigned long long seed = 1; seed <= s_ulSEQUENCES && !HasFatalFailure(); ++seed) ComparePipe(seed);
}

// Bytes that tell their place: the number of each pair of bytes, its low byte first.
constexpr std::size_t s_uFILE_SIZE = 40000;

Bytes MakePlaces() {
  Bytes bytes;
  for (unsigned int number = 0; bytes.size() < s_uFILE_SIZE; ++number) {
    bytes += static_cast<char>(number & 255U);
    bytes += static_cast<char>(number >> 8U);
  }
  return bytes;
}

std::size_t NumberAt(const Bytes& bytes, std::size_t place) {
  return static_cast<unsigned char>(bytes[place]) + 256U * static_cast<unsigned char>(bytes[place + 1]);
}

// Whether `block`, of at least four bytes, is one piece of `places`.
bool IsOnePiece(const Bytes& places, const Bytes& block) {
  const std::size_t even = 2 * NumberAt(block, 0);
  const std::size_t odd = 2 * NumberAt(block, 1) - 1;
  return (even < places.size() && places.compare(even, block.size(), block) == 0) ||
         (odd < places.size() && places.compare(odd, block.size(), block) == 0);
}

// A file with two filters on either side, all of which have locks or need none.
class SharedFile {
 public:
  explicit SharedFile(const std::string& name)
      : m_file(name, BinaryFileStream::READ_WRITE_MODE, BinaryFileStream::eCREATE_ALWAYS) {
    m_file.Write(m_places.data(), m_places.size());
  }

  const Bytes m_places = MakePlaces();
  BinaryFileStream m_file;
  BufferedBinaryInputStream m_lowerInput{m_file, 64};
  DataInputStream m_dataInput{m_lowerInput};
  BufferedBinaryInputStream m_input{m_dataInput, 7};
  BufferedBinaryOutputStream m_lowerOutput{m_file, 50};
  DataOutputStream m_dataOutput{m_lowerOutput};
  BufferedBinaryOutputStream m_output{m_dataOutput, 9};
};

void ReadBlocks(SharedFile& shared, std::atomic<int>& torn) {
  std::mt19937_64 random(1);
  for (int turn = 0; turn < s_iBLOCKS; ++turn) {
    Bytes block(4 + random() % 60, '?');
    const long long got = shared.m_input.Read(block.data(), static_cast<long long>(block.size()));
    if (got < 4) continue;
    block.resize(static_cast<std::size_t>(got));
    if (!IsOnePiece(shared.m_places, block)) ++torn;
  }
}

// Writes what stands there already, so that the file stays the same as long as each block gets to its place.
void WriteBlocks(SharedFile& shared) {
  std::mt19937_64 random(2);
  for (int turn = 0; turn < s_iBLOCKS; ++turn) {
    const std::size_t place = random() % (s_uFILE_SIZE - 200);
    shared.m_file.SetOutputPos(static_cast<long long>(place), BinaryFileStream::eFROM_BEGIN);
    for (std::size_t done = 0; done < 90;) {
      const std::size_t size = 1 + random() % 30;
      shared.m_output.Write(shared.m_places.data() + place + done, size);
      done += size;
    }
  }
  shared.m_output.Flush();
}

void MoveInput(SharedFile& shared) {
  std::mt19937_64 random(3);
  for (int turn = 0; turn < s_iBLOCKS; ++turn) {
    shared.m_file.SetInputPos(static_cast<long long>(random() % s_uFILE_SIZE), BinaryFileStream::eFROM_BEGIN);
    if (random() % 8 == 0) shared.m_file.SetEndOfFile(0, BinaryFileStream::eFROM_END);
    if (random() % 4 == 0) shared.m_file.Skip(random() % 100);
    if (random() % 4 == 0) shared.m_input.Skip(random() % 100);
    if (random() % 4 == 0) shared.m_input.AvailableBytes();
  }
}

TEST_F(ModelThreadTest, MovesNeverTearABlock) {
  const TestSupport::TemporaryFolder folder;
  SharedFile shared(folder.File("places"));
  std::atomic<int> torn{0};
  TestSupport::Together(3, [&](int thread) {
    if (thread == 0) ReadBlocks(shared, torn);
    if (thread == 1) WriteBlocks(shared);
    if (thread == 2) MoveInput(shared);
  });
  EXPECT_EQ(torn, 0);
  shared.m_file.Close();
  EXPECT_TRUE(TestSupport::ReadFile(folder.File("places")) == shared.m_places);
}

// Each byte of a record tells which one of the eight it is.
constexpr std::size_t s_uRECORD = 8;

void WriteRecords(SharedFile& shared, std::size_t number) {
  for (; number != 0; --number) {
    Bytes record;
    for (std::size_t place = 0; place < s_uRECORD; ++place) record += static_cast<char>(place);
    shared.m_output.Write(record.data(), record.size());
  }
}

// To where the output stands: all that the filters hold is written out, on this thread.
void FlushByMoving(SharedFile& shared) {
  for (int turn = 0; turn < s_iBLOCKS; ++turn) shared.m_file.SetOutputPos(0, BinaryFileStream::eFROM_END);
}

std::size_t CountAskew(const Bytes& records) {
  std::size_t askew = 0;
  for (std::size_t place = 0; place < records.size(); ++place)
    if (static_cast<std::size_t>(records[place]) != place % s_uRECORD) ++askew;
  return askew;
}

TEST_F(ModelThreadTest, MovesNeverLoseARecord) {
  const TestSupport::TemporaryFolder folder;
  const std::string name = folder.File("records");
  SharedFile shared(name);
  shared.m_file.SetEndOfFile(0, BinaryFileStream::eFROM_BEGIN);
  constexpr std::size_t records = static_cast<std::size_t>(s_iBLOCKS) * 3;
  TestSupport::Together(
      3, [&](int thread) { thread == 0 ? FlushByMoving(shared) : WriteRecords(shared, records); });
  shared.m_output.Close();
  const Bytes content = TestSupport::ReadFile(name);
  EXPECT_EQ(content.size(), 2 * records * s_uRECORD);
  EXPECT_EQ(CountAskew(content), 0U);
}

// Whoever skips while others read may meet the end, and that is a result and no error.
TEST_F(ModelThreadTest, SkippingBesideAReaderStaysInTheFile) {
  const TestSupport::TemporaryFolder folder;
  SharedFile shared(folder.File("places"));
  std::atomic<int> errors{0};
  TestSupport::Together(3, [&](int thread) {
    for (int turn = 0; turn < s_iBLOCKS * 20; ++turn) {
      try {
        if (thread == 0) shared.m_file.SetInputPos(-30, BinaryFileStream::eFROM_END);
        if (thread == 1) shared.m_file.Read();
        if (thread == 2) shared.m_file.Skip(20);
      } catch (const IOError&) {
        ++errors;
      }
    }
  });
  EXPECT_EQ(errors, 0);
}

// Anything at any time: all that may come of it are errors of streams.
void DoAnything(SharedFile& shared, const std::string& name, unsigned long long seed) {
  std::mt19937_64 random(seed);
  for (int turn = 0; turn < s_iBLOCKS / 4; ++turn) {
    Bytes block(random() % 100, 'x');
    const auto size = static_cast<long long>(block.size());
    try {
      switch (random() % 12) {
        case 0:
          shared.m_file.Open(name, static_cast<unsigned int>(1 + random() % 3),
                             BinaryFileStream::eOPEN_ALWAYS);
          break;
        case 1:
          shared.m_file.Close();
          break;
        case 2:
          shared.m_input.Read(block.data(), size);
          break;
        case 3:
          shared.m_output.Write(block.data(), block.size());
          break;
        case 4:
          shared.m_file.SetInputPos(size, BinaryFileStream::eFROM_BEGIN);
          break;
        case 5:
          shared.m_file.SetOutputPos(-size, BinaryFileStream::eFROM_END);
          break;
        case 6:
          shared.m_file.SetEndOfFile(-size, BinaryFileStream::eFROM_END);
          break;
        case 7:
          shared.m_input.Skip(block.size());
          break;
        case 8:
          shared.m_output.Flush();
          break;
        case 9:
          shared.m_input.Read();
          break;
        case 10:
          shared.m_file.GetFileName();
          break;
        default:
          shared.m_input.AvailableBytes();
      }
    } catch (const IOError&) {
    }
  }
}

TEST_F(ModelThreadTest, FilesAreOpenedAndClosedUnderTheirUsers) {
  const TestSupport::TemporaryFolder folder;
  const std::string name = folder.File("places");
  SharedFile shared(name);
  TestSupport::Together(3, [&](int thread) {
    DoAnything(shared, name, static_cast<unsigned long long>(thread));
    TakeWarningsOfThread();
  });
  ASSERT_TRUE(shared.m_file.Open(name, BinaryFileStream::READ_WRITE_MODE, BinaryFileStream::eOPEN_ALWAYS));
  shared.m_file.SetEndOfFile(0,
                             BinaryFileStream::eFROM_BEGIN);  // writes out what the filters still hold before
  shared.m_output.Write("after", 5);
  shared.m_output.Flush();
  EXPECT_EQ(TestSupport::ReadFile(name), "after");
}

}  // namespace
