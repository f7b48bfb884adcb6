#include <Infrastructure/OxaCore/TempSet.h>

namespace Oxa::Core {

template class TempSet<bool>;

}  // namespace Oxa::Core
