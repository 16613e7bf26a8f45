// Restores what is ticked: asks for the folder, warns of one that lies on a source, and opens the window that does the work.
#pragma once

#include "app/wizard/MainContext.h"
#include "session/RestoreFiles.h"

#include <cstdint>

class RestoreFlow
{
public:
    explicit RestoreFlow(MainContext& context) : m_context(context) {}

    void Start();
    // Asks for the folder with all its questions and stores it in the state. False when nothing is to be restored.
    bool AskFolder(QWidget* parent, std::uint64_t neededBytes);

private:
    bool MayWriteTo(const std::filesystem::path& folder, QWidget* parent) const;
    bool MayFill(const DestinationRoom& room, QWidget* parent) const;

    MainContext& m_context;
};
