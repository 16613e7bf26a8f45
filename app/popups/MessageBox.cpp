#include "app/popups/MessageBox.h"

#include "app/popups/PopUpWnd.h"

namespace {
CMessageBox::Answerer& AnswererInUse()
{
    static CMessageBox::Answerer answerer;
    return answerer;
}
}  // namespace

int CMessageBox::Show(QWidget*, Kind kind, const QString&, const QString& message, int, int)
{
    return AnswererInUse() ? AnswererInUse()(kind, message) : CloseCancelled;
}

void CMessageBox::UseAnswerer(Answerer answerer)
{
    AnswererInUse() = std::move(answerer);
}
