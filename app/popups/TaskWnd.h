// The base of the five windows that show how far a task is: its worker, its board, and the question whether to stop.
#pragma once

#include "app/popups/PopUpWnd.h"
#include "app/tasks/TaskGate.h"

class CTaskWnd : public CPopUpWnd
{
public:
    using CPopUpWnd::CPopUpWnd;
};
