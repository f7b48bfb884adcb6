// What threads may share.
#include <Infrastructure/OxaCore/XMLParser.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "XML/XMLTestSupport.h"

using namespace XMLTest;

TEST(CompactFormatter, IsSharedByThreads) {
  const auto formatter = XMLFormatter::CreateCompact();
  std::string texts[4];
  std::vector<std::thread> threads;
  for (std::string& text : texts) {
    threads.emplace_back([&text, formatter] {
      std::ostringstream out;
      XMLWriter writer(formatter);
      for (int i = 0; i < 200; ++i) WriteExample(writer, out);
      text = out.str();
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::string expected;
  for (int i = 0; i < 200; ++i) expected += sCOMPACT_EXAMPLE;
  for (const std::string& text : texts) EXPECT_EQ(expected, text);
}

TEST(Markup, IsLaidOutByThreadsAtOnce) {
  std::string texts[4];
  std::vector<std::thread> threads;
  for (std::string& text : texts) {
    threads.emplace_back([&text] {
      std::ostringstream out;
      for (int i = 0; i < 50; ++i) {
        XMLWriter writer;
        out << writer.Markup(sCOMPACT_EXAMPLE);
      }
      text = out.str();
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::string expected;
  for (int i = 0; i < 50; ++i) expected += sPRETTY_EXAMPLE;
  for (const std::string& text : texts) EXPECT_EQ(expected, text);
}

TEST(Markup, WaitsForTheParsesOfOtherThreads) {
  std::atomic<bool> done{false};
  std::thread waiting;
  {
    const Oxa::Core::Lock parse(Oxa::Core::XMLParseMutex(), Oxa::Core::IMutex::sINFINITE);
    waiting = std::thread([&done] {
      std::ostringstream out;
      XMLWriter writer;
      out << writer.Markup("<a/>");
      done = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(done);
  }
  waiting.join();
  EXPECT_TRUE(done);
}
