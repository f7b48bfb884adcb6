#include <log4cplus/fileappender.h>
#include <log4cplus/helpers/property.h>
#include <log4cplus/initializer.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <ios>
#include <memory>

#include "TwoWriters.h"

// With the lock between processes that its file appender offers, which works by a file beside the log.
int main(int argc, char** argv) {
  OxaBench::WriterTask task;
  if (!OxaBench::ReadTask(argc, argv, task)) return 2;
  const log4cplus::Initializer initializer;
  log4cplus::helpers::Properties properties;
  properties.setProperty("File", task.m_sFolder + "DefaultLog.entries");
  properties.setProperty("Append", "true");
  properties.setProperty("UseLockFile", "true");
  properties.setProperty("LockFile", task.m_sFolder + "lock");
  const log4cplus::SharedAppenderPtr appender(new log4cplus::FileAppender(properties));
  appender->setLayout(
      std::make_unique<log4cplus::PatternLayout>("[%D{%Y-%m-%d %H:%M:%S.%q}] [%p] [Bench.Channel] %m%n"));
  log4cplus::Logger logger = log4cplus::Logger::getInstance("Bench.Channel");
  logger.setAdditivity(false);
  logger.addAppender(appender);
  if (!OxaBench::AwaitStart()) return 3;
  for (int line = 0; line < task.m_iLines; ++line)
    LOG4CPLUS_INFO_FMT(logger, TWO_WRITERS_MESSAGE, TWO_WRITERS_ARGUMENTS(task.m_sName.c_str(), line));
  OxaBench::AwaitEnd();
  return 0;
}
