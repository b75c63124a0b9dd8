#include "gpsengine/platform/resource.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "gpsengine/platform/messagebox.h"

namespace {

struct StringResource {
  UINT nId;
  std::u16string_view text;
};

constexpr StringResource kStrings[] = {
    {1, u"No GPS signal!"},
    {2, u"GPS"},
    {3, u"DGPS"},
    {4, u"RTK-Code"},
    {5, u"RTK-Fixed"},
    {6, u"RTK-Float"},
    {7, u"Unknown"},
    {8, u"   PDOP: "},
    {9, u"   HDOP: "},
    {10, u"   %d of %d Satellites"},
    {11, u"Could not open file to log raw data!"},
    {12, u"Unable to open the emulation file: '%s'."},
    {13, u"Num Epochs: %d, Time: %d min."},
    {14, u"No Error."},
    {15, u"No GPS Receiver Is Assigned."},
    {16, u"Can't Initialize a Receiver."},
    {17, u"Can't Start GPS Thread."},
    {18, u"Unknown GPS Error Code."},
};

constexpr DialogTemplate kDialogs[] = {
    {129, 133, 31, "Tahoma", 8, "Dialog", "Please wait while resetting receiver", 7, 7, 119, 17},
};

}  // namespace

int LoadStringW(UINT id, WCHAR* buffer, int size) {
  const auto entry = std::find_if(std::begin(kStrings), std::end(kStrings),
                                  [&](const StringResource& resource) { return resource.nId == id; });
  if (entry == std::end(kStrings) || buffer == nullptr || size < 1) return 0;
  const int length = std::min(static_cast<int>(entry->text.size()), size - 1);
  std::copy_n(entry->text.data(), length, buffer);
  buffer[length] = 0;
  return length;
}

CString LoadText(UINT id) {
  WCHAR text[128];
  const int length = LoadStringW(id, text, static_cast<int>(std::size(text)));
  if (length == 0) AfxMessageBox("Error loading resource string.");
  return CString(text, length);
}

const DialogTemplate* FindDialogTemplate(UINT id) {
  const auto entry = std::find_if(std::begin(kDialogs), std::end(kDialogs),
                                  [&](const DialogTemplate& dialog) { return dialog.nId == id; });
  return entry == std::end(kDialogs) ? nullptr : &*entry;
}
