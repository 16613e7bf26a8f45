#include "ui/custom/PaginationUI.h"

#include <utility>

namespace {

const char* const ButtonAttributes = "width=\"32\" textcolor=\"#FF505050\" bkcolor=\"#FFF3F3F3\" "
                                     "bordersize=\"1\" bordercolor=\"#FFDDDDDD\"";
// Beside what all number buttons have: where the text stands and how the current page is told.
const char* const NumberAttributes =
    "group=\"PAGINATION\" font=\"0\" align=\"center vcenter\" selectedbkcolor=\"#FF0089BE\" "
    "selectedtextcolor=\"#FFFFFFFF\"";

}  // namespace

CPaginationUI::CPaginationUI(std::shared_ptr<Skin> skin) : CHorizontalLayoutUI(std::move(skin))
{
    MakeButtons();
    Update();
}

template <typename Control>
Control* CPaginationUI::MakeChild(const QString& attributes)
{
    auto control = std::make_unique<Control>(SharedSkin());
    Control* made = control.get();
    made->ApplyAttributeList(attributes);
    std::unique_ptr<CControlUI> child = std::move(control);
    Add(child);
    return made;
}

void CPaginationUI::MakeButtons()
{
    const QString look = QLatin1String(ButtonAttributes);
    m_prevBtn =
        MakeChild<CButtonUI>(look + QStringLiteral(" width=\"30\" font=\"0\" text=\"Prev\""));
    const auto makeNumbers = [this, &look](std::vector<COptionUI*>& buttons, int count) {
        for (int i = 0; i < count; ++i) {
            auto* button =
                MakeChild<COptionUI>(look + QLatin1Char(' ') + QLatin1String(NumberAttributes));
            button->AddHandler([this, button](const Notification&) {
                OnPageButton(*button);
                return true;
            });
            buttons.push_back(button);
        }
    };
    const QString dots =
        QStringLiteral("width=\"32\" text=\"...\" align=\"center vcenter\" visible=\"false\"");
    makeNumbers(m_leftButtons, m_counts.left);
    m_leftDots = MakeChild<CLabelUI>(dots);
    makeNumbers(m_middleButtons, m_counts.Middle());
    m_rightDots = MakeChild<CLabelUI>(dots);
    makeNumbers(m_rightButtons, m_counts.right);
    m_nextBtn =
        MakeChild<CButtonUI>(look + QStringLiteral(" width=\"30\" font=\"0\" text=\"Next\""));
    m_prevBtn->AddHandler([this](const Notification&) {
        if (m_currentPage > 1) {
            SetCurrentPage(m_currentPage - 1);
        }
        return true;
    });
    m_nextBtn->AddHandler([this](const Notification&) {
        SetCurrentPage(m_currentPage + 1);
        return true;
    });
}

void CPaginationUI::SetPageCount(int count)
{
    m_pageCount = std::max(count, 0);
    Update();
}

void CPaginationUI::SetCurrentPage(int page)
{
    if (page < 1 || page > m_pageCount || page == m_currentPage) {
        return;
    }
    m_currentPage = page;
    Update();
    SendNotify(NotifyUpdatePage, page);
}

void CPaginationUI::OnPageButton(const COptionUI& button)
{
    // Setting the buttons to the page that is current already is no wish of the user.
    if (!m_isUpdating) {
        SetCurrentPage(static_cast<int>(button.GetTag()));
    }
}

void CPaginationUI::Update()
{
    if (m_pageCount < m_currentPage) {
        return;
    }
    // Only one end is looked at: a jump from the first page to the last leaves the way back disabled. Wanted so.
    if (m_currentPage == 1) {
        m_prevBtn->SetEnabled(false);
    } else if (m_currentPage == m_pageCount) {
        m_nextBtn->SetEnabled(false);
    } else {
        m_prevBtn->SetEnabled(true);
        m_nextBtn->SetEnabled(true);
    }
    const bool wasUpdating = std::exchange(m_isUpdating, true);
    ShowButtons(LayOutPager(m_pageCount, m_currentPage, m_counts));
    m_isUpdating = wasUpdating;
}

void CPaginationUI::ShowButtons(const PagerLayout& layout)
{
    std::vector<COptionUI*> buttons = m_leftButtons;
    buttons.insert(buttons.end(), m_middleButtons.begin(), m_middleButtons.end());
    buttons.insert(buttons.end(), m_rightButtons.begin(), m_rightButtons.end());
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        COptionUI& button = *buttons[i];
        const bool isUsed = i < layout.pages.size();
        button.SetVisible(isUsed);
        button.SetTag(isUsed ? layout.pages[i] : 0);
        button.SetText(isUsed ? QString::number(layout.pages[i]) : QString());
        button.Selected(isUsed && layout.pages[i] == m_currentPage);
    }
    // With dots there is a button for every place, and the dots stand between the same ones always.
    m_leftDots->SetVisible(layout.hasLeftDots);
    m_rightDots->SetVisible(layout.hasRightDots);
}
