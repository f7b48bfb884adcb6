// Threads that read, write and move one file through filters: nobody waits for ever, and every byte is one that was
// written.
#include <atomic>
#include <chrono>
#include <thread>

#include "Support/Together.h"
#include "io/FileStreams.h"

using namespace IoTests;

namespace {

#ifdef OXACORE_SOAK
constexpr std::chrono::seconds LENGTH(60);
#else
constexpr std::chrono::seconds LENGTH(1);
#endif
constexpr int iLEAST_ROUNDS = 20;

class BinaryFileStreamStressTest : public FileStreamTest {
 protected:
  BinaryFileStreamStressTest()
      : m_file(m_sName, File::READ_WRITE_MODE, File::eCREATE_ALWAYS),
        m_innerInput(m_file, 64),
        m_outerInput(m_innerInput, 16),
        m_innerOutput(m_file, 64),
        m_outerOutput(m_innerOutput, 16) {}

  // Each action on a thread of its own, over and over, until all have had their time and their rounds.
  template <class... Actions>
  void Run(const Actions&... actions) {
    const std::function<void(int)> all[] = {actions...};
    constexpr int iCOUNT = sizeof...(Actions);
    std::atomic<int> missing{iCOUNT};
    const auto end = std::chrono::steady_clock::now() + LENGTH;
    TestSupport::Together(iCOUNT, [&](int index) {
      bool bMissing = true;
      for (int round = 0; missing > 0; ++round) {
        all[index](round);
        if (bMissing && round >= iLEAST_ROUNDS && std::chrono::steady_clock::now() > end) {
          bMissing = false;
          --missing;
        }
      }
    });
  }

  void ReadSome(int round) {
    char bytes[100];
    const long long count = m_outerInput.Read(bytes, 1 + round % 100);
    for (long long i = 0; i < count; ++i) ASSERT_EQ('x', bytes[i]);
    const int byte = m_outerInput.Read();
    ASSERT_TRUE(byte == 'x' || byte == -1);
  }

  void WriteSome(int round) {
    const std::string bytes(1 + round % 100, 'x');
    WriteText(m_outerOutput, bytes);
    m_outerOutput.Write('x');
    if (round % 7 == 0) m_outerOutput.Flush();
  }

  File m_file;
  BufferedBinaryInputStream m_innerInput;
  BufferedBinaryInputStream m_outerInput;
  BufferedBinaryOutputStream m_innerOutput;
  BufferedBinaryOutputStream m_outerOutput;
};

// Runs `action`; that the file was closed, or shorter, meanwhile is no fault.
template <class Action>
void Bear(const Action& action) {
  try {
    action();
  } catch (XIOFileNotOpen&) {
  } catch (XIOBadFilePosition&) {
  }
}

}  // namespace

TEST_F(BinaryFileStreamStressTest, ReadersWritersAndMoversAllGetOn) {
  Run([this](int round) { ReadSome(round); }, [this](int round) { WriteSome(round); },
      [this](int round) {
        Bear([&] { m_file.SetInputPos(round % 50, File::eFROM_BEGIN); });
        Bear([&] { m_file.SetInputPos(-(round % 20), File::eFROM_END); });
        Bear([&] { m_file.SetOutputPos(-(round % 30), File::eFROM_END); });
        Bear([&] { m_file.Skip(static_cast<unsigned long long>(round % 40)); });
      },
      [this](int round) {
        Bear([&] { m_file.SetEndOfFile(round % 200, File::eFROM_BEGIN); });
        EXPECT_LE(0, m_file.GetFileSize());
        EXPECT_TRUE(m_file.IsOpen());
        EXPECT_EQ(m_sName, m_file.GetFileName());
      });
  m_outerOutput.Close();
  const std::string content = Content();
  EXPECT_EQ(std::string(content.size(), 'x'), content);
}

TEST_F(BinaryFileStreamStressTest, AFileThatIsOpenedAndClosedUnderTheirHands) {
  Run([this](int round) { Bear([&] { ReadSome(round); }); },
      [this](int round) { Bear([&] { WriteSome(round); }); },
      [this](int round) {
        Bear([&] { m_file.SetOutputPos(round % 50, File::eFROM_BEGIN); });
        Bear([&] { m_file.SetInputPos(round % 50, File::eFROM_BEGIN); });
        Bear([&] { m_file.SetEndOfFile(0, File::eFROM_BEGIN); });
      },
      [this](int) { m_file.Open(m_sName, File::READ_WRITE_MODE, File::eOPEN_ALWAYS); },
      [this](int round) {
        if (round % 50 == 0) m_file.Close();
        m_file.Open(m_sName, File::READ_WRITE_MODE, File::eOPEN_ALWAYS);
      });
  m_file.Close();
  const std::string content = Content();
  EXPECT_EQ(std::string(content.size(), 'x'), content);
}
