// The variables of real frames, by each compiler that is there, with and without optimisation.
#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <regex>
#include <utility>

#include "KnownFrames.h"

namespace {

using namespace OxaTest;
using Oxa::Core::AlertData;

const char* const sNO_ADDRESS = "{Failed to Determine Address}";

std::map<std::string, KnownFrame>& Seen() {
  static std::map<std::string, KnownFrame> s_seen;
  return s_seen;
}

struct Module {
  const char* name;
  const char* path;
  bool optimised;
  bool gaps;  // the compiler's lists of places leave out the one that a call returns to
};

std::ostream& operator<<(std::ostream& out, const Module& module) { return out << module.name; }

// A pointer is somewhere.
std::string Shown(const std::string& value) {
  static const std::regex s_somewhere("0x[0-9a-f]{5,}");
  return std::regex_replace(value, s_somewhere, "0x@");
}

class KnownVariables : public testing::TestWithParam<Module> {
 protected:
  void SetUp() override {
    Seen().clear();
    ASSERT_TRUE(RunKnown(GetParam().path, [](const char* function) { Seen()[function] = LookAt(function); }));
  }

  const KnownFrame& Frame(const std::string& function) {
    const KnownFrame& frame = Seen()[function];
    EXPECT_EQ(function, frame.m_sFunction) << "its frame wasn't found";
    return frame;
  }

  // All of the variables, with their types, and no others. Optimised code may have lost values; what it shows is right.
  void Expect(const std::string& function, const AlertData& types, const AlertData& values) {
    const KnownFrame& frame = Frame(function);
    EXPECT_EQ(types, frame.m_types) << function;
    int lost = 0;
    for (const auto& [name, value] : values) {
      const auto found = frame.m_values.find(name);
      ASSERT_NE(frame.m_values.end(), found) << function << ": " << name;
      if (MayBeLost() && found->second.find(sNO_ADDRESS) != std::string::npos)
        ++lost;
      else
        EXPECT_EQ(value, Shown(found->second)) << function << ": " << name;
    }
    EXPECT_EQ(values.size(), frame.m_values.size()) << function;
    if (!GetParam().optimised) {
      EXPECT_GE(1, lost) << function;
    }
  }

  static bool MayBeLost() { return GetParam().optimised || GetParam().gaps; }
};

const std::string sSTRING = "std::basic_string<char,std::char_traits<char>,std::allocator<char> >";
const std::string sWIDE = "std::basic_string<wchar_t,std::char_traits<wchar_t>,std::allocator<wchar_t> >";
const std::string sSENSOR =
    "{Known::Base {long m_iBase = 7}, Known::Middle {Known::Shared {long m_iShared = 99}, long m_iMiddle = "
    "5}, " +
    sSTRING +
    " m_sName = \"pt100\", float m_dValue = 1.5, Known::EMode m_eMode = eRUNNING, Known::Second m_second = "
    "{Known::Third m_third = {Known::Fourth m_fourth = {...}, short m_sThird = -2}}, unsigned long m_uSmall "
    "= 5, "
    "unsigned long m_uNext = 17, long m_iSigned = -3, Known::Sensor * m_pNext = 0x0, bool m_bOn = true, "
    "{long m_iWord = 1065353216, float m_fWord = 1}}";

TEST_P(KnownVariables, Numbers) {
  Expect("Numbers",
         {{"s", "short"},
          {"us", "unsigned short"},
          {"i", "long"},
          {"u", "unsigned long"},
          {"l", "long"},
          {"ul", "unsigned long"},
          {"ll", "_int64"},
          {"ull", "unsigned _int64"},
          {"yes", "bool"},
          {"no", "bool"},
          {"f", "float"},
          {"d", "float"},
          {"ld", "float"},
          {"widest", "_int128"},
          {"result", "HRESULT"},
          {"complex", "std::complex<double>"}},
         {{"s", "-300"},
          {"us", "60000"},
          {"i", "-100000"},
          {"u", "4000000000"},
          {"l", "-5"},
          {"ul", "5"},
          {"ll", "-6"},
          {"ull", "6"},
          {"yes", "true"},
          {"no", "false"},
          {"f", "1.25"},
          {"d", "0.1"},
          {"ld", "2.5"},
          {"widest", "-120892581961462917470617600000"},
          {"result", "d (Permission denied)"},
          {"complex", "{COMPLEX _M_value = COMPLEX: 3fb999999999999ac072c00000000000}"}});
}

TEST_P(KnownVariables, Characters) {
  Expect(
      "Characters",
      {{"c", "char"},
       {"sc", "char"},
       {"uc", "unsigned char"},
       {"wc", "UNICODE_CHAR"},
       {"c16", "UNICODE_CHAR"},
       {"c32", "UNICODE_CHAR"}},
      {{"c", "65 'A'"}, {"sc", "-5"}, {"uc", "200"}, {"wc", "87 'W'"}, {"c16", "120 'x'"}, {"c32", "8364"}});
}

TEST_P(KnownVariables, Texts) {
  Expect("Texts",
         {{"text", "char *"},
          {"none", "char *"},
          {"wide", "wchar_t *"},
          {"nowhere", "char *"},
          {"name", sSTRING},
          {"wideName", sWIDE + " &"},
          {"longer", sSTRING},
          {"empty", sSTRING},
          {"array", "char [16]"}},
         {{"text", "0x@ \"hello\""},
          {"none", "0x@ \"not none\""},
          {"wide", "0x@ \"wide\""},
          {"nowhere", "0x8 \"????\""},
          {"name", "\"by value\""},
          {"wideName", "\"w\xc3\xa4\""},
          {"longer", "\"" + std::string(256, 'x') + "\"..."},
          {"empty", "\"\""},
          {"array", "\"in place\""}});
}

TEST_P(KnownVariables, Pointers) {
  Expect("Pointers",
         {{"pVoid", "void *"},
          {"pInt", "long *"},
          {"ppInt", "long **"},
          {"pFunction", "long (*)(long,char *)"},
          {"pSensor", "Known::Sensor *"},
          {"pMember", "long Known::Fourth::*"},
          {"null", "[NO TYPE]"}},
         {{"pVoid", "0x@"},
          {"pInt", "0x@"},
          {"ppInt", "0x@"},
          {"pFunction", "0x0"},
          {"pSensor", "0x@"},
          {"pMember", "0x0"},
          {"null", "0x0"}});
}

TEST_P(KnownVariables, References) {
  Expect("References",
         {{"number", "long &"},
          {"text", sSTRING + " &"},
          {"moved", sSTRING + " &&"},
          {"object", "Known::Fourth &"},
          {"nowhere", "long &"},
          {"mode", "Known::EMode &"}},
         {{"number", "1"},
          {"text", "\"text \"quoted\"\\n\""},
          {"moved", "\"moved\""},
          {"object", "{long m_iDeepest = 4}"},
          {"nowhere", "{Uninitialized}"},
          {"mode", "eRUNNING"}});
}

TEST_P(KnownVariables, Arrays) {
  Expect("Arrays",
         {{"first", "long"},
          {"flat", "long [4]"},
          {"deep", "short [2][3]"},
          {"many", "float [20]"},
          {"objects", "Known::Fourth [2]"},
          {"texts", "char * [2]"}},
         {{"first", "1"},
          {"flat", "{1, 2, 3, -4}"},
          {"deep", "{{1, 2, 3}, {4, 5, 6}}"},
          {"many", "{0.5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, ...}"},
          {"objects", "{{long m_iDeepest = 4}, {long m_iDeepest = 4}}"},
          {"texts", "{0x@ \"one\", 0x@ \"two\"}"}});
}

TEST_P(KnownVariables, Enumerations) {
  Expect("Enumerations",
         {{"mode", "Known::EMode"},
          {"color", "Known::EColor"},
          {"none", "Known::EMode"},
          {"broken", "Known::EMode"}},
         {{"mode", "eRUNNING"}, {"color", "eGREEN"}, {"none", "3"}, {"broken", "eBROKEN"}});
}

// The stream and the error system's own objects aren't there.
TEST_P(KnownVariables, Objects) {
  Expect("Objects",
         {{"sensor", "Known::Sensor"},
          {"same", "Known::Sensor &"},
          {"hidden", "Known::(anonymous namespace)::Hidden"}},
         {{"sensor", sSENSOR}, {"same", sSENSOR}, {"hidden", "{long m_lHidden = 12}"}});
}

TEST_P(KnownVariables, InnerBlocksHideOuterOnes) {
  Expect("Blocks", Frame("Blocks").m_types, Frame("Blocks").m_values);
  const AlertData& types = Frame("Blocks").m_types;
  const AlertData& values = Frame("Blocks").m_values;
  ASSERT_EQ(1U, values.count("shadowed"));
  EXPECT_EQ("205", values.at("shadowed"));
  EXPECT_EQ("long", types.at("shadowed"));
  EXPECT_EQ("42", values.at("s_iCalls"));
  EXPECT_EQ(1U, values.count("outer"));
}

TEST_P(KnownVariables, OfTheThread) {
  const AlertData& values = Frame("Blocks").m_values;
  if (GetParam().optimised && values.count("t_iCalls") == 0)
    GTEST_SKIP() << "the compiler tells nothing of it";
  if (!GetParam().optimised || values.at("t_iCalls") != sNO_ADDRESS) {
    EXPECT_EQ("77", values.at("t_iCalls"));
  }
}

TEST_P(KnownVariables, OfAFunctionThatWasPutIntoAnother) {
  const KnownFrame& frame = Frame("PutInto");
  EXPECT_EQ((AlertData{{"inner", "long"}, {"what", sSTRING + " &"}, {"twice", "long"}}), frame.m_types);
  // Of constants and temporaries the compilers don't always tell where they are.
  for (const auto& [name, value] : AlertData{{"inner", "3"}, {"what", "\"what\""}, {"twice", "6"}})
    if (frame.m_values.at(name) != sNO_ADDRESS) {
      EXPECT_EQ(value, frame.m_values.at(name)) << name;
    }
  if (!GetParam().optimised) {
    EXPECT_EQ("6", frame.m_values.at("twice"));
  }
}

TEST_P(KnownVariables, OfAMethod) {
  Expect("Method", {{"this", "Known::Sensor *"}, {"p_iFactor", "long"}, {"local", "long"}},
         {{"this", "0x@"}, {"p_iFactor", "21"}, {"local", "42"}});
}

TEST_P(KnownVariables, ThisOfTheErrorSystemIsLeftOut) {
  Expect("Describe", {{"beside", "long"}}, {{"beside", "5"}});
}

std::vector<Module> Modules() {
  std::vector<Module> modules;
#ifdef KNOWN_BY_GXX
  modules.push_back({"gxx", KNOWN_BY_GXX, false, false});
  modules.push_back({"gxxOlder", KNOWN_BY_GXX_OLDER, false, false});
  modules.push_back({"gxxOptimised", KNOWN_BY_GXX_OPTIMISED, true, false});
  modules.push_back({"gxxDebugFrame", KNOWN_BY_GXX_DEBUG_FRAME, true, false});
#endif
#ifdef KNOWN_BY_CLANG
  modules.push_back({"clang", KNOWN_BY_CLANG, false, true});
  modules.push_back({"clangOptimised", KNOWN_BY_CLANG_OPTIMISED, true, true});
#endif
  return modules;
}

INSTANTIATE_TEST_SUITE_P(By, KnownVariables, testing::ValuesIn(Modules()),
                         [](const auto& of) { return std::string(of.param.name); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(KnownVariables);

}  // namespace
