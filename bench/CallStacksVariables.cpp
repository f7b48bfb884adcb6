// Frames with variables; compiled for debugging (-O0 -g), whatever the rest is.
#include "CallStacks.h"

#include <string>

namespace {

struct Reading {
  int m_iChannel;
  double m_dValue;
  const char* m_pUnit;
};

}  // namespace

int DescendWithVariables(int depth, void (*bottom)()) {
  const std::string name = "channel " + std::to_string(depth);
  const Reading reading = {depth, depth * 0.5, "V"};
  const bool last = depth <= 1;
  if (last) {
    bottom();
  } else {
    DescendWithVariables(depth - 1, bottom);
  }
  return reading.m_iChannel + static_cast<int>(name.size());
}
