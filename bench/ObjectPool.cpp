// Memory of one size that comes and goes, and counts of users that go up and down.

#include <Infrastructure/OxaCore/ObjectPool.h>
#include <Infrastructure/OxaCore/RefCountedObject.h>

#include "BenchSupport.h"

#include <cstdlib>

#ifdef OXA_PEER_BOOST
#include <boost/pool/singleton_pool.hpp>
#endif
#ifdef OXA_PEER_POCO
#include <Poco/AutoPtr.h>
#include <Poco/MemoryPool.h>
#include <Poco/RefCountedObject.h>
#endif

namespace {

constexpr std::size_t g_SLOT_SIZE = 64;

class Pool : public Oxa::Core::ObjectPoolBase {
 public:
  Pool() : ObjectPoolBase(g_SLOT_SIZE, 1000) {}
  void Free(void* object) { Deallocate(object); }

 protected:
  void DestroyObject(void*) override {}
};

void OursPool(benchmark::State& state) {
  static Pool pool;
  for (auto _ : state) {
    void* const object = pool.AllocateObjectMemory();
    benchmark::DoNotOptimize(object);
    pool.Free(object);
  }
}

OXA_BENCH("Object pool pair", "Ours", OursPool);
OXA_BENCH("Object pool pair", "Ours", OursPool)->Threads(2);

void MallocPool(benchmark::State& state) {
  for (auto _ : state) {
    void* const object = std::malloc(g_SLOT_SIZE);
    benchmark::DoNotOptimize(object);
    std::free(object);
  }
}

OXA_BENCH("Object pool pair", "malloc", MallocPool);
OXA_BENCH("Object pool pair", "malloc", MallocPool)->Threads(2);

#ifdef OXA_PEER_BOOST
struct PoolTag {};

void BoostPool(benchmark::State& state) {
  using Singleton = boost::singleton_pool<PoolTag, g_SLOT_SIZE>;
  for (auto _ : state) {
    void* const object = Singleton::malloc();
    benchmark::DoNotOptimize(object);
    Singleton::free(object);
  }
}

OXA_BENCH("Object pool pair", "boost", BoostPool);
OXA_BENCH("Object pool pair", "boost", BoostPool)->Threads(2);
#endif

#ifdef OXA_PEER_POCO
void PocoPool(benchmark::State& state) {
  static Poco::MemoryPool pool(g_SLOT_SIZE, 1000);
  for (auto _ : state) {
    void* const object = pool.get();
    benchmark::DoNotOptimize(object);
    pool.release(object);
  }
}

OXA_BENCH("Object pool pair", "Poco", PocoPool);
OXA_BENCH("Object pool pair", "Poco", PocoPool)->Threads(2);
#endif

void OursCount(benchmark::State& state) {
  static Oxa::Core::RefCountedObject object;
  Oxa::Core::RefCountedObject* counted = &object;
  for (auto _ : state) {
    benchmark::DoNotOptimize(counted);  // so that the virtual calls stay virtual
    counted->AddRef();
    counted->Release();
  }
}

OXA_BENCH("Count pair", "Ours", OursCount);
OXA_BENCH("Count pair", "Ours", OursCount)->Threads(2);

#ifdef OXA_PEER_POCO
class PocoCounted : public Poco::RefCountedObject {};

void PocoCount(benchmark::State& state) {
  static Poco::AutoPtr<PocoCounted> holder(new PocoCounted);
  const PocoCounted* counted = holder.get();
  for (auto _ : state) {
    benchmark::DoNotOptimize(counted);
    counted->duplicate();
    counted->release();
  }
}

OXA_BENCH("Count pair", "Poco", PocoCount);
OXA_BENCH("Count pair", "Poco", PocoCount)->Threads(2);
#endif

}  // namespace
