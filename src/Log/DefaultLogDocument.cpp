#include "Log/DefaultLogDocument.h"

#include <Infrastructure/OxaCore/PathName.h>
#include <Infrastructure/OxaCore/System.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <iostream>
#include <sstream>

#include "Platform/Files.h"

namespace Oxa::Core {

namespace {

const char* const sDOCUMENT = "DefaultLog.xml";
const char* const sNOT_CREATED = "WARNING: Failed to create default log file named: ";
const char* const sVERSION = "1.0";
const char* const sENCODING = "UTF-8";
const char* const sBEHIND_DECLARATION =
    "<!DOCTYPE Log [<!ENTITY entries SYSTEM \"DefaultLog.entries\">]>\n"
    "\n"
    "<Log>\n"
    "  &entries;\n"
    "</Log>\n";

std::string Envelope() {
  std::ostringstream out;
  XMLWriter writer;
  out << writer.StartDocA(sVERSION, sENCODING) << sBEHIND_DECLARATION;
  return out.str();
}

// Where it is written before it gets its name. The process's id is in it, so that two that start at once don't
// write to the same file.
std::string Draft(const std::string& document) {
  std::string id = "0";
  if (const System* system = System::Instance()) system->GetProcessId(id);
  return document + "." + id;
}

bool WriteWhole(const std::string& file, const std::string& text) {
  int code = 0;
  Platform::FileHandle handle = Platform::FileHandle::OpenForWriting(file.c_str(), code);
  std::size_t written = 0;
  return code == 0 && handle.Truncate(0) == 0 && handle.Write(text.data(), text.size(), written) == 0 &&
         written == text.size() && handle.Close() == 0;
}

// A document that was half written when the disk was full or the process killed would be kept for good.
bool Create(const std::string& document) {
  const std::string draft = Draft(document);
  if (WriteWhole(draft, Envelope()) && Platform::RenameFile(draft.c_str(), document.c_str()) == 0)
    return true;
  Platform::RemoveFile(draft.c_str());
  return false;
}

}  // namespace

std::string DefaultLogFile(const char* name) {
  std::string path;
  if (const System* system = System::Instance()) system->GetProcessPath(path);
  return path + name;
}

void CreateDefaultLogDocument() {
  const PathName document(DefaultLogFile(sDOCUMENT));
  if (document.Exists()) return;
  const std::string& path = document;
  const Platform::FileLimitGuard guard;  // standard error can be a file, too
  if (!Create(path)) std::cerr << sNOT_CREATED << '\n' << path << std::endl;
}

}  // namespace Oxa::Core
