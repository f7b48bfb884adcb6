#include <Infrastructure/OxaCore/Thread.h>

namespace Oxa::Core {

namespace {

constexpr char sLOG_NAME[] = "Oxa.Core.TaskDirective";
constexpr char sUNIMPLEMENTED[] =
    "TaskDirective::%1% called but wasn't implemented by the TaskDirective subclass";

}  // namespace

TaskDirective::~TaskDirective() = default;

void TaskDirective::WaitForStopRequest() {
  OXA_RAISE_ERROR(sLOG_NAME, UnimplementedInterface("WaitForStopRequest"));
}

bool TaskDirective::TimedWaitForStopRequest(const Elapse&) {
  OXA_RAISE_ERROR(sLOG_NAME, UnimplementedInterface("TimedWaitForStopRequest"));
  return false;
}

TaskDirective::UnimplementedInterface::UnimplementedInterface(const std::string& method)
    : ErrorClass(AlertMessage(sUNIMPLEMENTED, method)) {}

TaskDirective::UnimplementedInterface::~UnimplementedInterface() = default;

Task::~Task() = default;

}  // namespace Oxa::Core
