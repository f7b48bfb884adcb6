#include "ErrorHandling/FatalErrorReport.h"

#include <Infrastructure/OxaCore/FatalErrorWarnings.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <atomic>
#include <sstream>

#include "ErrorHandling/FatalErrorPath.h"

#include "Platform/Files.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.AlertInfo.OnFatalError";
const char* const sREPORT = "ErrorInfo";
const char* const sEXTENSION = ".xml";
const char* const sCIRCUMSTANCE = "Fatal unhandled error";
const char* const sVERSION = "1.0";
const char* const sENCODING = "UTF-8";
const char* const sFIRST_WORDS_BEGIN =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Error>\n"
    "  <Circumstance>Fatal unhandled error</Circumstance>\n  <Message>";
const char* const sFIRST_WORDS_END = "</Message>\n</Error>\n";

std::atomic<int> s_iReports{0};

// The report that comes after so many. The number 2 is never used.
void ComposeName(FatalErrorName& name, const char* folder, int reports) noexcept {
  name.Clear();
  name.Add(folder).Add(sREPORT);
  if (reports > 0) name.AddNumber(static_cast<unsigned>(reports) + 2U);
  name.Add(sEXTENSION);
}

void Write(Platform::FileHandle& file, const char* text, std::size_t size) noexcept {
  std::size_t written = 0;
  while (size > 0 && file.Write(text, size, written) == 0 && written > 0) {
    text += written;
    size -= written;
  }
}

bool MayBeginName(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<unsigned char>(c) > 127;
}

// The key, unless it can't be the name of an element: one word of a host is not to spoil the whole report.
std::string ElementName(std::string key) {
  for (char& c : key) {
    if (!MayBeginName(c) && !(c >= '0' && c <= '9') && c != '-' && c != '.') c = '_';
  }
  return key.empty() || !MayBeginName(key[0]) ? '_' + key : key;
}

// The text of a report, which reaches its file in one piece: if composing it never comes to an end, the first words
// still stand there.
class Report {
 public:
  explicit Report(Platform::FileHandle& file) : m_file(file) {}
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;
  ~Report() {
    try {
      const std::string text = AsReadableXml(m_text.str());
      Write(m_file, text.data(), text.size());
      m_file.Truncate(text.size());
    } catch (...) {
      // Without the memory for it the first words have to do.
    }
  }

  void Compose(const AlertData& info, Error& error) {
    XMLWriter writer;
    m_text << writer.StartDocA(sVERSION, sENCODING, false, true);
    for (const auto& [key, value] : info) m_text << writer.Tag(ElementName(key), value);
    error.ToXML(writer, m_text, sCIRCUMSTANCE);
    m_text << writer.EndDoc();
  }

 private:
  Platform::FileHandle& m_file;
  std::ostringstream m_text;
};

}  // namespace

void WriteFirstWords(const char* folder, const FatalErrorMessage& message) noexcept {
  FatalErrorName name;
  ComposeName(name, folder, s_iReports.load());
  int code = 0;
  Platform::FileHandle file = Platform::FileHandle::CreateForWriting(name.Get(), code);
  if (code != 0) return;
  FixedText<1024> text;
  text.Add(sFIRST_WORDS_BEGIN).Add(message.Get()).Add(sFIRST_WORDS_END);
  Write(file, text.Get(), text.Size());
}

void WriteFatalErrorReport(const std::string& folder, const AlertData& info, Error& error) {
  FatalErrorName name;
  ComposeName(name, folder.c_str(), s_iReports.fetch_add(1));
  int code = 0;
  Platform::FileHandle file = Platform::FileHandle::OpenForWriting(name.Get(), code);
  if (code != 0) {
    OXA_RAISE_WARNING(sLOG_NAME, OpenXMLErrorReportFailed(name.Get()));
    return;
  }
  Report report(file);
  report.Compose(info, error);
}

}  // namespace Oxa::Core
