// Reads a minidump by the published description of the format, and shares nothing with what writes it.
#ifndef OXACORE_TESTS_DUMP_DUMPREADER_H
#define OXACORE_TESTS_DUMP_DUMPREADER_H

#include <cstdint>
#include <cstring>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace TestSupport {

class DumpReader {
 public:
  struct Place {
    std::uint32_t m_uSize;
    std::uint32_t m_uPosition;
  };
  struct Range {
    std::uint64_t m_uStart;
    std::uint64_t m_uSize;
    std::uint64_t m_uPosition;
  };
  struct Registers {
    std::uint32_t m_uFlags;
    std::uint32_t m_uMxcsr;
    std::uint16_t m_segments[6];  // cs ds es fs gs ss
    std::uint32_t m_uFlagsRegister;
    std::uint64_t m_general[16];  // rax rcx rdx rbx rsp rbp rsi rdi r8 ... r15
    std::uint64_t m_uPlace;
    std::string m_sFloating;
  };
  struct Thread {
    std::uint32_t m_uId;
    std::uint64_t m_uEnvironment;
    Range m_stack;
    Registers m_registers;
  };
  struct Module {
    std::uint64_t m_uBase;
    std::uint32_t m_uSize;
    std::string m_sName;
    std::string m_sBuildId;  // its bytes
  };
  struct Exception {
    std::uint32_t m_uThread;
    std::uint32_t m_uCode;
    std::uint32_t m_uFlags;
    std::uint64_t m_uAddress;
    std::vector<std::uint64_t> m_parameters;
    Registers m_registers;
  };
  struct Region {
    std::uint64_t m_uBase;
    std::uint64_t m_uAllocation;
    std::uint32_t m_uAllocationProtection;
    std::uint64_t m_uSize;
    std::uint32_t m_uState;
    std::uint32_t m_uProtection;
    std::uint32_t m_uType;
  };

  explicit DumpReader(std::string bytes) : m_bytes(std::move(bytes)) {
    Expect(Text(0, 4) == "MDMP", "signature");
    Expect((At<std::uint32_t>(4) & 0xffffU) == 0xa793, "version");
    const std::uint32_t count = At<std::uint32_t>(8);
    const std::uint32_t directory = At<std::uint32_t>(12);
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::uint32_t type = At<std::uint32_t>(directory + 12 * i);
      const Place place = {At<std::uint32_t>(directory + 12 * i + 4),
                           At<std::uint32_t>(directory + 12 * i + 8)};
      Expect(place.m_uPosition % 8 == 0, "a stream that isn't aligned");
      Expect(std::uint64_t{place.m_uPosition} + place.m_uSize <= m_bytes.size(), "a stream beyond the end");
      Expect(m_streams.emplace(type, place).second, "a stream twice");
    }
  }

  std::uint32_t Time() const { return At<std::uint32_t>(20); }
  std::uint64_t Contents() const { return At<std::uint64_t>(24); }
  std::size_t Size() const { return m_bytes.size(); }

  std::set<std::uint32_t> Types() const {
    std::set<std::uint32_t> types;
    for (const auto& stream : m_streams) types.insert(stream.first);
    return types;
  }
  bool Has(std::uint32_t type) const { return m_streams.count(type) != 0; }
  std::string Bytes(std::uint32_t type) const {
    const Place place = Stream(type);
    return Text(place.m_uPosition, place.m_uSize);
  }
  Place Stream(std::uint32_t type) const {
    const auto found = m_streams.find(type);
    Expect(found != m_streams.end(), "no stream of type " + std::to_string(type));
    return found->second;
  }

  template <class Value>
  Value At(std::uint64_t position) const {
    Value value;
    Expect(position + sizeof value <= m_bytes.size(), "a value beyond the end");
    std::memcpy(&value, m_bytes.data() + position, sizeof value);
    return value;
  }

  /// In UTF-16.
  std::u16string WideText(std::uint64_t position) const {
    const std::uint32_t size = At<std::uint32_t>(position);
    std::u16string text;
    for (std::uint32_t i = 0; i < size / 2; ++i) text += At<char16_t>(position + 4 + 2 * i);
    Expect(At<char16_t>(position + 4 + size) == 0, "a text without its end");
    return text;
  }

  /// Of plain characters.
  std::string NarrowText(std::uint64_t position) const {
    const std::u16string wide = WideText(position);
    return std::string(wide.begin(), wide.end());
  }

  std::vector<Thread> Threads() const {
    std::vector<Thread> threads;
    for (const std::uint64_t at : Entries(3, 48)) {
      const Range stack = {At<std::uint64_t>(at + 24), At<std::uint32_t>(at + 32),
                           At<std::uint32_t>(at + 36)};
      threads.push_back({At<std::uint32_t>(at), At<std::uint64_t>(at + 16), stack, RegistersAt(at + 40)});
    }
    return threads;
  }

  Thread ThreadOf(std::uint32_t id) const {
    for (const Thread& thread : Threads())
      if (thread.m_uId == id) return thread;
    throw std::runtime_error("no thread " + std::to_string(id));
  }

  std::map<std::uint32_t, std::u16string> ThreadNames() const {
    std::map<std::uint32_t, std::u16string> names;
    for (const std::uint64_t at : Entries(24, 12))
      names[At<std::uint32_t>(at)] = WideText(At<std::uint64_t>(at + 4));
    return names;
  }

  std::vector<Module> Modules() const {
    std::vector<Module> modules;
    for (const std::uint64_t at : Entries(4, 108)) {
      Module module = {At<std::uint64_t>(at), At<std::uint32_t>(at + 8),
                       NarrowText(At<std::uint32_t>(at + 20)), ""};
      const std::uint32_t size = At<std::uint32_t>(at + 76);
      const std::uint32_t record = At<std::uint32_t>(at + 80);
      if (size > 4) {
        Expect(At<std::uint32_t>(record) == 0x4270454c, "the kind of a module's record");
        module.m_sBuildId = Text(record + 4, size - 4);
      }
      modules.push_back(module);
    }
    return modules;
  }

  Exception TheException() const {
    const std::uint64_t at = Stream(6).m_uPosition;
    Exception exception = {At<std::uint32_t>(at),
                           At<std::uint32_t>(at + 8),
                           At<std::uint32_t>(at + 12),
                           At<std::uint64_t>(at + 24),
                           {},
                           RegistersAt(at + 160)};
    for (std::uint32_t i = 0; i < At<std::uint32_t>(at + 32); ++i)
      exception.m_parameters.push_back(At<std::uint64_t>(at + 40 + 8 * i));
    return exception;
  }

  std::vector<Region> Regions() const {
    const std::uint64_t at = Stream(16).m_uPosition;
    Expect(At<std::uint32_t>(at) == 16 && At<std::uint32_t>(at + 4) == 48, "sizes of the list of regions");
    std::vector<Region> regions;
    for (std::uint64_t i = 0; i < At<std::uint64_t>(at + 8); ++i) {
      const std::uint64_t entry = at + 16 + 48 * i;
      regions.push_back({At<std::uint64_t>(entry), At<std::uint64_t>(entry + 8),
                         At<std::uint32_t>(entry + 16), At<std::uint64_t>(entry + 24),
                         At<std::uint32_t>(entry + 32), At<std::uint32_t>(entry + 36),
                         At<std::uint32_t>(entry + 40)});
    }
    return regions;
  }

  /// Of either list of memory.
  std::vector<Range> Ranges() const {
    std::vector<Range> ranges;
    if (Has(5)) {
      for (const std::uint64_t at : Entries(5, 16))
        ranges.push_back({At<std::uint64_t>(at), At<std::uint32_t>(at + 8), At<std::uint32_t>(at + 12)});
      return ranges;
    }
    const std::uint64_t list = Stream(9).m_uPosition;
    const std::uint64_t count = At<std::uint64_t>(list);
    Expect(Stream(9).m_uSize == 16 + 16 * count, "the size of the long list of memory");
    std::uint64_t position = At<std::uint64_t>(list + 8);
    for (std::uint64_t i = 0; i < count; ++i) {
      ranges.push_back(
          {At<std::uint64_t>(list + 16 + 16 * i), At<std::uint64_t>(list + 24 + 16 * i), position});
      position += ranges.back().m_uSize;
    }
    Expect(position <= m_bytes.size(), "memory beyond the end");
    return ranges;
  }

  bool HasMemory(std::uint64_t address, std::uint64_t size = 1) const {
    return FindMemory(address, size) != 0;
  }

  /// The memory of the process at `address`.
  template <class Value>
  Value Memory(std::uint64_t address) const {
    const std::uint64_t position = FindMemory(address, sizeof(Value));
    Expect(position != 0, "no memory of address " + std::to_string(address));
    return At<Value>(position);
  }
  template <class Value>
  Value Memory(const Value& variable) const {
    return Memory<Value>(reinterpret_cast<std::uint64_t>(&variable));
  }

  std::string Text(std::uint64_t position, std::uint64_t size) const {
    Expect(position + size <= m_bytes.size(), "a text beyond the end");
    return m_bytes.substr(position, size);
  }

 private:
  static void Expect(bool holds, const std::string& what) {
    if (!holds) throw std::runtime_error("the dump is wrong: " + what);
  }

  std::vector<std::uint64_t> Entries(std::uint32_t type, std::uint64_t size) const {
    const Place list = Stream(type);
    const std::uint32_t count = At<std::uint32_t>(list.m_uPosition);
    std::vector<std::uint64_t> entries;
    for (std::uint32_t i = 0; i < count; ++i) entries.push_back(list.m_uPosition + 4 + size * i);
    Expect(list.m_uSize == 4 + size * count, "the size of a list");
    return entries;
  }

  Registers RegistersAt(std::uint64_t location) const {
    Expect(At<std::uint32_t>(location) == 1232, "the size of registers");
    const std::uint64_t at = At<std::uint32_t>(location + 4);
    Registers registers = {
        At<std::uint32_t>(at + 48),  At<std::uint32_t>(at + 52), {}, At<std::uint32_t>(at + 68), {},
        At<std::uint64_t>(at + 248), Text(at + 256, 512)};
    for (std::uint64_t i = 0; i < 6; ++i) registers.m_segments[i] = At<std::uint16_t>(at + 56 + 2 * i);
    for (std::uint64_t i = 0; i < 16; ++i) registers.m_general[i] = At<std::uint64_t>(at + 120 + 8 * i);
    return registers;
  }

  std::uint64_t FindMemory(std::uint64_t address, std::uint64_t size) const {
    for (const Range& range : Ranges())
      if (range.m_uStart <= address && address + size <= range.m_uStart + range.m_uSize)
        return range.m_uPosition + (address - range.m_uStart);
    return 0;
  }

  std::string m_bytes;
  std::map<std::uint32_t, Place> m_streams;
};

}  // namespace TestSupport

#endif
