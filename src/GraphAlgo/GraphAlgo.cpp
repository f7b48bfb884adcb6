#include <Infrastructure/OxaCore/GraphAlgo.h>

#include <Infrastructure/OxaCore/CommonErrors.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace Oxa::Core::GraphAlgo {

namespace {

const char* const sLOG_NAME = "Oxa.Core.GraphAlgo";

enum Mark : std::int32_t { eNOT_VISITED, eON_PATH, eFINISHED };

// The depth-first search of a topological sort.
class TopoSort {
 public:
  TopoSort(const GraphAdjListDirected& graph, std::vector<unsigned long long>& sorted)
      : m_graph(graph), m_marks(graph.NodeCount(), eNOT_VISITED), m_sorted(sorted) {
    m_sorted.clear();
    m_sorted.reserve(graph.NodeCount());
  }

  bool Run() {
    for (unsigned long long node = 0; node < m_graph.NodeCount(); ++node) {
      if (m_marks[node] == eNOT_VISITED && !Visit(node)) return false;
    }
    return true;
  }

 private:
  using Position = GraphAdjListDirected::AdjList::const_iterator;

  struct Frame {
    unsigned long long m_node;
    Position m_next;
    Position m_end;
  };

  bool Visit(unsigned long long start) {
    Push(start);
    while (!m_path.empty()) {
      Frame& top = m_path.back();
      if (top.m_next == top.m_end) {
        Finish(top.m_node);
        continue;
      }
      // The position moves on at once, not only when the successor is finished: nobody looks at it in between.
      const unsigned long long next = *top.m_next++;
      if (m_marks[next] == eON_PATH) {
        TellCycle(next);
        return false;
      }
      if (m_marks[next] == eNOT_VISITED) Push(next);
    }
    return true;
  }

  void Push(unsigned long long node) {
    const GraphAdjListDirected::AdjList& list = m_graph.GetAdjList(node);
    m_marks[node] = eON_PATH;
    m_path.push_back({node, list.begin(), list.end()});
  }

  void Finish(unsigned long long node) {
    m_marks[node] = eFINISHED;
    m_sorted.push_back(node);
    m_path.pop_back();
  }

  // Callers rely on it that each step gives the top of the path, and not the frame that the walk stands at.
  void TellCycle(unsigned long long node) {
    m_sorted.assign(1, node);
    for (auto frame = m_path.rbegin(); frame != m_path.rend() && frame->m_node != node; ++frame) {
      m_sorted.push_back(m_path.back().m_node);
    }
  }

  const GraphAdjListDirected& m_graph;
  std::vector<Mark> m_marks;
  std::vector<Frame> m_path;
  std::vector<unsigned long long>& m_sorted;
};

}  // namespace

GraphAdjListDirected::AdjList::AdjList(const AdjList& other) : AdjList() {
  for (const unsigned long long node : other) Append(node);
}

void GraphAdjListDirected::AdjList::AddAdj(unsigned long long n) {
  if (std::find(begin(), end(), n) == end()) Append(n);
}

void GraphAdjListDirected::AdjList::Append(unsigned long long n) {
  if (m_uCount == m_uRoom) {
    auto* const many = new unsigned long long[m_uRoom * std::size_t{2}];
    std::copy(begin(), end(), many);
    if (m_uRoom > uFEW) delete[] m_nodes.m_pMany;
    m_nodes.m_pMany = many;
    m_uRoom *= 2;
  }
  (m_uRoom > uFEW ? m_nodes.m_pMany : m_nodes.m_few)[m_uCount++] = n;
}

void GraphAdjListDirected::AdjList::Swap(AdjList& other) noexcept {
  std::swap(m_uCount, other.m_uCount);
  std::swap(m_uRoom, other.m_uRoom);
  std::swap(m_nodes, other.m_nodes);
}

void GraphAdjListDirected::AssureNode(unsigned long long n) {
  if (n >= m_lists.max_size()) {
    OXA_RAISE_ERROR(sLOG_NAME, InvalidParameter("n", n));
    return;
  }
  if (!IsNode(n)) m_lists.resize(static_cast<std::size_t>(n) + 1);
}

void GraphAdjListDirected::MakeEdge(unsigned long long aFrom, unsigned long long aTo) {
  const unsigned long long greater = std::max(aFrom, aTo);
  AssureNode(greater);
  if (IsNode(greater)) m_lists[aFrom].AddAdj(aTo);
}

bool GraphAdjListDirected::IsEdge(unsigned long long aFrom, unsigned long long aTo) const {
  if (!IsNode(std::max(aFrom, aTo))) return false;
  const AdjList& list = m_lists[aFrom];
  return std::find(list.begin(), list.end(), aTo) != list.end();
}

bool RawTopoSort(const GraphAdjListDirected& aGraph, std::vector<unsigned long long>& aSorted) {
  return TopoSort(aGraph, aSorted).Run();
}

}  // namespace Oxa::Core::GraphAlgo
