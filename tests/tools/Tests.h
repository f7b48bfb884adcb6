// What the modules of these tests build their trees from.
#ifndef OXACORE_TESTS_TOOLS_TESTS_H
#define OXACORE_TESTS_TOOLS_TESTS_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <functional>
#include <string>
#include <utility>

namespace ModuleTests {

// What it does is given to it.
class Doing : public Oxa::Core::Test {
 public:
  Doing(const std::string& name, std::function<std::string()> work, std::function<void()> end = nullptr)
      : Test(name), m_work(std::move(work)), m_end(std::move(end)) {}

 protected:
  Oxa::Core::Test::Result Execute() override { return {GetName(), Result::ePASSED, m_work()}; }
  void TearDown() override {
    if (m_end) m_end();
  }

 private:
  std::function<std::string()> m_work;
  std::function<void()> m_end;
};

class Suite : public Oxa::Core::TestSuite {
 public:
  explicit Suite(const std::string& name, std::function<void()> begin = nullptr)
      : TestSuite(name), m_begin(std::move(begin)) {}

  Suite& With(const std::string& name, std::function<std::string()> work,
              std::function<void()> end = nullptr) {
    AddTest(boost::make_shared<Doing>(name, std::move(work), std::move(end)));
    return *this;
  }

 protected:
  void Setup() override {
    if (m_begin) m_begin();
  }

 private:
  std::function<void()> m_begin;
};

using SuitePtr = boost::shared_ptr<Suite>;

}  // namespace ModuleTests

#endif
