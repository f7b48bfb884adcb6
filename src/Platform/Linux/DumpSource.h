// What a dump is made from: the request, and the tables that its steps fill and read.
#ifndef OXACORE_PLATFORM_LINUX_DUMPSOURCE_H
#define OXACORE_PLATFORM_LINUX_DUMPSOURCE_H

#include "Platform/Dump.h"
#include "Platform/Linux/DumpFile.h"
#include "Platform/Linux/DumpMaps.h"
#include "Platform/Linux/DumpModules.h"
#include "Platform/Linux/DumpRanges.h"
#include "Platform/Linux/DumpThreads.h"
#include "Platform/Linux/FaultContext.h"

namespace Oxa::Core::Platform {

/// One, in static storage, nothing but zeros until it is needed.
struct DumpSource {
  // The request.
  const _EXCEPTION_RECORD* m_pRecord;  ///< null if there is no fault
  CONTEXT m_context;
  unsigned int m_uContents;
  DumpFilter m_pFilter;
  void* m_pParameter;

  // What the calling thread found out.
  int m_iProcess;
  int m_iFile;
  int m_iFolder;         ///< the system's folder of the process, -1 if there is none
  int m_iTasks;          ///< the folder of its threads, -1 if there is none
  int m_iWatch;          ///< a thread that has to run on, 0 for none
  bool m_bStop;          ///< the other threads are to stand still
  std::int64_t m_iTime;  ///< of the day, in seconds
  std::int64_t m_iUserSeconds;
  std::int64_t m_iKernelSeconds;
  std::int64_t m_iDeadline;

  // What it becomes.
  DumpFile m_file;
  DumpMaps m_maps;
  DumpModules m_modules;
  DumpThreads m_threads;
  DumpRanges m_ranges;

  /// Opens a file of the system's folder of the process for reading; negative if there is none.
  int Open(const char* name) const noexcept;

  /// Whether the request's filter wants it.
  bool Wants(unsigned int callback, unsigned int& flags) const noexcept;
};

/// Writes the file from its first byte to its last.
void WriteDumpFile(DumpSource& source) noexcept;

// The streams, each by its own function.
void WriteSystemInfo(DumpSource& source) noexcept;
void WriteMiscInfo(DumpSource& source) noexcept;
void WriteSystemTexts(DumpSource& source) noexcept;
void WriteLoaderState(DumpSource& source) noexcept;
void WriteModules(DumpSource& source) noexcept;
void WriteThreads(DumpSource& source) noexcept;
void WriteThreadNames(DumpSource& source) noexcept;
void WriteThreadInfo(DumpSource& source) noexcept;
void WriteException(DumpSource& source) noexcept;
void WriteHandles(DumpSource& source) noexcept;
void WriteMemoryInfo(DumpSource& source) noexcept;

}  // namespace Oxa::Core::Platform

#endif
