#include "ErrorHandling/RawChannel.h"

#include <Infrastructure/OxaCore/XMLWriter.h>

#include <iostream>
#include <sstream>

#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

const char* const sVERSION = "1.0";
const char* const sENCODING = "UTF-8";

void ComposeElement(std::ostream& out, AlertInfo& alert, const char* circumstance) {
  XMLWriter writer;
  alert.ToXML(writer, out, circumstance);
}

void ComposeDocument(std::ostream& out, AlertInfo& alert, const char* circumstance) {
  XMLWriter writer;
  out << writer.StartDocA(sVERSION, sENCODING, false, true);
  alert.ToXML(writer, out, circumstance);
  out << writer.EndDoc();
}

// Without the memory for XML, the bare words.
void WriteBareWords(const AlertInfo& alert, const char* circumstance) {
  WriteRawLine(circumstance);
  WriteRawLine(alert.GetData(AlertInfo::sMESSAGE).c_str());
}

template <class Compose>
void Write(Compose compose, AlertInfo& alert, const char* circumstance) {
  try {
    const std::ios_base::Init streams;  // the first static object of a process may be what calls
    std::ostringstream text;
    compose(text, alert, circumstance);
    std::cerr << text.str() << std::flush;
  } catch (...) {
    Platform::LetCancellationPass();
    WriteBareWords(alert, circumstance);
  }
}

}  // namespace

void WriteAlertElement(AlertInfo& alert, const char* circumstance) {
  Write(ComposeElement, alert, circumstance);
}

void WriteAlertDocument(AlertInfo& alert, const char* circumstance) {
  Write(ComposeDocument, alert, circumstance);
}

void WriteRawLine(const char* text) {
  try {
    const std::ios_base::Init streams;
    std::cerr << text << std::endl;
  } catch (...) {
    // A host can make std::cerr throw; there is nowhere left to say so.
    Platform::LetCancellationPass();
  }
}

}  // namespace Oxa::Core
