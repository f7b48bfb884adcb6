#include "Generator.h"

#include <iterator>

namespace Model {

namespace {

constexpr Count s_bufferSizes[] = {0, 1, 2, 3, 4, 5, 7, 8, 16, 31, 64, 512, 2048};
constexpr Count s_limits[] = {0, 1, 2, 3, 10, 30, 100, 200, 300, 1000, ~0ULL, ~0ULL};
constexpr Count s_pipeSizes[] = {1, 2, 3, 7, 16, 40, 500};
const char* const s_separators[] = {"\r\n", "\n", "", "--"};
const char* const s_names[] = {"a", "b"};

// How often each is chosen, in the order of What.
constexpr unsigned int s_weights[] = {14, 10, 6,  5, 10, 1, 2, 2, 2,  // reading
                                      14, 8,  10, 6, 1,  2, 2, 2, 1,  // writing
                                      3,  7,  6,  3, 3,  2, 2, 2};    // the file
static_assert(std::size(s_weights) == static_cast<std::size_t>(What::eEND), "a weight for each");

constexpr unsigned int WeightUpTo(What end) {
  unsigned int weight = 0;
  for (int index = 0; index < static_cast<int>(end); ++index) weight += s_weights[index];
  return weight;
}

}  // namespace

Generator::Generator(unsigned long long seed) : m_engine(seed), m_iAlphabet(static_cast<int>(Below(4))) {}

Store Generator::MakeStore() {
  Store store;
  store.m_bPipe = Below(5) < 2;
  store.m_ulPipeSize = s_pipeSizes[Below(std::size(s_pipeSizes))];
  store.m_bReaderWaits = Once(100);  // takes a millisecond each time
  store.m_bWriterWaits = Once(100);
  return store;
}

Layer Generator::MakeLayer() {
  Layer layer;
  layer.m_eKind = static_cast<Layer::Kind>(Below(4));
  if (layer.m_eKind == Layer::eBOUNDED) {
    layer.m_ulSize = s_limits[Below(std::size(s_limits))];
  } else {
    layer.m_ulSize = s_bufferSizes[Below(std::size(s_bufferSizes))];
  }
  layer.m_bSeparators = Once(2);
  layer.m_iLineLength = static_cast<int>(Below(9)) - 1;
  layer.m_sSeparator = s_separators[Below(std::size(s_separators))];
  return layer;
}

long long Generator::MakeCount() {
  if (Once(30)) return static_cast<long long>(Below(3000));
  return static_cast<long long>(Once(2) ? Below(60) : Below(12));
}

Bytes Generator::MakeData(std::size_t size) {
  static const char text[] = "TWFuTWE9TQAAQUJDREVGZ2hpamtsbW5v=\r\n +/\xff";
  Bytes data(size, '\0');
  for (char& byte : data) {
    if (m_iAlphabet == 0) byte = static_cast<char>(Below(256));
    if (m_iAlphabet == 1 || m_iAlphabet == 3) byte = text[Below(sizeof(text) - 1)];
    if (m_iAlphabet == 2) byte = static_cast<char>(Below(4) == 0 ? Below(12) : 0);
  }
  return data;
}

Bytes Generator::MakeValue(Value type) {
  if (type == Value::eBOOL) return Bytes(1, static_cast<char>(Below(2)));
  if (WidthOf(type) != 0) return MakeData(static_cast<std::size_t>(WidthOf(type)));
  // Now and then about as long as what just fits the stack's 256 bytes on the way in.
  const auto length = static_cast<std::size_t>(Once(6) ? 120 + Below(140) : Below(10));
  return MakeData(type == Value::eSTRING ? length : 2 * length);
}

Operation Generator::Push(What what) {
  Operation operation;
  operation.m_eWhat = what;
  operation.m_layer = MakeLayer();
  std::vector<Layer>& stack = what == What::ePUSH_INPUT ? m_input : m_output;
  // Base64 on a buffer works in blocks, unlike on all else.
  if (!stack.empty() && stack.back().m_eKind == Layer::eBUFFERED && Once(2))
    operation.m_layer.m_eKind = Layer::eBASE64;
  stack.push_back(operation.m_layer);
  return operation;
}

Operation Generator::Pop(What what) {
  Operation operation;
  operation.m_eWhat = what;
  (what == What::ePOP_INPUT ? m_input : m_output).pop_back();
  return operation;
}

Operation Generator::MakeOpen() {
  Operation operation;
  operation.m_eWhat = What::eOPEN;
  operation.m_data = s_names[Below(std::size(s_names))];
  operation.m_uMode = Once(3) ? static_cast<unsigned int>(1 + Below(2)) : 3;
  operation.m_eOpening = Once(2) ? Opening::eALWAYS : static_cast<Opening>(Below(4));
  return operation;
}

std::vector<Operation> Generator::Begin(const Store& store) {
  std::vector<Operation> operations;
  for (Count depth = Below(5); depth != 0; --depth) operations.push_back(Push(What::ePUSH_INPUT));
  for (Count depth = Below(5); depth != 0; --depth) operations.push_back(Push(What::ePUSH_OUTPUT));
  if (!store.m_bPipe) {
    operations.push_back(MakeOpen());
    operations.back().m_eOpening = Opening::eEMPTY;
    operations.back().m_uMode |= 2U;
  }
  Operation fill;
  fill.m_eWhat = What::eWRITE;
  fill.m_data = MakeData(static_cast<std::size_t>(Below(store.m_bPipe ? store.m_ulPipeSize + 1 : 500)));
  operations.push_back(fill);
  return operations;
}

What Generator::Choose(const Store& store) {
  const What end = store.m_bPipe ? What::eSET_INPUT : What::eEND;
  auto place = static_cast<unsigned int>(Below(WeightUpTo(end)));
  int index = 0;
  for (; place >= s_weights[index]; ++index) place -= s_weights[index];
  return static_cast<What>(index);
}

// The top as a rule; whoever uses what is beneath must get what is said, too.
int Generator::MakeLevel(const std::vector<Layer>& stack) {
  return Once(6) ? static_cast<int>(Below(stack.size() + 1)) : static_cast<int>(stack.size());
}

// The uppermost of its kind.
bool Generator::FindLevel(const std::vector<Layer>& stack, Layer::Kind kind, int& level) {
  level = static_cast<int>(stack.size());
  while (level > 0 && stack[static_cast<std::size_t>(level - 1)].m_eKind != kind) --level;
  return level > 0;
}

void Generator::Offset(Operation& operation) {
  operation.m_eWhere = static_cast<Where>(Once(25) ? 3 : Below(3));
  operation.m_iNumber =
      operation.m_eWhere == Where::eFROM_BEGIN ? MakeCount() : static_cast<long long>(Below(30)) - 15;
  if (operation.m_eWhere == Where::eFROM_END && !Once(5)) operation.m_iNumber = -MakeCount();
  if (Once(20)) operation.m_iNumber = -operation.m_iNumber;
}

// Whether such an operation is possible with these stacks.
bool Generator::Complete(Operation& operation) {
  switch (operation.m_eWhat) {
    case What::eREAD:
      operation.m_iNumber = Once(15) ? -static_cast<long long>(Below(3)) : MakeCount();
      break;
    case What::eSKIP:
      operation.m_iNumber = Once(40) ? -1 : MakeCount();
      break;
    case What::eGET:
    case What::ePUT:
      operation.m_eValue = MakeType();
      break;
    default:
      break;
  }
  switch (operation.m_eWhat) {
    case What::eGET:
      return FindLevel(m_input, Layer::eDATA, operation.m_iLevel);
    case What::eINPUT_COUNT:
      return FindLevel(m_input, Layer::eBOUNDED, operation.m_iLevel);
    case What::ePUT:
      operation.m_data = MakeValue(operation.m_eValue);
      return FindLevel(m_output, Layer::eDATA, operation.m_iLevel);
    case What::eOUTPUT_COUNT:
      return FindLevel(m_output, Layer::eBOUNDED, operation.m_iLevel);
    case What::eSET_SEPARATORS:
      operation.m_layer = MakeLayer();
      operation.m_layer.m_eKind = Layer::eBASE64;
      return FindLevel(m_output, Layer::eBASE64, operation.m_iLevel);
    case What::eWRITE:
    case What::eWRITE_BYTE:
      operation.m_data =
          MakeData(operation.m_eWhat == What::eWRITE ? static_cast<std::size_t>(MakeCount()) : 1);
      operation.m_iLevel = MakeLevel(m_output);
      return true;
    case What::eFLUSH:
    case What::eCLOSE_OUTPUT:
      operation.m_iLevel = MakeLevel(m_output);
      return true;
    case What::eSET_INPUT:
    case What::eSET_OUTPUT:
    case What::eSET_END:
      Offset(operation);
      return true;
    case What::eCONTENT:
      operation.m_data = s_names[Below(std::size(s_names))];
      return true;
    default:
      operation.m_iLevel = MakeLevel(m_input);
      return true;
  }
}

Operation Generator::Next(const Store& store) {
  for (;;) {
    Operation operation;
    operation.m_eWhat = Choose(store);
    switch (operation.m_eWhat) {
      case What::ePUSH_INPUT:
        if (m_input.size() < 6) return Push(operation.m_eWhat);
        break;
      case What::ePUSH_OUTPUT:
        if (m_output.size() < 6) return Push(operation.m_eWhat);
        break;
      case What::ePOP_INPUT:
        if (!m_input.empty()) return Pop(operation.m_eWhat);
        break;
      case What::ePOP_OUTPUT:
        if (!m_output.empty()) return Pop(operation.m_eWhat);
        break;
      case What::eOPEN:
        return MakeOpen();
      default:
        if (Complete(operation)) return operation;
    }
  }
}

std::vector<Operation> Generator::End() {
  std::vector<Operation> operations;
  while (!m_input.empty()) operations.push_back(Pop(What::ePOP_INPUT));
  while (!m_output.empty()) operations.push_back(Pop(What::ePOP_OUTPUT));
  return operations;
}

}  // namespace Model
