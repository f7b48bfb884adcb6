#include <Infrastructure/OxaCore/Condition.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/ReadersWriterMutex.h>

#include <iostream>
#include <map>
#include <string>
#include <thread>

using namespace Oxa::Core;

// A cell for one value: whoever takes it waits until there is one.
class Cell {
 public:
  void Put(int value) {
    const Lock lock(m_changed);
    m_iValue = value;
    m_bFull = true;
    m_changed.Notify();
  }
  int Take() {
    const Lock lock(m_changed);
    while (!m_bFull) m_changed.Wait();  // a wake says "look again", never "it is so"
    m_bFull = false;
    return m_iValue;
  }

 private:
  Condition m_changed{true};  // guards what follows
  int m_iValue = 0;
  bool m_bFull = false;
};

// Many may look up at once; who misses something becomes the writer.
class Names {
 public:
  int NumberOf(const std::string& name) {
    const ReaderLock reading(m_rwMutex);
    if (m_numbers.count(name) == 0) {
      const WriterLock writing(m_rwMutex);  // upgrades; somebody may have been faster,
      m_numbers.emplace(name, static_cast<int>(m_numbers.size()));  // and then this does nothing
    }
    return m_numbers.at(name);
  }

 private:
  ReadersWriterMutex m_rwMutex;  // guards the numbers
  std::map<std::string, int> m_numbers;
};

int main() {
  InitializeOxaCore();
  Cell cell;
  std::thread other([&cell] { cell.Put(42); });
  std::cout << "taken: " << cell.Take() << '\n';
  other.join();
  Names names;
  std::cout << "Gain is number " << names.NumberOf("Gain") << '\n';
  ShutdownOxaCore();
}
