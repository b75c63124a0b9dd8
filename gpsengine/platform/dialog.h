#pragma once

#include "gpsengine/platform/resource.h"
#include "gpsengine/platform/window.h"

#pragma GCC visibility push(default)

/// A window made from a dialog template. Nothing shows it here; a host may look the template's texts up.
class CDialog : public CWnd {
 public:
  /// Takes its texts from this template. The parent has no effect.
  explicit CDialog(UINT nTemplate, CWnd* /*pParent*/ = nullptr) : m_nTemplate(nTemplate) {}

  /// Creates it modeless, on the calling thread. False if the template is unknown or the dialog exists
  /// already.
  bool Create() { return FindDialogTemplate(m_nTemplate) != nullptr && CWnd::Create(); }

 private:
  UINT m_nTemplate;
};

#pragma GCC visibility pop
