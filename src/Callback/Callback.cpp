#include <Infrastructure/OxaCore/Callback.h>

namespace Oxa::Core {

Callback::~Callback() = default;

GlobalCallback::~GlobalCallback() = default;

void GlobalCallback::operator()() { m_pFunction(); }

}  // namespace Oxa::Core
