#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/WrappingFileStream.h>
#include <Infrastructure/OxaCore/WrappingFileStreamIterator.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

using namespace Oxa::Core;

// Shows the first line of each file, oldest first.
class FirstLines : public WrappingFileStreamIterator {
 protected:
  void NextFile(std::string fileName) override {
    std::string line;
    std::getline(std::ifstream(fileName), line);
    std::cout << line << '\n';
  }
};

int main() {
  InitializeOxaCore();
  const std::string folder = "daily_log.files";  // in the current folder
  std::filesystem::remove_all(folder);
  std::filesystem::create_directory(folder);
  try {
    WrappingFileStream log;
    log.Initialize(folder, 30, 3, 100, "Run");  // 30 days, 3 files a day, 100 bytes each
    for (int i = 0; i < 20; ++i) log.Write("line " + std::to_string(i) + " of a long day\n");

    FirstLines lines;
    lines.Initialize(folder, "Run");
    lines.IterateFiles();
  } catch (const Error& error) {
    std::cout << error.what() << '\n';
  }
  std::filesystem::remove_all(folder);
  ShutdownOxaCore();
}
