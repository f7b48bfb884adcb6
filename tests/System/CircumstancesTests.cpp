#include "System/Circumstances.h"

#include <Infrastructure/OxaCore/RaiseSite.h>
#include <Infrastructure/OxaCore/System.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "Platform/Machine.h"
#include "Platform/Threads.h"

using Oxa::Core::AddCircumstances;
using Oxa::Core::AlertData;
using Oxa::Core::CodeContext;
using Oxa::Core::System;
namespace Platform = Oxa::Core::Platform;

TEST(Circumstances, TellWhoWhereAndOnWhat) {
  std::thread([] {
    System::Instance()->SetCurrentThreadName("prober");
    AlertData data;
    AddCircumstances(data);
    std::string process, host, os;
    System::Instance()->GetProcessName(process);
    System::Instance()->GetHostName(host);
    System::Instance()->GetOsName(os);
    const AlertData expected = {
        {"ProcessName", process}, {"ProcessID", std::to_string(Platform::ProcessId())},
        {"ThreadName", "prober"}, {"ThreadID", std::to_string(Platform::CurrentThreadId())},
        {"OperatingSystem", os},  {"HostName", host}};
    EXPECT_EQ(expected, data);
  }).join();
}

TEST(Circumstances, LeaveOutWhatIsEmpty) {
  std::thread([] {
    std::string before;
    System::Instance()->GetProcessName(before);
    System::Instance()->SetProcessName("");
    AlertData data;
    AddCircumstances(data);
    System::Instance()->SetProcessName(before);
    EXPECT_EQ(0u, data.count(CodeContext::sTHREAD));
    EXPECT_EQ(0u, data.count(CodeContext::sPROCESS));
    EXPECT_EQ(1u, data.count(CodeContext::sTHREAD_ID));
  }).join();
}

TEST(Circumstances, StandInEveryContext) {
  const CodeContext context("file.cpp", 1, "", "", "");
  EXPECT_EQ(std::to_string(Platform::ProcessId()), context.Get(CodeContext::sPROCESS_ID));
  EXPECT_FALSE(context.Get(CodeContext::sOPERATING_SYSTEM).empty());
  EXPECT_FALSE(context.Get(CodeContext::sHOST).empty());
  EXPECT_EQ(std::to_string(Platform::CurrentThreadId()), context.Get(CodeContext::sTHREAD_ID));
}
