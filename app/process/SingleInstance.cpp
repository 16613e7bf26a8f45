#include "app/process/SingleInstance.h"

#include "platform/Process.h"

#include <QLocalSocket>

#include <utility>

namespace {

constexpr int ConnectMilliseconds = 300;
constexpr int AnswerMilliseconds = 1000;
constexpr char Question[] = "show\n";
constexpr char Shown[] = "shown\n";
constexpr qint64 LongestLine = 64;

}  // namespace

SingleInstance::SingleInstance(QString name) : m_name(std::move(name))
{
    // In the kernel's own name space: no file is left behind by a process that was killed.
    m_server.setSocketOptions(QLocalServer::AbstractNamespaceOption);
    QObject::connect(&m_server, &QLocalServer::newConnection, &m_server, [this] { AnswerNext(); });
}

QString SingleInstance::DefaultName()
{
    return QStringLiteral("Lumivault_2013_For_Windows.%1").arg(UserNumber());
}

InstanceRole SingleInstance::Take()
{
    InstanceRole role = InstanceRole::First;
    constexpr int Attempts =
        3;  // of two that start at once one comes too late to listen, and asks again
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        if (AskFirst(role)) {
            return role;
        }
        if (m_server.listen(m_name)) {
            return InstanceRole::First;
        }
    }
    return InstanceRole::SilentElse;
}

// False when there is none.
bool SingleInstance::AskFirst(InstanceRole& outRole) const
{
    QLocalSocket socket;
    socket.setSocketOptions(QLocalSocket::AbstractNamespaceOption);
    socket.connectToServer(m_name);
    if (!socket.waitForConnected(ConnectMilliseconds)) {
        return false;
    }
    socket.write(Question);
    socket.waitForBytesWritten(ConnectMilliseconds);
    const bool answered = socket.waitForReadyRead(AnswerMilliseconds) &&
                          socket.readLine(LongestLine) == QByteArray(Shown);
    outRole = answered ? InstanceRole::ShownElse : InstanceRole::SilentElse;
    return true;
}

// Anyone can connect: what comes is short, is asked for once, and makes nothing happen but the showing of a window.
void SingleInstance::AnswerNext()
{
    while (QLocalSocket* const socket = m_server.nextPendingConnection()) {
        QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        socket->setReadBufferSize(LongestLine);
        const auto answer = [this, socket] {
            if (socket->readLine(LongestLine) == QByteArray(Question) && m_show && m_show()) {
                socket->write(Shown);
            }
            socket->disconnectFromServer();
        };
        QObject::connect(socket, &QLocalSocket::readyRead, socket, answer,
                         Qt::SingleShotConnection);
    }
}
