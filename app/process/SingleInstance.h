// One window for each user: a second start shows the first one's and ends.
#pragma once

#include <QByteArray>
#include <QLocalServer>
#include <QObject>
#include <QString>
#include <QStringList>

#include <filesystem>
#include <functional>
#include <vector>

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

    // The images are handed to the first one, where there is one.
    InstanceRole Take(const std::vector<std::filesystem::path>& images = {});
    // Called when another process asks; true when there was a window to show. Until one is set there is none.
    void OnShowRequest(std::function<bool()> show) { m_show = std::move(show); }
    // Called after it with the images that another process of this user hands over, which are absolute paths.
    using Open = std::function<void(const std::vector<std::filesystem::path>& images)>;
    void OnOpenRequest(Open open) { m_open = std::move(open); }

private:
    bool AskFirst(const QByteArray& question, InstanceRole& outRole) const;
    void AnswerNext();
    bool Answer(const QByteArray& question) const;

    QString m_name;
    QLocalServer m_server;
    std::function<bool()> m_show;
    Open m_open;
};
