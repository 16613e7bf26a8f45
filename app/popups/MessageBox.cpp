#include "app/popups/MessageBox.h"

#include "app/popups/PopUpWnd.h"

#include <array>
#include <utility>

namespace {

struct KindLook
{
    const char* skinFile;
    const char* titleKey;
};

// By kind. Warning and question have each other's titles.
constexpr std::array<KindLook, 5> Looks = {{
    {"MessageBox_Error.xml", "MSG0401"},
    {"MessageBox_Confirm.xml", "MSG0402"},
    {"MessageBox_Information.xml", "MSG0403"},
    {"MessageBox_Warning.xml", "MSG0405"},
    {"MessageBox_Question.xml", "MSG0404"},
}};

const KindLook& LookOf(CMessageBox::Kind kind)
{
    const auto index = static_cast<std::size_t>(kind);
    return index < Looks.size() ? Looks.at(index) : Looks.front();
}

class MessageBoxWnd : public CPopUpWnd
{
public:
    MessageBoxWnd(const KindLook& look, QString title, QString message)
        : CPopUpWnd(QString::fromLatin1(look.skinFile)),
          m_isRisky(&look == &LookOf(CMessageBox::Confirm)),
          m_title(title.isNull() ? Message(look.titleKey) : std::move(title)),
          m_message(std::move(message))
    {
    }

    void OnClick(const Notification& notification) override
    {
        const QString& name = notification.sender->GetName();
        if (name == QLatin1String("okbtn")) {
            CloseWith(CloseDone);
        } else if (name == QLatin1String("cancelbtn") || name == QLatin1String("closebtn")) {
            CloseWith(CloseCancelled);
        }
    }

protected:
    QStringList Answers() const override
    {
        return m_isRisky ? QStringList(QStringLiteral("cancelbtn")) : CPopUpWnd::Answers();
    }
    void OnWindowInit() override
    {
        ApplyLanguage("MessageBox");
        setWindowTitle(m_title);
        SetPlainText(QStringLiteral("title"), m_title);
        SetPlainText(QStringLiteral("message"), m_message);
    }

private:
    bool m_isRisky;
    QString m_title;
    QString m_message;
};

CMessageBox::Answerer& AnswererInUse()
{
    static CMessageBox::Answerer answerer;
    return answerer;
}

}  // namespace

int CMessageBox::Show(
    QWidget* parent, Kind kind, const QString& title, const QString& message, int width, int height)
{
    if (AnswererInUse()) {
        return AnswererInUse()(kind, message);
    }
    MessageBoxWnd box(LookOf(kind), title, message);
    return box.Create(parent, width, height) ? box.DoModal() : CloseCancelled;
}

void CMessageBox::UseAnswerer(Answerer answerer)
{
    AnswererInUse() = std::move(answerer);
}
