// What the main window is made of, tied together.
#pragma once

#include "app/wizard/CreateImageFlow.h"
#include "app/wizard/DiskRefresh.h"
#include "app/wizard/DiskRows.h"
#include "app/wizard/ImageArrivals.h"
#include "app/wizard/ImagePartsListing.h"
#include "app/wizard/InlinePreview.h"
#include "app/wizard/MainContext.h"
#include "app/wizard/RestoreFlow.h"
#include "app/wizard/ResultPage.h"
#include "app/wizard/ScanFlow.h"
#include "app/wizard/ThumbnailGrid.h"
#include "app/wizard/TypePage.h"
#include "app/wizard/WizardPages.h"

struct MainParts
{
    // The window's controls are there.
    explicit MainParts(MainContext& mainContext);
    MainParts(const MainParts&) = delete;
    MainParts& operator=(const MainParts&) = delete;
    // Lets go of the results.
    ~MainParts();

    // From the page of modes to the list of disks.
    void EnterMode(WizardMode mode);
    // Goes on with an image that has just been made.
    void UseImage(const std::filesystem::path& path);
    // Lists images that have come from outside, and selects the last one.
    void LoadImages(const std::vector<std::filesystem::path>& images);
    void RewriteTexts();

    MainContext& context;
    WizardPages pages;
    TypePage types;
    DiskRows disks;
    ResultPage results;
    ThumbnailGrid grid;
    ScanFlow scan;
    RestoreFlow restore;
    CreateImageFlow image;
    InlinePreview preview;
    DiskRefresh refresh;
    ImagePartsListing imageParts;
    ImageArrivals arrivals;

private:
    DiskRefresh::Owner MakeRefreshOwner();
    void Apply(const DiskRefresh::Listed& listed);
    void TellNotListed();
    void AddImageParts(char16_t imageId, const TargetParts& parts);

    bool m_knowsNotListed = false;  // the user, since the last list that could be made
};
