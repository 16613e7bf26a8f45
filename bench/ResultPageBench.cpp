// The page of results with a hundred thousand files, through the real main window: shown, sorted, all ticked, and the memory
// that it takes above the empty window.
#include "app/popups/Messages.h"
#include "app/popups/PopUpWnd.h"
#include "app/wizard/MainWnd.h"
#include "bench/QtStart.h"
#include "ui/controls/ButtonUI.h"
#include "ui/controls/EditUI.h"
#include "ui/list/ListUI.h"

#include <QApplication>
#include <QImage>
#include <benchmark/benchmark.h>

#include <fstream>
#include <string>

namespace {

constexpr int FileCount = 100000;

// In MiB.
double ResidentMemory()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmRSS:")) {
            return std::stod(line.substr(6)) / 1024;
        }
    }
    return 0;
}

// Names in no order, the same in every run.
std::vector<FoundRow> MakeResults()
{
    std::vector<FoundRow> results(FileCount);
    std::uint32_t number = 1;
    for (std::size_t i = 0; i < results.size(); ++i) {
        number = number * 1664525 + 1013904223;
        FileRecord& record = results[i].record;
        record.SetName("IMG_" + std::to_string(number >> 8) + ".jpg");
        record.FileSize = number >> 4;
        record.WriteTime = record.CreationTime =
            133000000000000000 + std::uint64_t{number} * 10000000;
        record.EngineKind = EngineKindCarved;
        results[i].at = {EngineKindCarved, static_cast<std::uint32_t>(i + 1)};
    }
    return results;
}

class MainWindow
{
public:
    MainWindow()
    {
        StartQt();
        MainServices services;
        services.watchesDevices = false;
        window = std::make_unique<CMainWnd>(session, std::move(services));
        window->Create(nullptr);
        window->show();
        while (window->IsListingDisks()) {
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        window->SendNotify(*window->FindControl("BtnRecoverMode"), NotifyClick);
        Draw();
    }
    // With what follows from it: the first file is fetched for its preview.
    void Show()
    {
        window->HandleMessage(WM_SEARCH_DONE, 0, 0);
        Draw();
    }
    // Without the pictures themselves, which come one by one and take no more than is set aside for them.
    void ShowGrid(bool isGrid)
    {
        window->FindControlAs<COptionUI>("OptGrid")->Selected(isGrid);
        Draw();
    }
    void Click(const char* header)
    {
        window->FindControl(header)->SendNotify(NotifyHeaderClick);
        Draw();
    }
    void Draw()
    {
        do {
            QApplication::processEvents();
        } while (CPopUpWnd::IsAnyModal());
        window->render(&image);
    }

    Session session;
    std::unique_ptr<CMainWnd> window;
    QImage image = QImage(1000, 650, QImage::Format_ARGB32_Premultiplied);
};

void ResultPageShows(benchmark::State& state)
{
    MainWindow main;
    main.window->State().results = MakeResults();
    for (auto pass : state) {
        (void)pass;
        main.Show();
    }
}

// Says something only as the first of its process: memory that was used before is used again. It is registered first.
void ResultPageMemory(benchmark::State& state)
{
    MainWindow main;
    const double empty = ResidentMemory();
    for (auto pass : state) {
        (void)pass;
        main.window->State().results = MakeResults();
        main.Show();
        state.counters["MiB_shown"] = ResidentMemory() - empty;
        main.Click("FileName");
        state.counters["MiB_sorted"] = ResidentMemory() - empty;
        main.Click("CheckAll");
        state.counters["MiB_ticked"] = ResidentMemory() - empty;
        main.ShowGrid(true);
        state.counters["MiB_grid"] = ResidentMemory() - empty;
    }
}

void ResultPageShowsGrid(benchmark::State& state)
{
    MainWindow main;
    main.window->State().results = MakeResults();
    main.Show();
    for (auto pass : state) {
        (void)pass;
        main.ShowGrid(true);
        state.PauseTiming();
        main.ShowGrid(false);
        state.ResumeTiming();
    }
}

// As ResultPageShows, while the grid is on.
void ResultPageShowsInGrid(benchmark::State& state)
{
    MainWindow main;
    main.window->State().results = MakeResults();
    main.Show();
    main.ShowGrid(true);
    for (auto pass : state) {
        (void)pass;
        main.Show();
    }
}

void ResultPageSorts(benchmark::State& state, const char* header)
{
    MainWindow main;
    main.window->State().results = MakeResults();
    main.Show();
    for (auto pass : state) {
        (void)pass;
        main.Click(header);
    }
}

void ResultPageSortsByName(benchmark::State& state)
{
    ResultPageSorts(state, "FileName");
}

void ResultPageSortsBySize(benchmark::State& state)
{
    ResultPageSorts(state, "Size");
}

void ResultPageSortsByType(benchmark::State& state)
{
    ResultPageSorts(state, "Type");
}

void ResultPageTicksAll(benchmark::State& state)
{
    MainWindow main;
    main.window->State().results = MakeResults();
    main.Show();
    for (auto pass : state) {
        (void)pass;
        main.Click("CheckAll");
        state.PauseTiming();
        main.Click("CheckAll");
        state.ResumeTiming();
    }
}

// A key that leaves most of the names, and one that takes it back; all are ticked, which is looked up for each row.
void ResultPageFilters(benchmark::State& state)
{
    MainWindow main;
    main.window->State().results = MakeResults();
    main.Show();
    main.Click("CheckAll");
    auto* list = main.window->FindControlAs<CListUI>("FileList");
    auto* field = main.window->FindControlAs<CEditUI>("FilterEdit");
    for (auto pass : state) {
        (void)pass;
        field->setText("1");
        while (list->GetCount() == FileCount) {
            QApplication::processEvents();  // until the pause in typing is over
        }
        main.Draw();
        field->clear();
        main.Draw();
    }
}

// Every second file is a double; in most searches they are far fewer.
void ResultPageHidesDoubles(benchmark::State& state)
{
    MainWindow main;
    std::vector<FoundRow> results = MakeResults();
    for (std::size_t i = 0; i < results.size(); i += 2) {
        results[i].doubleOf = results[i + 1].at;
    }
    main.window->State().results = std::move(results);
    main.Show();
    main.Click("CheckAll");
    auto* option = main.window->FindControlAs<COptionUI>("OptHideDoubles");
    for (auto pass : state) {
        (void)pass;
        option->Selected(!option->IsSelected());
        main.Draw();
    }
}

BENCHMARK(ResultPageMemory)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(ResultPageShows)->Unit(benchmark::kMillisecond);
BENCHMARK(ResultPageShowsGrid)->Unit(benchmark::kMillisecond);
BENCHMARK(ResultPageShowsInGrid)->Unit(benchmark::kMillisecond);
BENCHMARK(ResultPageSortsByName)->Unit(benchmark::kMillisecond);
BENCHMARK(ResultPageSortsBySize)->Unit(benchmark::kMillisecond);
BENCHMARK(ResultPageSortsByType)->Unit(benchmark::kMillisecond);
BENCHMARK(ResultPageTicksAll)->Unit(benchmark::kMillisecond);
BENCHMARK(ResultPageFilters)->Unit(benchmark::kMillisecond);
BENCHMARK(ResultPageHidesDoubles)->Unit(benchmark::kMillisecond);

}  // namespace
