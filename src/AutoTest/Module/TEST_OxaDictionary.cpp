#include <Infrastructure/OxaCore/Dictionary.h>
#include <Infrastructure/OxaCore/ModuleTestSuite.h>

#include "AutoTest/Module/TestMethods.h"
#include "AutoTest/Module/TestThreads.h"

namespace Oxa::Core {

namespace {

constexpr int iTHREADS = 8;
constexpr int iWORDS = 2000;
constexpr int iROUNDS = 3;

using Atoms = std::vector<const char*>;

const char* AtomOf(const char* word) { return Dictionary::Instance()->Lookup(word); }

// The words stay in the dictionary as long as it lives: the same ones at each run.
std::string Word(int number) { return "OxaCore self-test " + std::to_string(number); }

// Every thread begins elsewhere, so that all of them add.
void LookUpAll(int thread, Atoms& atoms) {
  for (int i = 0; i < iWORDS; ++i) {
    const int number = (i + thread * iWORDS / iTHREADS) % iWORDS;
    const char* const atom = GetOxaAtom(Word(number));
    const char*& known = atoms[static_cast<std::size_t>(number)];
    OXA_TEST_ASSERT(known == nullptr || known == atom);
    known = atom;
  }
}

}  // namespace

TEST_OxaDictionary::TEST_OxaDictionary() : TestSuite("Oxa::Core::Dictionary Tests") {
  AddTestMethods(*this, {{"Basics Test", &TEST_OxaDictionary::Basics},
                         {"Shortcuts Test", &TEST_OxaDictionary::Shortcuts},
                         {"Convert Test", &TEST_OxaDictionary::Convert},
                         {"Stress Test", &TEST_OxaDictionary::Stress}});
}

TEST_OxaDictionary::~TEST_OxaDictionary() = default;

void TEST_OxaDictionary::Basics(std::string&) {
  OXA_TEST_ASSERT(AtomOf("Same string") == AtomOf("Same string"));
  OXA_TEST_ASSERT(AtomOf("String1") != AtomOf("String2"));
  OXA_TEST_ASSERT(AtomOf("") == AtomOf(""));
  OXA_TEST_ASSERT(AtomOf("") != AtomOf(" "));
  const std::string word = "Same string";
  OXA_TEST_ASSERT(AtomOf("Same string") == word);
  OXA_TEST_ASSERT(AtomOf("Same string") != word.c_str());
  OXA_TEST_ASSERT(AtomOf("Same") != AtomOf("same"));
}

void TEST_OxaDictionary::Shortcuts(std::string&) {
  const std::string word = "Shortcut";
  const char* const atom = AtomOf("Shortcut");
  OXA_TEST_ASSERT(Dictionary::Instance()->Lookup(word) == atom);
  OXA_TEST_ASSERT(GetOxaAtom("Shortcut") == atom);
  OXA_TEST_ASSERT(GetOxaAtom(word) == atom);
}

void TEST_OxaDictionary::Convert(std::string&) {
  const std::string path = ".a.b.c.d.e.f.g";
  Atoms atoms(1, "before");
  Dictionary::Instance()->Convert(atoms, path, '.');
  OXA_TEST_ASSERT(atoms.size() == 7);
  for (std::size_t i = 0; i < atoms.size(); ++i)
    OXA_TEST_ASSERT(atoms[i] == GetOxaAtom(path.substr(2 * i + 1, 1)));
  std::string converted = "before";
  Dictionary::Instance()->Convert(converted, atoms, '.');
  OXA_TEST_ASSERT(converted == path);
  Dictionary::Instance()->Convert(converted, atoms, '/');
  OXA_TEST_ASSERT(converted == "/a/b/c/d/e/f/g");
  Atoms again;
  Dictionary::Instance()->Convert(again, converted.c_str(), '/');
  OXA_TEST_ASSERT(again == atoms);
}

void TEST_OxaDictionary::Stress(std::string&) {
  std::vector<Atoms> atoms(iTHREADS, Atoms(iWORDS));
  TestThreads threads(iTHREADS, [&atoms](int thread) {
    for (int round = 0; round < iROUNDS; ++round) LookUpAll(thread, atoms[static_cast<std::size_t>(thread)]);
  });
  threads.Join();
  for (int number = 0; number < iWORDS; ++number)
    OXA_TEST_ASSERT(atoms[0][static_cast<std::size_t>(number)] == Word(number));
  for (const Atoms& others : atoms) OXA_TEST_ASSERT(others == atoms[0]);
}

}  // namespace Oxa::Core
