// The tree of loggers: names and paths, words and how they narrow, and the move to another service.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "Log/LogFakes.h"
#include "Log/LoggerTreeNode.h"
#include "Platform/Storage.h"
#include "Support/ThreadSanitizer.h"

namespace {

using namespace Oxa::Core;
using LogFakes::FakeLogger;
using LogFakes::FakeService;

std::vector<std::string> s_asserts;

class LoggerTreeNodeTest : public testing::Test {
 protected:
  LoggerTreeNodeTest() {
    s_asserts.clear();
    Platform::SetDebuggerSink([](const char* text) { s_asserts.emplace_back(text); });
  }
  ~LoggerTreeNodeTest() override { Platform::SetDebuggerSink(nullptr); }

  LoggerTreeNode& Node(const std::vector<std::string>& names) {
    LoggerTreeNode* node = &m_root;
    for (const std::string& name : names) node = &node->GetChild(name);
    return *node;
  }

  LoggerTreeNode m_root;
};

TEST_F(LoggerTreeNodeTest, RootHasNoNameAndTheDefaultWord) {
  EXPECT_EQ("", m_root.GetPath());
  EXPECT_EQ("", m_root.GetName());
  EXPECT_EQ(46u, m_root.GetSeverityFilters());
}

TEST_F(LoggerTreeNodeTest, RootAddsNothingToThePathsBeneathIt) {
  EXPECT_EQ("A", Node({"A"}).GetPath());
  EXPECT_EQ("A", Node({"A"}).GetName());
  EXPECT_EQ("A.B", Node({"A", "B"}).GetPath());
  EXPECT_EQ("B", Node({"A", "B"}).GetName());
  EXPECT_EQ("A.B.C", Node({"A", "B", "C"}).GetPath());
  EXPECT_EQ(46u, Node({"A", "B", "C"}).GetSeverityFilters());
}

TEST_F(LoggerTreeNodeTest, ChildIsMadeOnceAndFoundFromThenOn) {
  EXPECT_EQ(nullptr, m_root.FindChild("A"));
  LoggerTreeNode& child = m_root.GetChild("A");
  EXPECT_EQ(&child, m_root.FindChild("A"));
  EXPECT_EQ(&child, &m_root.GetChild("A"));
  EXPECT_EQ(nullptr, m_root.FindChild("B"));
}

TEST_F(LoggerTreeNodeTest, NodesStayWhereTheyAreWhileTheTreeGrows) {
  LoggerTreeNode& first = m_root.GetChild("first");
  for (int i = 0; i < 10000; ++i) m_root.GetChild(std::to_string(i));
  EXPECT_EQ(&first, m_root.FindChild("first"));
  EXPECT_EQ("first.child", first.GetChild("child").GetPath());
}

TEST_F(LoggerTreeNodeTest, NamesAreThoseOfTheDirectChildren) {
  Node({"A", "B", "C"});
  Node({"A", "D"});
  std::list<std::string> names = {"kept"};
  Node({"A"}).AppendChildNames(names);
  names.sort();
  EXPECT_EQ((std::list<std::string>{"B", "D", "kept"}), names);
}

TEST_F(LoggerTreeNodeTest, NewChildHasTheDefaultWordWhateverItsParentLost) {
  Node({"A"}).ChangeSeverityFilters(2);
  EXPECT_EQ(46u, Node({"A", "B"}).GetSeverityFilters());
}

TEST_F(LoggerTreeNodeTest, LoggerGetsTheIntersectionOfItsPath) {
  Node({"A"}).SetSeverityFilters(6);
  Node({"A", "B"}).SetSeverityFilters(12);
  FakeLogger logger("A.B");
  Node({"A", "B"}).AddLogger(&logger);
  EXPECT_EQ(46u & 6u & 12u, logger.m_uFilters);
}

TEST_F(LoggerTreeNodeTest, LoggerOfTheRootGetsAllOfItsWord) {
  m_root.SetSeverityFilters(0xFFFFFFFFu);
  FakeLogger atRoot("");
  m_root.AddLogger(&atRoot);
  EXPECT_EQ(0xFFFFFFFFu, atRoot.m_uFilters);
  Node({"A"}).SetSeverityFilters(0x80000002u);
  FakeLogger beneath("A");
  Node({"A"}).AddLogger(&beneath);
  EXPECT_EQ(0x80000002u, beneath.m_uFilters);
}

TEST_F(LoggerTreeNodeTest, RegisteredLoggerKeepsItsWordUntilItIsAddedAnew) {
  FakeLogger logger("A");
  Node({"A"}).AddLogger(&logger);
  EXPECT_EQ(46u, logger.m_uFilters);
  Node({"A"}).ChangeSeverityFilters(2);
  m_root.ChangeSeverityFilters(6);
  EXPECT_EQ(46u, logger.m_uFilters);
  EXPECT_EQ(1, logger.m_iSet);
  Node({"A"}).AddLogger(&logger);
  EXPECT_EQ(2u, logger.m_uFilters);
}

TEST_F(LoggerTreeNodeTest, NullLoggerIsAFailedAssertion) {
  m_root.AddLogger(nullptr);
  ASSERT_EQ(1u, s_asserts.size());
  EXPECT_NE(std::string::npos, s_asserts[0].find("Failed Assertion(0 != p_pLogger)")) << s_asserts[0];
}

TEST_F(LoggerTreeNodeTest, SameWordIsNoChange) {
  EXPECT_FALSE(Node({"A"}).ChangeSeverityFilters(46));
  EXPECT_TRUE(Node({"A"}).ChangeSeverityFilters(2));
  EXPECT_FALSE(Node({"A"}).ChangeSeverityFilters(2));
}

TEST_F(LoggerTreeNodeTest, BitsClearedHighInTheTreeAreClearedForGood) {
  Node({"A", "B", "C"});
  Node({"A"}).ChangeSeverityFilters(2);
  EXPECT_EQ(2u, Node({"A", "B"}).GetSeverityFilters());
  EXPECT_EQ(2u, Node({"A", "B", "C"}).GetSeverityFilters());
  Node({"A"}).ChangeSeverityFilters(46);
  EXPECT_EQ(46u, Node({"A"}).GetSeverityFilters());
  EXPECT_EQ(2u, Node({"A", "B"}).GetSeverityFilters());
  EXPECT_EQ(2u, Node({"A", "B", "C"}).GetSeverityFilters());
}

TEST_F(LoggerTreeNodeTest, WordIsCutToItsAncestorsWhereThatChangesWhatIsInEffect) {
  Node({"A"}).ChangeSeverityFilters(6);
  EXPECT_TRUE(Node({"A", "B"}).ChangeSeverityFilters(2 + 16));
  EXPECT_EQ(2u, Node({"A", "B"}).GetSeverityFilters()) << "6 in effect before, 2 now";
}

TEST_F(LoggerTreeNodeTest, WordStaysWholeWhereNothingChangesInEffect) {
  Node({"A"}).ChangeSeverityFilters(2);
  EXPECT_TRUE(Node({"A", "B"}).ChangeSeverityFilters(2 + 16));
  EXPECT_EQ(18u, Node({"A", "B"}).GetSeverityFilters()) << "2 in effect before and now";
}

TEST_F(LoggerTreeNodeTest, OnlySixteenBitsTakePartInAChange) {
  EXPECT_TRUE(m_root.ChangeSeverityFilters(46 + 0x10000));
  EXPECT_EQ(46u + 0x10000u, m_root.GetSeverityFilters()) << "nothing below bit 16 changed, so nothing is cut";
  EXPECT_TRUE(m_root.ChangeSeverityFilters(2 + 0x10000));
  EXPECT_EQ(2u, m_root.GetSeverityFilters());
}

TEST_F(LoggerTreeNodeTest, BitThatAnAncestorLacksComesIntoEffectWithIt) {
  EXPECT_TRUE(Node({"A"}).ChangeSeverityFilters(46 + 16));
  EXPECT_EQ(62u, Node({"A"}).GetSeverityFilters()) << "the root doesn't let 16 through: nothing in effect";
  m_root.ChangeSeverityFilters(46 + 16);
  EXPECT_EQ(62u, m_root.GetSeverityFilters());
  EXPECT_EQ(62u, Node({"A"}).GetSeverityFilters()) << "now it is in effect";
}

TEST_F(LoggerTreeNodeTest, SiblingsAreLeftAlone) {
  Node({"A", "B"});
  Node({"C", "B"});
  Node({"A"}).ChangeSeverityFilters(2);
  EXPECT_EQ(46u, Node({"C"}).GetSeverityFilters());
  EXPECT_EQ(46u, Node({"C", "B"}).GetSeverityFilters());
  EXPECT_EQ(46u, m_root.GetSeverityFilters());
}

TEST_F(LoggerTreeNodeTest, DeepTreesAreNarrowedToTheirEnd) {
  LoggerTreeNode* node = &m_root;
  for (int i = 0; i < 2000; ++i) node = &node->GetChild("x");
  m_root.ChangeSeverityFilters(4);
  EXPECT_EQ(4u, node->GetSeverityFilters());
}

// The model: a flat table of words. A change at N reaches D beneath it through the words of all nodes between,
// and overwrites D's word if what is in effect at D differs.
class FilterModel {
 public:
  using Path = std::vector<std::string>;

  FilterModel() { m_words[{}] = 46; }

  void Make(const Path& path) {
    for (std::size_t i = 1; i <= path.size(); ++i) m_words.emplace(Cut(path, i), 46);
  }

  void Set(const Path& path, unsigned int filters) {
    unsigned int mask = 65535;
    for (std::size_t i = 0; i < path.size(); ++i) mask &= m_words.at(Cut(path, i));
    const unsigned int old = m_words.at(path);
    if (old == filters) return;
    std::map<Path, unsigned int> next = m_words;
    next[path] = filters;
    for (const auto& entry : m_words) Reach(path, entry.first, old & mask, filters & mask, next);
    m_words.swap(next);
  }

  const std::map<Path, unsigned int>& Words() const { return m_words; }

 private:
  static Path Cut(const Path& path, std::size_t size) {
    return Path(path.begin(), path.begin() + static_cast<std::ptrdiff_t>(size));
  }

  void Reach(const Path& from, const Path& to, unsigned int before, unsigned int after,
             std::map<Path, unsigned int>& next) const {
    if (to.size() < from.size() || Cut(to, from.size()) != from) return;
    unsigned int between = ~0u;
    for (std::size_t i = from.size() + 1; i <= to.size(); ++i) between &= m_words.at(Cut(to, i));
    if ((before & between) != (after & between)) next[to] = after & between;
  }

  std::map<Path, unsigned int> m_words;
};

FilterModel::Path RandomPath(std::mt19937& random, std::size_t deepest) {
  FilterModel::Path path(random() % (deepest + 1));
  for (std::string& name : path) name = std::string(1, static_cast<char>('a' + random() % 2));
  return path;
}

TEST_F(LoggerTreeNodeTest, RandomChangesInDeepTreesDoWhatTheModelDoes) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("one thread, and much that is watched for nothing");
  for (unsigned int seed = 1; seed <= 40; ++seed) {
    std::mt19937 random(seed);
    LoggerTreeNode root;
    FilterModel model;
    const auto nodeOf = [&root](const FilterModel::Path& path) {
      LoggerTreeNode* node = &root;
      for (const std::string& name : path) node = &node->GetChild(name);
      return node;
    };
    for (int step = 0; step < 60; ++step) {
      const FilterModel::Path path = RandomPath(random, 9);
      model.Make(path);
      unsigned int filters = random() & random() & 0x1007Eu;
      if (random() % 2 == 0) filters = 0x7E & ~(1u << (random() % 8));
      nodeOf(path)->ChangeSeverityFilters(filters);
      model.Set(path, filters);
      for (const auto& entry : model.Words()) {
        ASSERT_EQ(entry.second, nodeOf(entry.first)->GetSeverityFilters())
            << "seed " << seed << ", step " << step << ", depth " << entry.first.size();
      }
    }
  }
}

// --- To another service

TEST_F(LoggerTreeNodeTest, TransferTellsTheWordsOfPathsThatTheServiceDoesNotKnow) {
  Node({"A"}).SetSeverityFilters(2);
  Node({"A", "B"}).SetSeverityFilters(4);
  Node({"C"}).SetSeverityFilters(8);
  FakeService service;
  service.m_known = {"A", "C"};
  m_root.TransferLoggers(service);
  EXPECT_EQ((std::map<std::string, unsigned int>{{"", 46}, {"A.B", 4}}), service.m_words);
}

TEST_F(LoggerTreeNodeTest, TransferRegistersAllLoggersAndKeepsThem) {
  FakeLogger first("A.B"), second("A.B"), third("C");
  Node({"A", "B"}).AddLogger(&first);
  Node({"A", "B"}).AddLogger(&second);
  Node({"C"}).AddLogger(&third);
  FakeService service, again;
  service.m_onRegisterLogger = [&](IOxaLogger* logger) {
    EXPECT_EQ(1u, service.m_words.count(logger->GetPath())) << "the word comes first";
  };
  m_root.TransferLoggers(service);
  EXPECT_EQ((std::set<IOxaLogger*>{&first, &second, &third}), service.m_loggers);
  m_root.TransferLoggers(again);
  EXPECT_EQ(service.m_loggers, again.m_loggers);
  EXPECT_TRUE(s_asserts.empty());
}

TEST_F(LoggerTreeNodeTest, LoggerThatTheServiceRefusesIsForgottenAndTheWalkGoesOn) {
  FakeLogger refused("A"), taken("A"), child("A.B");
  Node({"A"}).AddLogger(&refused);
  Node({"A"}).AddLogger(&taken);
  Node({"A", "B"}).AddLogger(&child);
  FakeService service, again;
  service.m_onRegisterLogger = [&refused](IOxaLogger* logger) {
    if (logger == &refused) throw std::runtime_error("refused");
  };
  m_root.TransferLoggers(service);
  EXPECT_EQ((std::set<IOxaLogger*>{&taken, &child}), service.m_loggers);
  m_root.TransferLoggers(again);
  EXPECT_EQ((std::set<IOxaLogger*>{&taken, &child}), again.m_loggers);
}

TEST_F(LoggerTreeNodeTest, LoggerWhosePathIsAnotherIsAFailedAssertionAndGoesAlong) {
  FakeLogger logger(".A");
  Node({"A"}).AddLogger(&logger);
  FakeService service;
  m_root.TransferLoggers(service);
  EXPECT_EQ(1u, service.m_loggers.count(&logger));
  ASSERT_EQ(1u, s_asserts.size());
  EXPECT_NE(std::string::npos, s_asserts[0].find("Failed Assertion(pLogger->GetPath() == GetPath())"))
      << s_asserts[0];
}

TEST_F(LoggerTreeNodeTest, RemovedLoggerIsNotTransferred) {
  FakeLogger logger("A");
  Node({"A"}).AddLogger(&logger);
  Node({"A"}).RemoveLogger(&logger);
  Node({"A"}).RemoveLogger(&logger);
  FakeService service;
  m_root.TransferLoggers(service);
  EXPECT_TRUE(service.m_loggers.empty());
}

TEST_F(LoggerTreeNodeTest, ServiceMayAskForPathsAndLoggersWhileItIsTold) {
  FakeLogger first("A"), second("A");
  Node({"A"}).AddLogger(&first);
  Node({"A"}).AddLogger(&second);
  FakeService service;
  service.m_onRegisterLogger = [&](IOxaLogger* logger) {
    Node({"A"}).RemoveLogger(logger == &first ? &second : &first);
    for (int i = 0; i < 100; ++i) Node({"A", std::to_string(i)});
    for (int i = 0; i < 100; ++i) Node({std::to_string(i)});
  };
  m_root.TransferLoggers(service);
  EXPECT_EQ(1u, service.m_loggers.size()) << "the one that was removed meanwhile isn't told";
}

}  // namespace
