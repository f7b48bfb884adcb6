#include <Infrastructure/OxaCore/AlertInfo.h>

#include <boost/make_shared.hpp>
#include <utility>

#include "Core/Immortal.h"
#include "Platform/Clock.h"

namespace Oxa::Core {

namespace {

const char* const sNO_MESSAGE = "No Message";
const char* const sNO_DATA = "No error data due to memory allocation failure";
const char* const sUNKNOWN = "Unknown";
constexpr std::size_t uBUCKETS = 8;
constexpr std::size_t uUSUAL_PLACES = 8;  // of an unwind stack

using Stack = std::vector<CodeContext>;

const char* SeverityText(AlertInfo::ESeverity severity) {
  switch (severity) {
    case AlertInfo::eWARNING:
      return "Warning";
    case AlertInfo::eERROR:
      return "Error";
    case AlertInfo::eCRITICAL:
      return "Critical";
    default:
      return sUNKNOWN;
  }
}

constexpr auto eNO_SEVERITY = static_cast<AlertInfo::ESeverity>(-1);

}  // namespace

AlertInfo::AlertInfo() : m_eSeverity(eNO_SEVERITY) {
  try {
    m_spData = boost::make_shared<AlertData>(uBUCKETS);
    m_spUnwindStack = boost::make_shared<Stack>();
    SetData(sTIME_STAMP, Platform::LocalTimeText(Platform::NowTicks()));
    SetData(sMESSAGE, sNO_MESSAGE);
    SetData(sCATEGORY, sUNKNOWN);
    SetData(sLOG_NAME, std::string());
    SetSeverity(eNO_SEVERITY);
  } catch (...) {
    // An alert that reports running out of memory must come into being without any.
  }
}

AlertInfo::AlertInfo(const AlertData& data, const Stack& callStack, const Stack& unwindStack)
    : m_spData(boost::make_shared<AlertData>(data)),
      m_spCallStack(boost::make_shared<Stack>(callStack)),
      m_eSeverity(eNO_SEVERITY),
      m_spUnwindStack(boost::make_shared<Stack>(unwindStack)) {}

AlertInfo::AlertInfo(const AlertInfo& other) = default;

AlertInfo& AlertInfo::operator=(const AlertInfo& other) = default;

AlertInfo::~AlertInfo() = default;

std::string AlertInfo::XMLElementName() { return "Alert"; }

bool AlertInfo::DataExists(const std::string& key) const { return m_spData && m_spData->count(key) != 0; }

const std::string& AlertInfo::GetData(const std::string& key) const {
  if (!m_spData) return g_sNO_TEXT;
  const auto entry = m_spData->find(key);
  return entry == m_spData->end() ? g_sNO_TEXT : entry->second;
}

bool AlertInfo::GetAllData(AlertData& out) const {
  if (m_spData) {
    out = *m_spData;
    return true;
  }
  out.clear();
  out[sMESSAGE] = sNO_DATA;
  return false;
}

bool AlertInfo::SetData(const std::string& key, const std::string& value) {
  if (!m_spData) return false;
  (*m_spData)[key] = value;
  return true;
}

void AlertInfo::StoreText(const std::string& key, const std::string& value) noexcept {
  try {
    SetData(key, value);
  } catch (...) {
    // Without memory the alert stays as far as it got.
  }
}

AlertInfo::ESeverity AlertInfo::GetSeverity() const { return m_eSeverity; }

void AlertInfo::SetSeverity(ESeverity severity) {
  m_eSeverity = severity;
  StoreText(sSEVERITY, SeverityText(severity));
}

void AlertInfo::PushContext(const CodeContext& context) {
  try {
    PushContext(CodeContext(context));
  } catch (const std::bad_alloc&) {
    // The alert flies on without this place.
  }
}

void AlertInfo::PushContext(CodeContext&& context) {
  if (!m_spUnwindStack) return;
  try {
    if (m_spUnwindStack->capacity() == 0) m_spUnwindStack->reserve(uUSUAL_PLACES);
    m_spUnwindStack->push_back(std::move(context));
  } catch (const std::bad_alloc&) {
    // As above.
  }
}

boost::shared_ptr<Stack> AlertInfo::GetCallStack() const { return m_spCallStack; }

boost::shared_ptr<Stack> AlertInfo::GetUnwindStack() const { return m_spUnwindStack; }

void AlertInfo::AddCallStack(const boost::shared_ptr<Stack>& frames) {
  if (!frames) return;
  if (m_spCallStack) {
    m_spCallStack->insert(m_spCallStack->end(), frames->begin(), frames->end());
  } else {
    m_spCallStack = frames;
  }
}

}  // namespace Oxa::Core
