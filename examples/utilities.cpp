#include <Infrastructure/OxaCore/EnumeratedSet.h>
#include <Infrastructure/OxaCore/GraphAlgo.h>
#include <Infrastructure/OxaCore/ObjectPool.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/StringTools.h>

#include <iostream>
#include <new>
#include <string>
#include <vector>

using namespace Oxa::Core;

// Reads "what -> what it needs" and gives the order in which all of it can be done.
void Order(const std::string& text) {
  GraphAlgo::EnumeratedSet<std::string> steps;  // numbers for names
  GraphAlgo::GraphAdjListDirected needs;
  std::vector<std::string> lines;
  std::vector<std::string> parts;
  StringTools::Split(text, ";", lines);
  for (const std::string& line : lines)
    if (StringTools::Split(line, "->", parts) == 2)
      needs.MakeEdge(steps[StringTools::TrimWS(parts[0])], steps[StringTools::TrimWS(parts[1])]);
  std::vector<unsigned long long> order;
  if (!GraphAlgo::RawTopoSort(needs, order)) std::cout << "these need each other:";
  for (const unsigned long long step : order) std::cout << ' ' << steps.LookupByInt(unsigned(step));
  std::cout << '\n';
}

struct Sample {
  int m_iChannel;
  int m_iValue;
};

// Slots of one size, for what comes and goes often.
class Samples : public ObjectPoolBase {
 public:
  Samples() : ObjectPoolBase(sizeof(Sample), 200) {}
  Sample* Make(int channel, int value) { return new (AllocateObjectMemory()) Sample{channel, value}; }
  void Free(Sample* sample) { Deallocate(sample); }

 private:
  void DestroyObject(void* object) override { static_cast<Sample*>(object)->~Sample(); }
};

int main() {
  InitializeOxaCore();
  Order("report -> measure; measure -> calibrate; calibrate -> warm up; report -> log in");
  Order("egg -> hen; hen -> egg");

  Samples samples;
  Sample* const sample = samples.Make(3, 250);
  std::cout << "channel " << sample->m_iChannel << ": " << sample->m_iValue << '\n';
  samples.Free(sample);
  ShutdownOxaCore();
}
