// Image files that come from outside of the window: dropped on it, named at the start, or handed over by a second start. They
// wait until no other window and no task is in front.
#pragma once

#include "app/wizard/MainContext.h"

#include <filesystem>
#include <functional>
#include <vector>

class QMimeData;

// User-interface thread.
class ImageArrivals
{
public:
    // load is called with those that are files.
    ImageArrivals(MainContext& context,
                  std::function<void(const std::vector<std::filesystem::path>& images)> load);

    void Take(const std::vector<std::filesystem::path>& paths);
    // What WM_OPEN_IMAGES asks for.
    void Open();

    // The local files that are dragged, as far as there are not too many of them.
    static std::vector<std::filesystem::path> FilesOf(const QMimeData& data);

private:
    void AskForOpening() const;

    MainContext& m_context;
    std::function<void(const std::vector<std::filesystem::path>& images)> m_load;
    std::vector<std::filesystem::path> m_waiting;
};
