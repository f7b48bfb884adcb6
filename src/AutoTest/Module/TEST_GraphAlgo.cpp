#include "AutoTest/Module/TEST_GraphAlgo.h"

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/EnumeratedSet.h>
#include <Infrastructure/OxaCore/GraphAlgo.h>

#include <algorithm>

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

namespace {

using namespace GraphAlgo;

using Node = unsigned long long;
using Nodes = std::vector<Node>;

// 0 leads to all, and each to the next, but for 5.
GraphAdjListDirected MakeGraph() {
  constexpr Node ullNODES = 10;
  GraphAdjListDirected graph;
  for (Node node = 0; node < ullNODES; ++node) {
    graph.MakeEdge(0, node);
    if (node != 0 && node != 5 && node + 1 < ullNODES) graph.MakeEdge(node, node + 1);
  }
  return graph;
}

// The same without the edge from 0 to itself.
GraphAdjListDirected MakeGraphWithoutCycle() {
  GraphAdjListDirected graph;
  const GraphAdjListDirected cyclic = MakeGraph();
  for (Node node = 0; node < cyclic.NodeCount(); ++node) {
    for (const Node next : cyclic.GetAdjList(node)) {
      if (next != node) graph.MakeEdge(node, next);
    }
  }
  return graph;
}

// Whether all nodes are there, each behind its successors.
bool IsSorted(const GraphAdjListDirected& graph, const Nodes& sorted) {
  std::vector<bool> seen(graph.NodeCount());
  for (const Node node : sorted) {
    const GraphAdjListDirected::AdjList& list = graph.GetAdjList(node);
    if (!std::all_of(list.begin(), list.end(), [&](Node next) { return seen[next]; })) return false;
    seen[node] = true;
  }
  return sorted.size() == graph.NodeCount() && std::find(seen.begin(), seen.end(), false) == seen.end();
}

void CheckCycles() {
  GraphAdjListDirected graph;
  graph.MakeEdge(0, 1);
  graph.MakeEdge(1, 2);
  graph.MakeEdge(2, 0);
  Nodes sorted(1, 7);
  OXA_TEST_ASSERT(!RawTopoSort(graph, sorted));
  OXA_TEST_ASSERT(sorted == (Nodes{0, 2, 2}));

  graph.Clear();
  graph.MakeEdge(1, 1);
  OXA_TEST_ASSERT(!RawTopoSort(graph, sorted));
  OXA_TEST_ASSERT(sorted == Nodes{1});
}

}  // namespace

TEST_GraphAlgo::TEST_GraphAlgo() : TestSuite("GraphAlgo Tests") {
  AddTestMethods(*this, {{"TestGraphAdjListDirected", &TEST_GraphAlgo::AdjListDirected},
                         {"TestEnumeratedSet", &TEST_GraphAlgo::EnumeratedSets},
                         {"TestDirectedGraph", &TEST_GraphAlgo::DirectedGraph},
                         {"TestRawTopoSort", &TEST_GraphAlgo::TopoSort}});
}

void TEST_GraphAlgo::AdjListDirected(std::string&) {
  GraphAdjListDirected graph;
  OXA_TEST_EQUALS(0, static_cast<long>(graph.NodeCount()));
  OXA_TEST_ASSERT(graph.begin() == graph.end());
  graph.MakeEdge(0, 5);
  OXA_TEST_EQUALS(6, static_cast<long>(graph.NodeCount()));
  OXA_TEST_ASSERT(graph.IsEdge(0, 5) && !graph.IsEdge(5, 0));
  OXA_TEST_ASSERT(!graph.IsEdge(0, 6) && !graph.IsNode(6));

  graph.MakeEdge(0, 5);
  const GraphAdjListDirected::AdjList& list = graph.GetAdjList(0);
  OXA_TEST_EQUALS(1, static_cast<long>(list.end() - list.begin()));
  graph.AssureNode(2);
  OXA_TEST_EQUALS(6, static_cast<long>(graph.NodeCount()));
  graph.Clear();
  OXA_TEST_ASSERT(graph.begin() == graph.end());
}

void TEST_GraphAlgo::EnumeratedSets(std::string&) {
  EnumeratedSet<std::string> set;
  OXA_TEST_EQUALS(0, static_cast<long>(set.GetItemCount()));
  OXA_TEST_EQUALS(0, static_cast<long>(set["one"]));
  OXA_TEST_EQUALS(1, static_cast<long>(set.LookupOrAdd("another")));
  OXA_TEST_EQUALS(0, static_cast<long>(set.LookupOrAdd("one")));
  OXA_TEST_EQUALS(2, static_cast<long>(set.GetItemCount()));
  OXA_TEST_ASSERT(set.LookupByInt(0) == "one" && set.LookupByInt(1) == "another");

  unsigned index = 17;
  OXA_TEST_ASSERT(!set.IsItem("unknown") && !set.LookupNoAdd("unknown", index));
  OXA_TEST_EQUALS(17, static_cast<long>(index));
  OXA_TEST_ASSERT(set.LookupNoAdd("another", index));
  OXA_TEST_EQUALS(1, static_cast<long>(index));
  OXA_TEST_ASSERT(Raises<IndexOutOfBounds>([&] { set.LookupByInt(2); }));
}

void TEST_GraphAlgo::DirectedGraph(std::string&) {
  const GraphAdjListDirected graph = MakeGraph();
  for (Node ii = 0; ii < graph.NodeCount(); ++ii) {
    for (Node ij = 0; ij < graph.NodeCount(); ++ij) {
      OXA_TEST_ASSERT(graph.IsEdge(ii, ij) == (ii == 0 || (ii + 1 == ij && ii != 5)));
    }
  }
  OXA_TEST_ASSERT(graph.GetNodeIterator(graph.NodeCount()) == graph.end());
}

void TEST_GraphAlgo::TopoSort(std::string&) {
  Nodes sorted(1, 7);
  OXA_TEST_ASSERT(RawTopoSort(GraphAdjListDirected(), sorted) && sorted.empty());
  const GraphAdjListDirected graph = MakeGraphWithoutCycle();
  OXA_TEST_ASSERT(RawTopoSort(graph, sorted));
  OXA_TEST_ASSERT(IsSorted(graph, sorted));
  CheckCycles();
}

}  // namespace Oxa::Core
