#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/System.h>

#include <boost/shared_ptr.hpp>

#include "TwoWriters.h"

using namespace Oxa::Core;

int main(int argc, char** argv) {
  OxaBench::WriterTask task;
  if (!OxaBench::ReadTask(argc, argv, task)) return 2;
  InitializeOxaCore();
  System::Instance()->SetProcessPath(task.m_sFolder);
  const boost::shared_ptr<Logger> log = LogManager::Instance()->GetLogger("Bench.Channel");
  if (!OxaBench::AwaitStart()) return 3;
  for (int line = 0; line < task.m_iLines; ++line)
    log->WriteLog(eLOG_INFORMATIONAL, TWO_WRITERS_MESSAGE, TWO_WRITERS_ARGUMENTS(task.m_sName.c_str(), line));
  OxaBench::AwaitEnd();
  ShutdownOxaCore();
  return 0;
}
