// Random stacks and random operations: the same ones for the same seed, on every machine.
#ifndef OXACORE_TESTS_IO_MODEL_GENERATOR_H
#define OXACORE_TESTS_IO_MODEL_GENERATOR_H

#include <random>
#include <vector>

#include "Operations.h"

namespace Model {

class Generator {
 public:
  explicit Generator(unsigned long long seed);

  /// 0 to `end` - 1.
  unsigned long long Below(unsigned long long end) { return m_engine() % end; }
  bool Once(unsigned long long in) { return Below(in) == 0; }

  Store MakeStore();
  Layer MakeLayer();

  /// 0 to about 20, at times up to 3000.
  long long MakeCount();
  Bytes MakeData(std::size_t size);

  /// A value for the stream, as its bytes.
  Bytes MakeValue(Value type);
  Value MakeType() { return static_cast<Value>(Below(static_cast<unsigned long long>(Value::eEND))); }

  /// The first operations: a stack on each side, and a file that is open.
  std::vector<Operation> Begin(const Store& store);

  /// The next one; knows the stacks by the operations that it has given.
  Operation Next(const Store& store);

  /// The last operations: all filters go.
  std::vector<Operation> End();

  const std::vector<Layer>& Input() const { return m_input; }
  const std::vector<Layer>& Output() const { return m_output; }

 private:
  What Choose(const Store& store);
  Operation MakeOpen();
  int MakeLevel(const std::vector<Layer>& stack);
  bool FindLevel(const std::vector<Layer>& stack, Layer::Kind kind, int& level);
  Operation Push(What what);
  Operation Pop(What what);
  bool Complete(Operation& operation);
  void Offset(Operation& operation);

  std::mt19937_64 m_engine;
  int m_iAlphabet;
  std::vector<Layer> m_input, m_output;
};

}  // namespace Model

#endif
