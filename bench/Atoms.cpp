// Texts to atoms: a text that is known already, among 10,000 words, on one thread and on more.
#include <Infrastructure/OxaCore/Dictionary.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include "BenchSupport.h"

#ifdef OXA_PEER_GLIB
#include <glib.h>
#endif

namespace {

using namespace Oxa::Core;

constexpr std::size_t uWORDS = 10000;

// Names as an instrument has them, of 6 to 24 bytes, in no order.
const std::vector<std::string>& Words() {
  static const std::vector<std::string> words = [] {
    const char* const stems[] = {"Probe", "Channel.", "sample/", "Calibration.Step"};
    std::vector<std::string> made;
    for (std::size_t word = 0; word < uWORDS; ++word) {
      made.push_back(stems[word % 4] + std::to_string(word * 7919 % 100003));
    }
    std::shuffle(made.begin(), made.end(), std::mt19937(1));
    return made;
  }();
  return words;
}

template <class Intern>
void Hits(benchmark::State& state, const Intern& intern) {
  const std::vector<std::string>& words = Words();
  for (const std::string& word : words) intern(word.c_str());
  std::size_t at = static_cast<std::size_t>(state.thread_index()) * 1237;
  for (auto _ : state) {
    if (++at >= uWORDS) at = 0;
    benchmark::DoNotOptimize(intern(words[at].c_str()));
  }
}

void Ours(benchmark::State& state) {
  Hits(state, [](const char* word) { return GetOxaAtom(word); });
}
OXA_BENCH("Atom look-up, hit among 10,000 words", "Ours", Ours);
OXA_BENCH("Atom look-up, hit among 10,000 words", "Ours", Ours)->Threads(2);

#ifdef OXA_PEER_GLIB
void GLib(benchmark::State& state) { Hits(state, &g_intern_string); }
OXA_BENCH("Atom look-up, hit among 10,000 words", "GLib", GLib);
OXA_BENCH("Atom look-up, hit among 10,000 words", "GLib", GLib)->Threads(2);
#endif

// A dictionary that the caller keeps at hand: what the look-up costs without fetching the singleton.
void OursAtHand(benchmark::State& state) {
  Dictionary* const dictionary = Dictionary::Instance();
  Hits(state, [dictionary](const char* word) { return dictionary->Lookup(word); });
}
OXA_BENCH("Atom look-up, the dictionary at hand", "Ours", OursAtHand);
#ifdef OXA_PEER_GLIB
OXA_BENCH("Atom look-up, the dictionary at hand", "GLib", GLib);
#endif

}  // namespace
