// The module whose debug data is damaged: small, and with something of every kind. It includes nothing, so that it can
// be unloaded again.
namespace {

using Look = void (*)();

enum EMode { eIDLE, eRUNNING = 5 };

struct Shared {
  int m_iShared = 9;
};

struct Base : virtual Shared {
  virtual ~Base() {}
  long m_lBase = 7;
};

struct Sensor : Base {
  const char* m_pName = "pt100";
  double m_dValue = 1.5;
  EMode m_eMode = eRUNNING;
  unsigned m_uSmall : 3;
  unsigned m_uNext : 5;
  Sensor* m_pNext = nullptr;
  union {
    int m_iWord;
    float m_fWord;
  };
  short m_sMany[2][3] = {{1, 2, 3}, {4, 5, 6}};

  Sensor() : m_uSmall(5), m_uNext(17), m_iWord(3) {}
  __attribute__((noinline)) int Method(Look look, int factor);
};

template <class Value>
void Keep(const Value& value) {
  asm volatile("" : : "g"(&value) : "memory");
}

__attribute__((always_inline)) inline int PutInto(Look look, int inner) {
  int twice = inner * 2;
  look();
  Keep(twice);
  return twice + inner;
}

int Sensor::Method(Look look, int factor) {
  int local = factor * 2;
  for (int index = 0; index < 1; ++index) {
    const int inner = local + index;
    look();
    Keep(inner);
  }
  return PutInto(look, local);
}

__attribute__((noinline)) int Values(Look look, int number, const Sensor& same, Sensor* pSensor, wchar_t wide,
                                     int (*pFunction)(int, char*), int Shared::*pMember) {
  static int s_iCalls = 0;
  ++s_iCalls;
  look();
  return number + pSensor->Method(look, same.m_iShared + wide) + (pFunction != nullptr) +
         (pMember != nullptr);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int RunDamaged(Look look) {
  Sensor sensor;
  return Values(look, 42, sensor, &sensor, L'W', nullptr, &Shared::m_iShared);
}
