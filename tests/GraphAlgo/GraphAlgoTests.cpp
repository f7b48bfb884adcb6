#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/GraphAlgo.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <new>
#include <random>
#include <utility>
#include <vector>

#include "Core/LibraryState.h"
#include "Support/Allocations.h"

namespace {

using namespace Oxa::Core;
using GraphAlgo::GraphAdjListDirected;
using testing::ElementsAre;
using testing::IsEmpty;

using Node = unsigned long long;
using Nodes = std::vector<Node>;

GraphAdjListDirected Graph(std::initializer_list<std::pair<Node, Node>> edges) {
  GraphAdjListDirected graph;
  for (const auto& [from, to] : edges) graph.MakeEdge(from, to);
  return graph;
}

// The order, with what was in the list before replaced; `acyclic` is what the sort is expected to say.
Nodes Sorted(const GraphAdjListDirected& graph, bool acyclic) {
  Nodes sorted{99, 98, 97};
  EXPECT_EQ(acyclic, RawTopoSort(graph, sorted));
  return sorted;
}

Nodes SuccessorsOf(const GraphAdjListDirected& graph, Node node) {
  return Nodes(graph.GetAdjList(node).begin(), graph.GetAdjList(node).end());
}

TEST(Graph, ANewOneIsEmpty) {
  const GraphAdjListDirected graph;
  EXPECT_EQ(0u, graph.NodeCount());
  EXPECT_TRUE(graph.begin() == graph.end());
  EXPECT_FALSE(graph.IsNode(0));
  EXPECT_FALSE(graph.IsEdge(0, 0));
}

TEST(Graph, AnEdgeMakesAllNodesUpToTheGreater) {
  const GraphAdjListDirected graph = Graph({{0, 5}});
  EXPECT_EQ(6u, graph.NodeCount());
  EXPECT_TRUE(graph.IsNode(5));
  EXPECT_FALSE(graph.IsNode(6));
  EXPECT_TRUE(graph.IsEdge(0, 5));
  EXPECT_FALSE(graph.IsEdge(5, 0));
  EXPECT_FALSE(graph.IsEdge(0, 6));
  EXPECT_FALSE(graph.IsEdge(6, 0));
  EXPECT_EQ(6u, graph.NodeCount());
  EXPECT_EQ(6u, Graph({{5, 0}}).NodeCount());
}

TEST(Graph, NodesAreOnlyEverAdded) {
  GraphAdjListDirected graph;
  graph.AssureNode(4);
  EXPECT_EQ(5u, graph.NodeCount());
  graph.AssureNode(2);
  EXPECT_EQ(5u, graph.NodeCount());
  graph.MakeEdge(1, 0);
  EXPECT_EQ(5u, graph.NodeCount());
}

TEST(Graph, AnEdgeIsThereOnceInTheOrderOfInsertion) {
  const GraphAdjListDirected graph = Graph({{1, 9}, {1, 3}, {1, 9}, {1, 5}, {1, 3}, {1, 1}});
  EXPECT_THAT(SuccessorsOf(graph, 1), ElementsAre(9, 3, 5, 1));
  EXPECT_THAT(SuccessorsOf(graph, 9), IsEmpty());
}

TEST(Graph, AListTakesNodesByItself) {
  GraphAdjListDirected::AdjList list;
  EXPECT_TRUE(list.begin() == list.end());
  for (const Node node : {7, 1, 7, 4}) list.AddAdj(node);
  GraphAdjListDirected::AdjList copy(list);
  list = GraphAdjListDirected::AdjList();
  EXPECT_TRUE(list.begin() == list.end());
  EXPECT_THAT(Nodes(copy.begin(), copy.end()), ElementsAre(7, 1, 4));
}

// Short ones and long ones, which keep their nodes elsewhere.
TEST(Graph, ListsOfEveryLengthAreCopiedAndMoved) {
  GraphAdjListDirected::AdjList target;
  for (Node length = 0; length < 30; ++length) {
    GraphAdjListDirected::AdjList list;
    Nodes expected;
    for (Node node = 0; node < length; ++node) {
      list.AddAdj(1000 - node);
      list.AddAdj(1000 - node / 2);
      expected.push_back(1000 - node);
    }
    const GraphAdjListDirected::AdjList copy(list);
    GraphAdjListDirected::AdjList moved(std::move(list));
    target = copy;
    EXPECT_EQ(expected, Nodes(copy.begin(), copy.end()));
    EXPECT_EQ(expected, Nodes(moved.begin(), moved.end()));
    EXPECT_EQ(expected, Nodes(target.begin(), target.end()));
    moved.AddAdj(5);
    EXPECT_EQ(length + 1, static_cast<Node>(moved.end() - moved.begin()));
    EXPECT_EQ(length, static_cast<Node>(target.end() - target.begin()));
  }
}

TEST(Graph, EdgesOfAFanWithAChain) {
  constexpr Node SIZE = 10;
  GraphAdjListDirected graph;
  for (Node node = 0; node < SIZE; ++node) {
    graph.MakeEdge(0, node);
    if (node != 5 && node + 1 < SIZE) graph.MakeEdge(node, node + 1);
  }
  for (Node ii = 0; ii < SIZE; ++ii) {
    for (Node ij = 0; ij < SIZE; ++ij) {
      EXPECT_EQ(ii == 0 || (ii + 1 == ij && ii != 5), graph.IsEdge(ii, ij)) << ii << " -> " << ij;
    }
  }
}

TEST(Graph, IteratesOverItsLists) {
  const GraphAdjListDirected graph = Graph({{0, 2}, {2, 1}});
  Nodes lengths;
  for (const GraphAdjListDirected::AdjList& list : graph) {
    lengths.push_back(static_cast<Node>(std::distance(list.begin(), list.end())));
  }
  EXPECT_THAT(lengths, ElementsAre(1, 0, 1));
  EXPECT_EQ(&graph.GetAdjList(2), &*graph.GetNodeIterator(2));
  EXPECT_TRUE(graph.GetNodeIterator(0) == graph.begin());
  EXPECT_TRUE(graph.GetNodeIterator(3) == graph.end());
}

TEST(Graph, CopiesAndClears) {
  GraphAdjListDirected graph = Graph({{0, 1}});
  const GraphAdjListDirected copy(graph);
  GraphAdjListDirected assigned;
  assigned = graph;
  graph.MakeEdge(0, 2);
  EXPECT_EQ(2u, copy.NodeCount());
  EXPECT_FALSE(assigned.IsEdge(0, 2));
  graph.Clear();
  EXPECT_EQ(0u, graph.NodeCount());
  EXPECT_TRUE(copy.IsEdge(0, 1));
}

TEST(Graph, RefusesNodesThatCannotBe) {
  GraphAdjListDirected graph = Graph({{0, 1}});
  try {
    graph.AssureNode(18446744073709551615ull);
    FAIL() << "nothing was raised";
  } catch (InvalidParameter& error) {
    EXPECT_EQ("Invalid Parameter: n = 18446744073709551615", error.GetData(AlertInfo::sMESSAGE));
    EXPECT_EQ("Oxa.Core.GraphAlgo", error.GetData(AlertInfo::sLOG_NAME));
  }
  EXPECT_THROW(graph.AssureNode(std::vector<GraphAdjListDirected::AdjList>().max_size()), InvalidParameter);
  EXPECT_THROW(graph.MakeEdge(0, 18446744073709551615ull), InvalidParameter);
  EXPECT_THROW(graph.MakeEdge(18446744073709551614ull, 0), InvalidParameter);
  EXPECT_EQ(2u, graph.NodeCount());
  EXPECT_TRUE(graph.IsEdge(0, 1));
}

TEST(Graph, StaysAsItWasWithoutMemory) {
  GraphAdjListDirected graph = Graph({{0, 1}, {0, 2}, {0, 3}});
  {
    const TestSupport::FailAllocation fail(1);
    EXPECT_THROW(graph.AssureNode(1000), std::bad_alloc);
  }
  {
    const TestSupport::FailAllocation fail(1);  // the fourth successor is the first one beside the list
    EXPECT_THROW(graph.MakeEdge(0, 0), std::bad_alloc);
  }
  EXPECT_EQ(4u, graph.NodeCount());
  EXPECT_THAT(SuccessorsOf(graph, 0), ElementsAre(1, 2, 3));
  graph.MakeEdge(0, 0);
  EXPECT_THAT(SuccessorsOf(graph, 0), ElementsAre(1, 2, 3, 0));
}

// There is no way back from unloading, where raises return: a child goes it.
TEST(Graph, StaysAsItWasWhereTheRaiseReturns) {
  EXPECT_EXIT(
      {
        SetLibraryUnloading();
        GraphAdjListDirected graph = Graph({{0, 1}});
        graph.MakeEdge(0, 18446744073709551615ull);
        graph.MakeEdge(18446744073709551615ull, 0);
        EXPECT_EQ(2u, graph.NodeCount());
        EXPECT_THAT(SuccessorsOf(graph, 0), ElementsAre(1));
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
      },
      testing::ExitedWithCode(0), "Invalid Parameter: n = 18446744073709551615");
}

// Whether an edge is made though the `number`th allocation from now on fails.
bool MakesEdgeWithout(unsigned long number, GraphAdjListDirected& graph, Node from, Node to) {
  const TestSupport::FailAllocation fail(number);
  try {
    graph.MakeEdge(from, to);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

TEST(Graph, StaysWholeWithoutMemory) {
  GraphAdjListDirected graph;
  Nodes successors;
  unsigned failures = 0;
  for (Node to = 1; to <= 40; ++to) {
    for (unsigned long failing = 1; !MakesEdgeWithout(failing, graph, 0, to); ++failing) {
      ++failures;
      ASSERT_FALSE(graph.IsEdge(0, to));
      ASSERT_TRUE(graph.NodeCount() == to + 1 || graph.NodeCount() == (to == 1 ? 0 : to)) << to;
      ASSERT_TRUE(to == 1 || SuccessorsOf(graph, 0) == successors);
    }
    successors.push_back(to);
    ASSERT_EQ(successors, SuccessorsOf(graph, 0));
  }
  EXPECT_GE(failures, 10u);
}

TEST(TopoSort, OfNothing) { EXPECT_THAT(Sorted(GraphAdjListDirected(), true), IsEmpty()); }

TEST(TopoSort, PutsEachNodeBehindItsSuccessors) {
  EXPECT_THAT(Sorted(Graph({{0, 1}, {1, 2}}), true), ElementsAre(2, 1, 0));
  EXPECT_THAT(Sorted(Graph({{2, 1}, {1, 0}}), true), ElementsAre(0, 1, 2));
}

TEST(TopoSort, SettlesTiesByStartsAndByInsertion) {
  GraphAdjListDirected unconnected;
  unconnected.AssureNode(2);
  EXPECT_THAT(Sorted(unconnected, true), ElementsAre(0, 1, 2));
  EXPECT_THAT(Sorted(Graph({{0, 3}, {0, 1}, {0, 2}}), true), ElementsAre(3, 1, 2, 0));
  EXPECT_THAT(Sorted(Graph({{1, 4}, {1, 0}, {3, 1}, {3, 2}}), true), ElementsAre(0, 4, 1, 2, 3));
}

// The node that closes the cycle, and the top of the path once per further node of the cycle.
TEST(TopoSort, TellsACycleByItsLastStep) {
  EXPECT_THAT(Sorted(Graph({{0, 0}}), false), ElementsAre(0));
  EXPECT_THAT(Sorted(Graph({{0, 1}, {1, 1}}), false), ElementsAre(1));
  EXPECT_THAT(Sorted(Graph({{0, 1}, {1, 0}}), false), ElementsAre(0, 1));
  EXPECT_THAT(Sorted(Graph({{0, 1}, {1, 2}, {2, 0}}), false), ElementsAre(0, 2, 2));
  EXPECT_THAT(Sorted(Graph({{0, 1}, {1, 2}, {2, 3}, {3, 4}, {4, 1}}), false), ElementsAre(1, 4, 4, 4));
  EXPECT_THAT(Sorted(Graph({{0, 1}, {0, 2}, {2, 1}, {2, 3}, {3, 2}}), false), ElementsAre(2, 3));
}

// A sort that is told by recursion. The path is of the nodes before `node`; false once a cycle is met.
struct Reference {
  explicit Reference(const GraphAdjListDirected& graph) : m_graph(graph), m_finished(graph.NodeCount()) {
    for (Node node = 0; node < graph.NodeCount() && m_bAcyclic; ++node) Visit(node);
  }

  void Visit(Node node) {
    if (m_finished[node]) return;
    const auto cycle = std::find(m_path.begin(), m_path.end(), node);
    if (cycle != m_path.end()) {
      m_bAcyclic = false;
      m_sorted.assign(1, node);
      m_sorted.insert(m_sorted.end(), static_cast<std::size_t>(m_path.end() - cycle) - 1, m_path.back());
      return;
    }
    m_path.push_back(node);
    for (const Node next : m_graph.GetAdjList(node)) {
      Visit(next);
      if (!m_bAcyclic) return;
    }
    m_path.pop_back();
    m_finished[node] = true;
    m_sorted.push_back(node);
  }

  const GraphAdjListDirected& m_graph;
  std::vector<bool> m_finished;
  Nodes m_path;
  Nodes m_sorted;
  bool m_bAcyclic = true;
};

TEST(TopoSort, RandomGraphsAgreeWithASortByRecursion) {
  std::mt19937 random(5);
  int cycles = 0;
  for (int round = 0; round < 3000; ++round) {
    const Node nodes = random() % 12 + 1;
    const Node edges = random() % (nodes * 2);
    const bool upward = random() % 2 == 0;  // acyclic, under shuffled names
    Nodes names(nodes);
    for (Node node = 0; node < nodes; ++node) names[node] = node;
    std::shuffle(names.begin(), names.end(), random);
    GraphAdjListDirected graph;
    graph.AssureNode(nodes - 1);
    for (Node edge = 0; edge < edges; ++edge) {
      const Node a = random() % nodes;
      const Node b = random() % nodes;
      if (!upward || a < b) graph.MakeEdge(names[a], names[b]);
    }
    const Reference expected(graph);
    cycles += expected.m_bAcyclic ? 0 : 1;
    ASSERT_TRUE(!upward || expected.m_bAcyclic);
    ASSERT_EQ(expected.m_sorted, Sorted(graph, expected.m_bAcyclic)) << "round " << round;
  }
  EXPECT_GT(cycles, 300);
}

TEST(TopoSort, EverySuccessorIsSeenBefore) {
  std::mt19937 random(11);
  GraphAdjListDirected graph;
  for (int edge = 0; edge < 3000; ++edge) {
    const Node a = random() % 1000;
    const Node b = random() % 1000;
    if (a != b) graph.MakeEdge(std::max(a, b), std::min(a, b));
  }
  std::vector<bool> seen(graph.NodeCount());
  for (const Node node : Sorted(graph, true)) {
    for (const Node next : graph.GetAdjList(node)) EXPECT_TRUE(seen[next]) << node << " -> " << next;
    EXPECT_FALSE(seen[node]);
    seen[node] = true;
  }
  EXPECT_EQ(graph.NodeCount(), static_cast<Node>(std::count(seen.begin(), seen.end(), true)));
}

TEST(TopoSort, TheDepthOfAGraphHasNoLimit) {
  constexpr Node DEEP = 1000000;
  GraphAdjListDirected graph;
  for (Node node = 1; node < DEEP; ++node) graph.MakeEdge(node - 1, node);
  const Nodes sorted = Sorted(graph, true);
  ASSERT_EQ(DEEP, sorted.size());
  EXPECT_TRUE(std::is_sorted(sorted.rbegin(), sorted.rend()));
  EXPECT_EQ(DEEP - 1, sorted.front());
  graph.MakeEdge(DEEP - 1, 0);
  const Nodes cycle = Sorted(graph, false);
  ASSERT_EQ(DEEP, cycle.size());
  EXPECT_EQ(0u, cycle.front());
  EXPECT_EQ(static_cast<std::ptrdiff_t>(DEEP) - 1, std::count(cycle.begin(), cycle.end(), DEEP - 1));
}

}  // namespace
