// Runs a target on the seeds that are kept for it: each whole, and cut off at every length.
//
//   RunSeeds FOLDER
//
// A target ends the process if something is wrong; so does a folder without seeds, with the status 1.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "FuzzTarget.h"

namespace {

constexpr std::size_t uCUTS = 600;  // at most, of one seed

void Run(const std::string& input) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

// Gives how many inputs came of the seed.
int RunWithCuts(const std::string& seed) {
  const std::size_t step = seed.size() / uCUTS + 1;
  int inputs = 1;
  for (std::size_t size = 0; size < seed.size(); size += step, ++inputs) Run(seed.substr(0, size));
  Run(seed);
  return inputs;
}

std::string ContentOf(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

int main(int argc, char** argv) {
  int seeds = 0;
  int inputs = 0;
  for (int i = 1; i < argc; ++i)
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      std::cout << entry.path().filename() << std::endl;  // the last one is the one that failed
      inputs += RunWithCuts(ContentOf(entry.path()));
      ++seeds;
    }
  std::cout << seeds << " seeds, " << inputs << " inputs" << std::endl;
  return seeds > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
