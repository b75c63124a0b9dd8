#include <algorithm>
#include <memory>
#include <new>

#include "gpsengine/link/ack.h"
#include "gpsengine/receiver/gpsreceiver.h"
#include "gpsengine/receiver/post.h"
#include "gpsengine/receiver/updatescope.h"
#include "gpsengine/receiver/workingstate.h"

namespace {

// Below this speed, in metres per second, a receiver at rest seems to wander about.
constexpr double kStandstill = 0.3;

// Copies the record for the host and clears the flags of what it carried; null if there is nothing to tell.
std::unique_ptr<CGPSData> TakeRecord(CGPSData& record, bool force) {
  if (!force && !record.m_bPositionValid && !record.m_Status.m_bStatusUpdated && !record.m_bProprietaryValid)
    return nullptr;
  std::unique_ptr<CGPSData> copy(new (std::nothrow) CGPSData(record));
  if (copy == nullptr) return nullptr;
  copy->m_Time = CTime::GetCurrentTime();
  copy->m_nSatellitesInView = std::max(copy->m_nSatellitesInView, copy->m_nSatellitesUsed);
  if (record.m_bPositionValid) {
    if (copy->m_dSpeed < kStandstill) copy->m_dSpeed = copy->m_dHeading = 0.0;
    record.Invalidate(false);
  }
  if (record.m_Status.m_bStatusUpdated) record.m_Status.Invalidate();
  return copy;
}

}  // namespace

bool CGPSReceiver::PostNewData(bool force) {
  return Publish(RecordLock(), force);
}

// Gives the lock up before the post.
bool CGPSReceiver::Publish(RecordLock state, bool force) {
  std::unique_ptr<CGPSData> record = TakeRecord(state->record, force);
  state.Unlock();
  if (record == nullptr) return false;
  // While the copy is still ours: a host's thread that waits for an acknowledgement is released by it.
  CAck::OnNewGPSData(record.get());
  PostObject(WM_GPS_NEW_DATA, std::move(record));
  return true;
}

void CGPSReceiver::AddNotificationCallback(GPSNotificationType type, GPSNotificationCallback pfn,
                                           void* user) {
  const std::lock_guard lock(m_NotificationMutex);
  m_Notifications[type] = {type, pfn, user};
}

bool CGPSReceiver::HasNotificationCallback(GPSNotificationType type) const {
  const std::lock_guard lock(m_NotificationMutex);
  const auto entry = m_Notifications.find(type);
  return entry != m_Notifications.end() && entry->second.pfn != nullptr;
}

void CGPSReceiver::BroadcastNotification(GPSNotificationType type, CGPSNotification* data) {
  GPSNotificationEntry registered{type, nullptr, nullptr};
  {
    const std::lock_guard lock(m_NotificationMutex);
    if (const auto entry = m_Notifications.find(type); entry != m_Notifications.end())
      registered = entry->second;
  }
  // Without the lock: the callback may register another.
  if (registered.pfn == nullptr) return;
  registered.pfn(registered.type, data, registered.pUser);
  CUpdateScope::GoOn();
}
