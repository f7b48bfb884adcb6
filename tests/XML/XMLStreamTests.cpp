// What becomes of the state of the stream that a document is written to.
#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>

#include "XML/XMLTestSupport.h"

using namespace XMLTest;

namespace {

struct BufferFull {};

// Takes so many characters and then no more, or throws instead.
class LimitedBuffer : public std::streambuf {
 public:
  LimitedBuffer(std::size_t limit, bool throws) : m_uLimit(limit), m_bThrows(throws) {}
  std::string text;
  int flushes = 0;

 protected:
  int_type overflow(int_type c) override {
    if (text.size() == m_uLimit) return Refuse();
    text += traits_type::to_char_type(c);
    return c;
  }
  int sync() override { return ++flushes, 0; }

 private:
  int_type Refuse() const {
    if (m_bThrows) throw BufferFull();
    return traits_type::eof();
  }

  std::size_t m_uLimit;
  bool m_bThrows;
};

// Takes everything, and can't be flushed.
class UnflushedBuffer : public std::streambuf {
 public:
  explicit UnflushedBuffer(bool throws) : m_bThrows(throws) {}
  std::string text;

 protected:
  int_type overflow(int_type c) override { return text += traits_type::to_char_type(c), c; }
  int sync() override {
    if (m_bThrows) throw BufferFull();
    return -1;
  }

 private:
  bool m_bThrows;
};

void WriteTwoTags(std::ostream& out) {
  XMLWriter writer(XMLFormatter::CreateCompact());
  out << writer.Tag("a", "") << writer.Tag("b", "");
}

}  // namespace

TEST(XMLStream, ShortWriteLeavesTheStreamBad) {
  LimitedBuffer buffer(6, false);
  std::ostream out(&buffer);
  WriteTwoTags(out);
  EXPECT_TRUE(out.bad());
  EXPECT_EQ("<a/><b", buffer.text);
}

TEST(XMLStream, AFailedFlushLeavesTheStreamBad) {
  for (const bool throws : {false, true}) {
    UnflushedBuffer buffer(throws);
    std::ostream out(&buffer);
    XMLWriter writer(XMLFormatter::CreatePrettyPrint());
    EXPECT_NO_THROW(out << writer.Tag("a", "1") << writer.Tag("b", "2"));
    EXPECT_TRUE(out.bad());
    EXPECT_EQ("<a>1</a>\n", buffer.text);
  }
}

TEST(XMLStream, WhatTheBufferThrowsLeavesTheStreamBad) {
  LimitedBuffer buffer(6, true);
  std::ostream out(&buffer);
  EXPECT_NO_THROW(WriteTwoTags(out));
  EXPECT_TRUE(out.bad());
  EXPECT_EQ("<a/><b", buffer.text);
}

TEST(XMLStream, ExceptionsThatTheStreamIsAskedForGetOut) {
  LimitedBuffer full(6, false), throwing(6, true);
  std::ostream first(&full), second(&throwing);
  first.exceptions(std::ios::badbit);
  second.exceptions(std::ios::badbit);
  EXPECT_THROW(WriteTwoTags(first), std::ios::failure);
  EXPECT_THROW(WriteTwoTags(second), BufferFull);
}

TEST(XMLStream, NothingIsWrittenToAStreamThatHasFailed) {
  LimitedBuffer buffer(100, false);
  std::ostream out(&buffer);
  out.setstate(std::ios::failbit);
  WriteTwoTags(out);
  EXPECT_EQ("", buffer.text);
}

TEST(XMLStream, TiedStreamIsFlushedFirst) {
  LimitedBuffer tiedBuffer(100, false), buffer(100, false);
  std::ostream tied(&tiedBuffer), out(&buffer);
  out.tie(&tied);
  WriteTwoTags(out);
  EXPECT_EQ("<a/><b/>", buffer.text);
  EXPECT_EQ(2, tiedBuffer.flushes);
}

TEST(XMLStream, UnbufferedStreamIsFlushedEachTime) {
  LimitedBuffer buffer(100, false);
  std::ostream out(&buffer);
  out << std::unitbuf;
  WriteTwoTags(out);
  EXPECT_EQ("<a/><b/>", buffer.text);
  EXPECT_EQ(2, buffer.flushes);
}

TEST(XMLStream, StreamWithoutABufferIsLeftAlone) {
  std::ostream out(nullptr);
  WriteTwoTags(out);
  EXPECT_TRUE(out.bad());
}

TEST(XMLStream, AssignedManipulatorDoesTheOthersWork) {
  Compact doc;
  XMLWriter other(XMLFormatter::CreateCompact());
  XMLWriter::Manipulator manipulator = doc.writer.EndTag();
  manipulator = other.Tag("a", TwoAttributes(), Times(100, 'x'));
  EXPECT_EQ(&other, &manipulator.GetWriter());
  const XMLWriter::Manipulator& same = manipulator;
  manipulator = same;
  doc.out << manipulator;
  EXPECT_EQ("<a name1=\"value1\" name2=\"value2\">" + Times(100, 'x') + "</a>", doc.Text());
}
