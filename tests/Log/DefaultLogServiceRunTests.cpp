// Entries that the default log service gets several at a time.
#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include "Log/DefaultLogServiceFixture.h"
#include "Log/FileLimit.h"
#include "Log/LogBatch.h"

namespace {

using namespace Oxa::Core;
using LogTests::Entry;
using LogTests::EntryText;
using LogTests::Messages;

class DefaultLogServiceRunTest : public LogTests::DefaultLogServiceTest {
 protected:
  /// Puts them into the batch.
  void Take(const std::vector<OxaLogEntry>& entries) {
    Queue<OxaLogEntry> queue("", nullptr, 1000, 100, 3000);
    for (const OxaLogEntry& entry : entries) queue.Push(entry);
    m_batch.TakeFrom(queue, entries.size());
  }
  void Take(const Messages& messages) {
    std::vector<OxaLogEntry> entries;
    for (const std::string& message : messages) entries.push_back(Entry(message));
    Take(entries);
  }

  /// All that is left in it, in as many pieces as that takes.
  void WriteAll() {
    while (!m_batch.IsEmpty()) ASSERT_NE(0U, m_service->WriteTogether(m_batch));
  }

  LogBatch m_batch;
};

std::string Texts(const Messages& messages) {
  std::string texts;
  for (const std::string& message : messages) texts += EntryText(message);
  return texts;
}

TEST_F(DefaultLogServiceRunTest, EntriesThatNobodyTakesAreRetainedAndAppendedInTheirOrder) {
  const Messages messages{"one", "two", "three"};
  Take(messages);
  EXPECT_EQ(3U, m_service->WriteTogether(m_batch));
  EXPECT_EQ(Texts(messages).size(), m_folder.Entries().size());
  EXPECT_LT(m_folder.Entries().find("one"), m_folder.Entries().find("two"));
  EXPECT_LT(m_folder.Entries().find("two"), m_folder.Entries().find("three"));
  EXPECT_EQ(messages, Flushed());
}

TEST_F(DefaultLogServiceRunTest, ThousandAreRetainedAndNoMore) {
  for (int run = 0; run < 20; ++run) {
    Take(Messages(60, std::to_string(run)));
    WriteAll();
  }
  const Messages flushed = Flushed();
  ASSERT_EQ(1000U, flushed.size());
  EXPECT_EQ("3", flushed.front());
  EXPECT_EQ("19", flushed.back());
}

TEST_F(DefaultLogServiceRunTest, NothingHappensToThemWhereThereIsAHandler) {
  LogFakes::Handler handler;
  m_service->RegisterHandler(&handler);
  Take(Messages{"one", "two"});
  EXPECT_EQ(0U, m_service->WriteTogether(m_batch));
  EXPECT_EQ(2, m_batch.end() - m_batch.begin());
  EXPECT_EQ("one", m_batch.begin()->m_sMessage);
  EXPECT_FALSE(m_folder.Has("DefaultLog.entries"));
  EXPECT_FALSE(m_service->HasRetained());
}

TEST_F(DefaultLogServiceRunTest, LongOnesGoInSeveralPieces) {
  const Messages messages(10, std::string(20000, 'x'));
  Take(messages);
  EXPECT_EQ(2U, m_service->WriteTogether(m_batch));
  EXPECT_EQ(8, m_batch.end() - m_batch.begin());
  WriteAll();
  EXPECT_EQ(Texts(messages).size(), m_folder.Entries().size());
  EXPECT_EQ(messages, Flushed());
}

// The error that is raised for its time may be in the log as well.
TEST_F(DefaultLogServiceRunTest, OneThatCannotBeLaidOutIsRetainedAndKeepsNoOtherFromTheFile) {
  OxaLogEntry beyondAllYears = Entry("beyond all years");
  beyondAllYears.m_time = Time(0x7FFFFFFFFFFFFFFFLL, Time::ePlatformTimeCurrent);
  EXPECT_THROW(LogEntryText(beyondAllYears), Time::OsTimeApiError);
  Take(std::vector<OxaLogEntry>{Entry("the one"), beyondAllYears, Entry("the other")});
  EXPECT_EQ(3U, m_service->WriteTogether(m_batch));
  EXPECT_NE(std::string::npos, m_folder.Entries().find("<Message>the one</Message>"));
  EXPECT_NE(std::string::npos, m_folder.Entries().find("<Message>the other</Message>"));
  EXPECT_EQ(std::string::npos, m_folder.Entries().find("<Message>beyond"));
  EXPECT_EQ((Messages{"the one", "beyond all years", "the other"}), Flushed());
}

TEST_F(DefaultLogServiceRunTest, WhatCannotBeWrittenGoesToStandardError) {
  System::Instance()->SetProcessPath(m_folder.Path() + "missing/");
  const Messages messages{"one", "two", "three"};
  Take(messages);
  testing::internal::CaptureStderr();
  EXPECT_EQ(3U, m_service->WriteTogether(m_batch));
  const std::string errors = testing::internal::GetCapturedStderr();
  std::size_t at = 0;
  for (const std::string& message : messages) {
    at = errors.find(">" + message + "<", at);
    EXPECT_NE(std::string::npos, at) << message;
  }
  EXPECT_EQ(messages, Flushed());
}

TEST_F(DefaultLogServiceRunTest, WithoutRoomOnTheDiskTheyAreRetainedAllTheSame) {
  const Messages messages(10, "text");
  Take(messages);
  m_service->WriteLogEntry(Entry("text"));
  {
    const LogTests::FileLimit limit(4 * EntryText("text").size() + 10);
    EXPECT_EQ(10U, m_service->WriteTogether(m_batch));
  }
  EXPECT_EQ(4 * EntryText("text").size(), m_folder.Entries().size());
  EXPECT_EQ(Messages(11, "text"), Flushed());
}

// The host may lead standard error to a stream of its own, which calls and throws.
class HostsStream : public std::streambuf {
 public:
  explicit HostsStream(std::function<void()> onText) : m_onText(std::move(onText)) { std::cerr.rdbuf(this); }
  HostsStream(const HostsStream&) = delete;
  HostsStream& operator=(const HostsStream&) = delete;
  ~HostsStream() override {
    std::cerr.exceptions(std::ios::goodbit);
    std::cerr.clear();
    std::cerr.rdbuf(m_pBefore);
  }

  std::string m_sText;

 protected:
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    m_sText.append(text, static_cast<std::size_t>(size));
    m_onText();
    return size;
  }
  int_type overflow(int_type character) override {
    m_sText += traits_type::to_char_type(character);
    return character;
  }

 private:
  const std::function<void()> m_onText;
  std::streambuf* const m_pBefore = std::cerr.rdbuf();
};

TEST_F(DefaultLogServiceRunTest, AreDealtWithAlsoWhereStandardErrorThrows) {
  System::Instance()->SetProcessPath(m_folder.Path() + "missing/");
  const Messages messages{"one", "two", "three"};
  Take(messages);
  {
    const HostsStream stream([] { throw LogicError("of the host"); });
    std::cerr.exceptions(std::ios::badbit);
    EXPECT_EQ(3U, m_service->WriteTogether(m_batch));
  }
  EXPECT_TRUE(m_batch.IsEmpty());
  EXPECT_EQ(messages, Flushed());
}

TEST_F(DefaultLogServiceRunTest, WhoeverIsToldOfTroubleMaySendTheRest) {
  System::Instance()->SetProcessPath(m_folder.Path() + "missing/");
  Messages messages;
  for (const char letter : {'a', 'b', 'c', 'd'}) messages.emplace_back(20000, letter);
  Take(messages);
  std::string text;
  {
    std::size_t rest = 0;
    const HostsStream stream([&] {
      if (m_batch.IsEmpty()) return;
      rest = m_service->WriteTogether(m_batch);
    });
    EXPECT_EQ(2U, m_service->WriteTogether(m_batch));
    EXPECT_EQ(2U, rest);
    text = stream.m_sText;
  }
  for (const std::string& message : messages) {
    const std::size_t at = text.find(message);
    ASSERT_NE(std::string::npos, at) << message.front();
    EXPECT_EQ(std::string::npos, text.find(message, at + 1)) << message.front();
  }
  EXPECT_TRUE(m_batch.IsEmpty());
  EXPECT_EQ(messages, Flushed());
}

// --- The batch

TEST(LogBatch, TakesTheOldestAndGivesThemInTheirOrder) {
  Queue<OxaLogEntry> queue("", nullptr, 1000, 100, 3000);
  for (int number = 0; number < 100; ++number) queue.Push(Entry(std::to_string(number)));
  LogBatch batch;
  EXPECT_TRUE(batch.IsEmpty());
  batch.TakeFrom(queue, 3);
  EXPECT_EQ(97U, queue.GetCount());
  EXPECT_EQ("0", batch.Next().m_sMessage);
  batch.Drop(1);
  EXPECT_EQ("2", batch.begin()->m_sMessage);
  EXPECT_EQ(1, batch.end() - batch.begin());
  EXPECT_EQ("2", batch.Next().m_sMessage);
  EXPECT_TRUE(batch.IsEmpty());
  batch.TakeFrom(queue, 1000);
  EXPECT_EQ(static_cast<std::ptrdiff_t>(LogBatch::uMOST), batch.end() - batch.begin());
  EXPECT_EQ(97U - LogBatch::uMOST, queue.GetCount());
  batch.DropAll();
  EXPECT_TRUE(batch.IsEmpty());
}

}  // namespace
