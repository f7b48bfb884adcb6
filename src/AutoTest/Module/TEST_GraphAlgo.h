// A suite of the module's own tests.
#ifndef OXACORE_AUTOTEST_MODULE_TEST_GRAPHALGO_H
#define OXACORE_AUTOTEST_MODULE_TEST_GRAPHALGO_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>

namespace Oxa::Core {

/// "GraphAlgo Tests": graphs, their order, and the sets that number items.
class TEST_GraphAlgo : public TestSuite {
 public:
  TEST_GraphAlgo();

 private:
  void AdjListDirected(std::string& text);
  void EnumeratedSets(std::string& text);
  void DirectedGraph(std::string& text);
  void TopoSort(std::string& text);
};

}  // namespace Oxa::Core

#endif
