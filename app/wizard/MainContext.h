// What the parts of the main window share.
#pragma once

#include "app/preview/Player.h"
#include "app/tasks/RecoveryState.h"
#include "app/wizard/FileDialogs.h"
#include "ui/windows/WindowImplBase.h"

#include <QString>

#include <bit>
#include <cstdint>
#include <filesystem>
#include <functional>

// What the main window does not do itself; handed in by the start of the program, or by a test.
struct MainServices
{
    IFileDialogs* dialogs = nullptr;  // outlives the window; null for the desktop's
    std::function<void(const std::filesystem::path& file)> playVideo = &PlayVideo;
    std::function<void(const std::filesystem::path& file)> playAudio = &PlayAudio;
    // "item_help", "item_faq", "item_about" or "item_support" of the menu.
    std::function<void(const QString& item)> openMenuItem;
    bool watchesDevices = true;
};

struct MainContext
{
    WindowImplBase& window;
    RecoveryState& state;
    MainServices services;
    int flows = 0;  // that run, one inside the other; see FlowGuard
};

// Stands while something runs that holds on to targets or results across windows of its own: nothing takes them away, and
// nothing else of that kind begins, until it is gone.
class FlowGuard
{
public:
    explicit FlowGuard(MainContext& context) : m_context(context) { ++m_context.flows; }
    FlowGuard(const FlowGuard&) = delete;
    FlowGuard& operator=(const FlowGuard&) = delete;
    ~FlowGuard() { --m_context.flows; }

private:
    MainContext& m_context;
};

// Tags of controls hold pointers.
template <typename Pointed>
std::intptr_t TagOf(const Pointed* pointer)
{
    return std::bit_cast<std::intptr_t>(pointer);
}
template <typename Pointed>
Pointed* PointerOf(std::intptr_t tag)
{
    return std::bit_cast<Pointed*>(tag);
}
