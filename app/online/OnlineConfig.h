// The addresses behind the help menu: a small document on the maker's site names them, so that they can change after a release.
//
// The maker's site is a setting of the build, and empty by default: then nothing is ever fetched, and there are no addresses.
#pragma once

#include <optional>
#include <string>
#include <string_view>

// Of this build: "https://..." without a "/" at its end, or empty.
std::string_view MakerSite();

// User-interface thread.
class OnlineConfig
{
public:
    // Made on first use, which fetches the document and takes as long as the network does, at most a few seconds.
    static const OnlineConfig& GetInstance();

    // For a site. override is where the user wants the document to be taken from: it counts only below the site's own
    // folder of such documents.
    OnlineConfig(const std::string& site, const std::string& override);

    const std::string& GetHomeUrl() const { return m_homeUrl; }
    // Empty when there is none: the menu opens nothing then.
    const std::string& GetHelpUrl() const { return m_helpUrl; }
    const std::string& GetSiteUrl() const { return m_siteUrl; }
    const std::string& GetFaqUrl() const { return m_faqUrl; }

private:
    static std::optional<std::string> Fetch(const std::string& address);
    bool TakeDocument(const std::string& document);
    void TakeDefaults(const std::string& site);

    std::string m_homeUrl;
    std::string m_helpUrl;
    std::string m_siteUrl;
    std::string m_faqUrl;
    std::string m_documentUrl;
};

// The user's setting that the document's address is taken from; empty when there is none.
std::string DocumentOverride();
