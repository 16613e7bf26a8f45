// One window for each user: a second start shows the first one's and ends.
#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

enum class InstanceRole
{
    First,      // this process is the one
    ShownElse,  // the first one has shown its window
    SilentElse  // there is a first one, and it did not answer: it has no window yet, or hangs
};

// User-interface thread. The name is free again as soon as the process ends, however it ends.
class SingleInstance
{
public:
    // The name carries the user's number: another user's window could not be shown anyway.
    explicit SingleInstance(QString name = DefaultName());
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;
    ~SingleInstance() = default;

    static QString DefaultName();

    InstanceRole Take();
    // Called when another process asks; true when there was a window to show. Until one is set there is none.
    void OnShowRequest(std::function<bool()> show) { m_show = std::move(show); }

private:
    bool AskFirst(InstanceRole& outRole) const;
    void AnswerNext();

    QString m_name;
    QLocalServer m_server;
    std::function<bool()> m_show;
};
