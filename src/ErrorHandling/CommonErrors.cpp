#include <Infrastructure/OxaCore/CommonErrors.h>

namespace Oxa::Core {

namespace {

const char* const sNOT_PROVIDED = "{Not Provided}";

// Without a template, which costs a parse each time.
std::string MessageOf(const std::string& name, const std::string& value) {
  try {
    return "Invalid Parameter: " + name + " = " + value;
  } catch (...) {
    return AlertMessageFailed();
  }
}

}  // namespace

AssertionFailure::AssertionFailure(const std::string& message) : ErrorClass(AlertMessage("%1%", message)) {}
AssertionFailure::~AssertionFailure() = default;

NullPointer::NullPointer(const std::string& variable)
    : ErrorClass(AlertMessage("NULL pointer variable named %1%", variable)) {}
NullPointer::~NullPointer() = default;

StdException::StdException(const std::exception& cause)
    : ErrorClass(AlertMessage("Caught std::exception - %1%", cause.what())) {}
StdException::~StdException() = default;

IndexOutOfBounds::IndexOutOfBounds(long long index, const std::string& container, unsigned long long size)
    : ErrorClass(
          AlertMessage("Out of bounds index of %1% for %2% with size of %3%", index, container, size)) {}
IndexOutOfBounds::~IndexOutOfBounds() = default;

NoSuchFunction::NoSuchFunction(const std::string& function, const std::string& module)
    : ErrorClass(AlertMessage("No function named %1% exists in %2%", function, module)) {}
NoSuchFunction::~NoSuchFunction() = default;

AllocationFailed::AllocationFailed(const std::string& what)
    : ErrorClass(AlertMessage("Attempt to allocate %1% failed", what)) {}
AllocationFailed::~AllocationFailed() = default;

InvalidParameter::InvalidParameter(const std::string& name) : ErrorClass(std::string()) {
  Construct(name, sNOT_PROVIDED);
}

InvalidParameter::InvalidParameter(const Printed& parameter) : ErrorClass(std::string()) {
  Construct(parameter.m_sName, parameter.m_sValue);
}

InvalidParameter::InvalidParameter(const AlertData& data) : ErrorClass(std::string()) {
  for (const auto& [key, value] : data) {
    if (key != sSEVERITY && key != AlertInfo::sCATEGORY && key != sINHERITANCE) StoreText(key, value);
  }
  Construct(GetData(sPARAM_NAME), DataExists(sPARAM_VALUE) ? GetData(sPARAM_VALUE) : sNOT_PROVIDED);
}

InvalidParameter::~InvalidParameter() = default;

void InvalidParameter::Construct(const std::string& name, const std::string& value) {
  const std::string message = MessageOf(name, value);
  StoreText(sPARAM_NAME, name);
  StoreText(sPARAM_VALUE, value);
  if (!message.empty()) StoreText(sMESSAGE, message);
}

}  // namespace Oxa::Core
