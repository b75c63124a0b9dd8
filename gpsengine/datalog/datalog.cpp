#include "gpsengine/datalog/datalog.h"

#include <ctime>
#include <iterator>

#include "gpsengine/platform/messagebox.h"
#include "gpsengine/platform/resource.h"

namespace {

constexpr UINT kStatusText = 13;
constexpr double kLeastInterval = 0.1;
constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

CString UpToFirstDot(const CString& name) {
  const int nDot = name.Find(u'.');
  return nDot < 0 ? name : name.Left(nDot);
}

CString LoadText(UINT nId) {
  WCHAR szText[128];
  const int nLength = LoadStringW(nId, szText, static_cast<int>(std::size(szText)));
  if (nLength == 0) AfxMessageBox("Error loading resource string.");
  return CString(szText, nLength);
}

}  // namespace

CDataLog::CDataLog(CWnd* pParent) : m_pParent(pParent), m_TimeMark(CTime::GetCurrentTime()) {}

bool CDataLog::IsReady() const {
  return !m_strFilename.IsEmpty() && !(m_dLogInterval < kLeastInterval) && m_bEnabled;
}

CString CDataLog::GetStatusString() {
  CString status;
  status.Format(LoadText(kStatusText), GetNumEpochs(), GetMinutesElapsed());
  return status;
}

void CDataLog::SetPort(int nPort) {
  m_strPort = nPort == 2 ? "COM2" : "COM1";
}

void CDataLog::SetTimeMark() {
  m_TimeMark = CTime::GetCurrentTime();
}

int CDataLog::GetMinutesElapsed() {
  const auto nMinutes = (CTime::GetCurrentTime().GetTime() - m_TimeMark.GetTime()) / 60;
  return static_cast<int>(nMinutes % (24 * 60));
}

bool CDataLog::SetFilename(const CString& strName) {
  m_strFilename = UpToFirstDot(strName) + GetFileExtension();
  return true;
}

bool CDataLog::SetDefaultFilename(const CString& strBase) {
  m_strDefaultFilename = strBase;
  m_strFilename = GenerateDefaultFilename(strBase);
  return true;
}

CString CDataLog::GenerateDefaultFilename(const CString& strBase) {
  std::tm local{};
  CTime::GetCurrentTime().GetLocalTm(&local);
  CString stamp;
  stamp.Format("_%d%s_%dh%dm%ds", local.tm_mday, kMonths[local.tm_mon], local.tm_hour, local.tm_min,
               local.tm_sec);
  return UpToFirstDot(strBase) + stamp + GetFileExtension();
}
