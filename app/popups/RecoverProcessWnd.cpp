#include "app/popups/RecoverProcessWnd.h"

CRecoverProcessWnd::CRecoverProcessWnd() : CTaskWnd(QStringLiteral("RecoverProcessWnd.xml")) {}
