// A message with a button, or a question with two.
#pragma once

#include <QString>

#include <functional>

class QWidget;

class CMessageBox
{
public:
    enum Kind
    {
        Error,
        Confirm,
        Information,
        Warning,
        Question
    };

    // CloseDone for its first button, CloseCancelled for all other ways to close it. A null title is the kind's own.
    static int Show(QWidget* parent,
                    Kind kind,
                    const QString& title,
                    const QString& message,
                    int width,
                    int height);

    // For tests: answers in place of all windows; null to have them back.
    using Answerer = std::function<int(Kind kind, const QString& message)>;
    static void UseAnswerer(Answerer answerer);
};
