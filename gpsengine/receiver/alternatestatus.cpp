#include <algorithm>
#include <iterator>

#include "gpsengine/receiver/gpsreceiver.h"
#include "gpsengine/text/number.h"
#include "gpsengine/text/textfile.h"

// The file with which a user redefines what a receiver's quality indicators mean:
//   4,"UDF_SIGNAL_RTK_CODE"

namespace {

struct SignalName {
  const char* pszName;
  SignalType nType;
};
constexpr SignalName kSignalNames[] = {
    {"UDF_SIGNAL_NONE", UDF_SIGNAL_NONE},
    {"UDF_SIGNAL_GPS", UDF_SIGNAL_GPS},
    {"UDF_SIGNAL_CORRECTED_GPS", UDF_SIGNAL_CORRECTED_GPS},
    {"UDF_SIGNAL_CALCULATED", UDF_SIGNAL_CALCULATED},
    {"UDF_SIGNAL_MANUAL", UDF_SIGNAL_MANUAL},
    {"UDF_SIGNAL_RTK_CODE", UDF_SIGNAL_RTK_CODE},
    {"UDF_SIGNAL_RTK_FIXED", UDF_SIGNAL_RTK_FIXED},
    {"UDF_SIGNAL_RTK_FLOAT", UDF_SIGNAL_RTK_FLOAT},
    {"UDF_SIGNAL_POSTPROCESSED", UDF_SIGNAL_POSTPROCESSED},
    {"UDF_SIGNAL_WAAS", UDF_SIGNAL_WAAS},
    {"UDF_SIGNAL_UNKNOWN", UDF_SIGNAL_UNKNOWN},
};

CString StatusFile() {
  WCHAR path[260];
  const auto length = static_cast<int>(GetModuleFileNameW(path, static_cast<DWORD>(std::size(path))));
  const CString executable(path, length);
  const auto separator = executable.View().rfind(kPathSeparator);
  const bool has_folder = separator != std::u16string_view::npos;
  return (has_folder ? executable.Left(static_cast<int>(separator) + 1) : executable) + "GPSStatus";
}

}  // namespace

void CGPSReceiver::LoadAlternatGPSStatusStrings() {
  CTextFile file;
  if (file.Open(StatusFile().GetString(), CFile::modeRead, nullptr) == 0) return;

  CString line;
  while (file.ReadString(line)) {
    const int comma = line.Find(u',');
    const CString key = line.Left(comma);
    CString value = line.Mid(comma + 1);
    for (const WCHAR c : {u'"', u' ', u'\t'}) value.Remove(c);

    int quality = 0;
    const bool number = ParseInt(key.View(), &quality);
    if (!number && key.CompareNoCase("default") != 0) continue;
    m_bAlternateSignalTable = true;
    const auto name = std::find_if(
        std::begin(kSignalNames), std::end(kSignalNames),
        [&](const SignalName& candidate) { return value.CompareNoCase(candidate.pszName) == 0; });
    // A default has no number to stand under, and what the file does not name keeps its built-in meaning
    // anyway.
    if (!number || name == std::end(kSignalNames)) continue;
    const RecordLock state;
    m_AlternateSignalTable[quality] = name->nType;
  }
}
