#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Linux/ZoneTable.h"

namespace Oxa::Core::Platform {

const char* const g_pMACHINE_ZONE_FILE = "/etc/localtime";

namespace {

const char* const g_pZONE_FOLDER = "/usr/share/zoneinfo";
constexpr size_t uMAX_FILE = 16384;
constexpr size_t uMAX_TYPES = 256;

// Takes big-endian numbers off the front of a block of bytes; what lies behind the end reads as 0 and marks
// the whole as broken.
class Bytes {
 public:
  Bytes(const unsigned char* data, size_t size) : m_pData(data), m_uSize(size) {}

  const unsigned char* Take(size_t count) {
    if (count > m_uSize) m_bBroken = true;
    if (m_bBroken) return nullptr;
    const unsigned char* const taken = m_pData;
    m_pData += count;
    m_uSize -= count;
    return taken;
  }

  // A signed number of `width` bytes.
  long long Number(size_t width) {
    const unsigned char* const bytes = Take(width);
    if (bytes == nullptr) return 0;
    unsigned long long number = bytes[0] >= 0x80 ? ~0ULL : 0;
    for (size_t i = 0; i < width; ++i) number = number << 8 | bytes[i];
    return static_cast<long long>(number);
  }

  size_t Count() { return static_cast<unsigned int>(Number(4)); }

  const char* Rest() const { return reinterpret_cast<const char*>(m_pData); }
  size_t Size() const { return m_uSize; }
  bool Broken() const { return m_bBroken; }

 private:
  const unsigned char* m_pData;
  size_t m_uSize;
  bool m_bBroken = false;
};

struct Header {
  char m_version;
  size_t m_uUtcMarks, m_uStandardMarks, m_uLeaps, m_uTimes, m_uTypes, m_uNameBytes;

  size_t DataSize(size_t timeWidth) const {
    return m_uTimes * (timeWidth + 1) + m_uTypes * 6 + m_uNameBytes + m_uLeaps * (timeWidth + 4) +
           m_uStandardMarks + m_uUtcMarks;
  }
};

bool ReadHeader(Bytes& bytes, Header& header) {
  const unsigned char* const start = bytes.Take(20);
  if (start == nullptr || memcmp(start, "TZif", 4) != 0) return false;
  header.m_version = static_cast<char>(start[4]);
  header.m_uUtcMarks = bytes.Count();
  header.m_uStandardMarks = bytes.Count();
  header.m_uLeaps = bytes.Count();
  header.m_uTimes = bytes.Count();
  header.m_uTypes = bytes.Count();
  header.m_uNameBytes = bytes.Count();
  return !bytes.Broken();
}

// Offsets of the types. Each record holds an offset, a daylight mark and the place of the name.
bool ReadOffsets(Bytes& bytes, size_t count, int* offsets) {
  if (count == 0 || count > uMAX_TYPES) return false;
  for (size_t i = 0; i < count; ++i) {
    offsets[i] = static_cast<int>(bytes.Number(4));
    bytes.Take(2);
    if (offsets[i] <= -iOFFSET_BOUND || offsets[i] >= iOFFSET_BOUND) return false;
  }
  return !bytes.Broken();
}

// A zone with more changes than there is room for keeps the latest.
bool FillChanges(Bytes times, Bytes types, const Header& header, size_t timeWidth, const int* offsets,
                 ZoneTable& zone) {
  constexpr size_t uROOM = ZoneTable::iMAX_CHANGES;
  const size_t skipped = header.m_uTimes > uROOM ? header.m_uTimes - uROOM : 0;
  zone.m_iChanges = static_cast<int>(header.m_uTimes - skipped);
  zone.m_offsets[0] = offsets[0];
  for (size_t i = 0; i < header.m_uTimes; ++i) {
    const long long moment = times.Number(timeWidth);
    const unsigned char type = *types.Take(1);
    if (type >= header.m_uTypes) return false;
    if (i < skipped) {
      zone.m_offsets[0] = offsets[type];
      continue;
    }
    if (i > skipped && moment < zone.m_moments[i - skipped - 1]) return false;
    zone.m_moments[i - skipped] = moment;
    zone.m_offsets[i - skipped + 1] = offsets[type];
  }
  return true;
}

bool ReadData(Bytes& bytes, const Header& header, size_t timeWidth, ZoneTable& zone) {
  if (header.DataSize(timeWidth) > bytes.Size()) return false;
  const Bytes times(bytes.Take(header.m_uTimes * timeWidth), header.m_uTimes * timeWidth);
  const Bytes types(bytes.Take(header.m_uTimes), header.m_uTimes);
  int offsets[uMAX_TYPES];
  if (!ReadOffsets(bytes, header.m_uTypes, offsets)) return false;
  bytes.Take(header.DataSize(timeWidth) - header.m_uTimes * (timeWidth + 1) - header.m_uTypes * 6);
  return FillChanges(times, types, header, timeWidth, offsets, zone);
}

// The last line: the rule for what follows, or empty where there is none.
bool ReadFooter(const Bytes& bytes, ZoneTable& zone) {
  const char* const text = bytes.Rest();
  if (bytes.Size() < 2 || text[0] != '\n') return false;
  const void* const end = memchr(text + 1, '\n', bytes.Size() - 1);
  if (end == nullptr) return false;
  const size_t length = static_cast<size_t>(static_cast<const char*>(end) - text) - 1;
  if (length == 0) return true;
  zone.m_bRule = ParseZoneRule(text + 1, length, zone.m_rule);
  return zone.m_bRule;
}

bool ReadFile(Bytes& bytes, ZoneTable& zone) {
  Header header;
  if (!ReadHeader(bytes, header)) return false;
  if (header.m_version == 0) return ReadData(bytes, header, 4, zone);
  bytes.Take(header.DataSize(4));  // the same once more, with less range
  return ReadHeader(bytes, header) && ReadData(bytes, header, 8, zone) && ReadFooter(bytes, zone);
}

int ReadAll(int file, unsigned char* buffer, size_t& size) {
  struct stat status;
  if (fstat(file, &status) != 0) return errno;
  if (!S_ISREG(status.st_mode)) return EINVAL;
  size = 0;
  while (size <= uMAX_FILE) {
    const ssize_t count = read(file, buffer + size, uMAX_FILE + 1 - size);
    if (count == 0) return 0;
    if (count > 0) size += static_cast<size_t>(count);
    if (count < 0 && errno != EINTR) return errno;
  }
  return EFBIG;
}

int ReadZoneFile(const char* path, ZoneTable& zone) {
  const int file = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return errno;
  unsigned char buffer[uMAX_FILE + 1];  // one more, to see that a file is longer
  size_t size = 0;
  const int failure = ReadAll(file, buffer, size);
  close(file);
  return failure != 0 ? failure : ParseZoneFile(buffer, size, zone);
}

int ReadNamedZone(const char* name, ZoneTable& zone) {
  if (name[0] == '/') return ReadZoneFile(name, zone);
  const char* const folder = secure_getenv("TZDIR");
  char path[PATH_MAX];
  const int length = snprintf(path, sizeof path, "%s/%s", folder != nullptr ? folder : g_pZONE_FOLDER, name);
  if (length < 0 || static_cast<size_t>(length) >= sizeof path) return ENAMETOOLONG;
  return ReadZoneFile(path, zone);
}

// Machines without any zone files say so, too.
bool IsNameOfUtc(const char* name) {
  static const char* const s_pKNOWN[] = {"UTC", "GMT", "Etc/UTC", "Etc/GMT"};
  for (const char* const known : s_pKNOWN) {
    if (strcmp(name, known) == 0) return true;
  }
  return false;
}

// A file of that name comes first, as everywhere on this system: "EST5EDT" is both a file and a rule.
int ReadSpelledZone(const char* tz, ZoneTable& zone) {
  const char* const name = tz[0] == ':' ? tz + 1 : tz;
  if (name[0] == 0) return 0;
  const int failure = ReadNamedZone(name, zone);
  if (failure == 0) return 0;
  zone = ZoneTable();
  if (IsNameOfUtc(name)) return 0;
  zone.m_bRule = name == tz && ParseZoneRule(tz, strlen(tz), zone.m_rule);
  return zone.m_bRule && !FailedForTheMoment(failure) ? 0 : failure;
}

// A machine that was never told its zone has no such file, and lives by UTC.
int ReadMachineZone(ZoneTable& zone) {
  const int failure = ReadZoneFile(g_pMACHINE_ZONE_FILE, zone);
  if (failure != 0) zone = ZoneTable();
  return failure == ENOENT ? 0 : failure;
}

}  // namespace

int ParseZoneFile(const unsigned char* data, size_t size, ZoneTable& zone) noexcept {
  zone = ZoneTable();
  Bytes bytes(data, size);
  return ReadFile(bytes, zone) ? 0 : EINVAL;
}

bool FailedForTheMoment(int failure) noexcept {
  return failure == EMFILE || failure == ENFILE || failure == ENOMEM || failure == EINTR || failure == EIO;
}

int ReadZone(const char* tz, ZoneTable& zone) noexcept {
  zone = ZoneTable();
  return tz == nullptr ? ReadMachineZone(zone) : ReadSpelledZone(tz, zone);
}

}  // namespace Oxa::Core::Platform
