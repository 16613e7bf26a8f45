#include "app/wizard/TargetChooser.h"

#include "app/wizard/DiskRows.h"
#include "app/wizard/DiskTexts.h"
#include "app/wizard/MainTexts.h"

#include <algorithm>

namespace {

constexpr int RetryMilliseconds = 50;

}  // namespace

TargetChooser::TargetChooser(const WindowImplBase& window, const DiskRows& disks)
    : m_disks(disks), m_field(window.FindControlAs<CComboUI>(QStringLiteral("TargetChooser")))
{
    m_field->AddHandler([this](const Notification& notification) {
        if (notification.type != NotifyItemSelect) {
            return false;
        }
        // What follows opens a window: not before the list of the field is gone.
        m_telling.start(0);
        return true;
    });
    m_telling.setSingleShot(true);
    QObject::connect(&m_telling, &QTimer::timeout, &m_telling, [this] { TellChosen(); });
}

void TargetChooser::TellChosen()
{
    if (!mayChoose()) {
        m_telling.start(RetryMilliseconds);
        return;
    }
    const auto index = static_cast<std::size_t>(m_field->GetCurSel());
    if (index < m_targets.size()) {
        onChoose(*m_targets[index]);
    }
}

void TargetChooser::Refresh(const RecoveryTarget* shown)
{
    m_targets = m_disks.Scanned();
    std::erase_if(m_targets, [shown](const RecoveryTarget* target) {
        return target != shown && target->engine->RecordCount() == 0;
    });
    QStringList names;
    for (const RecoveryTarget* target : m_targets) {
        names.append(ScannedName(*target));
    }
    const auto place = std::find(m_targets.begin(), m_targets.end(), shown);
    m_field->SetTexts(names,
                      place == m_targets.end() ? -1 : static_cast<int>(place - m_targets.begin()));
    m_field->SetAttribute(QStringLiteral("accname"), ToQt(ExtraText("EXT0104")));
    m_field->SetVisible(m_targets.size() > (place == m_targets.end() ? 0U : 1U));
}
