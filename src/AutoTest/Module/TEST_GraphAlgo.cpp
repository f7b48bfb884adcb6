#include "AutoTest/Module/TEST_GraphAlgo.h"

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_GraphAlgo::TEST_GraphAlgo() : TestSuite("GraphAlgo Tests") {
  AddTestMethods(*this, {{"TestGraphAdjListDirected", &TEST_GraphAlgo::AdjListDirected},
                         {"TestEnumeratedSet", &TEST_GraphAlgo::EnumeratedSets},
                         {"TestDirectedGraph", &TEST_GraphAlgo::DirectedGraph},
                         {"TestRawTopoSort", &TEST_GraphAlgo::TopoSort}});
}

void TEST_GraphAlgo::AdjListDirected(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_GraphAlgo::EnumeratedSets(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_GraphAlgo::DirectedGraph(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_GraphAlgo::TopoSort(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
