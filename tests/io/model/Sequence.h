// One random sequence on the streams and on the model, compared step by step.
#ifndef OXACORE_TESTS_IO_MODEL_SEQUENCE_H
#define OXACORE_TESTS_IO_MODEL_SEQUENCE_H

#include <string>

namespace Model {

/// What one sequence came to.
struct Report {
  bool m_bSame = true;
  int m_iOperations = 0;   // compared
  std::string m_sHistory;  // what was done, if it was asked for or something differed
};

/// Runs the sequence of `seed`, with files in `folder`.
Report RunSequence(unsigned long long seed, const std::string& folder, bool wantsHistory);

}  // namespace Model

#endif
