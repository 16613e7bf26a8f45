#include "app/popups/ScanProcessWnd.h"

CScanProcessWnd::CScanProcessWnd() : CTaskWnd(QStringLiteral("ScanProcessWnd.xml")) {}
