// A module whose variables are known, in ten functions; compiled by each compiler that is there, with and without
// optimisation. What each function holds stands in KnownVariableTests.cpp.
#include <complex>
#include <cstdint>
#include <sstream>
#include <string>

#define KNOWN_FUNCTION __attribute__((noinline, used)) static

// Only the names are those of the library's classes.
namespace Oxa::Core {
struct Error {
  int m_iCode = 3;
};
struct CodeContext {
  int m_iLine = 4;
  __attribute__((noinline)) int Describe() const;
};
}  // namespace Oxa::Core

using HRESULT = int;

namespace Known {

using Look = void (*)(const char* function);
Look s_look = nullptr;

// Keeps a value where it is until here.
template <class Value>
void Keep(const Value& value) {
  asm volatile("" : : "g"(&value) : "memory");
}

enum EMode { eIDLE, eRUNNING = 5, eBROKEN = -1 };
enum class EColor : unsigned char { eRED, eGREEN = 200 };

struct Base {
  virtual ~Base() = default;
  int m_iBase = 7;
};

struct Shared {
  int m_iShared = 99;
};

struct Middle : virtual Shared {
  int m_iMiddle = 5;
};

struct Fourth {
  int m_iDeepest = 4;
};
struct Third {
  Fourth m_fourth;
  short m_sThird = -2;
};
struct Second {
  Third m_third;
};

struct Sensor : Base, Middle {
  std::string m_sName = "pt100";
  double m_dValue = 1.5;
  EMode m_eMode = eRUNNING;
  Second m_second;
  unsigned m_uSmall : 3;
  unsigned m_uNext : 5;
  int m_iSigned : 4;
  static int s_iCount;
  Sensor* m_pNext = nullptr;
  bool m_bOn = true;
  union {
    int m_iWord;
    float m_fWord;
  };

  Sensor() : m_uSmall(5), m_uNext(17), m_iSigned(-3), m_iWord(0x3f800000) {}
  __attribute__((noinline)) int Method(int p_iFactor);
};

int Sensor::s_iCount = 3;

namespace {
struct Hidden {
  long m_lHidden = 12;
};
}  // namespace

KNOWN_FUNCTION double Numbers(short s, unsigned short us, int i, unsigned u, long l, unsigned long ul,
                              long long ll, unsigned long long ull, bool yes, bool no, float f, double d) {
  long double ld = 2.5L + i * 0;
  __extension__ __int128 widest = static_cast<__int128>(i) << 80;
  HRESULT result = us - 59987;
  std::complex<double> complex(s, d);
  s_look("Numbers");
  Keep(ld), Keep(widest), Keep(result), Keep(complex);
  return s + us + i + u + static_cast<double>(l) + static_cast<double>(ul) + static_cast<double>(ll) +
         static_cast<double>(ull) + yes + no + static_cast<double>(f) + d;
}

KNOWN_FUNCTION int Characters(char c, signed char sc, unsigned char uc, wchar_t wc, char16_t c16,
                              char32_t c32) {
  s_look("Characters");
  return c + sc + uc + static_cast<int>(wc) + c16 + static_cast<int>(c32);
}

KNOWN_FUNCTION std::size_t Texts(const char* text, char* none, const wchar_t* wide, const char* nowhere,
                                 std::string name, const std::wstring& wideName) {
  std::string longer(300, 'x');
  std::string empty;
  char array[16] = "in place";
  s_look("Texts");
  Keep(longer), Keep(empty), Keep(array), Keep(name), Keep(wideName);
  return text[0] + (none != nullptr) + static_cast<std::size_t>(wide[0]) + (nowhere != nullptr);
}

KNOWN_FUNCTION int Pointers(void* pVoid, int* pInt, int** ppInt, int (*pFunction)(int, char*),
                            Sensor* pSensor, int Fourth::*pMember, std::nullptr_t null) {
  s_look("Pointers");
  Keep(null);
  return (pVoid != nullptr) + *pInt + **ppInt + (pFunction != nullptr) + (pSensor != nullptr) +
         (pMember != nullptr);
}

KNOWN_FUNCTION int References(const int& number, std::string& text, std::string&& moved, Fourth& object,
                              int& nowhere, EMode& mode) {
  s_look("References");
  Keep(text), Keep(moved);
  return number + object.m_iDeepest + (&nowhere != &number) + mode;
}

KNOWN_FUNCTION int Arrays(int first) {
  int flat[4] = {first, 2, 3, -4};
  short deep[2][3] = {{1, 2, 3}, {4, 5, 6}};
  double many[20] = {0.5};
  Fourth objects[2];
  const char* texts[2] = {"one", "two"};
  s_look("Arrays");
  Keep(flat), Keep(deep), Keep(many), Keep(objects), Keep(texts);
  return flat[0];
}

KNOWN_FUNCTION int Enumerations(EMode mode, EColor color, EMode none) {
  EMode broken = mode == eRUNNING ? eBROKEN : eIDLE;
  s_look("Enumerations");
  Keep(broken);
  return mode + static_cast<int>(color) + none;
}

KNOWN_FUNCTION int Objects(Sensor sensor, const Sensor& same) {
  Hidden hidden;
  std::ostringstream stream;
  Oxa::Core::Error error;
  Oxa::Core::Error* pError = &error;
  Oxa::Core::CodeContext context;
  s_look("Objects");
  Keep(hidden), Keep(stream), Keep(error), Keep(pError), Keep(context), Keep(sensor);
  return same.m_iBase;
}

__attribute__((always_inline)) inline int PutInto(int inner, const std::string& what) {
  int twice = inner * 2;
  s_look("PutInto");
  Keep(twice);
  return twice + static_cast<int>(what.size()) + inner;
}

KNOWN_FUNCTION int Blocks(int outer) {
  static int s_iCalls = 40;
  static thread_local int t_iCalls = 77;
  s_iCalls = 42;
  int sum = t_iCalls - 77;
  for (int index = 5; index < 6; ++index) {
    int shadowed = index + 100;
    {
      int shadowed = index + 200;
      s_look("Blocks");
      Keep(shadowed);
    }
    Keep(shadowed);
    sum += index;
  }
  int later = PutInto(outer, "what");
  return sum + s_iCalls + t_iCalls + later;
}

int Sensor::Method(int p_iFactor) {
  int local = p_iFactor * 2;
  s_look("Method");
  Keep(local);
  return local + m_iBase;
}

}  // namespace Known

int Oxa::Core::CodeContext::Describe() const {
  int beside = m_iLine + 1;
  Known::s_look("Describe");
  Known::Keep(beside);
  return m_iLine;
}

extern "C" __attribute__((visibility("default"))) int RunKnownVariables(Known::Look look) {
  using namespace Known;
  s_look = look;
  int one = 1;
  int* pOne = &one;
  char none[] = "not none";
  Keep(none);
  std::string text = "text \"quoted\"\n";
  Sensor sensor;
  Fourth fourth;
  EMode mode = eRUNNING;
  int* volatile pNowhere = reinterpret_cast<int*>(16);  // NOLINT(performance-no-int-to-ptr)
  double sum = Numbers(-300, 60000, -100000, 4000000000U, -5, 5, -6, 6, true, false, 1.25F, 0.1);
  sum += Characters('A', -5, 200, L'W', u'x', U'\u20ac');
  sum += static_cast<double>(
      Texts("hello", none, L"wide", reinterpret_cast<const char*>(8), "by value", L"w\u00e4"));  // NOLINT
  sum += Pointers(&one, pOne, &pOne, nullptr, &sensor, &Fourth::m_iDeepest, nullptr);
  sum += References(one, text, std::string("moved"), fourth, *pNowhere, mode);
  sum += Arrays(1);
  sum += Enumerations(eRUNNING, EColor::eGREEN, static_cast<EMode>(3));
  sum += Objects(sensor, sensor);
  sum += Blocks(3);
  sum += sensor.Method(21);
  sum += Oxa::Core::CodeContext().Describe();
  return sum > 0 ? 1 : 0;
}
