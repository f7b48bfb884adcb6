// A directed graph over integer node numbers, and its topological sort. EnumeratedSet.h gives items such numbers.
//
// Thread safety: none of its own. Concurrent reads are safe; a graph under construction belongs to one thread.
// Failures: InvalidParameter for a node number that no graph can hold; std::bad_alloc where memory is short, with
// the graph as it was or with the new nodes but not the new edge. Nodes are dense: making node n makes n + 1 of them.
//
//   GraphAdjListDirected needs;  // an edge leads to what has to come first
//   needs.MakeEdge(eREPORT, eMEASURE);
//   needs.MakeEdge(eMEASURE, eWARM_UP);
//   std::vector<unsigned long long> order;
//   if (RawTopoSort(needs, order)) Run(order);  // eWARM_UP, eMEASURE, eREPORT
#ifndef INFRASTRUCTURE_OXACORE_GRAPHALGO_H
#define INFRASTRUCTURE_OXACORE_GRAPHALGO_H

#include <Infrastructure/OxaCore/Export.h>

#include <vector>

namespace Oxa::Core::GraphAlgo {

/// Nodes 0 to NodeCount() - 1, each with the list of its successors.
class OXACORE_API GraphAdjListDirected {
 public:
  /// The successors of one node in the order of their first insertion, none of them twice. Searched linearly. Three
  /// have room in the list itself: most nodes have few, and cost no memory beside it.
  class OXACORE_API AdjList {
   public:
    /// Over the numbers of the nodes.
    using const_iterator = const unsigned long long*;

    AdjList() = default;
    AdjList(const AdjList& other);
    AdjList(AdjList&& other) noexcept : AdjList() { Swap(other); }
    AdjList& operator=(AdjList other) noexcept {
      Swap(other);
      return *this;
    }
    ~AdjList() {
      if (m_uRoom > uFEW) delete[] m_nodes.m_pMany;
    }

    /// Appends `n` unless it is there.
    void AddAdj(unsigned long long n);

    // Valid until a node or an edge is made.
    const_iterator begin() const { return m_uRoom > uFEW ? m_nodes.m_pMany : m_nodes.m_few; }
    const_iterator end() const { return begin() + m_uCount; }

   private:
    static constexpr unsigned uFEW = 3;

    union Nodes {
      unsigned long long m_few[uFEW];
      unsigned long long* m_pMany;  ///< m_uRoom of them, if those are more than uFEW
    };

    void Swap(AdjList& other) noexcept;
    void Append(unsigned long long n);

    unsigned m_uCount = 0;
    unsigned m_uRoom = uFEW;
    Nodes m_nodes = {};
  };

  /// Over the nodes' lists of successors, by the number of the node.
  using const_iterator = std::vector<AdjList>::const_iterator;

  /// Makes the nodes up to `n` that aren't there yet. Raises InvalidParameter("n"), and makes none, if there can't
  /// be so many.
  void AssureNode(unsigned long long n);

  /// Assures both nodes and adds the edge, unless it is there. Raises as AssureNode does.
  void MakeEdge(unsigned long long aFrom, unsigned long long aTo);

  /// Whether `n` is a node.
  bool IsNode(unsigned long long n) const { return n < m_lists.size(); }
  /// False as well if one of the two is no node.
  bool IsEdge(unsigned long long aFrom, unsigned long long aTo) const;

  /// How many nodes there are; their numbers end below that.
  unsigned long long NodeCount() const { return m_lists.size(); }
  /// Removes all nodes.
  void Clear() { m_lists.clear(); }

  /// The successors of `n`, which must be a node. Valid until a node is made.
  const AdjList& GetAdjList(unsigned long long n) const { return m_lists[n]; }
  /// The same as an iterator; NodeCount() gives end().
  const_iterator GetNodeIterator(unsigned long long n) const {
    return m_lists.begin() + static_cast<const_iterator::difference_type>(n);
  }
  const_iterator begin() const { return m_lists.begin(); }
  const_iterator end() const { return m_lists.end(); }

 private:
  std::vector<AdjList> m_lists;
};

/// Puts all nodes into `aSorted`, each behind all its successors; among those that could come next, by the node
/// numbers of the starts and the order of the successors. True then. Needs no stack for deep graphs, and time in
/// proportion to nodes and edges.
///
/// False if the graph has a cycle (a node that is its own successor is one). `aSorted` then holds the node that
/// closes the cycle and, once per further node of the cycle, the node that leads to it: of 0 -> 1 -> 2 -> 0 it
/// holds 0, 2, 2.
OXACORE_API bool RawTopoSort(const GraphAdjListDirected& aGraph, std::vector<unsigned long long>& aSorted);

}  // namespace Oxa::Core::GraphAlgo

#endif
