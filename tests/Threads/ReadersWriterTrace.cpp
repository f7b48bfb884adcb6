#include "Threads/ReadersWriterTrace.h"

namespace Oxa::Core::Testing {

namespace {

constexpr std::chrono::seconds g_LIMIT(30);

std::mutex g_mutex;
std::vector<TraceEntry> g_entries;
std::function<void(const std::string&)> g_hook;
unsigned long g_ulProbed = 0;

void Probe(const std::pair<unsigned long, unsigned long>&, const ReadersWriterMutex::ReaderCounts& readers,
           int, int, const char*, const char*) {
  if (!readers.empty()) g_ulProbed = readers.begin()->first;
}

}  // namespace

void Trace::Log(const std::pair<unsigned long, unsigned long>& writer,
                const ReadersWriterMutex::ReaderCounts& readers, int writersWaiting, int readersWaiting,
                const char* code, const char* text) {
  std::function<void(const std::string&)> hook;
  {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_entries.push_back({writer, readers, writersWaiting, readersWaiting, code, text});
    hook = g_hook;
  }
  if (hook) hook(code);
}

void Trace::Clear() {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_entries.clear();
}

std::vector<TraceEntry> Trace::Entries() {
  std::lock_guard<std::mutex> lock(g_mutex);
  return g_entries;
}

TraceEntry Trace::Last() {
  const std::vector<TraceEntry> entries = Entries();
  return entries.empty() ? TraceEntry() : entries.back();
}

std::string Trace::Codes() {
  std::string codes;
  for (const TraceEntry& entry : Entries()) codes += (codes.empty() ? "" : " ") + entry.code;
  return codes;
}

std::string Trace::CodesAndCounts() {
  std::string codes;
  for (const TraceEntry& entry : Entries()) {
    codes += (codes.empty() ? "" : " ") + entry.code + std::to_string(entry.writersWaiting) + "," +
             std::to_string(entry.readersWaiting);
  }
  return codes;
}

int Trace::CountOf(const std::string& code) {
  int count = 0;
  for (const TraceEntry& entry : Entries()) count += entry.code == code ? 1 : 0;
  return count;
}

bool Trace::Await(const std::string& code, int count) {
  return Eventually([&] { return CountOf(code) >= count; });
}

void Trace::SetHook(std::function<void(const std::string&)> hook) {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_hook = std::move(hook);
}

bool Eventually(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + g_LIMIT;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

unsigned long IdOfThisThread() {
  static std::mutex one;
  std::lock_guard<std::mutex> lock(one);
  ReadersWriterMutex probe(&Probe);
  ReaderLock reading(probe);
  return g_ulProbed;
}

Worker::Worker() : m_thread([this] { Run(); }) {}

Worker::~Worker() {
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_bStop = true;
  }
  m_changed.notify_all();
  m_thread.join();
}

void Worker::Start(std::function<void()> work) {
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_work = std::move(work);
  }
  m_changed.notify_all();
}

bool Worker::Finish() {
  std::unique_lock<std::mutex> lock(m_mutex);
  return m_changed.wait_for(lock, g_LIMIT, [this] { return !m_work; });
}

bool Worker::IsBusy() {
  std::lock_guard<std::mutex> lock(m_mutex);
  return static_cast<bool>(m_work);
}

void Worker::Do(std::function<void()> work) {
  Start(std::move(work));
  std::unique_lock<std::mutex> lock(m_mutex);
  m_changed.wait(lock, [this] { return !m_work; });
}

bool Worker::Ask(const std::function<bool()>& question) {
  bool answer = false;
  Do([&] { answer = question(); });
  return answer;
}

unsigned long Worker::Id() {
  unsigned long id = 0;
  Do([&id] { id = IdOfThisThread(); });
  return id;
}

void Worker::Run() {
  std::unique_lock<std::mutex> lock(m_mutex);
  for (;;) {
    m_changed.wait(lock, [this] { return m_bStop || m_work; });
    if (!m_work) return;
    const std::function<void()> work = m_work;
    lock.unlock();
    work();
    lock.lock();
    m_work = nullptr;
    m_changed.notify_all();
  }
}

}  // namespace Oxa::Core::Testing
