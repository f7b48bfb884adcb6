// A module whose function does what the variable BAD_MODULE says, as do its loading and its unloading.
#include <Infrastructure/OxaCore/AutoTest.h>
#include <Infrastructure/OxaCore/CommonErrors.h>

#include <unistd.h>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string>

using namespace Oxa::Core;

namespace {

bool Wants(const char* what) {
  const char* const wanted = std::getenv("BAD_MODULE");
  return wanted != nullptr && wanted == std::string(what);
}

struct Life {
  Life() {
    if (Wants("dies on loading")) ::raise(SIGKILL);
  }
  ~Life() {
    if (Wants("dies on unloading")) ::raise(SIGKILL);
  }
};
const Life s_life;

class Passing : public Test {
 public:
  Passing() : Test("Passes") {}
  ~Passing() override {
    if (Wants("dies with its tree")) ::raise(SIGKILL);
  }

 protected:
  Result Execute() override { return Result(GetName(), Result::ePASSED, ""); }
};

boost::shared_ptr<TestSuite> Tree() {
  boost::shared_ptr<TestSuite> root = boost::make_shared<TestSuite>("Bad Module Tests");
  if (!Wants("empty")) root->AddTest(boost::make_shared<Passing>());
  return root;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) boost::shared_ptr<TestSuite> GetModuleTestSuite();
boost::shared_ptr<TestSuite> GetModuleTestSuite() {
  static bool s_again = false;
  if (Wants("null") || (Wants("prints but once") && s_again)) return boost::shared_ptr<TestSuite>();
  s_again = true;
  if (Wants("prints") || Wants("prints but once")) std::cout << "a tree" << std::endl;
  if (Wants("raises")) OXA_RAISE_ERROR("Acme.Probe", InvalidParameter("channel"));
  if (Wants("throws")) throw std::runtime_error("of the language");
  if (Wants("throws a number")) throw 7;
  if (Wants("exits")) std::exit(0);
  if (Wants("dies")) ::raise(SIGKILL);
  const bool stubborn = Wants("hangs whatever it is asked");
  if (stubborn) ::signal(SIGTERM, SIG_IGN);
  while (stubborn || Wants("hangs")) ::pause();
  return Tree();
}
