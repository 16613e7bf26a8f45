#include "app/popups/CreateImageProcessWnd.h"

CCreateImageProcessWnd::CCreateImageProcessWnd()
    : CTaskWnd(QStringLiteral("CreateImageProcessWnd.xml"))
{
}
