// What the tests of dumps have in common: a process with threads and memory that they know.
#ifndef OXACORE_TESTS_DUMP_DUMPSCENE_H
#define OXACORE_TESTS_DUMP_DUMPSCENE_H

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>

#include "Dump/DumpReader.h"
#include "Platform/Dump.h"
#include "Support/Eventually.h"
#include "Support/TemporaryFolder.h"

namespace TestSupport {

namespace Platform = Oxa::Core::Platform;

// A sanitizer's terabytes of address space take all the time that they are given.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int iDUMP_TIME = 10000;
#else
constexpr int iDUMP_TIME = 60000;
#endif
constexpr unsigned uPOLICY_1 =
    Platform::eDUMP_SCAN_MEMORY | Platform::eDUMP_WITH_INDIRECTLY_REFERENCED_MEMORY;
constexpr unsigned uPOLICY_2 = Platform::eDUMP_WITH_DATA_SEGS | Platform::eDUMP_WITH_HANDLE_DATA |
                               Platform::eDUMP_WITH_UNLOADED_MODULES |
                               Platform::eDUMP_WITH_PRIVATE_READ_WRITE_MEMORY |
                               Platform::eDUMP_WITH_FULL_MEMORY_INFO | Platform::eDUMP_WITH_THREAD_INFO;
constexpr unsigned uPOLICY_3 = Platform::eDUMP_WITH_FULL_MEMORY | Platform::eDUMP_WITH_HANDLE_DATA |
                               Platform::eDUMP_WITH_UNLOADED_MODULES | Platform::eDUMP_WITH_FULL_MEMORY_INFO |
                               Platform::eDUMP_WITH_THREAD_INFO;

inline std::uint64_t AddressOf(const void* place) { return reinterpret_cast<std::uint64_t>(place); }

/// A thread with a name, a value on its stack that is known, and a pointer there to memory that nothing else points
/// to. It stands until the object goes.
class KnownThread {
 public:
  static constexpr std::uint64_t uMARK = 0x5ca1ab1e00000000ULL;
  static constexpr std::uint64_t uBEHIND = 0x0ddba11500000000ULL;

  explicit KnownThread(const std::string& name, std::uint64_t number = 0)
      : m_thread([this, name, number] { Stand(name, number); }) {
    Eventually([this] { return m_bStands.load(); });
  }
  KnownThread(const KnownThread&) = delete;
  KnownThread& operator=(const KnownThread&) = delete;
  ~KnownThread() {
    m_bEnd = true;
    m_thread.join();
  }

  std::uint32_t Id() const { return m_uId; }
  std::uint64_t Mark() const { return m_uMark; }       ///< the address of the value
  std::uint64_t Behind() const { return ~m_uBehind; }  ///< the address of the memory
  std::uint64_t Rounds() const { return m_uRounds; }   ///< it goes on to count while it stands

 private:
  void Stand(const std::string& name, std::uint64_t number) {
    const volatile std::uint64_t mark = uMARK + number;
    std::uint64_t* const volatile behind = new std::uint64_t(uBEHIND + number);
    pthread_setname_np(pthread_self(), name.c_str());
    m_uId = static_cast<std::uint32_t>(::syscall(SYS_gettid));
    m_uMark = reinterpret_cast<std::uint64_t>(&mark);
    m_uBehind = ~reinterpret_cast<std::uint64_t>(behind);
    m_bStands = true;
    while (!m_bEnd) {
      ++m_uRounds;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    delete behind;
  }

  std::uint32_t m_uId = 0;
  std::uint64_t m_uMark = 0;
  std::uint64_t m_uBehind = 0;  // complemented, so that this is no pointer to it
  std::atomic<std::uint64_t> m_uRounds{0};
  std::atomic<bool> m_bStands{false};
  std::atomic<bool> m_bEnd{false};
  std::thread m_thread;  // last: it uses the others
};

/// The ids of all threads of this process, as the system lists them.
inline std::set<std::uint32_t> ThreadIds() {
  std::set<std::uint32_t> ids;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task"))
    ids.insert(static_cast<std::uint32_t>(std::stoul(entry.path().filename().string())));
  return ids;
}

/// What lies in a file, which may be big.
inline DumpReader ReadDump(const std::string& file) {
  std::string bytes(std::filesystem::file_size(file), 0);
  std::ifstream(file, std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return DumpReader(std::move(bytes));
}

/// A dump of this process as it is.
inline DumpReader DumpNow(unsigned contents, const _EXCEPTION_POINTERS* pointers = nullptr,
                          Platform::DumpFilter filter = nullptr, void* parameter = nullptr) {
  const TemporaryFolder folder;
  const std::string name = folder.File("now.dmp");
  const int code = Platform::WriteDump(name.c_str(), pointers, contents, filter, parameter, iDUMP_TIME);
  if (code != 0) throw std::runtime_error("no dump: " + std::to_string(code));
  return ReadDump(name);
}

}  // namespace TestSupport

#endif
