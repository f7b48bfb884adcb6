#include "Log/DefaultLogService.h"

namespace Oxa::Core {

DefaultLogService::DefaultLogService() : m_uRetained(0) {}

DefaultLogService::~DefaultLogService() = default;

}  // namespace Oxa::Core
