#include "gpsengine/datalog/datalog.h"

#include <ctime>

#include "gpsengine/platform/resource.h"

namespace {

constexpr UINT kStatusText = 13;
constexpr double kLeastInterval = 0.1;
constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

CString UpToFirstDot(const CString& name) {
  const int dot = name.Find(u'.');
  return dot < 0 ? name : name.Left(dot);
}

}  // namespace

CDataLog::CDataLog(CWnd* parent) : m_pParent(parent), m_TimeMark(CTime::GetCurrentTime()) {}

bool CDataLog::IsReady() const {
  return !m_strFilename.IsEmpty() && !(m_dLogInterval < kLeastInterval) && m_bEnabled;
}

CString CDataLog::GetStatusString() {
  CString status;
  status.Format(LoadText(kStatusText).ToUtf8().c_str(), GetNumEpochs(), GetMinutesElapsed());
  return status;
}

void CDataLog::SetPort(int port) {
  m_strPort = port == 2 ? "COM2" : "COM1";
}

void CDataLog::SetTimeMark() {
  m_TimeMark = CTime::GetCurrentTime();
}

int CDataLog::GetMinutesElapsed() {
  const auto minutes = (CTime::GetCurrentTime().GetTime() - m_TimeMark.GetTime()) / 60;
  return static_cast<int>(minutes % (24 * 60));
}

bool CDataLog::SetFilename(const CString& name) {
  m_strFilename = UpToFirstDot(name) + GetFileExtension();
  return true;
}

bool CDataLog::SetDefaultFilename(const CString& base) {
  m_strDefaultFilename = base;
  m_strFilename = GenerateDefaultFilename(base);
  return true;
}

CString CDataLog::GenerateDefaultFilename(const CString& base) {
  std::tm local{};
  CTime::GetCurrentTime().GetLocalTm(&local);
  CString stamp;
  stamp.Format("_%d%s_%dh%dm%ds", local.tm_mday, kMonths[local.tm_mon], local.tm_hour, local.tm_min,
               local.tm_sec);
  return UpToFirstDot(base) + stamp + GetFileExtension();
}
