#include <Infrastructure/OxaCore/CallbackTask.h>

#include <utility>

namespace Oxa::Core {

CallbackTask::CallbackTask(boost::shared_ptr<Callback> callback) : m_spCallback(std::move(callback)) {}

CallbackTask::~CallbackTask() = default;

int CallbackTask::Run(TaskDirective&) {
  (*m_spCallback)();
  return 0;
}

}  // namespace Oxa::Core
