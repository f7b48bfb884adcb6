// What threads may share.
#include <gtest/gtest.h>

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
