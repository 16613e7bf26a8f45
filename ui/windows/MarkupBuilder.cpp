#include "ui/windows/MarkupBuilder.h"

#include <QXmlStreamReader>

#include <utility>
#include <vector>

namespace {

constexpr std::size_t MaxFileBytes = std::size_t{4} << 20;
constexpr std::size_t MaxDepth = 64;
constexpr int MaxControls = 20000;
constexpr std::size_t MaxOpenFiles = 8;
constexpr int MaxFiles = 64;

QByteArray ToByteArray(const std::vector<std::uint8_t>& bytes)
{
    QByteArray array;
    array.reserve(static_cast<qsizetype>(bytes.size()));
    for (const std::uint8_t byte : bytes) {
        array.append(static_cast<char>(byte));
    }
    return array;
}

std::vector<MarkupAttribute> AttributesOf(const QXmlStreamReader& reader, const Skin& skin)
{
    std::vector<MarkupAttribute> attributes;
    for (const QXmlStreamAttribute& attribute : reader.attributes()) {
        attributes.push_back(
            {attribute.name().toString(), skin.WithColors(attribute.value().toString())});
    }
    return attributes;
}

QString ValueOf(const std::vector<MarkupAttribute>& attributes, QLatin1String name)
{
    for (const MarkupAttribute& attribute : attributes) {
        if (attribute.name == name) {
            return attribute.value;
        }
    }
    return {};
}

}  // namespace

// One build. Files and elements that are open lie on stacks, so that no markup can make the program's own stack grow.
class MarkupBuilder::Run
{
public:
    Run(MarkupBuilder& builder, CControlUI& root) : m_builder(builder), m_root(root) {}

    bool Build(const QString& file)
    {
        if (!OpenFile(file)) {
            return false;
        }
        while (!m_files.empty()) {
            if (!Step()) {
                return false;
            }
        }
        m_root.OnBuilt();
        return true;
    }

private:
    struct OpenFileEntry
    {
        QString name;
        std::unique_ptr<QXmlStreamReader> reader;
    };

    bool OpenFile(const QString& name)
    {
        const auto bytes = m_builder.m_skin->Package().Read(name);
        if (!bytes || bytes->size() > MaxFileBytes) {
            m_builder.m_problems.append(QStringLiteral("%1: cannot be read").arg(name));
            return false;
        }
        m_files.push_back({name, std::make_unique<QXmlStreamReader>(ToByteArray(*bytes))});
        ++m_fileCount;
        return true;
    }

    void Tell(const QString& problem)
    {
        m_builder.m_problems.append(QStringLiteral("%1:%2: %3")
                                        .arg(m_files.back().name)
                                        .arg(m_files.back().reader->lineNumber())
                                        .arg(problem));
    }

    bool Step()
    {
        QXmlStreamReader& reader = *m_files.back().reader;
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            return StartElement(reader);
        case QXmlStreamReader::EndElement:
            EndElement();
            return true;
        case QXmlStreamReader::EndDocument:
            if (m_files.size() == 1) {
                ReadWindow();
            }
            m_files.pop_back();
            return true;
        case QXmlStreamReader::DTD:
            // It could define texts that grow without end, and no skin needs one.
            Tell(QStringLiteral("has a document type"));
            return false;
        case QXmlStreamReader::Invalid:
            Tell(reader.errorString());
            return false;
        default:
            return true;
        }
    }

    bool StartElement(QXmlStreamReader& reader)
    {
        const QString element = reader.name().toString();
        const std::vector<MarkupAttribute> attributes = AttributesOf(reader, *m_builder.m_skin);
        if (m_open.size() >= MaxDepth || m_controlCount >= MaxControls) {
            Tell(QStringLiteral("too many elements"));
            return false;
        }
        if (element == QLatin1String("Include")) {
            m_open.push_back(nullptr);
            return Include(ValueOf(attributes, QLatin1String("source")));
        }
        CControlUI* made = nullptr;
        if (!ReadStructure(element, attributes)) {
            made = MakeControl(element, attributes);
            if (made == nullptr) {
                reader.skipCurrentElement();
                return true;
            }
        }
        m_open.push_back(made);
        return true;
    }

    void EndElement()
    {
        CControlUI* control = m_open.back();
        m_open.pop_back();
        if (control != nullptr) {
            control->OnBuilt();
        }
    }

    bool Include(const QString& name)
    {
        if (m_files.size() >= MaxOpenFiles || m_fileCount >= MaxFiles) {
            Tell(QStringLiteral("includes too much"));
            return false;
        }
        // The rest of the window is of use without it.
        OpenFile(name);
        return true;
    }

    // What makes no control.
    bool ReadStructure(const QString& element, const std::vector<MarkupAttribute>& attributes)
    {
        Skin& skin = *m_builder.m_skin;
        const QString name = ValueOf(attributes, QLatin1String("name"));
        if (element == QLatin1String("Window")) {
            // That of an included file only holds its controls together.
            if (m_files.size() == 1) {
                m_windowAttributes = attributes;
            }
        } else if (element == QLatin1String("Font")) {
            skin.AddFont(name, ParseNumber(ValueOf(attributes, QLatin1String("size"))),
                         ParseTruth(ValueOf(attributes, QLatin1String("bold"))),
                         ParseTruth(ValueOf(attributes, QLatin1String("default"))));
        } else if (element == QLatin1String("Color")) {
            if (!skin.AddColor(name, ValueOf(attributes, QLatin1String("value")))) {
                Tell(QStringLiteral("%1 is no colour").arg(name));
            }
        } else if (element == QLatin1String("Style")) {
            skin.SetStyle(name, ListOf(attributes));
        } else if (element == QLatin1String("Default")) {
            skin.SetDefault(name, ListOf(attributes));
        } else {
            return element == QLatin1String("Styles");
        }
        return true;
    }

    // The attributes that a style or default stands for: those in its value, then its own.
    static std::vector<MarkupAttribute> ListOf(const std::vector<MarkupAttribute>& attributes)
    {
        std::vector<MarkupAttribute> list =
            ParseAttributeList(ValueOf(attributes, QLatin1String("value")));
        for (const MarkupAttribute& attribute : attributes) {
            if (attribute.name != QLatin1String("name") &&
                attribute.name != QLatin1String("value")) {
                list.push_back(attribute);
            }
        }
        return list;
    }

    // When all else is read, for the window may name colours that stand in it or in a file that it includes.
    void ReadWindow()
    {
        using Setter = AttributeSetter<WindowSettings>;
        static constexpr std::array<Setter, 5> Table = {{
            {"size",
             [](WindowSettings& window, const QString& text) { window.size = ParseSize(text); }},
            {"mininfo",
             [](WindowSettings& window, const QString& text) { window.minimum = ParseSize(text); }},
            // "left,top,right,height"
            {"caption",
             [](WindowSettings& window, const QString& text) {
                 window.captionHeight = ParseMargins(text).bottom();
             }},
            {"sizebox", [](WindowSettings& window,
                           const QString& text) { window.sizeBorder = ParseMargins(text).left(); }},
            {"title", [](WindowSettings& window, const QString& text) { window.title = text; }},
        }};
        for (MarkupAttribute& attribute : m_windowAttributes) {
            attribute.value = m_builder.m_skin->WithColors(attribute.value);
            if (!SetFromTable(Table, m_builder.m_settings, attribute.name, attribute.value)) {
                SetAttribute(m_root, QStringLiteral("Window"), attribute);
            }
        }
    }

    // Null when it is left out with all it holds.
    CControlUI* MakeControl(const QString& element, const std::vector<MarkupAttribute>& attributes)
    {
        std::unique_ptr<CControlUI> control = MakePlainControl(element, m_builder.m_skin);
        if (!control && m_builder.m_others) {
            control = m_builder.m_others(element, m_builder.m_skin);
        }
        if (!control) {
            Tell(QStringLiteral("no element %1").arg(element));
            return nullptr;
        }
        CControlUI* made = control.get();
        CControlUI& parent = Parent();
        // What a control is comes before its parent has to deal with it.
        ApplyAttributes(*made, element, attributes);
        if (!parent.Add(control)) {
            Tell(QStringLiteral("%1 cannot stand in %2").arg(element, parent.GetClass()));
            return nullptr;
        }
        ++m_controlCount;
        return made;
    }

    CControlUI& Parent()
    {
        for (auto open = m_open.rbegin(); open != m_open.rend(); ++open) {
            if (*open != nullptr) {
                return **open;
            }
        }
        return m_root;
    }

    void ApplyAttributes(CControlUI& control,
                         const QString& element,
                         const std::vector<MarkupAttribute>& attributes)
    {
        const Skin& skin = *m_builder.m_skin;
        for (const MarkupAttribute& attribute : skin.Default(element)) {
            SetAttribute(control, element, attribute);
        }
        const QString style = ValueOf(attributes, QLatin1String("style"));
        if (!style.isEmpty() && !skin.HasStyle(style)) {
            Tell(QStringLiteral("no style %1").arg(style));
        }
        for (const MarkupAttribute& attribute : skin.Style(style)) {
            SetAttribute(control, element, attribute);
        }
        for (const MarkupAttribute& attribute : attributes) {
            if (attribute.name != QLatin1String("style")) {
                SetAttribute(control, element, attribute);
            }
        }
    }

    void SetAttribute(CControlUI& control, const QString& element, const MarkupAttribute& attribute)
    {
        if (!control.SetAttribute(attribute.name, attribute.value)) {
            Tell(QStringLiteral("%1 has no attribute %2").arg(element, attribute.name));
        }
    }

    MarkupBuilder& m_builder;
    CControlUI& m_root;
    std::vector<OpenFileEntry> m_files;
    std::vector<CControlUI*> m_open;  // null for structure
    std::vector<MarkupAttribute> m_windowAttributes;
    int m_controlCount = 0;
    int m_fileCount = 0;
};

MarkupBuilder::MarkupBuilder(std::shared_ptr<Skin> skin, ControlMaker others)
    : m_skin(std::move(skin)), m_others(std::move(others))
{
}

bool MarkupBuilder::Build(const QString& file, CControlUI& root)
{
    return Run(*this, root).Build(file);
}
