#include "ui/windows/WindowImplBase.h"

#include "texts/LanguageSection.h"
#include "ui/windows/AccessibleControls.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWindow>

#include <utility>

namespace {

class WindowMessage : public QEvent
{
public:
    WindowMessage(std::uint32_t messageNumber, std::intptr_t first, std::intptr_t second)
        : QEvent(Kind()), number(messageNumber), wParam(first), lParam(second)
    {
    }
    static QEvent::Type Kind()
    {
        static const int registered = QEvent::registerEventType();
        return static_cast<QEvent::Type>(registered);
    }

    std::uint32_t number;
    std::intptr_t wParam;
    std::intptr_t lParam;
};

// Follows once a window was closed.
QEvent::Type FinalEvent()
{
    static const int registered = QEvent::registerEventType();
    return static_cast<QEvent::Type>(registered);
}

std::shared_ptr<SkinPackage>& PackageInUse()
{
    static std::shared_ptr<SkinPackage> package;
    return package;
}

Qt::CursorShape CursorOf(Qt::Edges edges)
{
    const bool isSide = (edges & (Qt::LeftEdge | Qt::RightEdge)) != 0;
    const bool isEnd = (edges & (Qt::TopEdge | Qt::BottomEdge)) != 0;
    if (isSide && isEnd) {
        const bool isFalling =
            edges == (Qt::LeftEdge | Qt::TopEdge) || edges == (Qt::RightEdge | Qt::BottomEdge);
        return isFalling ? Qt::SizeFDiagCursor : Qt::SizeBDiagCursor;
    }
    return isSide ? Qt::SizeHorCursor : Qt::SizeVerCursor;
}

}  // namespace

WindowImplBase::WindowImplBase() : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint)
{
    setAttribute(Qt::WA_Hover);
}

bool WindowImplBase::Create(QWidget* owner, int width, int height)
{
    InstallAccessibleControls();
    if (owner != nullptr) {
        setParent(owner, Qt::Dialog | Qt::FramelessWindowHint);
    }
    m_skin = std::make_shared<Skin>(FindPackage());
    auto root = std::make_unique<CVerticalLayoutUI>(m_skin);
    root->setParent(this);
    m_root = root.release();
    MarkupBuilder builder(m_skin,
                          [this](const QString& element, const std::shared_ptr<Skin>& skin) {
                              return CreateControl(element, skin);
                          });
    const bool isBuilt = builder.Build(GetSkinFile(), *m_root);
    m_problems = builder.Problems();
    m_settings = builder.Settings();
    if (!isBuilt) {
        return false;
    }
    setWindowTitle(m_settings.title);
    setMinimumSize(m_settings.minimum);
    resize(width > 0 ? width : m_settings.size.width(),
           height > 0 ? height : m_settings.size.height());
    m_root->setGeometry(rect());
    qApp->installEventFilter(this);
    InitWindow();
    SendNotify(*m_root, NotifyWindowInit);
    return true;
}

std::shared_ptr<SkinPackage> WindowImplBase::FindPackage() const
{
    if (PackageInUse()) {
        return PackageInUse();
    }
    if (!GetSkinFolder().isEmpty()) {
        const QDir folder(QCoreApplication::applicationDirPath() + QLatin1Char('/') +
                          SkinPackage::PlainName(GetSkinFolder()));
        if (QFileInfo::exists(folder.filePath(SkinPackage::PlainName(GetSkinFile())))) {
            return SkinPackage::FromFolder(folder.path());
        }
    }
    return SkinPackage::Embedded();
}

void WindowImplBase::UsePackage(std::shared_ptr<SkinPackage> package)
{
    PackageInUse() = std::move(package);
}

bool WindowImplBase::HandleMessage(std::uint32_t, std::intptr_t, std::intptr_t)
{
    return false;
}

void WindowImplBase::Notify(const Notification& notification)
{
    if (notification.type == NotifyClick) {
        OnClick(notification);
    }
}

void WindowImplBase::OnClick(const Notification& notification)
{
    const QString& name = notification.sender->GetName();
    if (name == QLatin1String("closebtn")) {
        close();
    } else if (name == QLatin1String("minbtn")) {
        showMinimized();
    } else if (name == QLatin1String("maxbtn")) {
        ToggleMaximized();
    }
}

bool WindowImplBase::MessageFilter(QKeyEvent&)
{
    return false;
}

CControlUI* WindowImplBase::FindControl(const QString& name) const
{
    return m_root != nullptr ? m_root->FindControl(name) : nullptr;
}

void WindowImplBase::SendNotify(CControlUI& sender,
                                QLatin1String type,
                                std::intptr_t wParam,
                                std::intptr_t lParam)
{
    Notify({QString(type), &sender, wParam, lParam});
}

void WindowImplBase::PostWindowMessage(std::uint32_t number,
                                       std::intptr_t wParam,
                                       std::intptr_t lParam)
{
    QCoreApplication::postEvent(this, new WindowMessage(number, wParam, lParam));
}

void WindowImplBase::ApplyLanguage(const LanguageSection& section) const
{
    for (const auto& [key, value] : section.Entries()) {
        if (CControlUI* control = FindControl(QString::fromStdString(key))) {
            control->SetText(QString::fromStdString(value));
        }
    }
}

std::unique_ptr<CControlUI> WindowImplBase::CreateControl(const QString&,
                                                          const std::shared_ptr<Skin>&)
{
    return nullptr;
}

bool WindowImplBase::event(QEvent* event)
{
    if (event->type() == WindowMessage::Kind()) {
        const auto* message = static_cast<const WindowMessage*>(event);
        return HandleMessage(message->number, message->wParam, message->lParam);
    }
    if (event->type() == FinalEvent()) {
        // The window may be gone when it returns.
        OnFinalMessage();
        return true;
    }
    if (event->type() == QEvent::HoverMove) {
        const Qt::Edges edges = EdgesAt(static_cast<QHoverEvent*>(event)->position().toPoint());
        if (edges) {
            setCursor(CursorOf(edges));
        } else {
            unsetCursor();
        }
    }
    return QWidget::event(event);
}

// The border lies on top of the controls that reach to the window's edge.
bool WindowImplBase::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::MouseButtonPress || !watched->isWidgetType()) {
        return false;
    }
    const auto* widget = static_cast<QWidget*>(watched);
    const auto* press = static_cast<QMouseEvent*>(event);
    if (widget->window() != this || press->button() != Qt::LeftButton ||
        windowHandle() == nullptr) {
        return false;
    }
    const Qt::Edges edges = EdgesAt(mapFromGlobal(press->globalPosition().toPoint()));
    return edges != Qt::Edges() && windowHandle()->startSystemResize(edges);
}

bool WindowImplBase::IsResizable() const
{
    return m_settings.sizeBorder > 0 && minimumSize() != maximumSize();
}

Qt::Edges WindowImplBase::EdgesAt(const QPoint& place) const
{
    Qt::Edges edges;
    if (!IsResizable() || isMaximized() || !rect().contains(place)) {
        return edges;
    }
    const int border = m_settings.sizeBorder;
    edges.setFlag(Qt::LeftEdge, place.x() < border);
    edges.setFlag(Qt::RightEdge, place.x() >= width() - border);
    edges.setFlag(Qt::TopEdge, place.y() < border);
    edges.setFlag(Qt::BottomEdge, place.y() >= height() - border);
    return edges;
}

void WindowImplBase::keyPressEvent(QKeyEvent* event)
{
    event->setAccepted(MessageFilter(*event));
}

void WindowImplBase::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && event->pos().y() < m_settings.captionHeight &&
        windowHandle() != nullptr) {
        windowHandle()->startSystemMove();
    }
}

void WindowImplBase::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && event->pos().y() < m_settings.captionHeight &&
        IsResizable()) {
        ToggleMaximized();
    }
}

void WindowImplBase::ToggleMaximized()
{
    setWindowState(windowState() ^ Qt::WindowMaximized);
}

void WindowImplBase::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (m_root != nullptr) {
        m_root->setGeometry(rect());
    }
}

void WindowImplBase::closeEvent(QCloseEvent* event)
{
    if (!OnCloseRequest()) {
        event->ignore();
        return;
    }
    event->accept();
    // Whatever has closed the window may still be at work in one of its controls.
    QCoreApplication::postEvent(this, new QEvent(FinalEvent()));
}
