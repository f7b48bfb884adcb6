#include "System/ProcessPath.h"

#include <cstddef>

#include "System/PublishedText.h"

namespace Oxa::Core {

namespace {

constexpr std::size_t uMAX_NAME = 4096;

PublishedText<uMAX_NAME> s_processPath;

}  // namespace

const char* PlainProcessPath() noexcept { return s_processPath.Get(); }

void PublishProcessPath(const std::string& path) noexcept { s_processPath.Set(path); }

}  // namespace Oxa::Core
