#include "Subject.h"

#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/io/Base64Streams.h>
#include <Infrastructure/OxaCore/io/BoundedStreams.h>
#include <Infrastructure/OxaCore/io/BufferedStreams.h>
#include <Infrastructure/OxaCore/io/DataStreams.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <type_traits>
#include <typeindex>
#include <unordered_map>
#include <utility>

#include "ErrorHandling/Hooks.h"
#include "Platform/Symbols.h"

namespace Model {

namespace {

using namespace Oxa::Core;

std::vector<Bytes>& WarningsOfThread() {
  thread_local std::vector<Bytes> warnings;
  return warnings;
}

// "class Oxa::Core::IOTimeout" is "IOTimeout" to the model.
const Bytes& NameOf(const std::type_info& type) {
  thread_local std::unordered_map<std::type_index, Bytes> names;
  Bytes& name = names[type];
  if (name.empty()) {
    name = Platform::UndecoratedName(type);
    name.erase(0, name.rfind(':') + 1);
  }
  return name;
}

template <class Alert>
Bytes TextOf(const Alert& alert) {
  return NameOf(typeid(alert)) + ": " + alert.GetData(AlertInfo::sMESSAGE);
}

// What `action` gives; an error of the library comes as a Failure.
template <class Action>
auto Telling(const Action& action) -> decltype(action()) {
  try {
    return action();
  } catch (const Error& error) {
    throw Failure{TextOf(error)};
  }
}

Elapse TimeOut(bool waits) { return Elapse(waits ? 1 : 0, Elapse::TimerTicks); }

// Values and their bytes on the stream.
template <class T>
T FromBytes(const Bytes& bytes) {
  T value;
  std::memcpy(&value, bytes.data(), sizeof(T));
  return value;
}
template <>
bool FromBytes<bool>(const Bytes& bytes) {
  return bytes[0] != 0;
}
template <>
long FromBytes<long>(const Bytes& bytes) {
  return FromBytes<std::int32_t>(bytes);
}
template <>
unsigned long FromBytes<unsigned long>(const Bytes& bytes) {
  return FromBytes<std::uint32_t>(bytes);
}

template <class T>
Bytes ToBytes(const T& value) {
  Bytes bytes(sizeof(T), '\0');
  std::memcpy(bytes.data(), &value, sizeof(T));
  return bytes;
}
template <>
Bytes ToBytes<long>(const long& value) {
  const auto narrow = static_cast<std::int32_t>(value);
  return narrow == value ? ToBytes(narrow) : "beyond 32 bits: " + std::to_string(value);
}
template <>
Bytes ToBytes<unsigned long>(const unsigned long& value) {
  const auto narrow = static_cast<std::uint32_t>(value);
  return narrow == value ? ToBytes(narrow) : "beyond 32 bits: " + std::to_string(value);
}
template <>
Bytes ToBytes<std::string>(const std::string& value) {
  return value;
}
template <>
Bytes ToBytes<std::wstring>(const std::wstring& value) {
  Bytes units;
  for (const wchar_t character : value) {
    const auto code =
        static_cast<std::uint32_t>(character);  // NOLINT(bugprone-signed-char-misuse): any value
    if (code > 0xFFFF) units += ToBytes(static_cast<std::uint16_t>(0xD800 + ((code - 0x10000) >> 10U)));
    units += ToBytes(static_cast<std::uint16_t>(code > 0xFFFF ? 0xDC00 + (code & 0x3FFU) : code));
  }
  return units;
}

template <>
std::string FromBytes<std::string>(const Bytes& bytes) {
  return bytes;
}
template <>
std::wstring FromBytes<std::wstring>(const Bytes& bytes) {
  std::wstring text;
  for (std::size_t place = 0; place + 1 < bytes.size(); place += 2) {
    const auto unit = FromBytes<std::uint16_t>(bytes.substr(place, 2));
    const bool low = unit >= 0xDC00 && unit < 0xE000;
    if (low && !text.empty() && text.back() >= 0xD800 && text.back() < 0xDC00) {
      text.back() = static_cast<wchar_t>(
          0x10000 + ((static_cast<std::uint32_t>(text.back()) & 0x3FFU) << 10U) + (unit & 0x3FFU));
    } else {
      text += static_cast<wchar_t>(unit);
    }
  }
  return text;
}

// Calls `action` with a null pointer to the C++ type of `type`.
template <class Action>
auto WithType(Value type, const Action& action) {
  switch (type) {
    case Value::eSIGNED_CHAR:
      return action(static_cast<signed char*>(nullptr));
    case Value::eCHAR:
      return action(static_cast<char*>(nullptr));
    case Value::eUNSIGNED_CHAR:
      return action(static_cast<unsigned char*>(nullptr));
    case Value::eBOOL:
      return action(static_cast<bool*>(nullptr));
    case Value::eSHORT:
      return action(static_cast<short*>(nullptr));
    case Value::eUNSIGNED_SHORT:
      return action(static_cast<unsigned short*>(nullptr));
    case Value::eINT:
      return action(static_cast<int*>(nullptr));
    case Value::eUNSIGNED_INT:
      return action(static_cast<unsigned int*>(nullptr));
    case Value::eLONG:
      return action(static_cast<long*>(nullptr));
    case Value::eUNSIGNED_LONG:
      return action(static_cast<unsigned long*>(nullptr));
    case Value::eLONG_LONG:
      return action(static_cast<long long*>(nullptr));
    case Value::eUNSIGNED_LONG_LONG:
      return action(static_cast<unsigned long long*>(nullptr));
    case Value::eFLOAT:
      return action(static_cast<float*>(nullptr));
    case Value::eDOUBLE:
      return action(static_cast<double*>(nullptr));
    case Value::eWIDE_STRING:
      return action(static_cast<std::wstring*>(nullptr));
    case Value::eSTRING:
    case Value::eEND:
      break;
  }
  return action(static_cast<std::string*>(nullptr));
}

}  // namespace

void CollectAlerts() {
  Hooks& hooks = TheHooks();
  hooks.addCircumstances = [](AlertData&) {};
  hooks.walkStack = [](int) { return boost::shared_ptr<std::vector<CodeContext>>(); };
  hooks.errorRaised = [](Error&) {};
  hooks.errorHandled = [](Error&) {};
  hooks.mayWarn = [](const std::string&) { return true; };
  hooks.warningRaised = [](Warning& warning) { WarningsOfThread().push_back(TextOf(warning)); };
}

std::vector<Bytes> TakeWarningsOfThread() {
  std::vector<Bytes> warnings;
  warnings.swap(WarningsOfThread());
  return warnings;
}

Subject::Subject(const Store& store, const std::string& folder) : m_sFolder(folder) {
  if (store.m_bPipe) {
    m_pipe = std::make_unique<BinaryPipe>(store.m_ulPipeSize, TimeOut(store.m_bReaderWaits),
                                          TimeOut(store.m_bWriterWaits));
  } else {
    m_file = std::make_unique<BinaryFileStream>();
  }
}

Subject::~Subject() {
  while (!m_input.empty()) m_input.pop_back();
  while (!m_output.empty()) m_output.pop_back();
}

void Subject::WaitForEver() {
  m_pipe->SetReadTimeout(IMutex::sINFINITE);
  m_pipe->SetWriteTimeout(IMutex::sINFINITE);
}

BinaryInputStream& Subject::Input(int level) {
  if (level != 0) return *m_input[static_cast<std::size_t>(level - 1)];
  if (m_pipe) return *m_pipe;
  return *m_file;
}

BinaryOutputStream& Subject::Output(int level) {
  if (level != 0) return *m_output[static_cast<std::size_t>(level - 1)];
  if (m_pipe) return *m_pipe;
  return *m_file;
}

long long Subject::Read(int level, Bytes& into, long long count) {
  Bytes bytes(count > 0 ? static_cast<std::size_t>(count) : 0, '?');
  const long long got = Telling([&] { return Input(level).Read(bytes.data(), count); });
  if (got > count && got > 0) return got;  // told as it is; there is no room for so many
  if (got > 0) into.append(bytes, 0, static_cast<std::size_t>(got));
  return got;
}

int Subject::Read(int level) {
  return Telling([&] { return Input(level).Read(); });
}

bool Subject::Skip(int level, Count count) {
  return Telling([&] { return Input(level).Skip(count); });
}

Count Subject::Available(int level) {
  return Telling([&] { return Input(level).AvailableBytes(); });
}

void Subject::CloseInput(int level) {
  Telling([&] { Input(level).Close(); });
}

void Subject::Write(int level, const Bytes& bytes) {
  Telling([&] { Output(level).Write(bytes.data(), bytes.size()); });
}

void Subject::Write(int level, unsigned char byte) {
  Telling([&] { Output(level).Write(byte); });
}

void Subject::Flush(int level) {
  Telling([&] { Output(level).Flush(); });
}

void Subject::CloseOutput(int level) {
  Telling([&] { Output(level).Close(); });
}

Bytes Subject::Get(int level, Value type, bool&) {
  auto& in = dynamic_cast<DataInputStream&>(Input(level));
  return WithType(type, [&](auto* example) {
    auto value = FromBytes<std::remove_pointer_t<decltype(example)>>(FormerValue(type));
    Telling([&] { in >> value; });
    return ToBytes(value);
  });
}

void Subject::Put(int level, Value type, const Bytes& bytes) {
  auto& out = dynamic_cast<DataOutputStream&>(Output(level));
  WithType(type, [&](auto* example) {
    const auto value = FromBytes<std::remove_pointer_t<decltype(example)>>(bytes);
    Telling([&] { out << value; });
  });
}

void Subject::PushInput(const Layer& layer) {
  BinaryInputStream& below = Input(static_cast<int>(m_input.size()));
  switch (layer.m_eKind) {
    case Layer::eBUFFERED:
      m_input.emplace_back(new BufferedBinaryInputStream(below, layer.m_ulSize));
      break;
    case Layer::eBOUNDED:
      m_input.emplace_back(new BoundedBinaryInputStream(below, layer.m_ulSize));
      break;
    case Layer::eDATA:
      m_input.emplace_back(new DataInputStream(below));
      break;
    case Layer::eBASE64:
      m_input.emplace_back(new Base64DecoderStream(below));
      break;
  }
}

void Subject::PushOutput(const Layer& layer) {
  BinaryOutputStream& below = Output(static_cast<int>(m_output.size()));
  switch (layer.m_eKind) {
    case Layer::eBUFFERED:
      m_output.emplace_back(new BufferedBinaryOutputStream(below, layer.m_ulSize));
      break;
    case Layer::eBOUNDED:
      m_output.emplace_back(new BoundedBinaryOutputStream(below, layer.m_ulSize));
      break;
    case Layer::eDATA:
      m_output.emplace_back(new DataOutputStream(below));
      break;
    case Layer::eBASE64:
      m_output.emplace_back(
          new Base64EncoderStream(below, layer.m_bSeparators, layer.m_iLineLength, layer.m_sSeparator));
      break;
  }
}

void Subject::SetSeparators(int level, const Layer& layer) {
  dynamic_cast<Base64EncoderStream&>(Output(level))
      .InsertNewlines(layer.m_bSeparators, layer.m_iLineLength, layer.m_sSeparator);
}

Count Subject::InputCount(int level) {
  return dynamic_cast<BoundedBinaryInputStream&>(Input(level)).NumBytesInput();
}

Count Subject::OutputCount(int level) {
  return dynamic_cast<BoundedBinaryOutputStream&>(Output(level)).NumBytesOutput();
}

bool Subject::Open(const Bytes& name, unsigned int mode, Opening how) {
  if (m_pipe) return m_pipe->Open();
  return m_file->Open(m_sFolder + name, mode, static_cast<BinaryFileStream::EOpenBehavior>(how));
}

bool Subject::IsOpen() { return m_pipe ? m_pipe->IsOpen() && !m_pipe->IsClosed() : m_file->IsOpen(); }

long long Subject::SetInputPos(long long offset, Where from) {
  return Telling(
      [&] { return m_file->SetInputPos(offset, static_cast<BinaryFileStream::EMoveMethod>(from)); });
}

long long Subject::SetOutputPos(long long offset, Where from) {
  return Telling(
      [&] { return m_file->SetOutputPos(offset, static_cast<BinaryFileStream::EMoveMethod>(from)); });
}

void Subject::SetEndOfFile(long long offset, Where from) {
  Telling([&] { m_file->SetEndOfFile(offset, static_cast<BinaryFileStream::EMoveMethod>(from)); });
}

long long Subject::InputPos() { return m_file->GetInputPos(); }
long long Subject::OutputPos() { return m_file->GetOutputPos(); }

long long Subject::CurrentPos() {
  return Telling([&] { return m_file->GetCurrentPos(); });
}

long long Subject::FileSize() {
  return Telling([&] { return m_file->GetFileSize(); });
}

Bytes Subject::FileName() {
  const Bytes name = m_file->GetFileName();
  return name.empty() ? name : name.substr(m_sFolder.size());
}

Bytes Subject::Content(const Bytes& name) {
  std::ifstream file(m_sFolder + name, std::ios::binary);
  if (!file) return sNO_FILE;
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace Model
