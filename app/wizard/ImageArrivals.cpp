#include "app/wizard/ImageArrivals.h"

#include "app/popups/MessageBox.h"
#include "app/popups/Messages.h"
#include "app/popups/ModalStack.h"
#include "app/wizard/MainTexts.h"
#include "platform/Text.h"

#include <QFile>
#include <QMimeData>
#include <QTimer>
#include <QUrl>

#include <utility>

namespace {

constexpr int RetryDelay = 200;  // milliseconds
// Each becomes a row; nobody looks through hundreds of images that he has dropped by mistake.
constexpr std::size_t MostFiles = 16;

bool IsImageFile(const std::filesystem::path& path)
{
    std::error_code ignored;
    return path.is_absolute() && std::filesystem::is_regular_file(path, ignored);
}

}  // namespace

ImageArrivals::ImageArrivals(
    MainContext& context,
    std::function<void(const std::vector<std::filesystem::path>& images)> load)
    : m_context(context), m_load(std::move(load))
{
}

std::vector<std::filesystem::path> ImageArrivals::FilesOf(const QMimeData& data)
{
    std::vector<std::filesystem::path> files;
    for (const QUrl& url : data.urls()) {
        if (url.isLocalFile() && files.size() < MostFiles) {
            files.emplace_back(QFile::encodeName(url.toLocalFile()).toStdString());
        }
    }
    return files;
}

void ImageArrivals::Take(const std::vector<std::filesystem::path>& paths)
{
    for (const std::filesystem::path& path : paths) {
        if (m_waiting.size() < MostFiles) {
            m_waiting.push_back(path);
        }
    }
    AskForOpening();
}

void ImageArrivals::AskForOpening() const
{
    if (!m_waiting.empty()) {
        ModalStack::Instance().PostWhenFree(m_context.window, WM_OPEN_IMAGES, 0, 0);
    }
}

void ImageArrivals::Open()
{
    if (m_context.flows != 0) {
        // A dialog of the desktop is open, which no window of ours stands in front for.
        QTimer::singleShot(RetryDelay, &m_context.window, [this] { AskForOpening(); });
        return;
    }
    const FlowGuard guard(m_context);
    std::vector<std::filesystem::path> images;
    for (const std::filesystem::path& path : std::exchange(m_waiting, {})) {
        if (IsImageFile(path)) {
            images.push_back(path);
        } else {
            const std::string told = FormatText(ExtraText("EXT0261"), Printable(path.string()));
            CMessageBox::Show(&m_context.window, CMessageBox::Information, {}, ToQt(told), 450,
                              150);
        }
    }
    if (!images.empty()) {
        m_load(images);
    }
}
