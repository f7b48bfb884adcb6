#include "ErrorHandling/FatalErrorReport.h"

#include <Infrastructure/OxaCore/FatalErrorWarnings.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <atomic>
#include <cstdint>
#include <sstream>
#include <string_view>

#include "ErrorHandling/FatalErrorPath.h"
#include "ErrorHandling/FatalErrorReadable.h"

#include "Platform/Faults.h"
#include "Platform/Files.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.AlertInfo.OnFatalError";
const char* const sREPORT = "ErrorInfo";
const char* const sEXTENSION = ".xml";
const char* const sCIRCUMSTANCE = "Fatal unhandled error";
const char* const sVERSION = "1.0";
const char* const sENCODING = "UTF-8";
const char* const sPROLOG = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
const char* const sMESSAGE =
    "<Error>\n  <Circumstance>Fatal unhandled error</Circumstance>\n  <Message>No Message</Message>\n";
const char* const sCAUSE_BEGINS = "  <Cause>";
const char* const sERROR_ENDS = "</Cause>\n</Error>\n";

std::atomic<int> s_iReports{0};

// The report that comes after so many. The number 2 is never used.
void ComposeName(FatalErrorName& name, const char* folder, int reports) noexcept {
  name.Clear();
  name.Add(folder).Add(sREPORT);
  if (reports > 0) name.AddNumber(static_cast<unsigned>(reports) + 2U);
  name.Add(sEXTENSION);
}

// Gives how much of it has found room.
std::size_t Write(Platform::FileHandle& file, const char* text, std::size_t size) noexcept {
  std::size_t done = 0;
  std::size_t written = 0;
  while (done < size && file.Write(text + done, size - done, written) == 0 && written > 0) done += written;
  return done;
}

bool MayBeginName(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<unsigned char>(c) > 127;
}

char InName(char c) { return MayBeginName(c) || (c >= '0' && c <= '9') || c == '-' || c == '.' ? c : '_'; }

bool NeedsBeginning(const std::string& key) { return key.empty() || !MayBeginName(InName(key[0])); }

// The key, unless it can't be the name of an element: one word of a host is not to spoil the whole report.
std::string ElementName(const std::string& key) {
  std::string name = NeedsBeginning(key) ? "_" : "";
  for (const char c : key) name += InName(c);
  return name;
}

// A document without the heap, in pieces.
class FirstWords {
 public:
  explicit FirstWords(Platform::FileHandle& file) : m_file(file) {}
  FirstWords(const FirstWords&) = delete;
  FirstWords& operator=(const FirstWords&) = delete;
  ~FirstWords() { Flush(); }

  void Add(std::string_view text) noexcept {
    if (m_piece.Size() + text.size() > uPIECE) Flush();
    m_piece.Add(text.data(), text.size());
  }

  void AddElement(const std::string& key, const std::string& value) noexcept {
    Add("<");
    AddName(key);
    Add(">");
    for (std::string_view rest = value; !rest.empty();) {
      const ReadableCharacter character = FirstReadable(rest);
      AddEscaped({character.m_text, character.m_uSize});
      rest.remove_prefix(character.m_uTaken);
    }
    Add("</");
    AddName(key);
    Add(">\n");
  }

  /// Nothing has been added.
  void BeginAnew() noexcept {
    m_piece.Clear();
    m_file.Seek(0);
    m_file.Truncate(0);
  }

 private:
  static constexpr std::size_t uPIECE = 1024;

  void Flush() noexcept {
    Write(m_file, m_piece.Get(), m_piece.Size());
    m_piece.Clear();
  }

  void AddName(const std::string& key) noexcept {
    if (NeedsBeginning(key)) Add("_");
    for (const char c : key) {
      const char named = InName(c);
      Add({&named, 1});
    }
  }

  void AddEscaped(std::string_view character) noexcept {
    Add(character == "<" ? "&lt;" : character == ">" ? "&gt;" : character == "&" ? "&amp;" : character);
  }

  Platform::FileHandle& m_file;
  FixedText<uPIECE + 1> m_piece;
};

struct Entries {
  FirstWords* m_pWords;
  const AlertData* m_pInfo;

  static void Add(void* argument) {
    const Entries& entries = *static_cast<const Entries*>(argument);
    for (const auto& [key, value] : *entries.m_pInfo) entries.m_pWords->AddElement(key, value);
  }
};

// The text of a report, which reaches its file in one piece: if composing it never comes to an end, or there is no room
// for all of it, the first words still stand there.
class Report {
 public:
  explicit Report(Platform::FileHandle& file) : m_file(file) {}
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;
  ~Report() {
    try {
      const std::string text = AsReadableXml(m_text.str());
      if (HasRoom(text.size())) m_file.Truncate(Write(m_file, text.data(), text.size()));
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
  // A part of the report is better than nothing, but not than first words that are whole.
  bool HasRoom(std::size_t size) noexcept {
    std::uint64_t before = 0;
    return m_file.Reserve(size) == 0 || (m_file.Size(before) == 0 && before == 0);
  }

  Platform::FileHandle& m_file;
  std::ostringstream m_text;
};

}  // namespace

void WriteFirstWords(const char* folder, const AlertData* info, const FatalErrorCause& cause) noexcept {
  FatalErrorName name;
  ComposeName(name, folder, s_iReports.load());
  int code = 0;
  Platform::FileHandle file = Platform::FileHandle::CreateForWriting(name.Get(), code);
  if (code != 0) return;
  FirstWords words(file);
  words.Add(sPROLOG);
  Entries entries = {&words, info};
  if (info != nullptr && !Platform::CallGuarded(&Entries::Add, &entries)) {
    words.BeginAnew();
    words.Add(sPROLOG);
  }
  words.Add(sMESSAGE);
  words.Add(sCAUSE_BEGINS);
  words.Add(cause.Get());
  words.Add(sERROR_ENDS);
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
