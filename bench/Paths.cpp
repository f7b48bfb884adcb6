// Names of files: taking one apart, judging whether it is one, and listing a folder of a thousand.

#include <Infrastructure/OxaCore/PathName.h>

#include "BenchSupport.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#ifdef OXA_PEER_QT
#include <QDir>
#include <QFileInfo>
#include <QString>
#endif
#ifdef OXA_PEER_POCO
#include <Poco/Path.h>
#endif
#ifdef OXA_PEER_GLIB
#include <glib.h>
#endif

namespace {

using Oxa::Core::PathName;
using Names = std::vector<std::string>;

constexpr int iNAMES = 1000;
const std::string g_sPATH = "/var/lib/instruments/measurements/2026-11-21/series_0042.result.xml";

// --- The folder, the leaf and the extension of a name that comes as a text

void OursSplit(benchmark::State& state) {
  for (auto _ : state) {
    const PathName path(g_sPATH);
    benchmark::DoNotOptimize(path.GetBaseAndBranch());
    benchmark::DoNotOptimize(path.GetLeaf());
    benchmark::DoNotOptimize(path.GetExt());
  }
}

OXA_BENCH("Path split", "Ours", OursSplit);

void StdSplit(benchmark::State& state) {
  for (auto _ : state) {
    const std::filesystem::path path(g_sPATH);
    benchmark::DoNotOptimize(path.parent_path().string());
    benchmark::DoNotOptimize(path.stem().string());
    benchmark::DoNotOptimize(path.extension().string());
  }
}

OXA_BENCH("Path split", "std", StdSplit);

#ifdef OXA_PEER_QT
// Qt's own texts, which it would be handed by the rest of Qt.
void QtSplit(benchmark::State& state) {
  const QString text = QString::fromStdString(g_sPATH);
  for (auto _ : state) {
    const QFileInfo path(text);
    benchmark::DoNotOptimize(path.path());
    benchmark::DoNotOptimize(path.completeBaseName());
    benchmark::DoNotOptimize(path.suffix());
  }
}

OXA_BENCH("Path split", "Qt", QtSplit);
#endif

// --- Whether a text is a name: one text after another in the same object

void OursValidated(benchmark::State& state) {
  PathName path;
  for (auto _ : state) {
    path = g_sPATH;
    benchmark::DoNotOptimize(path.IsValid());
  }
}

OXA_BENCH("Path validated", "Ours", OursValidated);

#ifdef OXA_PEER_POCO
void PocoValidated(benchmark::State& state) {
  Poco::Path path;
  for (auto _ : state) {
    benchmark::DoNotOptimize(path.tryParse(g_sPATH));
  }
}

OXA_BENCH("Path validated", "Poco", PocoValidated);

void PocoSplit(benchmark::State& state) {
  for (auto _ : state) {
    const Poco::Path path(g_sPATH);
    benchmark::DoNotOptimize(path.parent().toString());
    benchmark::DoNotOptimize(path.getBaseName());
    benchmark::DoNotOptimize(path.getExtension());
  }
}

OXA_BENCH("Path split", "Poco", PocoSplit);
#endif

// --- A thousand names of a folder, as texts of their own

class Folder {
 public:
  Folder() : m_sPath((std::filesystem::temp_directory_path() / "oxabenchXXXXXX").string()) {
    if (::mkdtemp(m_sPath.data()) == nullptr) std::abort();
    for (int i = 0; i < iNAMES; ++i) std::ofstream(m_sPath + "/series_" + std::to_string(i) + ".xml");
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_sPath, ignored);
  }

  const std::string& Path() const { return m_sPath; }

 private:
  std::string m_sPath;
};

// Lists until the measuring ends; every list must be whole.
template <class List>
void MeasureLists(benchmark::State& state, const List& list) {
  const Folder folder;
  for (auto _ : state) {
    const Names names = list(folder.Path());
    if (names.size() < iNAMES) state.SkipWithError("not all names were listed");
  }
}

// Held against a pattern, and sorted.
Names OursListed(const std::string& folder) {
  Names names;
  PathName(folder).ReadDirectory(names, "*");
  return names;
}

void OursList(benchmark::State& state) { MeasureLists(state, OursListed); }

OXA_BENCH("Folder of 1000 names listed", "Ours", OursList);

Names StdListed(const std::string& folder) {
  Names names;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    names.push_back(entry.path().filename().string());
  return names;
}

void StdList(benchmark::State& state) { MeasureLists(state, StdListed); }

OXA_BENCH("Folder of 1000 names listed", "std", StdList);

#ifdef OXA_PEER_GLIB
// As the system gives them.
Names GlibListed(const std::string& folder) {
  Names names;
  GDir* const open = g_dir_open(folder.c_str(), 0, nullptr);
  while (const char* name = g_dir_read_name(open)) names.emplace_back(name);
  g_dir_close(open);
  return names;
}

void GlibList(benchmark::State& state) { MeasureLists(state, GlibListed); }

OXA_BENCH("Folder of 1000 names listed", "GLib", GlibList);
#endif

#ifdef OXA_PEER_QT
Names QtListed(const std::string& folder) {
  Names names;
  const QStringList list =
      QDir(QString::fromStdString(folder)).entryList({QStringLiteral("*")}, QDir::Files, QDir::Name);
  for (const QString& name : list) names.push_back(name.toStdString());
  return names;
}

void QtList(benchmark::State& state) { MeasureLists(state, QtListed); }

OXA_BENCH("Folder of 1000 names listed", "Qt", QtList);
#endif

}  // namespace
