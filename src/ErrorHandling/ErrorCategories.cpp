#include <Infrastructure/OxaCore/Error.h>

// The destructors stand here so that type information of each category has one home.
#define OXA_DEFINE_ERROR_CATEGORY(Class)                                         \
  Class::Class(const std::string& message) : ErrorClass(eERROR) {                \
    SetCategoryAndMessage(sCATEGORY, message);                                   \
  }                                                                              \
  Class::Class(const AlertData& data, const std::vector<CodeContext>& callStack, \
               const std::vector<CodeContext>& unwindStack)                      \
      : ErrorClass(data, callStack, unwindStack) {}                              \
  Class::~Class() = default

namespace Oxa::Core {

OXA_DEFINE_ERROR_CATEGORY(LogicError);
OXA_DEFINE_ERROR_CATEGORY(IOError);
OXA_DEFINE_ERROR_CATEGORY(OSError);
OXA_DEFINE_ERROR_CATEGORY(HardwareError);
OXA_DEFINE_ERROR_CATEGORY(UnknownError);

}  // namespace Oxa::Core
