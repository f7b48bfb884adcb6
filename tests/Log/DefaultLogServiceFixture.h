// A default log service with a folder of its own, and what its tests ask it.
#ifndef OXACORE_TESTS_LOG_DEFAULTLOGSERVICEFIXTURE_H
#define OXACORE_TESTS_LOG_DEFAULTLOGSERVICEFIXTURE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Log/DefaultLogService.h"
#include "Log/LogFakes.h"
#include "Log/LogFolder.h"

namespace LogTests {

using Messages = std::vector<std::string>;

class DefaultLogServiceTest : public testing::Test {
 protected:
  void Write(const std::string& message) { m_service->WriteLogEntry(Entry(message)); }

  Messages Flushed() {
    LogFakes::FakeService service;
    m_service->FlushRetained(service);
    return service.m_messages;
  }

  LogTests::LogFolder m_folder;
  std::unique_ptr<Oxa::Core::DefaultLogService> m_service{new Oxa::Core::DefaultLogService};
};

}  // namespace LogTests

#endif
