// Copies the current row of the list of disks into an image file, and offers to go on with that.
#pragma once

#include "app/popups/MessageBox.h"
#include "app/wizard/CreateImageChecks.h"
#include "app/wizard/DiskRows.h"
#include "app/wizard/MainContext.h"

#include <functional>

class CreateImageFlow
{
public:
    // useImage is called when the user wants to scan what was made.
    CreateImageFlow(MainContext& context,
                    DiskRows& disks,
                    std::function<void(const std::filesystem::path& image)> useImage);

    // targetChosen: a target has been selected since the start.
    void Start(bool targetChosen);

private:
    int Ask(CMessageBox::Kind kind, const std::string& message, int width, int height) const;
    // False: back to the dialog.
    bool MayWrite(const ImageSource& source, const std::filesystem::path& file) const;
    enum class Earlier  // rescue into that file
    {
        None,
        GoOn,
        Drop,
        NotThere  // back to the dialog
    };

    Earlier AskForEarlier(const ImageSource& source, const std::filesystem::path& file) const;
    void Copy(const ImageSource& source, const std::filesystem::path& file);
    void OfferImage(const std::filesystem::path& file) const;
    // Copies what can be read, also around faults, and tells what became of it.
    void Rescue(const ImageSource& source,
                const std::filesystem::path& file,
                std::optional<std::uint64_t> copiedBytes);

    MainContext& m_context;
    DiskRows& m_disks;
    std::function<void(const std::filesystem::path& image)> m_useImage;
};
