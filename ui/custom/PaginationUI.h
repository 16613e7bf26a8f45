// Buttons for the pages of something long. Sends "updatepage" with the page when it changes.
#pragma once

#include "ui/controls/ButtonUI.h"
#include "ui/controls/ContainerUI.h"
#include "ui/controls/LabelUI.h"
#include "ui/custom/PagerLayout.h"

#include <vector>

class CPaginationUI : public CHorizontalLayoutUI
{
public:
    explicit CPaginationUI(std::shared_ptr<Skin> skin);
    QString GetClass() const override { return QStringLiteral("PaginationUI"); }

    void SetPageCount(int count);
    // Does nothing for a page that there is not.
    void SetCurrentPage(int page);
    // 0 before one was set.
    int GetCurrentPage() const { return m_currentPage; }
    int GetPageCount() const { return m_pageCount; }
    // Shows what the two numbers ask for.
    void Update();

private:
    template <typename Control>
    Control* MakeChild(const QString& attributes);
    void MakeButtons();
    void ShowButtons(const PagerLayout& layout);
    void OnPageButton(const COptionUI& button);

    int m_pageCount = 0;
    int m_currentPage = 0;
    PagerCounts m_counts;
    bool m_isUpdating = false;
    CButtonUI* m_prevBtn = nullptr;  // children, as all below
    CButtonUI* m_nextBtn = nullptr;
    CLabelUI* m_leftDots = nullptr;
    CLabelUI* m_rightDots = nullptr;
    std::vector<COptionUI*> m_leftButtons;  // also those of the first long run
    std::vector<COptionUI*> m_middleButtons;
    std::vector<COptionUI*> m_rightButtons;
};
