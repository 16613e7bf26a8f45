#include "app/process/SingleInstance.h"

#include "platform/Process.h"

#include <QLocalSocket>

#include <algorithm>
#include <utility>

namespace {

constexpr int ConnectMilliseconds = 300;
constexpr int AnswerMilliseconds = 1000;
// "show", a blank and the code of each image, a line break. The codes have neither blanks nor line breaks.
constexpr char Show[] = "show";
constexpr char Shown[] = "shown\n";
constexpr qint64 LongestQuestion = 1 << 18;
constexpr qint64 LongestAnswer = 64;
constexpr std::size_t MostImages = 16;
constexpr qsizetype LongestPath = 4096;

QByteArray QuestionWith(const std::vector<std::filesystem::path>& images)
{
    QByteArray question(Show);
    for (std::size_t i = 0; i < std::min(images.size(), MostImages); ++i) {
        question += ' ' + QByteArray::fromStdString(images[i].string()).toPercentEncoding();
    }
    return question + '\n';
}

// Nothing where one of them is no absolute path.
std::vector<std::filesystem::path> ImagesIn(const QList<QByteArray>& codes)
{
    std::vector<std::filesystem::path> images;
    for (const QByteArray& code : codes) {
        const QByteArray path = QByteArray::fromPercentEncoding(code);
        if (!path.startsWith('/') || path.contains('\0') || path.size() >= LongestPath ||
            images.size() == MostImages) {
            return {};
        }
        images.emplace_back(path.toStdString());
    }
    return images;
}

bool IsOfThisUser(const QLocalSocket& socket)
{
    return UserAtOtherEnd(static_cast<int>(socket.socketDescriptor())) == UserNumber();
}

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

InstanceRole SingleInstance::Take(const std::vector<std::filesystem::path>& images)
{
    const QByteArray question = QuestionWith(images);
    InstanceRole role = InstanceRole::First;
    constexpr int Attempts =
        3;  // of two that start at once one comes too late to listen, and asks again
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        if (AskFirst(question, role)) {
            return role;
        }
        if (m_server.listen(m_name)) {
            return InstanceRole::First;
        }
    }
    return InstanceRole::SilentElse;
}

// False when there is none.
bool SingleInstance::AskFirst(const QByteArray& question, InstanceRole& outRole) const
{
    QLocalSocket socket;
    socket.setSocketOptions(QLocalSocket::AbstractNamespaceOption);
    socket.connectToServer(m_name);
    if (!socket.waitForConnected(ConnectMilliseconds)) {
        return false;
    }
    outRole = InstanceRole::SilentElse;
    if (!IsOfThisUser(socket)) {
        return true;  // somebody sits on the name, and is told nothing
    }
    socket.write(question);
    socket.waitForBytesWritten(ConnectMilliseconds);
    if (socket.waitForReadyRead(AnswerMilliseconds) &&
        socket.readLine(LongestAnswer) == QByteArray(Shown)) {
        outRole = InstanceRole::ShownElse;
    }
    return true;
}

// True when there was a window to show. Images are only named by it: what they are is looked at when they are loaded.
bool SingleInstance::Answer(const QByteArray& question) const
{
    QList<QByteArray> words = question.chopped(1).split(' ');
    if (words.takeFirst() != QByteArray(Show)) {
        return false;
    }
    const std::vector<std::filesystem::path> images = ImagesIn(words);
    if (images.empty() != words.empty() || !m_show || !m_show()) {
        return false;
    }
    if (!images.empty() && m_open) {
        m_open(images);
    }
    return true;
}

// Any process can connect: what comes is asked for once, and of strangers nothing is taken.
void SingleInstance::AnswerNext()
{
    while (QLocalSocket* const socket = m_server.nextPendingConnection()) {
        QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        if (!IsOfThisUser(*socket)) {
            socket->disconnectFromServer();
            continue;
        }
        socket->setReadBufferSize(LongestQuestion);
        const auto answer = [this, socket] {
            if (!socket->canReadLine() && socket->bytesAvailable() < LongestQuestion) {
                return;  // the rest is to come
            }
            QObject::disconnect(socket, &QLocalSocket::readyRead, nullptr, nullptr);
            if (socket->canReadLine() && Answer(socket->readLine())) {
                socket->write(Shown);
            }
            socket->disconnectFromServer();
        };
        QObject::connect(socket, &QLocalSocket::readyRead, socket, answer);
    }
}
