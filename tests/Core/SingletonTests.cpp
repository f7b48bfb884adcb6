#include <Infrastructure/OxaCore/Singleton.h>

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

namespace {

using namespace Oxa::Core;

class Counted : public Singleton<Counted> {
 public:
  Counted() { ++s_iAlive; }
  ~Counted() override { --s_iAlive; }
  static std::atomic<int> s_iAlive;
};
std::atomic<int> Counted::s_iAlive{0};

class RecordingEntry : public ISingletonRegistryEntry {
 public:
  RecordingEntry(std::vector<int>& order, int number) : m_order(order), m_iNumber(number) {}
  ~RecordingEntry() override { SingletonRegistry::Unregister(this); }
  void Destroy() override {
    m_order.push_back(m_iNumber);
    // The registry's lock is not held meanwhile.
    SingletonRegistry::Unregister(this);
  }

 private:
  std::vector<int>& m_order;
  int m_iNumber;
};

TEST(Singleton, IsMadeAtFirstUseAndDestroyedByTheRegistry) {
  EXPECT_FALSE(Counted::IsInstantiated());
  Counted* const first = Counted::Instance();
  EXPECT_EQ(first, Counted::Instance());
  EXPECT_TRUE(Counted::IsInstantiated());
  EXPECT_EQ(1, Counted::s_iAlive);
  SingletonRegistry::DestroyAllSingletons();
  EXPECT_FALSE(Counted::IsInstantiated());
  EXPECT_EQ(0, Counted::s_iAlive);
}

TEST(Singleton, ThreadsGetOneObject) {
  std::vector<std::thread> threads;
  std::vector<Counted*> seen(8);
  for (Counted*& one : seen) threads.emplace_back([&one] { one = Counted::Instance(); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(1u, std::set<Counted*>(seen.begin(), seen.end()).size());
  EXPECT_EQ(1, Counted::s_iAlive);
}

TEST(SingletonRegistry, HoldsATwiceRegisteredEntryOnce) {
  std::vector<int> order;
  RecordingEntry entry(order, 1);
  SingletonRegistry::Register(&entry);
  SingletonRegistry::Register(&entry);
  SingletonRegistry::DestroyAllSingletons();
  EXPECT_EQ(std::vector<int>{1}, order);
}

TEST(SingletonRegistry, DestroysFirstRegisteredFirstAndOnce) {
  std::vector<int> order;
  RecordingEntry first(order, 1);
  RecordingEntry second(order, 2);
  SingletonRegistry::Register(&second);
  SingletonRegistry::Register(&first);
  SingletonRegistry::DestroyAllSingletons();
  SingletonRegistry::DestroyAllSingletons();
  EXPECT_EQ((std::vector<int>{2, 1}), order);
}

TEST(SingletonRegistry, UnknownEntryIsNoFault) {
  std::vector<int> order;
  RecordingEntry entry(order, 1);
  SingletonRegistry::Unregister(&entry);
  SingletonRegistry::DestroyAllSingletons();
  EXPECT_TRUE(order.empty());
}

}  // namespace
