// The short road of an alert's XML against the general one.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/XMLWriter.h>
#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "ErrorHandling/AlertXml.h"

using namespace Oxa::Core;

namespace {

using Stack = std::vector<CodeContext>;

std::string ByWriter(AlertInfo& alert, const char* circumstance) {
  std::ostringstream text;
  XMLWriter writer;
  alert.ToXML(writer, text, circumstance);
  return text.str();
}

// What the layout depends on: lengths around a line's, line ends and white space, and what is to be escaped.
class Texts {
 public:
  explicit Texts(unsigned seed) : m_random(seed) {}

  int Below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(m_random); }

  std::string Name() {
    std::string name = "N";
    for (int length = Below(5) == 0 ? 60 + Below(40) : Below(20); length > 0; --length) name += Letter();
    return name;
  }

  std::string Value() {
    static const std::vector<std::string> pieces{" ", "\n", "\t", "<",    ">",
                                                 "&", "'",  "\"", "\r\n", "\xE2\x82\xAC"};
    std::string value;
    const int kind = Below(4);
    for (int length = kind == 0 ? 0 : kind == 1 ? 50 + Below(40) : Below(700); length > 0; --length)
      value += Below(kind == 3 ? 4 : 40) == 0 ? pieces[static_cast<std::size_t>(Below(10))]
                                              : std::string(1, Letter());
    return value;
  }

  AlertData Table(int most) {
    AlertData table;
    for (int count = Below(most + 1); count > 0; --count) table[Name()] = Value();
    return table;
  }

  Stack Places() {
    Stack places;
    for (int count = Below(4); count > 0; --count)
      places.emplace_back(Table(6), Below(2) == 0 ? AlertData() : Table(4));
    return places;
  }

 private:
  char Letter() { return static_cast<char>('a' + Below(26)); }

  std::mt19937 m_random;
};

class NamedAlert : public AlertInfo {
 public:
  NamedAlert(const std::string& name, const AlertData& data, const Stack& calls, const Stack& unwinds)
      : AlertInfo(data, calls, unwinds), m_sName(name) {}
  std::string XMLElementName() override { return m_sName; }

 private:
  const std::string m_sName;
};

void Descend(int levels) {
  if (levels == 0) {
    OXA_RAISE_ERROR("Test.AlertXml", InvalidParameter("p_sPath", "a < b\nand c"));
    return;
  }
  try {
    Descend(levels - 1);
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_VARIABLE(levels), OXA_INFO("Step", "calibration"))
}

}  // namespace

TEST(AlertXmlText, IsWhatTheWriterWritesOfAnyAlert) {
  Texts texts(7);
  for (int alerts = 0; alerts < 2000; ++alerts) {
    NamedAlert alert(texts.Name(), texts.Table(8), texts.Places(), texts.Places());
    const std::string circumstance = texts.Below(2) == 0 ? "" : texts.Value();
    ASSERT_EQ(ByWriter(alert, circumstance.c_str()), AlertXml::AsText(alert, circumstance.c_str())) << alerts;
  }
}

// The tables of contexts are kept from one text to the next: the same ones, others in their slots, and again.
TEST(AlertXmlText, IsTheSameHoweverOftenItsPlacesHaveBeenTold) {
  Texts texts(8);
  std::vector<CodeContext> places;
  while (places.size() < 200) {
    for (const CodeContext& place : texts.Places()) places.push_back(place);
  }
  for (int alerts = 0; alerts < 2000; ++alerts) {
    Stack calls;
    Stack unwinds;
    for (int i = 0; i < 6; ++i) {
      calls.push_back(places[static_cast<std::size_t>(texts.Below(alerts < 1000 ? 20 : 200))]);
      unwinds.push_back(places[static_cast<std::size_t>(texts.Below(20))]);
    }
    NamedAlert alert(texts.Name(), texts.Table(3), calls, unwinds);
    ASSERT_EQ(ByWriter(alert, "Told"), AlertXml::AsText(alert, "Told")) << alerts;
  }
}

TEST(AlertXmlText, IsWhatTheWriterWritesOfAnErrorThatWasForwarded) {
  try {
    Descend(3);
    FAIL() << "nothing was raised";
  } catch (Error& error) {
    const std::string text = AlertXml::AsText(error, "Error Raised");
    EXPECT_EQ(ByWriter(error, "Error Raised"), text);
    EXPECT_NE(std::string::npos, text.find("<Var name=\"levels\" >3</Var>")) << text;
  }
}

TEST(AlertXmlText, IsWhatTheWriterWritesOfAnAlertWithNothingInIt) {
  AlertInfo alert{AlertData(), Stack(), Stack()};
  EXPECT_EQ("<Alert></Alert>\n", AlertXml::AsText(alert, ""));
  EXPECT_EQ(ByWriter(alert, ""), AlertXml::AsText(alert, ""));
}
