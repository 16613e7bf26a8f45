#include "app/popups/PreviewProcessWnd.h"

CPreviewProcessWnd::CPreviewProcessWnd() : CTaskWnd(QStringLiteral("PreviewProcessWnd.xml")) {}
