#include "tools/skinview/scenes/Scenes.h"

#include "texts/IniReader.h"
#include "tools/skinview/scenes/MainScenes.h"
#include "ui/controls/LabelUI.h"
#include "ui/controls/RichEditUI.h"
#include "ui/custom/CustomElements.h"
#include "ui/list/ListUI.h"

#include <QApplication>

#include <array>
#include <utility>

namespace {

constexpr IniLimits NoLimits = {1 << 16, 1 << 16};
constexpr int SamplePercent = 42;

// After a text that ends in a colon, as the program writes it.
QString With(const QString& text, const char* value)
{
    return text + QLatin1Char(' ') + QLatin1String(value);
}

void FillProgress(const SceneWindow& window)
{
    if (auto* bar = window.FindControlAs<CProgressUI>(QStringLiteral("progress"))) {
        bar->SetValue(SamplePercent);
    }
}

void FillScan(SceneWindow& window, const SceneTexts& texts, const QString& message)
{
    const QString stage = message == QLatin1String("MSG0703")
                              ? With(texts.Message(message), "card.img")
                              : texts.Message(message, {QStringLiteral("E")});
    SetTexts(window, {{"stage", stage},
                      {"percent", With(texts.Message("MSG0704"), "42%")},
                      {"time", texts.Message("MSG0708") + QStringLiteral("1 Hour 12 Min 20 Sec")},
                      {"sectors", With(texts.Message("MSG0706"), "818405376 / 1953525168")},
                      {"totalfile", With(texts.Message("MSG0707"), "123456")},
                      {"strip", QStringLiteral("F++F+++-+++!++F+++8642????????????????")}});
    FillProgress(window);
}

void FillScanStart(SceneWindow& window, const SceneTexts& texts, const QString& message)
{
    FillScan(window, texts, message);
    SetTexts(window, {{"time", texts.Message("MSG0705")}});
}

void FillSearch(SceneWindow& window, const SceneTexts& texts, const QString& message)
{
    const QString stage = message == QLatin1String("MSG1203")
                              ? With(texts.Message(message), "a.img")
                              : texts.Message(message, {QStringLiteral("12")});
    SetTexts(window, {{"stage", stage}, {"percent", With(texts.Message("MSG1204"), "42%")}});
    FillProgress(window);
}

void FillCopy(SceneWindow& window, const SceneTexts& texts, const QString& message)
{
    SetTexts(window, {{"stage", With(texts.Message("MSG0302"), "E:\\card.img")},
                      {"percent", With(texts.Message("MSG0301"), "42%")},
                      {"time", message == QLatin1String("MSG0304")
                                   ? texts.Message(message)
                                   : With(texts.Message(message), "1 Hour 12 Min 20 Sec")},
                      {"sectors", With(texts.Message("MSG0303"), "818405376 / 1953525168")}});
    FillProgress(window);
}

void FillRescue(SceneWindow& window, const SceneTexts& texts, const QString& message)
{
    const auto text = [&texts](const char* key, const QStringList& values = {}) {
        return SceneTexts::Filled(texts.Text("Extras", QLatin1String(key)), values);
    };
    SetTexts(window,
             {{"title", text("EXT0209")},
              {"stage", With(texts.Message("MSG0302"), "E:\\card.img")},
              {"percent", With(texts.Message("MSG0301"), "42%")},
              {"step", SceneTexts::Filled(texts.Text("Extras", message), {"12 Min 20 Sec"})},
              {"rescued", text("EXT0215", {"118.40 GB", "931.51 GB"})},
              {"unreadable", text("EXT0216", {"123.50 MB", "12345"})},
              {"time", With(text("EXT0217"), "1 Hour 12 Min 20 Sec")},
              {"strip", QStringLiteral("+++++-+++++//+++**++++????????????????")}});
    FillProgress(window);
}

void FillPreview(SceneWindow& window, const SceneTexts& texts, const QString&)
{
    SetTexts(window, {{"FileName", "f0123456.jpg"},
                      {"stage", With(texts.Message("MSG0902"), "f0123456.jpg")},
                      {"percent", With(texts.Message("MSG0901"), "42%")}});
    FillProgress(window);
}

void FillRecovery(SceneWindow& window, const SceneTexts& texts, const QString&)
{
    SetTexts(window, {{"current", "E:\\Recovered\\photo\\f0123456.jpg"},
                      {"percent", With(texts.Message("MSG1101"), "42%")},
                      {"recovered", texts.Message("MSG1102", {"4321", "9876", "4309", "12"})},
                      {"SaveBtn", texts.Text("Extras", QStringLiteral("EXT0251"))},
                      {"Damage", texts.Text("Extras", QStringLiteral("EXT0252"))}});
    FillProgress(window);
}

void FillReport(SceneWindow& window, const SceneTexts& texts, const QString& message)
{
    FillRecovery(window, texts, message);
    SetTexts(window,
             {{"summary", SceneTexts::Filled(texts.Text("Extras", QStringLiteral("EXT0254")),
                                             {"4309", "9876", "3", "E:\\Recovered"})}});
    Show(window, {"FinishBtn", "DetailList", "SaveBtn"}, true);
    Show(window, {"CancelBtn"}, false);
    auto* list = window.FindControlAs<CListUI>(QStringLiteral("DetailList"));
    for (const char* name : {"f0123456.jpg", "f0123457.jpg", "f0123458.cr2", "f0123459.png"}) {
        auto row = std::make_unique<CListUI::Row>();
        row->SetColumnText(0, QLatin1String(name));
        row->SetColumnText(1, QStringLiteral("Success"));
        row->SetColumnText(
            2, SceneTexts::Filled(texts.Text("Extras", QStringLiteral("EXT0253")), {"123.40 KB"}));
        std::unique_ptr<CControlUI> child = std::move(row);
        list->Add(child);
    }
}

void FillBox(SceneWindow& window, const SceneTexts& texts, const QString& message)
{
    static constexpr std::array<std::pair<const char*, const char*>, 5> Titles = {{
        {"Error", "MSG0401"},
        {"Confirm", "MSG0402"},
        {"Information", "MSG0403"},
        {"Question", "MSG0404"},
        {"Warning", "MSG0405"},
    }};
    for (const auto& [kind, title] : Titles) {
        if (window.GetSkinFile().contains(QLatin1String(kind))) {
            SetTexts(window, {{"title", texts.Message(title)}});
        }
    }
    const bool isExtra = message.startsWith(QLatin1String("EXT"));
    SetTexts(window, {{"message", isExtra ? SceneTexts::Filled(texts.Text("Extras", message),
                                                               {"118.40 GB", "931.51 GB"})
                                          : texts.Message(message)}});
}

void FillPicture(SceneWindow& window, const SceneTexts&, const QString&)
{
    SetTexts(window, {{"FileName", "f0123456.jpg"}});
    window.FindControlAs<CRichEditUI>(QStringLiteral("PreviewEdit"))
        ->InsertPicture(SamplePicture(), -1, -1);
}

void FillNothing(SceneWindow&, const SceneTexts&, const QString&) {}

struct Box
{
    const char* message;
    const char* kind;
    QSize size;
};

const Box Boxes[] = {
    {"MSG0214", "Question", {400, 150}},    {"MSG0216", "Information", {400, 130}},
    {"MSG0217", "Information", {300, 130}}, {"MSG0218", "Information", {300, 130}},
    {"MSG0219", "Information", {300, 130}}, {"MSG0220", "Information", {300, 130}},
    {"MSG0221", "Information", {300, 130}}, {"MSG0306", "Question", {350, 130}},
    {"MSG0504", "Warning", {300, 130}},     {"MSG0505", "Information", {400, 130}},
    {"MSG0709", "Question", {350, 130}},    {"MSG0805", "Confirm", {450, 150}},
    {"MSG0903", "Question", {350, 150}},    {"MSG1103", "Question", {350, 150}},
    {"MSG1205", "Question", {350, 150}},    {"MSG1206", "Question", {350, 150}},
    {"MSG1207", "Error", {350, 130}},       {"EXT0204", "Question", {400, 150}},
    {"EXT0205", "Confirm", {450, 150}},     {"EXT0206", "Question", {400, 150}},
    {"EXT0207", "Question", {450, 150}},    {"EXT0208", "Question", {450, 150}},
    {"EXT0219", "Question", {350, 150}},    {"EXT0220", "Information", {450, 150}},
    {"EXT0223", "Information", {450, 150}}, {"EXT0231", "Information", {450, 150}},
    {"EXT0233", "Information", {450, 150}}, {"EXT0235", "Information", {450, 150}},
    {"EXT0241", "Question", {450, 150}},
};

}  // namespace

SceneWindow::SceneWindow(QString file) : m_file(std::move(file)) {}

std::unique_ptr<CControlUI> SceneWindow::CreateControl(const QString& element,
                                                       const std::shared_ptr<Skin>& skin)
{
    auto control = MakeCustomControl(element, skin);
    return control ? std::move(control) : MakeMenuControl(element, skin);
}

SceneTexts::SceneTexts(const std::filesystem::path& file)
{
    const IniReader reader = IniReader::FromFile(file);
    for (const std::string& name : reader.SectionNames(NoLimits)) {
        for (const std::string& line : reader.Lines(name, NoLimits)) {
            const IniPair pair = SplitIniLine(line);
            m_sections[name].Set(pair.key, pair.value);
        }
    }
}

std::vector<std::string> SceneTexts::SectionNames() const
{
    std::vector<std::string> names;
    for (const auto& [name, section] : m_sections) {
        names.push_back(name);
    }
    return names;
}

const LanguageSection& SceneTexts::Section(const std::string& name) const
{
    static const LanguageSection none;
    const auto found = m_sections.find(name);
    return found == m_sections.end() ? none : found->second;
}

QString SceneTexts::Text(const std::string& section, const QString& key) const
{
    for (const auto& [name, text] : Section(section).Entries()) {
        if (name == key.toStdString()) {
            return QString::fromStdString(text);
        }
    }
    return {};
}

QString SceneTexts::Filled(const QString& text, const QStringList& values)
{
    QString filled;
    qsizetype next = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == QLatin1Char('%') && i + 1 < text.size()) {
            ++i;
            filled += text[i] == QLatin1Char('%') ? QStringLiteral("%") : values.value(next++);
        } else {
            filled += text[i];
        }
    }
    return filled;
}

std::vector<Scene> AllScenes()
{
    const QSize main(1000, 650);
    const QSize large(1600, 1000);
    std::vector<Scene> scenes = {
        {"start", "skin", main, "MainWnd", FillStart, "MSG0101"},
        {"start-image", "skin", main, "MainWnd", FillStart, "MSG0102"},
        {"drives", "skin", main, "MainWnd", FillDrives, {}},
        {"create-image", "skin", main, "MainWnd", FillCreateImage, {}},
        {"types", "skin", main, "MainWnd", FillTypes, {}},
        {"results", "skin", main, "MainWnd", FillResults, {}},
        {"drives-large", "skin", large, "MainWnd", FillDrives, {}},
        {"types-large", "skin", large, "MainWnd", FillTypes, {}},
        {"results-large", "skin", large, "MainWnd", FillResults, {}},
        {"scan", "ScanProcessWnd", {350, 250}, "ScanWnd", FillScan, "MSG0701"},
        {"scan-number", "ScanProcessWnd", {350, 250}, "ScanWnd", FillScanStart, "MSG0702"},
        {"scan-image", "ScanProcessWnd", {350, 250}, "ScanWnd", FillScan, "MSG0703"},
        {"search", "SearchProcessWnd", {370, 200}, "SearchProcessWnd", FillSearch, "MSG1201"},
        {"search-number",
         "SearchProcessWnd",
         {370, 200},
         "SearchProcessWnd",
         FillSearch,
         "MSG1202"},
        {"search-image", "SearchProcessWnd", {370, 200}, "SearchProcessWnd", FillSearch, "MSG1203"},
        {"recovery", "RecoverProcessWnd", {500, 220}, "RecoverProcessWnd", FillRecovery, {}},
        {"recovery-single", "RecoverProcessWnd", {500, 200}, "RecoverProcessWnd", FillRecovery, {}},
        {"report", "RecoverProcessWnd", {760, 620}, "RecoverProcessWnd", FillReport, {}},
        {"preview", "PreviewProcessWnd", {370, 200}, "PreviewProcessWnd", FillPreview, {}},
        {"copy", "CreateImageProcessWnd", {450, 250}, "CreateImageWnd", FillCopy, "MSG0305"},
        {"copy-start", "CreateImageProcessWnd", {450, 250}, "CreateImageWnd", FillCopy, "MSG0304"},
        {"rescue", "RescueProcessWnd", {450, 270}, "CreateImageWnd", FillRescue, "EXT0213"},
        {"rescue-hangs", "RescueProcessWnd", {450, 270}, "CreateImageWnd", FillRescue, "EXT0218"},
        {"picture", "PreviewWnd", {600, 500}, "", FillPicture, {}},
        {"thanks", "LikeItWnd", {520, 230}, "", FillNothing, {}},
    };
    for (const Box& box : Boxes) {
        scenes.push_back({QStringLiteral("box-") + QLatin1String(box.message),
                          QStringLiteral("MessageBox_") + QLatin1String(box.kind), box.size,
                          "MessageBox", FillBox, QLatin1String(box.message)});
    }
    return scenes;
}

std::unique_ptr<SceneWindow> MakeScene(const Scene& scene, const SceneTexts& texts)
{
    auto window =
        std::make_unique<SceneWindow>(QStringLiteral("xml/") + scene.file + QStringLiteral(".xml"));
    if (!window->Create(nullptr, scene.size.width(), scene.size.height())) {
        return nullptr;
    }
    window->ApplyLanguage(texts.Section(scene.section));
    scene.fill(*window, texts, scene.message);
    // The layouts learn of the new texts when they are asked for.
    window->ensurePolished();
    QApplication::processEvents();
    return window;
}
