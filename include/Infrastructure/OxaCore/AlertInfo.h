// What every alert carries: a table of texts, a severity, and two stacks of places.
//
// Everything in an alert is a text under a well-known key, so that an alert can be written, read back from a
// log, filtered and compared without knowing its class.
//
// Thread safety: none. Copies of an alert SHARE one data table and one pair of stacks. An alert belongs to the
// thread that raises it until it is told to listeners, and listeners treat it as read-only.
// Failures: an alert that can't be built for want of memory stays as far as it got, and every operation works on
// one that has no table or no stack. Setting and copying data, and ToXML, may throw std::bad_alloc.
// Keys become names of XML elements as they stand: keep to letters and digits.
//
//   lost.SetData("Channel", "3");
//   std::cout << lost.GetData(AlertInfo::sMESSAGE) << ", on channel " << lost.GetData("Channel") << '\n';
#ifndef INFRASTRUCTURE_OXACORE_ALERTINFO_H
#define INFRASTRUCTURE_OXACORE_ALERTINFO_H

#include <Infrastructure/OxaCore/CodeContext.h>
#include <Infrastructure/OxaCore/Export.h>

#include <boost/shared_ptr.hpp>
#include <iosfwd>
#include <string>
#include <vector>

namespace Oxa::Core {

class XMLWriter;

/// Base of all alerts.
class OXACORE_API AlertInfo {
 public:
  /// Bits, so that listeners can keep a mask. A fresh alert has the value -1, which has no name.
  enum ESeverity : int { eWARNING = 1, eERROR = 2, eCRITICAL = 4 };

  // Keys of the data table, with what a new alert has under them.
  static const std::string& sMESSAGE;     ///< "Message": "No Message"
  static const std::string& sSEVERITY;    ///< "Severity": "Unknown"
  static const std::string& sCATEGORY;    ///< "Category": "Unknown"
  static const std::string& sLOG_NAME;    ///< "LogName": empty
  static const std::string& sTIME_STAMP;  ///< "TimeStamp": local time of construction
  static const std::string& sTYPE_NAME;   ///< "TypeName": not set; published for clients

  /// A new alert with the defaults above. Never fails: what can't be allocated is missing.
  AlertInfo();

  /// An alert rebuilt from stored parts, of which it takes deep copies. Its severity stays -1; the text under
  /// sSEVERITY is what `data` holds.
  AlertInfo(const AlertData& data, const std::vector<CodeContext>& callStack,
            const std::vector<CodeContext>& unwindStack);

  /// Copies share the data table and both stacks.
  AlertInfo(const AlertInfo& other);
  AlertInfo& operator=(const AlertInfo& other);
  virtual ~AlertInfo();

  /// Name of the element of the XML form: "Alert" here, "Error" and "Warning" in the two families.
  virtual std::string XMLElementName();

  /// Whether there is a text under `key`, an empty one included.
  bool DataExists(const std::string& key) const;

  /// The value under `key`, or a reference to one static empty string.
  const std::string& GetData(const std::string& key) const;

  /// Copies the table into `out`. Without a table, false, and `out` holds one entry that says so.
  bool GetAllData(AlertData& out) const;

  /// Sets or replaces. False only if there is no table.
  bool SetData(const std::string& key, const std::string& value);

  /// As it was built with.
  ESeverity GetSeverity() const;

  /// Appends a place to the unwind stack, if there is one and memory allows.
  void PushContext(const CodeContext& context);
  void PushContext(CodeContext&& context);

  /// Where the fault was, innermost frame first. Null until an error makes one.
  boost::shared_ptr<std::vector<CodeContext>> GetCallStack() const;

  /// The places through which the alert was raised and forwarded, in that order. Null only without memory.
  boost::shared_ptr<std::vector<CodeContext>> GetUnwindStack() const;

  /// Writes the alert as one element through `writer` onto `out`, with a "Circumstance" unless that is empty.
  void ToXML(XMLWriter& writer, std::ostream& out, const std::string& circumstance);

 protected:
  /// Sets the severity and its text: the number is for filters, the text for logs and reports.
  void SetSeverity(ESeverity severity);

  /// As SetData, for the road of a raise: gives up silently when memory runs out.
  void StoreText(const std::string& key, const std::string& value) noexcept;

  /// Appends `frames` to the call stack, or takes them as the call stack if there is none. Null does nothing.
  void AddCallStack(const boost::shared_ptr<std::vector<CodeContext>>& frames);

 private:
  friend class AlertXml;

  boost::shared_ptr<AlertData> m_spData;
  boost::shared_ptr<std::vector<CodeContext>> m_spCallStack;
  ESeverity m_eSeverity;
  boost::shared_ptr<std::vector<CodeContext>> m_spUnwindStack;
};

}  // namespace Oxa::Core

#endif
