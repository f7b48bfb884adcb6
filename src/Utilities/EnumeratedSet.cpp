#include <Infrastructure/OxaCore/EnumeratedSet.h>

#include <Infrastructure/OxaCore/CommonErrors.h>

namespace Oxa::Core::GraphAlgo {

namespace {

const char* const sLOG_NAME = "Oxa.Core.GraphAlgo";
const char* const sCONTAINER = "EnumeratedSet";

}  // namespace

void RaiseNoSuchItem(unsigned index, std::size_t count) {
  OXA_RAISE_ERROR(sLOG_NAME, IndexOutOfBounds(index, sCONTAINER, count));
}

}  // namespace Oxa::Core::GraphAlgo
