#include "Reference.h"

#include <algorithm>

namespace Model {

namespace {

constexpr char s_alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The longest text that a test waits for; random bytes read as a length tell of gigabytes.
constexpr Count s_ulLONGEST_TEXT = 20000;

[[noreturn]] void ExceededLimit() {
  throw Failure{
      "XIOExceededOutputLimit: Attempted write operation exceeded the allowed number of output bytes"};
}

Bytes MessageOf(const Failure& failure) { return failure.m_sText.substr(failure.m_sText.find(": ") + 2); }

int SixBits(int character) {
  if (character == 255) return 0;  // as if it were an A
  const auto place = Bytes(s_alphabet).find(static_cast<char>(character));
  return place == Bytes::npos ? -1 : static_cast<int>(place);
}

unsigned int BitsOf(const Bytes& group) {
  unsigned int bits = 0;
  for (const char byte : group) bits = bits << 8U | static_cast<unsigned char>(byte);
  return bits;
}

}  // namespace

// --- reading

long long Reference::Read(int level, Bytes& into, long long count) {
  if (level == 0) return m_store.m_bPipe ? ReadPipe(into, count) : ReadFile(into, count);
  Stage& stage = Input(level);
  switch (stage.m_layer.m_eKind) {
    case Layer::eBUFFERED:
      return ReadBuffered(level, into, count);
    case Layer::eBASE64:
      return ReadByteByByte(level, into, count);
    case Layer::eDATA:
      return Read(level - 1, into, count);
    case Layer::eBOUNDED:
      break;
  }
  const Count left = stage.m_layer.m_ulSize - stage.m_ulCount;
  if (left == 0) return -1;
  if (count > 0 && static_cast<Count>(count) > left) count = static_cast<long long>(left);
  const long long got = Read(level - 1, into, count);
  if (got > 0) stage.m_ulCount += static_cast<Count>(got);
  return got;
}

int Reference::Read(int level) {
  if (level == 0) return ReadStoreByte();
  Stage& stage = Input(level);
  if (stage.m_layer.m_eKind == Layer::eDATA) return Read(level - 1);
  if (stage.m_layer.m_eKind == Layer::eBOUNDED) {
    const int byte = stage.m_ulCount < stage.m_layer.m_ulSize ? Read(level - 1) : -1;
    if (byte >= 0) ++stage.m_ulCount;
    return byte;
  }
  if (stage.m_layer.m_eKind == Layer::eBUFFERED && stage.m_layer.m_ulSize == 0)
    return std::max(Read(level - 1), -1);  // nothing to hold a byte in
  Bytes& held = stage.m_held;
  if (held.empty()) stage.m_layer.m_eKind == Layer::eBUFFERED ? Fill(level) : Decode(level);
  if (held.empty()) return -1;  // also for "no data now"
  const int byte = static_cast<unsigned char>(held[0]);
  held.erase(0, 1);
  return byte;
}

void Reference::Fill(int level) {
  Stage& stage = Input(level);
  stage.m_held.clear();
  Bytes ahead;
  Read(level - 1, ahead, static_cast<long long>(stage.m_layer.m_ulSize));
  stage.m_held = ahead;
}

long long Reference::ReadBuffered(int level, Bytes& into, long long count) {
  if (count < 1) return 0;
  Bytes& held = Input(level).m_held;
  const Bytes ready = Piece(held, 0, static_cast<Count>(count));
  held.erase(0, ready.size());
  into += ready;
  const auto got = static_cast<long long>(ready.size());
  if (got == count) return count;
  const long long more = Read(level - 1, into, count - got);
  if (got == 0) Fill(level);  // reads ahead only if nothing was held
  return got == 0 ? more : got + std::max(more, 0LL);
}

long long Reference::ReadByteByByte(int level, Bytes& into, long long count) {
  long long got = 0;
  try {
    for (; got < count; ++got) {
      const int byte = Read(level);
      if (byte < 0) return got == 0 ? byte : got;
      into += static_cast<char>(byte);
    }
  } catch (const Failure& failure) {
    m_warnings.push_back("IOErrorDuringRead: Read of " + std::to_string(count) + " bytes ended after " +
                         std::to_string(got) + " bytes read due to error:\n" + MessageOf(failure));
  }
  return got;
}

void Reference::Decode(int level) {
  unsigned int bits = 0;
  int valid = 0;
  for (int count = 0; count < 4;) {
    const int character = Read(level - 1);
    if (character < 0) {  // the rest of the group is zero
      bits <<= static_cast<unsigned int>(6 * (4 - count));
      break;
    }
    const bool pad = character == '=';
    const int value = pad ? 0 : SixBits(character);
    if (value < 0) continue;
    bits = bits << 6U | static_cast<unsigned int>(value);
    valid += pad ? 0 : 1;
    ++count;
  }
  const Bytes group = {static_cast<char>(bits >> 16U), static_cast<char>(bits >> 8U),
                       static_cast<char>(bits)};
  const int number = valid == 0 ? 0 : std::max(valid - 1, 1);
  Input(level).m_held = Piece(group, 0, static_cast<Count>(number));
}

bool Reference::Skip(int level, Count count) {
  if (level == 0 && m_store.m_bPipe) return SkipPipe(count);
  if (level == 0) {
    const Count available = Available(0);
    SetInputPos(count <= available ? static_cast<long long>(count) : 0,
                count <= available ? Where::eFROM_CURRENT : Where::eFROM_END);
    return count <= available;
  }
  Stage& stage = Input(level);
  if (stage.m_layer.m_eKind == Layer::eBUFFERED) return SkipBuffered(level, count);
  if (stage.m_layer.m_eKind != Layer::eBOUNDED) return Skip(level - 1, count);  // a decoder, too
  const Count left = stage.m_layer.m_ulSize - stage.m_ulCount;
  if (left < count) return Skip(level - 1, left), false;
  stage.m_ulCount += count;
  return Skip(level - 1, count);
}

bool Reference::SkipBuffered(int level, Count count) {
  if (count == 0) return true;
  Bytes& held = Input(level).m_held;
  const Count left = held.size();
  if (left < count && !Skip(level - 1, count - left)) return false;
  if (left > count) held.erase(0, static_cast<std::size_t>(count));
  if (left <= count) Fill(level);
  return true;
}

Count Reference::Available(int level) {
  if (level == 0) return m_store.m_bPipe ? m_ring.size() : static_cast<Count>(FileSize() - m_iInput);
  const Count below = Available(level - 1);
  const Stage& stage = Input(level);
  switch (stage.m_layer.m_eKind) {
    case Layer::eBUFFERED:
      return below + stage.m_held.size();
    case Layer::eBASE64:
      return below * 3 / 4 + stage.m_held.size();
    case Layer::eBOUNDED:
      return std::min(below, stage.m_layer.m_ulSize - stage.m_ulCount);
    case Layer::eDATA:
      break;
  }
  return below;
}

void Reference::DropAllBuffered() {
  for (Stage& stage : m_input) stage.m_held.clear();
}

// --- typed values

// The results are added up unsigned, -1 and -2 as well: they end it if nothing has come, and take back else.
Count Reference::Fully(int level, Bytes& target) {
  const Count wanted = target.size();
  Count total = 0, most = 0;
  while (total < wanted) {
    Bytes bytes;
    const long long got = Read(level - 1, bytes, static_cast<long long>(wanted - total));
    if (got == 0) throw NotToBeAsked();
    target.replace(static_cast<std::size_t>(total), bytes.size(), bytes);
    most = std::max<Count>(most, total + bytes.size());
    total += static_cast<Count>(got);
  }
  return most;
}

Bytes Reference::Get(int level, Value type, bool& whole) {
  whole = true;
  if (type < Value::eBOOL) {
    const int byte = Read(level - 1);
    if (byte >= 0) return Bytes(1, static_cast<char>(byte));
    throw Failure{"XIOEndOfStream: Hit end-of-stream after reading 0 bytes of a 1 byte read"};
  }
  Bytes value = FormerValue(type);
  if (type == Value::eSTRING || type == Value::eWIDE_STRING) {
    Bytes length(4, '\0');
    Fully(level, length);
    std::reverse(length.begin(), length.end());
    const Count size = BitsOf(length) * (type == Value::eSTRING ? 1ULL : 2ULL);
    if (size > s_ulLONGEST_TEXT) throw NotToBeAsked();
    value.assign(static_cast<std::size_t>(size), '\0');
    whole = Fully(level, value) == size;
    return value;
  }
  Fully(level, value);
  if (type == Value::eBOOL) value[0] = value[0] != 0 ? 1 : 0;
  return value;
}

void Reference::Put(int level, Value type, const Bytes& bytes) {
  if (type != Value::eSTRING && type != Value::eWIDE_STRING)
    return Write(level - 1, bytes, type < Value::eBOOL);
  const Count length = type == Value::eSTRING ? bytes.size() : bytes.size() / 2;
  Bytes prefix;
  for (unsigned int shift = 0; shift < 32; shift += 8) prefix += static_cast<char>(length >> shift);
  Write(level - 1, prefix);
  if (length != 0) Write(level, bytes);
}

// --- writing

void Reference::Write(int level, const Bytes& bytes) { Write(level, bytes, false); }

void Reference::Write(int level, const Bytes& bytes, bool single) {
  if (level == 0) return m_store.m_bPipe ? WritePipe(bytes, single) : WriteFile(bytes);
  Stage& stage = Output(level);
  switch (stage.m_layer.m_eKind) {
    case Layer::eBUFFERED:
      return WriteBuffered(level, bytes, single);
    case Layer::eBOUNDED:
      return WriteBounded(level, bytes, single);
    case Layer::eDATA:
      return Write(level - 1, bytes, single);
    case Layer::eBASE64:
      break;
  }
  for (const char byte : bytes) {
    stage.m_group[stage.m_held.size()] = byte;
    stage.m_held += byte;
    if (stage.m_held.size() == 3) Encode(level);
  }
}

// What can't be written stays, although a part of it may have been.
void Reference::WriteHeld(int level) {
  Bytes& held = Output(level).m_held;
  if (!held.empty()) Write(level - 1, held);
  held.clear();
}

void Reference::WriteBuffered(int level, const Bytes& bytes, bool single) {
  Stage& stage = Output(level);
  const Count size = stage.m_layer.m_ulSize;
  const Count room = size - stage.m_held.size();
  if (bytes.empty()) return;
  if (single ? room == 0 : bytes.size() >= room) WriteHeld(level);
  if (single ? size != 0 : bytes.size() < size) {
    stage.m_held += bytes;
  } else {
    Write(level - 1, bytes, single);
  }
}

void Reference::WriteBounded(int level, const Bytes& bytes, bool single) {
  Stage& stage = Output(level);
  const Count left = stage.m_layer.m_ulSize - stage.m_ulCount;
  if (bytes.empty()) return;
  const Bytes fitting = Piece(bytes, 0, left);
  if (!fitting.empty()) Write(level - 1, fitting, single);
  stage.m_ulCount += fitting.size();
  if (fitting.size() == bytes.size()) return;
  if (!single) Flush(level - 1);
  ExceededLimit();
}

void Reference::Encode(int level) {
  Stage& stage = Output(level);
  const Count number = stage.m_held.size();
  const unsigned int bits = BitsOf(stage.m_group);
  stage.m_held.clear();
  Bytes text;
  for (unsigned int index = 0; index < 4; ++index)
    text += index > number ? '=' : s_alphabet[bits >> (18 - 6 * index) & 63U];
  Write(level - 1, text);
  if (!stage.m_layer.m_bSeparators) return;
  stage.m_iLine += 4;
  if (stage.m_layer.m_iLineLength < stage.m_iLine) return;
  Write(level - 1, stage.m_layer.m_sSeparator);
  stage.m_iLine = 0;
}

void Reference::Flush(int level) {
  if (level == 0) {
    if (!m_store.m_bPipe) NeedOpen();
    return;
  }
  Stage& stage = Output(level);
  if (stage.m_layer.m_eKind == Layer::eBUFFERED) WriteHeld(level);
  if (stage.m_layer.m_eKind == Layer::eBASE64) {
    if (stage.m_held.empty()) return;
    stage.m_group = Piece(stage.m_held + Bytes(2, '\0'), 0, 3);
    Encode(level);
  }
  Flush(level - 1);
}

void Reference::CloseOutput(int level) {
  for (; level > 0; --level) {
    try {
      Flush(level);
    } catch (const Failure& failure) {
      m_warnings.push_back("IOErrorDuringFlush: Flush raised the following i/o error:\n" +
                           MessageOf(failure));
    }
  }
  CloseStore();
}

void Reference::FlushAllBuffered() {
  for (int level = OutputTop(); level > 0; --level) {
    if (Output(level).m_layer.m_eKind != Layer::eBUFFERED) continue;
    try {
      WriteHeld(level);
    } catch (const Failure& failure) {
      m_warnings.push_back("ListenerErrorOnNotification: Listener threw error during notification: " +
                           MessageOf(failure));
    }
  }
}

void Reference::PopOutput() {
  const int top = OutputTop();
  try {
    if (Output(top).m_layer.m_eKind == Layer::eBASE64 && !Output(top).m_held.empty()) Encode(top);
  } catch (const Failure&) {  // a destructor keeps it to itself
  }
  m_output.pop_back();
}

std::vector<Bytes> Reference::TakeWarnings() {
  std::vector<Bytes> warnings;
  warnings.swap(m_warnings);
  return warnings;
}

}  // namespace Model
