// A random graph without cycles, of a million nodes and three million edges: built edge by edge, and sorted.
#include <Infrastructure/OxaCore/GraphAlgo.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <random>
#include <utility>
#include <vector>

#include "BenchSupport.h"

#ifdef OXA_PEER_BOOST
#include <boost/graph/adjacency_list.hpp>
#include <boost/graph/compressed_sparse_row_graph.hpp>
#include <boost/graph/topological_sort.hpp>
#endif

namespace {

using namespace Oxa::Core::GraphAlgo;

constexpr std::size_t uNODES = 1000000;
constexpr std::size_t uEDGES = 3000000;

using Edge = std::pair<std::size_t, std::size_t>;

// Edges lead to nodes of a random order that stand further ahead in it.
const std::vector<Edge>& Edges() {
  static const std::vector<Edge> edges = [] {
    std::mt19937 random(1);
    std::vector<std::size_t> order(uNODES);
    for (std::size_t node = 0; node < uNODES; ++node) order[node] = node;
    std::shuffle(order.begin(), order.end(), random);
    std::vector<Edge> made;
    while (made.size() < uEDGES) {
      const std::size_t a = random() % uNODES;
      const std::size_t b = random() % uNODES;
      if (a != b) made.emplace_back(order[std::max(a, b)], order[std::min(a, b)]);
    }
    return made;
  }();
  return edges;
}

void MustHold(bool condition) {
  if (!condition) std::abort();
}

GraphAdjListDirected OurGraph() {
  GraphAdjListDirected graph;
  for (const auto& [from, to] : Edges()) graph.MakeEdge(from, to);
  return graph;
}

void OursBuilt(benchmark::State& state) {
  Edges();
  for (auto _ : state) benchmark::DoNotOptimize(OurGraph());
}

void OursSorted(benchmark::State& state) {
  const GraphAdjListDirected graph = OurGraph();
  std::vector<unsigned long long> sorted;
  for (auto _ : state) {
    MustHold(RawTopoSort(graph, sorted));
    benchmark::DoNotOptimize(sorted.data());
    sorted = std::vector<unsigned long long>();
  }
}

OXA_BENCH("Graph of 10^6 nodes and 3 * 10^6 edges built", "Ours", OursBuilt)->Unit(benchmark::kMillisecond);
OXA_BENCH("Graph of 10^6 nodes and 3 * 10^6 edges sorted", "Ours", OursSorted)->Unit(benchmark::kMillisecond);

#ifdef OXA_PEER_BOOST
// "boost setS" holds an edge once, as ours does; "boost" holds it as often as it was added.
using BoostSets = boost::adjacency_list<boost::setS, boost::vecS, boost::directedS>;
using BoostVectors = boost::adjacency_list<boost::vecS, boost::vecS, boost::directedS>;
using BoostRows = boost::compressed_sparse_row_graph<boost::directedS>;

template <class Graph>
Graph BoostGraph() {
  Graph graph;
  for (const auto& [from, to] : Edges()) boost::add_edge(from, to, graph);
  return graph;
}

template <>
BoostRows BoostGraph<BoostRows>() {
  return BoostRows(boost::edges_are_unsorted_multi_pass, Edges().begin(), Edges().end(), uNODES);
}

template <class Graph>
void BoostBuilt(benchmark::State& state) {
  Edges();
  for (auto _ : state) {
    const Graph graph = BoostGraph<Graph>();
    benchmark::DoNotOptimize(boost::num_vertices(graph));
  }
}

template <class Graph>
void BoostSorted(benchmark::State& state) {
  const Graph graph = BoostGraph<Graph>();
  for (auto _ : state) {
    std::vector<std::size_t> sorted;
    boost::topological_sort(graph, std::back_inserter(sorted));
    MustHold(sorted.size() == boost::num_vertices(graph));
  }
}

#define BOOST_GRAPH(Graph, who)                                                       \
  OXA_BENCH("Graph of 10^6 nodes and 3 * 10^6 edges built", who, BoostBuilt<Graph>)   \
      ->Unit(benchmark::kMillisecond);                                                \
  OXA_BENCH("Graph of 10^6 nodes and 3 * 10^6 edges sorted", who, BoostSorted<Graph>) \
      ->Unit(benchmark::kMillisecond)

BOOST_GRAPH(BoostSets, "boost setS");
BOOST_GRAPH(BoostVectors, "boost");
BOOST_GRAPH(BoostRows, "boost rows");
#endif

}  // namespace
