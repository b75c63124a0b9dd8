#include "gpsengine/platform/application.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <optional>
#include <vector>

#include "gpsengine/platform/event.h"
#include "gpsengine/platform/system.h"

namespace {

std::atomic<CWinApp*> g_pApp{nullptr};
std::atomic<HWND> g_hMainWnd{nullptr};
std::mutex g_ProfileMutex;

std::string_view Trimmed(std::string_view text) {
  const auto from = text.find_first_not_of(" \t\r");
  if (from == std::string_view::npos) return {};
  return text.substr(from, text.find_last_not_of(" \t\r") - from + 1);
}

}  // namespace

// An INI file, kept as lines so that comments and foreign entries survive.
struct CWinApp::Profile {
  explicit Profile(const CString& path) : strPath(path.ToUtf8()) {
    std::ifstream file(strPath);
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    std::error_code error;
    bUnreadable = file.bad() || (!file.is_open() && std::filesystem::exists(strPath, error));
  }

  std::optional<std::string_view> Get(const std::string& section, const std::string& entry) const {
    const auto at = Find(section, entry);
    if (at == lines.size()) return std::nullopt;
    return Trimmed(std::string_view(lines[at]).substr(lines[at].find('=') + 1));
  }

  std::optional<int> GetNumber(const std::string& section, const std::string& entry) const {
    const auto text = Get(section, entry);
    if (!text) return std::nullopt;
    int value = 0;
    const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), value);
    if (error != std::errc() || end != text->data() + text->size()) return std::nullopt;
    return value;
  }

  void Put(const std::string& section, const std::string& entry, const std::string& value) {
    const std::string line = entry + '=' + value;
    const auto at = Find(section, entry);
    if (at != lines.size()) {
      lines[at] = line;
    } else if (const auto head = FindSection(section); head != lines.size()) {
      lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(head) + 1, line);
    } else {
      lines.push_back('[' + section + ']');
      lines.push_back(line);
    }
  }

  /// False if there is no such entry.
  bool Remove(const std::string& section, const std::string& entry) {
    const auto at = Find(section, entry);
    if (at == lines.size()) return false;
    lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(at));
    return true;
  }

  bool Save() const {
    namespace fs = std::filesystem;
    if (bUnreadable) return false;  // what others wrote would be lost
    std::error_code error;
    if (const auto folder = fs::path(strPath).parent_path(); !folder.empty())
      fs::create_directories(folder, error);
    const std::string draft = strPath + ".new";
    {
      std::ofstream file(draft, std::ios::trunc);
      for (const std::string& line : lines) file << line << '\n';
      file.close();
      if (!file) {
        fs::remove(draft, error);
        return false;
      }
    }
    fs::rename(draft, strPath, error);
    if (!error) return true;
    fs::remove(draft, error);
    return false;
  }

  std::size_t FindSection(const std::string& section) const {
    const auto found = std::find_if(lines.begin(), lines.end(), [&](const std::string& line) {
      return Trimmed(line) == '[' + section + ']';
    });
    return static_cast<std::size_t>(found - lines.begin());
  }

  std::size_t Find(const std::string& section, const std::string& entry) const {
    for (std::size_t i = FindSection(section) + 1; i < lines.size(); ++i) {
      const std::string_view line = Trimmed(lines[i]);
      if (line.starts_with('[')) break;
      const auto equals = line.find('=');
      if (equals != std::string_view::npos && Trimmed(line.substr(0, equals)) == entry) return i;
    }
    return lines.size();
  }

  std::string strPath;
  std::vector<std::string> lines;
  bool bUnreadable = false;  // the file exists but cannot be read
};

CWinApp::CWinApp(const CString& name)
    : m_strProfilePath(
          CString::FromUtf8(ConfigurationFolder() + '/' + name.ToUtf8() + '/' + name.ToUtf8() + ".ini")) {
  g_pApp = this;
}

CWinApp::~CWinApp() {
  g_hMainWnd = nullptr;
  CWinApp* self = this;
  g_pApp.compare_exchange_strong(self, nullptr);
}

void CWinApp::SetMainWnd(const CWnd* wnd) {
  g_hMainWnd = wnd == nullptr ? nullptr : wnd->GetSafeHwnd();
}

void CWinApp::SetProfilePath(const CString& path) {
  const std::lock_guard lock(g_ProfileMutex);
  m_strProfilePath = path;
}

CString CWinApp::GetProfilePath() const {
  const std::lock_guard lock(g_ProfileMutex);
  return m_strProfilePath;
}

int CWinApp::GetProfileInt(const CString& section, const CString& entry, int the_default) {
  const std::lock_guard lock(g_ProfileMutex);
  return Profile(m_strProfilePath).GetNumber(section.ToUtf8(), entry.ToUtf8()).value_or(the_default);
}

bool CWinApp::WriteProfileInt(const CString& section, const CString& entry, int value) {
  return WriteProfileString(section, entry, std::to_string(value).c_str());
}

CString CWinApp::GetProfileString(const CString& section, const CString& entry, const CString& the_default) {
  const std::lock_guard lock(g_ProfileMutex);
  const Profile profile(m_strProfilePath);
  const auto text = profile.Get(section.ToUtf8(), entry.ToUtf8());
  return text ? CString::FromUtf8(*text) : the_default;
}

bool CWinApp::WriteProfileString(const CString& section, const CString& entry, const CString& text) {
  const std::string value = text.ToUtf8();
  if (value.find_first_of("\r\n") != value.npos) return false;
  const std::lock_guard lock(g_ProfileMutex);
  Profile profile(m_strProfilePath);
  profile.Put(section.ToUtf8(), entry.ToUtf8(), value);
  return profile.Save();
}

bool CWinApp::RemoveProfileEntry(const CString& section, const CString& entry) {
  const std::lock_guard lock(g_ProfileMutex);
  Profile profile(m_strProfilePath);
  return !profile.Remove(section.ToUtf8(), entry.ToUtf8()) || profile.Save();
}

bool CWinApp::PumpMessage() {
  MSG message;
  while (!PeekMessageW(&message, PM_REMOVE)) MsgWaitForMultipleObjects(0, nullptr, INFINITE);
  if (message.message == WM_QUIT) return false;
  DispatchMessageW(message);
  return true;
}

void CWinApp::Run() {
  while (PumpMessage()) {
  }
}

void CWinApp::DoWaitCursor(int) {}

CWinApp* AfxGetApp() {
  return g_pApp;
}

HWND AfxGetMainWnd() {
  return g_hMainWnd;
}

CWaitCursor::CWaitCursor() {
  if (CWinApp* app = AfxGetApp()) app->DoWaitCursor(1);
}

CWaitCursor::~CWaitCursor() {
  if (CWinApp* app = AfxGetApp()) app->DoWaitCursor(-1);
}
