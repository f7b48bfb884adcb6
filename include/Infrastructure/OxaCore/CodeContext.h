// One place in the code and the circumstances of the moment.
//
// Thread safety: none of its own; what is done to one copy never shows in another, so that each thread may keep its
// own.
// Failures: describing a place never raises; when memory runs out the context holds what fitted. A context built from
// tables may throw std::bad_alloc.
// Keys become names of XML elements, and names of variables become attributes, as they stand: keep to letters.
//
//   for (const CodeContext& place : *error.GetUnwindStack()) {
//     std::cout << place.Get(CodeContext::sFUNCTION) << ':' << place.Get(CodeContext::sLINE) << '\n';
//   }
#ifndef INFRASTRUCTURE_OXACORE_CODECONTEXT_H
#define INFRASTRUCTURE_OXACORE_CODECONTEXT_H

#include <Infrastructure/OxaCore/Export.h>

#include <boost/shared_ptr.hpp>
#include <string>
#include <unordered_map>

namespace MSWindows {
class DebugHelpWalk;
}

namespace Oxa::Core {

/// The table inside contexts and alerts. Its order is the order that the XML form shows; nobody relies on it.
using AlertData = std::unordered_map<std::string, std::string>;

/// A snapshot of one place in the code: file, line, function, and the process, thread and host of the moment.
class OXACORE_API CodeContext {
 public:
  // The keys of GetContextInfo. They can be read at any time, also while the process ends.
  static const std::string& sFILE;              ///< "File": source file as passed at the raise site
  static const std::string& sLINE;              ///< "Line": in decimal, or "Unknown"
  static const std::string& sBUILD_TIME;        ///< "CompileTime": time stamp of the source file
  static const std::string& sFUNCTION;          ///< "FunctionName": qualified name without parameters
  static const std::string& sSIGNATURE;         ///< "FunctionSignature": as the compiler spells it
  static const std::string& sPROCESS;           ///< "ProcessName"
  static const std::string& sPROCESS_ID;        ///< "ProcessID"
  static const std::string& sTHREAD;            ///< "ThreadName": left out for a thread without a name
  static const std::string& sTHREAD_ID;         ///< "ThreadID"
  static const std::string& sHOST;              ///< "HostName"
  static const std::string& sOPERATING_SYSTEM;  ///< "OperatingSystem"

  /// Describes a place. `line` below 0 reads "Unknown"; empty `buildTime`, `function` and `signature` are
  /// left out. While the library is unloading the process, thread and host are left out too.
  CodeContext(const std::string& file, int line, const std::string& buildTime, const std::string& function,
              const std::string& signature);

  /// Takes deep copies; for frames of a call stack and for alerts that are read back from a log.
  CodeContext(const AlertData& context, const AlertData& variables);

  /// Takes the tables over.
  CodeContext(AlertData&& context, AlertData&& variables);

  CodeContext(const CodeContext& other);
  CodeContext& operator=(const CodeContext& other);
  CodeContext(CodeContext&& other) noexcept;
  CodeContext& operator=(CodeContext&& other) noexcept;
  virtual ~CodeContext();

  /// The value under `key`, or a reference to one static empty string.
  const std::string& Get(const std::string& key) const;

  /// The whole table. The reference is good until this context is assigned to, moved from or destroyed.
  const AlertData& GetContextInfo() const;

  /// Names of variables with their printed values. The reference is good as long as the one above.
  const AlertData& GetVariables() const;

  /// Whether there is any variable.
  bool HasVariableInfo() const;

 private:
  friend class CodeSite;
  friend class MSWindows::DebugHelpWalk;
  using Table = boost::shared_ptr<const AlertData>;

  static const AlertData& sEMPTY_TABLE;

  CodeContext() = default;

  // A context that shares a table, which nobody may change any more, and takes the variables over. Null stands for an
  // empty table. May throw std::bad_alloc.
  static CodeContext Sharing(Table context, AlertData&& variables);

  // Never changed once they are here, so that copies can share them; null: empty.
  Table m_contextInfo;
  Table m_variables;
};

}  // namespace Oxa::Core

#endif
