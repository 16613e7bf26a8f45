#include "app/online/OnlineConfig.h"

#include "app/online/Site.h"
#include "platform/Folders.h"
#include "platform/HttpGet.h"

#include <QSettings>
#include <QString>
#include <json/json.h>

#include <memory>

namespace {

constexpr char AgentName[] = "codegurubrowser1.0";
constexpr char DocumentFolder[] = "/swconfig";
constexpr char DocumentName[] = "/lv4win.json";
constexpr char HelpPage[] = "/user-guide.html";
constexpr char ProductPage[] = "/lumivault.html";
constexpr std::size_t MostDocumentBytes = std::size_t{1024} * 1024;
constexpr int MostOverrideBytes = 4096;

// What is no text counts as missing.
std::string TextOf(const Json::Value& document, const char* key)
{
    const Json::Value& value = document[key];
    return value.isString() ? value.asString() : std::string();
}

}  // namespace

std::string_view MakerSite()
{
    return MakerSiteOfBuild;
}

const OnlineConfig& OnlineConfig::GetInstance()
{
    static const OnlineConfig config{std::string(MakerSite()), DocumentOverride()};
    return config;
}

OnlineConfig::OnlineConfig(const std::string& site, const std::string& override)
{
    if (site.empty()) {
        return;
    }
    const std::string folder = site + DocumentFolder;
    m_documentUrl = override.starts_with(folder) ? override : folder + DocumentName;
    const std::optional<std::string> document = Fetch(m_documentUrl);
    if (!document || !TakeDocument(*document)) {
        TakeDefaults(site);
    }
}

// The length that the server announces decides: without one there is no document, and what comes beyond it does not count.
std::optional<std::string> OnlineConfig::Fetch(const std::string& address)
{
    HttpAnswer answer = HttpGet(address, AgentName, MostDocumentBytes);
    if (!answer.answered || !answer.announced) {
        return std::nullopt;
    }
    if (answer.body.size() > *answer.announced) {
        answer.body.resize(*answer.announced);
    }
    return std::move(answer.body);
}

bool OnlineConfig::TakeDocument(const std::string& document)
{
    // The reader is bounded in depth by itself and throws beyond it.
    try {
        Json::CharReaderBuilder builder;
        builder["collectComments"] = true;
        const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
        Json::Value root;
        std::string errors;
        const char* begin = document.data();
        if (!reader->parse(begin, begin + document.size(), &root, &errors) || !root.isObject()) {
            return false;
        }
        m_helpUrl = TextOf(root, "helpURL");
        m_siteUrl = TextOf(root, "siteURL");
        m_faqUrl = TextOf(root, "faqURL");
        m_homeUrl = m_siteUrl;
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

void OnlineConfig::TakeDefaults(const std::string& site)
{
    m_homeUrl = site;
    m_helpUrl = site + HelpPage;
    m_faqUrl = site + HelpPage;
    m_siteUrl = site + ProductPage;
}

std::string DocumentOverride()
{
    const std::filesystem::path file = ConfigurationFolder() / "Orvanta" / "Orvanta Lumivault.conf";
    const QSettings settings(QString::fromStdString(file.string()), QSettings::IniFormat);
    const std::string value = settings.value("ApplicationURL").toString().toStdString();
    return value.size() <= MostOverrideBytes ? value : std::string();
}
