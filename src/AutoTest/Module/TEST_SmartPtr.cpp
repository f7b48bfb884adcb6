#include "AutoTest/Module/TEST_SmartPtr.h"

#include <boost/make_shared.hpp>
#include <boost/shared_array.hpp>

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

namespace {

// What is shared here counts those that live.
class Base {
 public:
  explicit Base(int& alive) : m_iAlive(alive) { ++m_iAlive; }
  Base(const Base&) = delete;
  Base& operator=(const Base&) = delete;
  virtual ~Base() { --m_iAlive; }
  virtual int Number() const { return 1; }

 private:
  int& m_iAlive;
};

class Derived : public Base {
 public:
  explicit Derived(int& alive) : Base(alive) {}
  int Number() const override { return 2; }
};

using BasePtr = boost::shared_ptr<Base>;

void CheckSharedArray() {
  boost::shared_array<double> array(new double[3]);
  for (int index = 0; index < 3; ++index) array[index] = index * 1.5;
  OXA_TEST_EQUALS_DELTA(3.0, array[2], 0.0);
  OXA_TEST_ASSERT(&array[2] == array.get() + 2 && array.unique());
  array.reset();
  OXA_TEST_ASSERT(!array);
}

}  // namespace

TEST_SmartPtr::TEST_SmartPtr() : TestSuite("Smart Pointer Tests") {
  AddTestMethods(*this, {{"Test default construction/destruction", &TEST_SmartPtr::DefaultConstruction},
                         {"Test copy construction/destruction", &TEST_SmartPtr::CopyConstruction},
                         {"Test assignment operator", &TEST_SmartPtr::Assignment},
                         {"Test implicit type conversion in copy & assign", &TEST_SmartPtr::Conversions},
                         {"Test dereferencing a pointer", &TEST_SmartPtr::Dereferencing},
                         {"Tests array storage and array style access", &TEST_SmartPtr::Arrays}});
}

void TEST_SmartPtr::DefaultConstruction(std::string&) {
  const BasePtr none;
  OXA_TEST_ASSERT(!none && none.get() == nullptr);
  OXA_TEST_EQUALS(0, none.use_count());

  int alive = 0;
  {
    const BasePtr one(new Base(alive));
    OXA_TEST_EQUALS(1, alive);
    OXA_TEST_ASSERT(one.unique());
  }
  OXA_TEST_EQUALS(0, alive);
}

void TEST_SmartPtr::CopyConstruction(std::string&) {
  int alive = 0;
  BasePtr first = boost::make_shared<Base>(alive);
  {
    const BasePtr second(first);
    OXA_TEST_ASSERT(second == first);
    OXA_TEST_EQUALS(2, first.use_count());
    first.reset();
    OXA_TEST_EQUALS(1, alive);
  }
  OXA_TEST_EQUALS(0, alive);
}

void TEST_SmartPtr::Assignment(std::string&) {
  int alive = 0;
  BasePtr first = boost::make_shared<Base>(alive);
  BasePtr second = boost::make_shared<Base>(alive);
  OXA_TEST_EQUALS(2, alive);
  second = first;  // the last holder of the other one lets go
  OXA_TEST_EQUALS(1, alive);
  const BasePtr& itself = second;
  second = itself;
  OXA_TEST_ASSERT(second == first && first.use_count() == 2);
  first = BasePtr();
  second.reset();
  OXA_TEST_EQUALS(0, alive);
}

void TEST_SmartPtr::Conversions(std::string&) {
  int alive = 0;
  boost::shared_ptr<Derived> derived = boost::make_shared<Derived>(alive);
  BasePtr base(derived);
  OXA_TEST_EQUALS(2, base->Number());
  OXA_TEST_ASSERT(boost::dynamic_pointer_cast<Derived>(base) == derived);
  base = boost::make_shared<Base>(alive);
  OXA_TEST_EQUALS(2, alive);
  base = derived;
  OXA_TEST_EQUALS(1, alive);
  derived.reset();
  OXA_TEST_EQUALS(2, base->Number());
  base.reset();
  OXA_TEST_EQUALS(0, alive);
}

void TEST_SmartPtr::Dereferencing(std::string&) {
  int alive = 0;
  Base* const object = new Base(alive);
  const BasePtr ptr(object);
  OXA_TEST_ASSERT(ptr.get() == object && &*ptr == object && ptr.operator->() == object);
  OXA_TEST_EQUALS(1, ptr->Number());
}

void TEST_SmartPtr::Arrays(std::string&) {
  int alive = 0;
  {
    const boost::shared_ptr<BasePtr[]> array = boost::make_shared<BasePtr[]>(3);
    for (int index = 0; index < 3; ++index) array[index] = boost::make_shared<Base>(alive);
    OXA_TEST_EQUALS(3, alive);
    array[1].reset();
    OXA_TEST_EQUALS(2, alive);
    OXA_TEST_ASSERT(&array[2] == array.get() + 2);
  }
  OXA_TEST_EQUALS(0, alive);
  CheckSharedArray();
}

}  // namespace Oxa::Core
