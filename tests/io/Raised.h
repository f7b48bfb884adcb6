// What an action raises, as one text.
#ifndef OXACORE_TESTS_IO_RAISED_H
#define OXACORE_TESTS_IO_RAISED_H

#include <Infrastructure/OxaCore/io/IOErrors.h>
#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

namespace IoTests {

/// "LOG NAME: MESSAGE" of the error of exactly that class that `action` raises.
template <class TheError, class Action>
std::string Raised(const Action& action) {
  try {
    action();
  } catch (Oxa::Core::Error& error) {
    EXPECT_EQ(typeid(TheError), typeid(error)) << error.what();
    return error.GetData(Oxa::Core::AlertInfo::sLOG_NAME) + ": " + error.what();
  }
  return "nothing raised";
}

}  // namespace IoTests

#endif
