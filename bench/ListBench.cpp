// A list of a hundred thousand rows, as a user waits for it: shown, sorted by name and by size, all ticked.
#include "bench/QtStart.h"
#include "ui/list/ListUI.h"
#include "ui/package/SkinPackage.h"

#include <QApplication>
#include <QImage>
#include <benchmark/benchmark.h>

namespace {

constexpr int RowCount = 100000;
constexpr int Columns = 7;

// Names in no order, the same in every run.
std::vector<std::unique_ptr<CListUI::Row>> MakeRows()
{
    std::vector<std::unique_ptr<CListUI::Row>> rows;
    rows.reserve(RowCount);
    std::uint32_t number = 1;
    for (int i = 0; i < RowCount; ++i) {
        number = number * 1664525 + 1013904223;
        auto row = std::make_unique<CListUI::Row>();
        row->SetTag(static_cast<std::intptr_t>(number >> 8));
        row->SetColumnText(1, QStringLiteral("IMG_%1.jpg").arg(number >> 8));
        for (int column = 2; column < Columns; ++column) {
            row->SetColumnText(column, QStringLiteral("2024-5-17 08:30:12"));
        }
        row->SetColumnImage(1, QStringLiteral("file='FileIcon/jpg.png'"));
        rows.push_back(std::move(row));
    }
    return rows;
}

class ListOfRows
{
public:
    ListOfRows()
    {
        StartQt();
        list = std::make_unique<CListUI>(std::make_shared<Skin>(SkinPackage::Embedded()));
        auto header = std::make_unique<CListHeaderUI>(list->SharedSkin());
        CListHeaderUI* columns = header.get();
        std::unique_ptr<CControlUI> child = std::move(header);
        list->Add(child);
        for (int i = 0; i < Columns; ++i) {
            std::unique_ptr<CControlUI> item = std::make_unique<CListHeaderItemUI>();
            columns->Add(item);
        }
        columns->OnBuilt();
        list->SetCheckColumn(0);
        list->resize(700, 400);
        list->show();
    }
    void Draw()
    {
        QApplication::processEvents();
        list->render(&image);
    }

    std::unique_ptr<CListUI> list;
    QImage image = QImage(700, 400, QImage::Format_ARGB32_Premultiplied);
};

int ByName(const CListUI::Row& a, const CListUI::Row& b, std::intptr_t direction)
{
    return static_cast<int>(direction) *
           a.GetColumnText(1).compare(b.GetColumnText(1), Qt::CaseInsensitive);
}

int BySize(const CListUI::Row& a, const CListUI::Row& b, std::intptr_t direction)
{
    const auto difference = (a.GetTag() - b.GetTag()) * direction;
    return difference < 0 ? -1 : static_cast<int>(difference > 0);
}

void ListShowsRows(benchmark::State& state)
{
    ListOfRows rows;
    for (auto pass : state) {
        (void)pass;
        rows.list->RemoveAll();
        rows.list->AddRows(MakeRows());
        rows.Draw();
    }
}

void SortRows(benchmark::State& state, CListUI::RowCompare compare)
{
    ListOfRows rows;
    rows.list->AddRows(MakeRows());
    rows.Draw();
    std::intptr_t direction = 1;
    for (auto pass : state) {
        (void)pass;
        rows.list->SortItems(compare, direction);
        rows.Draw();
        direction = -direction;
    }
}

void ListSortsByName(benchmark::State& state)
{
    SortRows(state, ByName);
}

void ListSortsBySize(benchmark::State& state)
{
    SortRows(state, BySize);
}

void ListTicksAllRows(benchmark::State& state)
{
    ListOfRows rows;
    rows.list->AddRows(MakeRows());
    rows.Draw();
    bool isChecked = true;
    for (auto pass : state) {
        (void)pass;
        for (int i = 0; i < rows.list->GetCount(); ++i) {
            rows.list->GetItemAt(i)->SetChecked(isChecked);
        }
        rows.Draw();
        isChecked = !isChecked;
    }
}

BENCHMARK(ListShowsRows)->Unit(benchmark::kMillisecond);
BENCHMARK(ListSortsByName)->Unit(benchmark::kMillisecond);
BENCHMARK(ListSortsBySize)->Unit(benchmark::kMillisecond);
BENCHMARK(ListTicksAllRows)->Unit(benchmark::kMillisecond);

}  // namespace
