#include <Infrastructure/OxaCore/ModuleTestSuite.h>

#include "AutoTest/Module/TEST_BadPixel.h"
#include "AutoTest/Module/TEST_Callback.h"
#include "AutoTest/Module/TEST_Encryption.h"
#include "AutoTest/Module/TEST_ErrorHandling.h"
#include "AutoTest/Module/TEST_GraphAlgo.h"
#include "AutoTest/Module/TEST_Notifications.h"
#include "AutoTest/Module/TEST_OxaTime.h"
#include "AutoTest/Module/TEST_PathName.h"
#include "AutoTest/Module/TEST_PerformanceTimer.h"
#include "AutoTest/Module/TEST_SmartPtr.h"
#include "AutoTest/Module/TEST_StringTools.h"
#include "AutoTest/Module/TEST_UnitDescriptor.h"
#include "AutoTest/Module/TEST_UnitDictionary.h"
#include "AutoTest/Module/TEST_UnitizedValue.h"
#include "AutoTest/Module/TEST_container_ptr.h"
#include "AutoTest/Module/TEST_io.h"

namespace {

using namespace Oxa::Core;

template <class Suite>
boost::shared_ptr<Test> Make() {
  return boost::shared_ptr<Test>(new Suite);
}

using Maker = boost::shared_ptr<Test> (*)();

// The order is promised: it is that of the runs.
const Maker aMAKERS[] = {Make<TEST_SmartPtr>,         Make<TEST_BadPixel>,
                         Make<TEST_PerformanceTimer>, Make<TEST_StringTools>,
                         Make<TEST_PathName>,         Make<TEST_GraphAlgo>,
                         Make<TEST_container_ptr>,    Make<TEST_Notifications>,
                         Make<TEST_Encryption>,       Make<TEST_io>,
                         Make<TEST_UnitDescriptor>,   Make<TEST_UnitDictionary>,
                         Make<TEST_UnitizedValue>,    Make<TEST_ErrorHandling>,
                         Make<TEST_Callback>,         Make<TEST_OxaTime>};

}  // namespace

boost::shared_ptr<Oxa::Core::TestSuite> GetModuleTestSuite() {
  boost::shared_ptr<TestSuite> root(new TestSuite("OxaCore Tests"));
  for (const Maker make : aMAKERS) root->AddTest(make());
  return root;
}
