#include "app/process/HelpPages.h"

#include "app/online/OnlineConfig.h"
#include "app/popups/MessageBox.h"
#include "platform/Folders.h"
#include "platform/InstallPaths.h"
#include "platform/Version.h"
#include "texts/LanguageManager.h"
#include "texts/TextFormat.h"

#include <QDesktopServices>
#include <QUrl>

#include <filesystem>
#include <string>
#include <string_view>

namespace {

std::string Text(std::string_view key)
{
    return LanguageManager::GetInstance().GetSection("Desktop").Get(key);
}

void Tell(QWidget* parent, const std::string& text)
{
    CMessageBox::Show(parent, CMessageBox::Information, {}, QString::fromStdString(text), 450, 180);
}

// The document comes from the network: it may name pages, not files or programs.
void OpenPage(const std::string& address)
{
    const QUrl url(QString::fromStdString(address), QUrl::StrictMode);
    if (url.isValid() && (url.scheme() == "https" || url.scheme() == "http")) {
        QDesktopServices::openUrl(url);
    }
}

void OpenInstalledGuide(QWidget* parent)
{
    const std::filesystem::path folder = InstalledPath(DocumentationBelowPrefix);
    // Each language names the page that is written in it, if there is one.
    const std::filesystem::path own =
        LanguageManager::GetInstance().GetSection("Extras").Get("EXT0282");
    std::filesystem::path guide = folder / own.filename();
    if (own.extension() != ".html" || !PathExists(guide)) {
        guide = folder / "user-guide.html";
    }
    if (PathExists(guide)) {
        QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(guide.string())));
    } else {
        Tell(parent, FormatText(Text("DSK0301"), (folder / "README.md").string()));
    }
}

}  // namespace

void OpenHelpPage(QWidget* parent, const QString& item)
{
    const bool about = item == "item_about";
    if (MakerSite().empty()) {
        if (about) {
            Tell(parent, FormatText(Text("DSK0302"), std::string_view(LumivaultVersion)));
        } else {
            OpenInstalledGuide(parent);
        }
        return;
    }
    const OnlineConfig& config = OnlineConfig::GetInstance();
    OpenPage(about                ? config.GetSiteUrl()
             : item == "item_faq" ? config.GetFaqUrl()
                                  : config.GetHelpUrl());
}
