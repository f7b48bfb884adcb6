#include <Infrastructure/OxaCore/Memory.h>

#include <gtest/gtest.h>

#include <type_traits>

namespace Oxa::Core {

namespace {

struct Counted {
  Counted() { ++s_iMade; }
  ~Counted() { ++s_iGone; }
  int m_iValue = 7;
  static int s_iMade;
  static int s_iGone;
};

int Counted::s_iMade = 0;
int Counted::s_iGone = 0;

TEST(GlobalAllocatorTest, MakesOneObjectThatCopiesShare) {
  boost::shared_ptr<Counted> object;
  {
    Memory::GlobalAllocator<Counted> first;
    Memory::GlobalAllocator<Counted> second(first);
    Memory::GlobalAllocator<Counted> third;
    EXPECT_EQ(2, Counted::s_iMade);
    third = first;
    EXPECT_EQ(1, Counted::s_iGone);
    object = third.GetPtr();
    EXPECT_EQ(first.GetPtr(), object);
    EXPECT_EQ(second.GetPtr(), object);
    EXPECT_EQ(7, object->m_iValue);
  }
  EXPECT_EQ(1, Counted::s_iGone);
  EXPECT_EQ(1, object.use_count());
  object.reset();
  EXPECT_EQ(2, Counted::s_iGone);
}

TEST(MemoryTest, MarkersStandAndDoNothing) {
  Memory::MemoryLeakDetection unmarked(1);
  const Memory::MemoryLeakDetectOnOff* const constants[] = {&Memory::DisableLeak, &Memory::EnableLeak};
  EXPECT_NE(constants[0], constants[1]);
  EXPECT_TRUE(std::has_virtual_destructor<Memory::MemoryLeakDetection>::value);
  EXPECT_TRUE(std::has_virtual_destructor<Memory::MemoryLeakDetectOnOff>::value);
  EXPECT_TRUE(std::has_virtual_destructor<Memory::GlobalAllocator<Counted>>::value);
}

}  // namespace

}  // namespace Oxa::Core
