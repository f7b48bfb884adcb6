// What a child tells the runner, step by step, over a pipe.
#ifndef OXATEST_MESSAGE_H
#define OXATEST_MESSAGE_H

#include <cstdint>
#include <string>
#include <vector>

namespace OxaTest {

struct Message {
  // With the texts that each has.
  enum EKind : std::uint32_t {
    eSTARTED = 1,    ///< none: what was printed until now doesn't come from the module
    eBAD_MODULE,     ///< why it can't be run
    eLOADED,         ///< none: the function was found
    eMATCHED,        ///< one digit for each pattern, those of --only first: 1 if it matches something
    eTREE,           ///< the name of the root: a new tree is there
    eTEST,           ///< suites, name: is going to run
    eDISABLED_TEST,  ///< suites, name: is part of the tree and isn't going to run
    eRUN,            ///< none: all tests were told
    eBEGIN,          ///< suites, name: a test
    eRESULT,         ///< suites, name, outcome, text, seconds: of that test
    eTEAR_DOWN,      ///< suites, name: has its results, and is torn down
    eSUITE_BEGIN,    ///< suites, name: a suite
    eSUITE_RESULT,   ///< as eRESULT, of a suite that failed by itself, not by its tests
    eSUITE_TEAR_DOWN,
    eANNOUNCED,  ///< text: a test has something to tell while it runs
    eTREE_DONE,  ///< none: the run of the tree is over
    eDONE        ///< none: all is over, but the library is still loaded
  };

  EKind m_eKind = eSTARTED;
  std::uint64_t m_uOutput = 0;  ///< the size of the child's output by then
  std::vector<std::string> m_texts;

  /// "" if there is no such text.
  const std::string& Text(std::size_t index) const;
};

/// The message as it goes through the pipe.
std::string Encode(const Message& message);

enum EDecoded { eMESSAGE, eNOT_WHOLE, eDAMAGED };

/// Reads the message that begins at `at`, and moves `at` behind it. `at` stays if there is no whole one, or if the
/// bytes there can't be one.
EDecoded Decode(const std::string& bytes, std::string::size_type& at, Message& message);

/// `text`; of one that is longer than 64 KiB only the beginning, with a line that says so.
std::string Limited(std::string text);

}  // namespace OxaTest

#endif
