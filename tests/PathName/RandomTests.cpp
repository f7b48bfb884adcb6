// Path names of random texts against a second writing of the rules, in which the C library cuts the tokens.
#include <Infrastructure/OxaCore/PathName.h>

#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <string>

#include "PathName/PathNameSupport.h"

using Oxa::Core::PathName;
using PathNameTests::OpenPathName;
using PathNameTests::RandomTexts;
using PathNameTests::Text;

namespace {

#ifdef OXACORE_SOAK
constexpr int iROUNDS = 20000000;
#else
constexpr int iROUNDS = 300000;
#endif

constexpr auto uNONE = std::string::npos;

bool IsSeparator(char c) { return c == '/' || c == '\\'; }
bool IsServer(const std::string& text) { return text.compare(0, 2, "\\\\") == 0; }
bool IsLegal(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || std::strchr(" _~!#%&()@`'^$.-", c) != nullptr;
}

struct Model {
  explicit Model(const std::string& text)
      : m_text(text), m_server(IsServer(text)), m_end(m_server ? '\\' : ':') {}

  std::size_t BaseEnd() const { return m_text.find(m_end, m_server ? 2 : 0); }

  std::string Base() const { return BaseEnd() == uNONE ? "" : m_text.substr(0, BaseEnd()); }

  // The parts of the text by position: up to where the last separator is.
  std::size_t BehindLastSeparator() const {
    std::size_t behind = m_text.size();
    while (behind > 0 && !IsSeparator(m_text[behind - 1])) --behind;
    return behind;
  }

  std::string Branch() const {
    const std::size_t start = BaseEnd() == uNONE ? 0 : BaseEnd() + (m_server ? 0 : 1);
    std::string branch;
    for (std::size_t i = start; i < BehindLastSeparator(); ++i) branch += m_text[i];
    return branch;
  }

  std::string LastComponent() const { return m_text.substr(BehindLastSeparator()); }

  std::string Ext() const {
    const auto dot = LastComponent().rfind('.');
    return dot == uNONE ? "" : LastComponent().substr(dot + 1);
  }

  std::string Leaf() const {
    std::string component = LastComponent();
    if (BehindLastSeparator() == 0 && component.rfind(m_end) != uNONE)
      component = component.substr(component.rfind(m_end) + 1);
    return component.substr(0, component.rfind('.'));
  }

  bool Absolute() const {
    if (m_server) return true;
    if (m_text.empty() || IsSeparator(m_text[0])) return false;
    const auto colon = m_text.find(':');
    return colon != uNONE && colon + 1 < m_text.size() && IsSeparator(m_text[colon + 1]);
  }

  bool Valid() const {
    if (m_text.empty()) return false;
    std::string scratch = m_text;
    char* from = scratch.data() + (m_server ? 2 : 0);
    const std::size_t offset = m_server ? 2 : 0;
    const std::string end(1, m_end);
    if (BaseEnd() != uNONE) {
      if (!m_server && BaseEnd() != m_text.rfind(m_end)) return false;
      const char* base = strtok(from, end.c_str());
      if (base == nullptr || (!m_server && std::strlen(base) > 1)) return false;
      for (std::size_t i = offset; i < std::strlen(base); ++i)
        if (!IsLegal(base[i])) return false;
      const auto behind = static_cast<std::size_t>(base - scratch.data()) + std::strlen(base) + 1;
      if (m_server || (behind < m_text.size() && IsSeparator(m_text[behind]))) strtok(nullptr, "/\\");
      from = nullptr;
    }
    for (std::size_t i = offset; i + 1 < m_text.size(); ++i)
      if (IsSeparator(m_text[i]) && IsSeparator(m_text[i + 1])) return false;
    for (const char* token = strtok(from, "/\\"); token != nullptr; token = strtok(nullptr, "/\\"))
      for (const char* c = token; *c != 0; ++c)
        if (!IsLegal(*c)) return false;
    return true;
  }

  std::string m_text;
  bool m_server;
  char m_end;
};

}  // namespace

TEST(PathNameRandom, PartsAreThoseOfTheModel) {
  RandomTexts texts(1);
  for (int i = 0; i < iROUNDS; ++i) {
    const std::string text = texts.Next();
    const PathName path(text);
    const Model model(text);
    ASSERT_EQ(model.Base(), path.GetBase()) << text;
    ASSERT_EQ(model.Branch(), path.GetBranch()) << text;
    ASSERT_EQ(model.Leaf(), path.GetLeaf()) << text;
    ASSERT_EQ(model.Ext(), path.GetExt()) << text;
    ASSERT_EQ(model.Absolute(), path.IsAbsolute()) << text;
    ASSERT_NE(path.IsRelative(), path.IsAbsolute()) << text;
    ASSERT_EQ(text, Text(path));
  }
}

TEST(PathNameRandom, ValidityIsThatOfTheModel) {
  RandomTexts texts(2);
  int valid = 0;
  for (int i = 0; i < iROUNDS; ++i) {
    const std::string text = texts.Next();
    const bool isValid = PathName(text).IsValid();
    ASSERT_EQ(Model(text).Valid(), isValid) << text;
    OpenPathName counted(text);  // its components are counted, and so looked at one by one
    counted.maxDepth = 1000;
    ASSERT_EQ(isValid, counted.IsValid()) << text;
    valid += isValid ? 1 : 0;
  }
  EXPECT_GT(valid, iROUNDS / 10);  // both answers are tried
  EXPECT_LT(valid, iROUNDS - iROUNDS / 10);
}

TEST(PathNameRandom, PartsMakeUpTheText) {
  RandomTexts texts(3);
  for (int i = 0; i < iROUNDS; ++i) {
    const std::string text = texts.Next();
    const PathName path(text);
    const std::string branch = path.GetBaseAndBranch();
    ASSERT_EQ(branch, text.substr(0, branch.size())) << text;
    ASSERT_EQ(path.HasLeaf(), !path.GetLeafAndExt().empty()) << text;
    if (!path.HasBranch()) continue;
    const bool dotAtEnd = text.back() == '.';
    ASSERT_EQ(text, branch + path.GetLeafAndExt() + (dotAtEnd ? "." : "")) << text;
  }
}

TEST(PathNameRandom, EditsSetWhatTheyName) {
  RandomTexts texts(4);
  for (int i = 0; i < iROUNDS; ++i) {
    const std::string text = texts.Next();
    PathName path(text);
    const std::string branch = path.GetBaseAndBranch();
    const std::string leaf = path.GetLeaf();
    path.SetExt("e");
    ASSERT_EQ(branch + leaf + ".e", Text(path)) << text;
    ASSERT_EQ("e", path.GetExt()) << text;
    path.SetExt("");
    ASSERT_EQ(branch + leaf, Text(path)) << text;
    path.SetLeafAndExt("l.e");
    ASSERT_EQ(branch + "l.e", Text(path)) << text;
    path.SetBaseAndBranch("d:\\b");
    ASSERT_EQ("d", path.GetBase()) << text;
    ASSERT_EQ("l.e", path.GetLeafAndExt()) << text;
    path.SetBase("\\\\s");
    ASSERT_EQ("\\\\s", path.GetBase()) << text;
    path.ForceRelative("");
    ASSERT_FALSE(path.HasBase()) << text;
  }
}

// Nothing breaks, whatever is asked of whatever text.
TEST(PathNameRandom, AnythingMayBeAskedOfAnyText) {
  RandomTexts texts(5);
  for (int i = 0; i < iROUNDS / 20; ++i) {
    PathName path(texts.Next(), texts.Roll(8) == 0 ? PathName::UNIX : PathName::NT);
    for (unsigned steps = texts.Roll(6); steps > 0; --steps) {
      const std::string text = texts.Next();
      switch (texts.Roll(10)) {
        case 0:
          path.SetBase(text);
          break;
        case 1:
          path.SetBranch(text);
          break;
        case 2:
          path.SetBaseAndBranch(text);
          break;
        case 3:
          path.AddBranch(text);
          break;
        case 4:
          path.SetLeaf(text);
          break;
        case 5:
          path.SetExt(text);
          break;
        case 6:
          path.SetLeafAndExt(text);
          break;
        case 7:
          path.ForceAsDir();
          break;
        case 8:
          path.ForceRelative(text);
          break;
        default:
          path = text;
      }
      path.IsValid();
      ASSERT_NE(path.IsRelative(), path.IsAbsolute());
      ASSERT_EQ(path.HasExt(), !path.GetExt().empty());
      ASSERT_EQ(path.HasLeaf(), !path.GetLeafAndExt().empty());
      const std::string branch = path.GetBranch();
      ASSERT_TRUE(branch.empty() || Text(path).find(branch) != uNONE) << Text(path);
    }
  }
}
