// Parses on several threads, and on one with a small stack.
#include <Infrastructure/OxaCore/XMLParser.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>

#include "Support/Together.h"
#include "XML/XMLParserTestSupport.h"

namespace XMLParserTests {
namespace {

std::atomic<int> s_iInside{0};
std::atomic<bool> s_bMet{false};

// Notices another parse between the begin and the end of its own.
class Alone : public XMLParseHandler<> {
 public:
  void StartDoc() { Look(++s_iInside); }
  void StartTag(const String&) { Look(s_iInside); }
  void EndTag(const String&) { Look(s_iInside); }
  void EndDoc() { Look(s_iInside--); }

 private:
  static void Look(int inside) {
    if (inside != 1) s_bMet = true;
  }
};

TEST(XMLParserThreads, ParsesNeverInterleave) {
  TestSupport::Together(4, [](int index) {
    for (int i = 0; i < 200; ++i) {
      XMLParser<Alone> parser;
      Pieces pieces("<a><b>text</b><b>text</b></a>", 5);
      std::istream stream(&pieces);
      EXPECT_TRUE((i + index) % 2 == 0 ? parser.Parse("<a><b>text</b><b>text</b></a>")
                                       : parser.Parse(stream));
    }
  });
  EXPECT_FALSE(s_bMet);
  EXPECT_EQ(s_iInside, 0);
}

// Any parser takes the one mutex, also on a failure it's given back.
class Asking : public XMLParseHandler<> {
 public:
  void StartTag(const String& name) {
    m_bFree = CanBeTaken();
    if (name == "bad") throw std::runtime_error("thrown by the handler");
  }

  static bool CanBeTaken() {
    bool taken = false;
    std::thread other([&taken] {
      taken = Oxa::Core::XMLParseMutex().TryLock();
      if (taken) Oxa::Core::XMLParseMutex().Unlock();
    });
    other.join();
    return taken;
  }

  bool m_bFree = true;
};

TEST(XMLParserThreads, TheLockIsHeldForTheParseAndNoLonger) {
  XMLParser<Asking> parser;
  EXPECT_TRUE(parser.Parse("<good/>"));
  EXPECT_FALSE(parser.m_bFree);
  EXPECT_TRUE(Asking::CanBeTaken());
  EXPECT_FALSE(parser.Parse("<good"));
  EXPECT_TRUE(Asking::CanBeTaken());
  EXPECT_THROW(parser.Parse("<bad/>"), std::runtime_error);
  EXPECT_TRUE(Asking::CanBeTaken());
}

// A handler may say which lock it takes.
class OwnLock : public XMLParseHandler<> {
 public:
  Oxa::Core::Lock GetLock() override { return Oxa::Core::Lock(m_mutex); }
  void StartTag(const String&) { m_bOthersWait = !Asking::CanBeTaken(); }

  Oxa::Core::Mutex m_mutex;
  bool m_bOthersWait = true;
};

TEST(XMLParserThreads, GetLockChoosesTheLock) {
  XMLParser<OwnLock> parser;
  EXPECT_TRUE(parser.Parse("<a/>"));
  EXPECT_FALSE(parser.m_bOthersWait);
}

// What the work with a small stack left.
struct Depths {
  bool element = false;
  bool streamed = false;
  bool unfinished = true;
  bool groups = false;
  bool tooManyGroups = true;
};

std::string Repeat(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

void* ParseDeep(void* result) {
  Depths& depths = *static_cast<Depths*>(result);
  const int levels = 100000;
  XMLParser<XMLParseHandler<>> parser;
  const std::string open = Repeat("<a>", levels);
  const std::string document = open + Repeat("</a>", levels);
  depths.element = parser.Parse(document);
  Pieces pieces(document, 1000);
  std::istream stream(&pieces);
  depths.streamed = parser.Parse(stream);
  depths.unfinished = parser.Parse(open);
  const auto declaration = [](int count) {
    return "<!DOCTYPE a [<!ELEMENT a " + Repeat("(", count) + "b" + Repeat(")", count) + ">]><a/>";
  };
  depths.groups = parser.Parse(declaration(1000));
  depths.tooManyGroups = parser.Parse(declaration(levels));
  return nullptr;
}

TEST(XMLParserThreads, DepthNeedsNoStack) {
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 1048576), 0);
  Depths depths;
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, &ParseDeep, &depths), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_TRUE(depths.element);
  EXPECT_TRUE(depths.streamed);
  EXPECT_FALSE(depths.unfinished);
  EXPECT_TRUE(depths.groups);
  EXPECT_FALSE(depths.tooManyGroups);
}

}  // namespace
}  // namespace XMLParserTests
