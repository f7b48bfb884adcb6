// Writes every alert of the process into one XML document.
#ifndef STATION_ALERTLOG_H
#define STATION_ALERTLOG_H

#include <Infrastructure/OxaCore/AlertListener.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <fstream>
#include <string>

namespace Station {

/// Listens from its construction to its destruction.
///
/// An error is written when it has been handled, since only then all the places are known through which it
/// was forwarded; a warning when it is raised. The file is a whole, well-formed document after each alert:
/// the next one takes the place of the end tag and puts it back behind itself. A program that is killed
/// leaves a good document too.
///
/// Alerts may come from several threads at once.
class AlertLog : public Oxa::Core::AlertListener {
 public:
  /// Starts the document "alerts.xml" in `folder`, which is created if need be; an old document is replaced.
  /// Raises OutputUnusable.
  explicit AlertLog(const std::string& folder);
  ~AlertLog() override;

  void ErrorHandled(Oxa::Core::Error& error) override;
  void UncaughtFatalError(Oxa::Core::Error& error, const std::string& fatalErrorPath) override;
  void WarningRaised(Oxa::Core::Warning& warning) override;

  const std::string& GetFile() const { return m_sFile; }

  /// Whether everything has reached the file so far.
  bool IsGood();

 private:
  void StartDocument();
  void Append(Oxa::Core::AlertInfo& alert, const std::string& circumstance);
  void Write(const std::string& text);

  Oxa::Core::Mutex m_mutex;  // guards everything below
  std::string m_sFile;
  std::ofstream m_file;
  Oxa::Core::XMLWriter m_writer;
  std::streampos m_end;  // where the end tag stands
};

}  // namespace Station

#endif
