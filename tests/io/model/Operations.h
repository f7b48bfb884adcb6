// One thing to do to a stack of streams, how either side is made to do it, and how both are described to people.
#ifndef OXACORE_TESTS_IO_MODEL_OPERATIONS_H
#define OXACORE_TESTS_IO_MODEL_OPERATIONS_H

#include <string>

#include "Side.h"

namespace Model {

enum class What : int {
  eREAD,
  eREAD_BYTE,
  eSKIP,
  eAVAILABLE,
  eGET,
  eCLOSE_INPUT,
  ePUSH_INPUT,
  ePOP_INPUT,
  eINPUT_COUNT,
  eWRITE,
  eWRITE_BYTE,
  ePUT,
  eFLUSH,
  eCLOSE_OUTPUT,
  ePUSH_OUTPUT,
  ePOP_OUTPUT,
  eOUTPUT_COUNT,
  eSET_SEPARATORS,
  eOPEN,
  eSET_INPUT,
  eSET_OUTPUT,
  eSET_END,
  ePOSITIONS,
  eCURRENT,
  eSIZE,
  eCONTENT,
  eEND
};

struct Operation {
  What m_eWhat = What::eEND;
  int m_iLevel = 0;
  long long m_iNumber = 0;  // count or offset
  Bytes m_data;             // to write, or the name of a file
  Value m_eValue = Value::eEND;
  Layer m_layer;
  Where m_eWhere = Where::eFROM_BEGIN;
  unsigned int m_uMode = 0;
  Opening m_eOpening = Opening::eIF_EXISTS;
  bool m_bWhole = true;  // whether a text that is read is all there; the model finds out
};

/// What came of it, the error and the warnings included. Throws NotToBeAsked as the model does.
Bytes Perform(Side& side, Operation& operation);

Bytes Describe(const Operation& operation);
Bytes Describe(const Layer& layer, bool input);
Bytes Describe(const Store& store);

/// Bytes that can be printed.
Bytes Printable(const Bytes& bytes);

}  // namespace Model

#endif
