#pragma once

#include "gpsengine/platform/resource.h"
#include "gpsengine/platform/window.h"

#pragma GCC visibility push(default)

/// A window made from a dialog template. Nothing is shown; a host may look up the template's texts.
class CDialog : public CWnd {
 public:
  /// Uses this template. The parent is ignored.
  explicit CDialog(UINT nTemplate, CWnd* /*pParent*/ = nullptr) : m_nTemplate(nTemplate) {}

  /// Creates it modeless, on the calling thread. False if the template is unknown or the dialog exists
  /// already.
  bool Create() { return FindDialogTemplate(m_nTemplate) != nullptr && CWnd::Create(); }

 private:
  UINT m_nTemplate;
};

#pragma GCC visibility pop
