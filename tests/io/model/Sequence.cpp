#include "Sequence.h"

#include <cstdio>
#include <vector>

#include "Generator.h"
#include "Reference.h"
#include "Subject.h"

namespace Model {

namespace {

class Sequence {
 public:
  Sequence(unsigned long long seed, const std::string& folder)
      : m_generator(seed), m_store(m_generator.MakeStore()), m_reference(m_store), m_sFolder(folder) {
    for (const char* const name : {"a", "b"}) std::remove((folder + name).c_str());
  }

  Report Run(bool wantsHistory) {
    m_bWantsHistory = wantsHistory;
    {
      Subject subject(m_store, m_sFolder);
      m_subject = &subject;
      Do(m_generator.Begin(m_store));
      for (Count left = 5 + m_generator.Below(35); left != 0 && m_report.m_bSame; --left)
        Do(m_generator.Next(m_store));
      Do(m_generator.End());
      Do(Last());
    }
    return m_report;
  }

 private:
  // What is left in the pipe or the files.
  std::vector<Operation> Last() {
    Operation operation;
    if (m_store.m_bPipe) {
      operation.m_eWhat = What::eREAD;
      operation.m_iNumber = 5000;
      return {operation};
    }
    operation.m_eWhat = What::eCONTENT;
    operation.m_data = "a";
    Operation other = operation;
    other.m_data = "b";
    return {operation, other};
  }

  void Do(const std::vector<Operation>& operations) {
    for (const Operation& operation : operations) Do(operation);
  }

  void Do(Operation operation) {
    if (!m_report.m_bSame) return;
    const Reference before = m_reference;
    try {
      const Bytes expected = Perform(m_reference, operation);
      const Bytes actual = Perform(*m_subject, operation);
      ++m_report.m_iOperations;
      m_report.m_bSame = expected == actual;
      if (m_bWantsHistory) Tell(operation, expected, actual);
    } catch (const NotToBeAsked&) {
      m_reference = before;
    }
  }

  void Tell(const Operation& operation, const Bytes& expected, const Bytes& actual) {
    Bytes& history = m_report.m_sHistory;
    if (history.empty()) history = Describe(m_store) + "\n";
    history += Describe(operation) + " -> " + Printable(expected) + "\n";
    if (expected != actual) history += "  BUT THE STREAMS: " + Printable(actual) + "\n";
  }

  Generator m_generator;
  Store m_store;
  Reference m_reference;
  std::string m_sFolder;
  Subject* m_subject = nullptr;
  bool m_bWantsHistory = false;
  Report m_report;
};

}  // namespace

Report RunSequence(unsigned long long seed, const std::string& folder, bool wantsHistory) {
  const Report report = Sequence(seed, folder).Run(wantsHistory);
  return report.m_bSame || wantsHistory ? report : RunSequence(seed, folder, true);
}

}  // namespace Model
