#include "Operations.h"

namespace Model {

namespace {

const char* const sWHAT[] = {
    "read block", "read byte",    "skip",        "available",   "get",          "close input",
    "push input", "pop input",    "input count", "write block", "write byte",   "put",
    "flush",      "close output", "push output", "pop output",  "output count", "set separators",
    "open",       "set input",    "set output",  "set end",     "positions",    "current position",
    "size",       "content"};
static_assert(sizeof(sWHAT) / sizeof(sWHAT[0]) == static_cast<std::size_t>(What::eEND), "a name for each");

const char* const sDONE = "done";

template <class Number>
Bytes Told(Number number) {
  return std::to_string(number);
}

Bytes ReadBlock(Side& side, const Operation& operation) {
  Bytes bytes;
  const long long got = side.Read(operation.m_iLevel, bytes, operation.m_iNumber);
  return Told(got) + ": " + bytes;
}

Bytes Positions(Side& side) {
  return (side.IsOpen() ? "open " : "closed ") + side.FileName() + " " + Told(side.InputPos()) + " " +
         Told(side.OutputPos());
}

Bytes Get(Side& side, Operation& operation) {
  const Bytes value = side.Get(operation.m_iLevel, operation.m_eValue, operation.m_bWhole);
  return operation.m_bWhole ? value : "cut off";
}

Bytes PerformInput(Side& side, Operation& operation) {
  const int level = operation.m_iLevel;
  switch (operation.m_eWhat) {
    case What::eREAD:
      return ReadBlock(side, operation);
    case What::eREAD_BYTE:
      return Told(side.Read(level));
    case What::eSKIP:
      return Told(side.Skip(level, static_cast<Count>(operation.m_iNumber)));
    case What::eAVAILABLE:
      return Told(side.Available(level));
    case What::eGET:
      return Get(side, operation);
    case What::eCLOSE_INPUT:
      return side.CloseInput(level), sDONE;
    case What::ePUSH_INPUT:
      return side.PushInput(operation.m_layer), sDONE;
    case What::ePOP_INPUT:
      return side.PopInput(), sDONE;
    default:
      return Told(side.InputCount(level));
  }
}

Bytes PerformOutput(Side& side, const Operation& operation) {
  const int level = operation.m_iLevel;
  switch (operation.m_eWhat) {
    case What::eWRITE:
      return side.Write(level, operation.m_data), sDONE;
    case What::eWRITE_BYTE:
      return side.Write(level, static_cast<unsigned char>(operation.m_data[0])), sDONE;
    case What::ePUT:
      return side.Put(level, operation.m_eValue, operation.m_data), sDONE;
    case What::eFLUSH:
      return side.Flush(level), sDONE;
    case What::eCLOSE_OUTPUT:
      return side.CloseOutput(level), sDONE;
    case What::ePUSH_OUTPUT:
      return side.PushOutput(operation.m_layer), sDONE;
    case What::ePOP_OUTPUT:
      return side.PopOutput(), sDONE;
    case What::eSET_SEPARATORS:
      return side.SetSeparators(level, operation.m_layer), sDONE;
    default:
      return Told(side.OutputCount(level));
  }
}

Bytes PerformStore(Side& side, const Operation& operation) {
  switch (operation.m_eWhat) {
    case What::eOPEN:
      return Told(side.Open(operation.m_data, operation.m_uMode, operation.m_eOpening));
    case What::eSET_INPUT:
      return Told(side.SetInputPos(operation.m_iNumber, operation.m_eWhere));
    case What::eSET_OUTPUT:
      return Told(side.SetOutputPos(operation.m_iNumber, operation.m_eWhere));
    case What::eSET_END:
      return side.SetEndOfFile(operation.m_iNumber, operation.m_eWhere), sDONE;
    case What::ePOSITIONS:
      return Positions(side);
    case What::eCURRENT:
      return Told(side.CurrentPos());
    case What::eSIZE:
      return Told(side.FileSize());
    default:
      return side.Content(operation.m_data);
  }
}

Bytes Outcome(Side& side, Operation& operation) {
  if (operation.m_eWhat < What::eWRITE) return PerformInput(side, operation);
  if (operation.m_eWhat < What::eOPEN) return PerformOutput(side, operation);
  return PerformStore(side, operation);
}

}  // namespace

Bytes Perform(Side& side, Operation& operation) {
  Bytes outcome;
  try {
    outcome = Outcome(side, operation);
  } catch (const Failure& failure) {
    outcome = "raised " + failure.m_sText;
  }
  for (const Bytes& warning : side.TakeWarnings()) outcome += " | warned " + warning;
  return outcome;
}

Bytes Describe(const Layer& layer, bool input) {
  switch (layer.m_eKind) {
    case Layer::eBUFFERED:
      return "buffered(" + Told(layer.m_ulSize) + ")";
    case Layer::eBOUNDED:
      return "bounded(" + Told(layer.m_ulSize) + ")";
    case Layer::eDATA:
      return "data";
    case Layer::eBASE64:
      break;
  }
  if (input || !layer.m_bSeparators) return "base64";
  return "base64(" + Told(layer.m_iLineLength) + ", " + Printable(layer.m_sSeparator) + ")";
}

Bytes Describe(const Store& store) {
  if (!store.m_bPipe) return "file";
  return "pipe(" + Told(store.m_ulPipeSize) + (store.m_bReaderWaits ? ", reader waits" : "") +
         (store.m_bWriterWaits ? ", writer waits)" : ")");
}

Bytes Describe(const Operation& operation) {
  const What what = operation.m_eWhat;
  Bytes text = sWHAT[static_cast<int>(what)];
  text += " @" + Told(operation.m_iLevel) + " " + Told(operation.m_iNumber);
  if (!operation.m_data.empty()) text += " \"" + Printable(operation.m_data) + "\"";
  if (what == What::eGET || what == What::ePUT) text += " type " + Told(static_cast<int>(operation.m_eValue));
  if (what == What::eOPEN)
    text += " mode " + Told(operation.m_uMode) + " how " + Told(static_cast<int>(operation.m_eOpening));
  if (what >= What::eSET_INPUT && what <= What::eSET_END)
    text += " from " + Told(static_cast<int>(operation.m_eWhere));
  if (what == What::ePUSH_INPUT || what == What::ePUSH_OUTPUT || what == What::eSET_SEPARATORS)
    text += " " + Describe(operation.m_layer, what == What::ePUSH_INPUT);
  return text;
}

Bytes Printable(const Bytes& bytes) {
  static const char* const digits = "0123456789ABCDEF";
  Bytes text;
  for (const char byte : bytes) {
    const auto code = static_cast<unsigned char>(byte);
    if (code >= 32 && code < 127 && byte != '\\') {
      text += byte;
    } else {
      text += {'\\', 'x', digits[code >> 4U], digits[code & 15U]};
    }
  }
  return text;
}

}  // namespace Model
